// The static repository from one thread: what is made when, the order of destruction, failures, and destructors that
// come back. Every test opens the repository and ends it.

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <boost/any.hpp>
#include <gtest/gtest.h>
#include <qvxsys/LogicException.h>
#include <qvxsys/StaticRepository.h>

namespace {

static_assert(std::is_trivially_destructible_v<TStaticObject<std::string>>);

std::string g_log; ///< + and - and a name, for each object made and destroyed

/// A holder's contents: logs its making and its end, which may do something more.
struct Item
{
    explicit Item(char aName, std::function<void()> atEnd = {}) : name(aName), end(std::move(atEnd))
    {
        (g_log += '+') += name;
    }
    Item(Item const&) = delete;
    Item& operator=(Item const&) = delete;
    ~Item()
    {
        (g_log += '-') += name;
        if (end) {
            end();
        }
    }

    char name;
    std::function<void()> end;
};

using Making = std::function<std::unique_ptr<Item>()>;

boost::any* CreateItem(void* arg)
{
    std::unique_ptr<Item> item = (*static_cast<Making*>(arg))();
    return item != nullptr ? new boost::any(std::shared_ptr<Item>(std::move(item))) : nullptr;
}

int g_extractions = 0;

void* ExtractItem(boost::any* holder)
{
    ++g_extractions;
    return boost::any_cast<std::shared_ptr<Item>>(holder)->get();
}

void Init(void*& slot, Making making, void* (*extract)(boost::any*) = &ExtractItem)
{
    InitOnce(&slot, &CreateItem, &making, extract);
}

void Init(void*& slot, char name)
{
    Init(slot, [name] { return std::make_unique<Item>(name); });
}

class StaticRepository : public ::testing::Test
{
protected:
    void SetUp() override
    {
        InitializeStaticRepository();
        g_log.clear();
        g_extractions = 0;
    }
    void TearDown() override { DeinitializeStaticRepository(); }

