// RefCntObject and RefCntPtr.

#include <cstring>
#include <set>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "support/LogicAsserts.h"
#include "support/TextPrinters.h"

namespace {

int g_alive = 0;

class Node : public RefCntObject
{
public:
    Node() { ++g_alive; }
    explicit Node(int aValue) : value(aValue) { ++g_alive; }
    Node(Node const& other) : RefCntObject(other), value(other.value) { ++g_alive; }
    Node& operator=(Node const&) = default;

    int value = 0;
    RefCntPtr<Node> next;

protected:
    ~Node() override { --g_alive; }
};

struct Leaf : Node
{
    using Node::Node;
};

struct Other
{
    virtual ~Other() = default;
    int other = 0;
};

/// Counted through its second base.
class Mixed : public Other, public RefCntObject
{
public:
    Mixed() { ++g_alive; }

protected:
    ~Mixed() override { --g_alive; }
};

using Pointer = RefCntPtr<Node>;

static_assert(std::is_same_v<RefCntPtr<Node>, RefCntPtr<Node, RefCntObject>>);
static_assert(sizeof(Pointer) == sizeof(Node*));
static_assert(!std::is_destructible_v<RefCntObject> && !std::is_default_constructible_v<RefCntObject>);
static_assert(std::is_convertible_v<RefCntPtr<Leaf>, Pointer> && !std::is_convertible_v<Pointer, RefCntPtr<Leaf>>);
static_assert(std::is_convertible_v<Pointer, RefCntPtr<Node const>> &&
              !std::is_convertible_v<RefCntPtr<Node const>, Pointer>);
static_assert(std::is_nothrow_move_constructible_v<Pointer> && !std::is_convertible_v<Pointer, bool>);

class ReferenceCount : public ::testing::Test
{
protected:
    void TearDown() override { EXPECT_EQ(g_alive, 0); }
};

TEST_F(ReferenceCount, LayoutShowsLiveObjects)
{
    Pointer const p = MakeRefCnt<Node>();
    Pointer const q = p;
    std::uint32_t words[2];
    std::memcpy(words, static_cast<RefCntObjectNonVirtualBase<RefCntObject> const*>(p.get()), sizeof words);
    EXPECT_EQ(words[0], 2u);
    EXPECT_EQ(static_cast<std::int32_t>(words[1]), -999888777);
}

TEST_F(ReferenceCount, CopiedObjectsCountAnew)
{
    Pointer const a = MakeRefCnt<Node>(1);
    Pointer const a2 = a;
    Pointer const b = MakeRefCnt<Node>(2);
    *b = *a;
    EXPECT_EQ(a.use_count(), 2);
    EXPECT_EQ(b.use_count(), 1);
    EXPECT_EQ(b->value, 1);
    auto* const copy = new Node(*a);
    EXPECT_EQ(copy->UseCount(), 0);
    EXPECT_EQ(copy->AddReference(), 1);
    EXPECT_EQ(copy->AddReference(), 2);
    EXPECT_EQ(copy->RemoveReference(), 1);
    EXPECT_EQ(g_alive, 3);
    EXPECT_EQ(copy->RemoveReference(), 0);
}

TEST_F(ReferenceCount, PointerOwnsOneReference)
{
    Pointer p;
    EXPECT_FALSE(p);
    EXPECT_EQ(p, nullptr);
    EXPECT_EQ(p.use_count(), 0);
    p = new Node(1);
    Pointer q = p;
    EXPECT_EQ(p.use_count(), 2);
    Pointer const& same = q;
    q = same;
    EXPECT_EQ(p.use_count(), 2);
    Pointer r = std::move(q);
    EXPECT_EQ(q, nullptr); // NOLINT: the moved-from state is promised
    EXPECT_EQ(p.use_count(), 2);
    Pointer& itself = r;
    r = std::move(itself);
    EXPECT_EQ(r, p);
    r.reset();
    EXPECT_EQ(p.use_count(), 1);
    r.reset(p.get());
    EXPECT_EQ(p.use_count(), 2);
    Node* const released = r.release();
    EXPECT_EQ(p.use_count(), 2);
    r.reset(released, kAdoptReference);
    EXPECT_EQ(p.use_count(), 2);
    Pointer s = MakeRefCnt<Node>(9);
    swap(r, s);
    EXPECT_EQ(r->value, 9);
    EXPECT_EQ(s, p);
    p = nullptr;
    EXPECT_EQ(s.use_count(), 1);
}

/// Gives references to itself away while it is made.
class Registered : public Node
{
public:
    explicit Registered(std::vector<Pointer>& registry)
    {
        registry.emplace_back(this);
        registry.emplace_back(this);
    }
};

TEST_F(ReferenceCount, ReferencesTakenInTheConstructorCount)
{
    std::vector<Pointer> registry;
    Pointer made = MakeRefCnt<Registered>(registry);
    EXPECT_EQ(made.use_count(), 3);
    registry.clear();
    EXPECT_EQ(made.use_count(), 1);
    EXPECT_EQ(g_alive, 1);
}

TEST_F(ReferenceCount, ConvertsUpAndDownTheClassTree)
{
    RefCntPtr<Leaf> leaf = MakeRefCnt<Leaf>(3);
    Pointer node = leaf;
    RefCntPtr<Node const> const constant = node;
    EXPECT_EQ(leaf.use_count(), 3);
    EXPECT_EQ(StaticPointerCast<Leaf>(node), leaf);
    EXPECT_EQ(DynamicPointerCast<Leaf>(node), leaf);
    EXPECT_EQ(DynamicPointerCast<Leaf>(MakeRefCnt<Node>()), nullptr);
    node = std::move(leaf);
    EXPECT_EQ(leaf, nullptr); // NOLINT
    EXPECT_EQ(constant->value, 3);
    RefCntPtr<Mixed> mixed = MakeRefCnt<Mixed>();
    RefCntPtr<RefCntObject> const base = mixed; // another address than the Mixed
    EXPECT_EQ(base.use_count(), 2);
    mixed.reset();
}

TEST_F(ReferenceCount, ComparesAndHashesByAddress)
{
    Pointer const a = MakeRefCnt<Node>();
    Pointer const b = MakeRefCnt<Node>();
    RefCntPtr<Node const> const ac = a;
    EXPECT_TRUE(a == ac && a != b && a == a.get() && b.get() != a && a != nullptr);
    EXPECT_EQ((std::set<Pointer>{a, b, a}.size()), 2u);
    EXPECT_EQ((std::unordered_set<Pointer>{a, b, a}.size()), 2u);
}

TEST_F(ReferenceCount, AssigningFromWhatItOwns)
{
    Pointer list = MakeRefCnt<Node>(1);
    list->next = MakeRefCnt<Node>(2);
    list = list->next; // the first node, which holds the right-hand side, goes
    EXPECT_EQ(list->value, 2);
    EXPECT_EQ(list.use_count(), 1);
}

TEST_F(ReferenceCount, NullDereferenceFailsTheCheck)
{
    Pointer const null;
    auto const arrow = AssertRaisedBy([&] { EXPECT_EQ(null.operator->(), nullptr); }, HookThat::Returns);
    auto const star = AssertRaisedBy([&] { static_cast<void>(*null); });
    ASSERT_TRUE(arrow && star);
    EXPECT_EQ(arrow->condition + star->condition, "m_ptrm_ptr");
    EXPECT_EQ(arrow->file, "qvxsys/main/qvxsys/error/ReferenceCount.cpp");
    AssertHooks::SetLogicAssertHook([](char const*, int, char const*) {});
    EXPECT_DEATH(static_cast<void>(*null), "");
    AssertHooks::SetLogicAssertHook(nullptr);
}

} // namespace