    void* a = nullptr;
    void* b = nullptr;
    void* c = nullptr;
};

// Before anything was initialized, and with objects left at the end. In a process of its own.
TEST(StaticRepositoryDeathTest, FirstUseAndExit)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            static void* slot = nullptr;
            DeinitializeStaticRepository(); // nothing there: not the end either
            Init(slot, [] { return std::make_unique<Item>('x', [] { std::_Exit(2); }); });
            std::exit(slot != nullptr && g_log == "+x" ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(StaticRepository, Lifecycle)
{
    Init(a, 'a');
    Init(b, 'b');
    ASSERT_TRUE(a != nullptr && b != nullptr && a != b);
    EXPECT_EQ(static_cast<Item*>(a)->name, 'a');
    void* const before = a;
    Init(a, 'z');
    EXPECT_EQ(a, before);
    EXPECT_EQ(g_extractions, 2);
    InitOnce(nullptr, &CreateItem, nullptr, &ExtractItem);
    int own = 0;
    void* filled = &own;
    Init(filled, 'z');
    EXPECT_EQ(filled, &own);
    Init(c, 'c');
    EXPECT_EQ(g_log, "+a+b+c");

    DeinitializeStaticRepository();
    EXPECT_EQ(g_log, "+a+b+c-c-b-a");
    EXPECT_TRUE(a == nullptr && b == nullptr && c == nullptr);
    EXPECT_EQ(filled, &own);
    Init(a, 'z');
    EXPECT_EQ(a, nullptr);
    DeinitializeStaticRepository();
    Init(a, 'z');
    EXPECT_EQ(a, nullptr);
    EXPECT_EQ(g_log, "+a+b+c-c-b-a");

    InitializeStaticRepository();
    InitializeStaticRepository();
    Init(a, 'd');
    EXPECT_EQ(static_cast<Item*>(a)->name, 'd');
}

// A slot that somebody cleared is filled again with the same object.
TEST_F(StaticRepository, ClearedSlot)
{
    Init(a, 'a');
    void* const before = std::exchange(a, nullptr);
    Init(a, 'z');
    EXPECT_EQ(a, before);
    EXPECT_EQ(g_log, "+a");
}

TEST_F(StaticRepository, NestedCreation)
{
    Init(a, [&] {
        Init(b, [&] {
            Init(c, 'c');
            return std::make_unique<Item>('b');
        });
        return std::make_unique<Item>('a');
    });
    EXPECT_EQ(g_log, "+c+b+a");
    DeinitializeStaticRepository();
    EXPECT_EQ(g_log, "+c+b+a-c-b-a"); // by the beginnings of their creation
}

TEST_F(StaticRepository, FailedCreation)
{
    Init(c, 'c');
    EXPECT_THROW(Init(a,
                      [&]() -> std::unique_ptr<Item> {
                          Init(b, 'b');
                          throw std::runtime_error("no");
                      }),
                 std::runtime_error);
    EXPECT_EQ(a, nullptr);
    Init(a, [] { return nullptr; });
    EXPECT_EQ(a, nullptr);
    EXPECT_EQ(g_extractions, 2);
    Init(a, 'a');
    EXPECT_NE(a, nullptr);
    DeinitializeStaticRepository();
    EXPECT_EQ(g_log, "+c+b+a-a-b-c");
}

TEST_F(StaticRepository, FailedExtraction)
{
    EXPECT_THROW(Init(
                     a, [] { return std::make_unique<Item>('a'); }, [](boost::any*) -> void* { throw 1; }),
                 int);
    Init(
        a, [] { return std::make_unique<Item>('z'); }, [](boost::any*) -> void* { return nullptr; });
    EXPECT_EQ(a, nullptr);
    Init(a, 'z');
    EXPECT_EQ(static_cast<Item*>(a)->name, 'a');
    EXPECT_EQ(g_log, "+a");
}

template<class Function>
void ExpectError(Function function, unsigned int code, char16_t const* text)
{
    try {
        function();
        ADD_FAILURE() << "no exception";
    } catch (QuorvexException const& e) {
        EXPECT_EQ(e.GetErrorCode(), code);
        EXPECT_TRUE(e.GetMessagesFront() == text);
    }
}

TEST_F(StaticRepository, Misuse)
{
    // An object that needs itself, by way of another one.
    std::function<void()> const initA = [&] {
        Init(a, [&] {
            Init(b, [&] {
                initA();
                return std::make_unique<Item>('b');
            });
            return std::make_unique<Item>('a');
        });
    };
    ExpectError(initA, 0x50D0BB91, u"InitOnce: the object is needed for its own creation.");
    EXPECT_TRUE(a == nullptr && b == nullptr);
    Init(a, 'a');
    ExpectError(
        [&] {
            Init(b, [&] {
                DeinitializeStaticRepository();
                return std::make_unique<Item>('z');
            });
        },
        0x8964FD20, u"DeinitializeStaticRepository: an object is being created.");
    EXPECT_TRUE(a != nullptr && b == nullptr);
    EXPECT_THROW(InitOnce(&b, nullptr, nullptr, &ExtractItem), LogicException);
    EXPECT_THROW(InitOnce(&b, &CreateItem, nullptr, nullptr), LogicException);
    Init(b, 'b');
    EXPECT_EQ(g_log, "+a+b");
}

TEST_F(StaticRepository, DestructorsThatComeBack)
{
    std::string seen;
    auto const look = [&](void* slot) { seen += slot != nullptr ? '1' : '0'; };
    Init(a, 'a');
    void* never = nullptr;
    Init(b, [&] {
        return std::make_unique<Item>('b', [&] {
            InitializeStaticRepository(); // have no effect here
            DeinitializeStaticRepository();
            Init(a, 'z');
            Init(c, 'z');
            Init(never, 'z');
            for (void* const slot : {a, b, c, never}) {
                look(slot);
            }
        });
    });
    Init(c, 'c');
    DeinitializeStaticRepository();
    EXPECT_EQ(seen, "1100"); // older, own, newer, none
    EXPECT_EQ(g_log, "+a+b+c-c-b-a");
    EXPECT_TRUE(a == nullptr && b == nullptr && c == nullptr && never == nullptr);
    Init(never, 'z');
    EXPECT_EQ(never, nullptr);
}

// The typed form.

struct Base
{
    virtual ~Base() { g_log += '~'; }
    virtual char Name() const { return 'B'; }
};

struct Derived : Base
{
    char Name() const override { return 'D'; }
};

class Single
{
public:
    Single(Single const&) = delete;
    Single& operator=(Single const&) = delete;

private:
    friend class TStaticObject<Single>;
    Single() = default;
    ~Single() { g_log += 's'; }
};

constinit TStaticObject<Item> g_outer, g_inner, g_last;
constinit TStaticObject<Base> g_base;
constinit TStaticObject<std::string const> g_text;
constinit TStaticObject<Single> g_single;

TEST_F(StaticRepository, TypedObjects)
{
    EXPECT_EQ(g_base.Peek(), nullptr);
    EXPECT_EQ(g_base.Get([] { return std::unique_ptr<Base>(); }), nullptr);
    EXPECT_THROW(static_cast<void>(g_base.Get([]() -> Base* { throw 1; })), int);
    Base* const base = g_base.Get([] { return std::make_unique<Derived>(); });
    ASSERT_NE(base, nullptr);
    EXPECT_EQ(base->Name(), 'D');
    EXPECT_TRUE(g_base.Get() == base && g_base.Peek() == base);
    int calls = 0;
    auto const make = [&calls] { return std::string(static_cast<std::size_t>(++calls), 'x'); };
    EXPECT_EQ(*g_text.Get(make), "x");
    EXPECT_EQ(*g_text.Get(make), "x");
    EXPECT_NE(g_single.Get(), nullptr);
    DeinitializeStaticRepository();
    EXPECT_EQ(g_log, "s~");
    EXPECT_TRUE(g_base.Get() == nullptr && g_text.Get(make) == nullptr && calls == 1);
}

// What is used in making an object outlives it, also where both forms are mixed.
TEST_F(StaticRepository, TypedObjectsAreOrderedByCompletion)
{
    Item* const outer = g_outer.Get([&] {
        static_cast<void>(g_inner.Get([&] {
            Init(a, 'a');
            return Item('i', [] { EXPECT_EQ(g_outer.Peek(), nullptr); });
        }));
        return Item('o', [] { EXPECT_NE(g_inner.Peek(), nullptr); });
    });
    EXPECT_NE(outer, nullptr);
    static_cast<void>(g_last.Get([] { return new Item('l'); }));
    DeinitializeStaticRepository();
    EXPECT_EQ(g_log, "+a+i+o+l-l-o-i-a");
}

} // namespace
