// The static repository from one thread: what is made when, the order of destruction, failures, and destructors that
// come back.

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include <boost/any.hpp>
#include <gtest/gtest.h>
#include <qvxsys/LogicException.h>
#include <qvxsys/StaticRepository.h>

namespace {

static_assert(std::is_trivially_destructible_v<TStaticObject<std::string>>);

std::string g_log; ///< + and - and a name, for each object made and destroyed

struct Item
{
    explicit Item(char aName, std::function<void()> anEnd = {}) : name(aName), end(std::move(anEnd))
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

/// An item in the making: what comes before it, and what its destructor does.
struct Making
{
    char name;
    std::function<void()> begin = {};
    std::function<void()> end = {};
};

boost::any* Create(void* arg)
{
    Making const& making = *static_cast<Making*>(arg);
    if (making.begin) {
        making.begin();
    }
    return making.name != 0 ? new boost::any(std::make_shared<Item>(making.name, making.end)) : nullptr;
}

int g_extractions = 0;

void* Extract(boost::any* holder)
{
    ++g_extractions;
    return boost::any_cast<std::shared_ptr<Item>>(holder)->get();
}

void Init(void*& slot, Making making, void* (*extract)(boost::any*) = &Extract)
{
    InitOnce(&slot, &Create, &making, extract);
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
            Init(slot, {'x', {}, [] { std::_Exit(2); }});
            std::exit(slot != nullptr && g_log == "+x" ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(StaticRepository, Lifecycle)
{
    int own = 0;
    void* filled = &own;
    Init(a, {'a'});
    Init(b, {'b'});
    ASSERT_TRUE(a != nullptr && b != nullptr && a != b);
    EXPECT_EQ(static_cast<Item*>(a)->name, 'a');
    void* const before = a;
    Init(a, {'z'});
    Init(filled, {'z'});
    InitOnce(nullptr, &Create, nullptr, &Extract);
    EXPECT_TRUE(a == before && filled == &own && g_extractions == 2);
    a = nullptr; // filled again with the same object
    Init(a, {'z'});
    EXPECT_EQ(a, before);
    Init(c, {'c'});
    EXPECT_EQ(g_log, "+a+b+c");

    DeinitializeStaticRepository();
    EXPECT_EQ(g_log, "+a+b+c-c-b-a");
    EXPECT_TRUE(a == nullptr && b == nullptr && c == nullptr && filled == &own);
    Init(a, {'z'});
    DeinitializeStaticRepository();
    Init(a, {'z'});
    EXPECT_EQ(a, nullptr);
    EXPECT_EQ(g_log, "+a+b+c-c-b-a");

    InitializeStaticRepository();
    InitializeStaticRepository();
    Init(a, {'d'});
    EXPECT_EQ(static_cast<Item*>(a)->name, 'd');
}

TEST_F(StaticRepository, NestedCreation)
{
    Init(a, {'a', [&] { Init(b, {'b', [&] { Init(c, {'c'}); }}); }});
    DeinitializeStaticRepository();
    EXPECT_EQ(g_log, "+c+b+a-c-b-a"); // by the beginnings of their creation
}

TEST_F(StaticRepository, Failures)
{
    Init(c, {'c'});
    auto const fail = [&] {
        Init(b, {'b'});
        throw std::runtime_error("no");
    };
    EXPECT_THROW(Init(a, {'z', fail}), std::runtime_error);
    Init(a, {0});
    void* other = nullptr;
    Init(other, {0});
    EXPECT_TRUE(a == nullptr && other == nullptr);
    other = this; // not the repository's to clear
    EXPECT_EQ(g_extractions, 2);
    EXPECT_THROW(Init(a, {'a'}, [](boost::any*) -> void* { throw 1; }), int);
    Init(a, {'z'}, [](boost::any*) -> void* { return nullptr; });
    EXPECT_EQ(a, nullptr);
    Init(a, {'z'});
    EXPECT_EQ(static_cast<Item*>(a)->name, 'a');
    DeinitializeStaticRepository();
    EXPECT_EQ(g_log, "+c+b+a-a-b-c");
    EXPECT_EQ(other, this);
}

void ExpectError(std::function<void()> const& function, unsigned int code, char16_t const* text)
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
    std::function<void()> const initA = [&] { Init(a, {'z', [&] { Init(b, {'z', initA}); }}); };
    ExpectError(initA, 0x50D0BB91, u"InitOnce: the object is needed for its own creation.");
    Init(a, {'a'});
    ExpectError(
        [&] {
            Init(b, {'z', &DeinitializeStaticRepository});
        },
        0x8964FD20, u"DeinitializeStaticRepository: an object is being created.");
    EXPECT_THROW(InitOnce(&b, nullptr, nullptr, &Extract), LogicException);
    EXPECT_THROW(InitOnce(&b, &Create, nullptr, nullptr), LogicException);
    EXPECT_TRUE(a != nullptr && b == nullptr);
    Init(b, {'b'});
    EXPECT_EQ(g_log, "+a+b");
}

TEST_F(StaticRepository, DestructorsThatComeBack)
{
    std::string seen;
    void* never = nullptr;
    auto const comeBack = [&] {
        InitializeStaticRepository(); // have no effect here
        DeinitializeStaticRepository();
        for (void** const slot : {&a, &b, &c, &never}) {
            Init(*slot, {'z'});
            seen += *slot != nullptr ? '1' : '0';
        }
    };
    Init(a, {'a'});
    Init(b, {'b', {}, comeBack});
    Init(c, {'c'});
    DeinitializeStaticRepository();
    EXPECT_EQ(seen, "1100"); // older, own, newer, none
    EXPECT_EQ(g_log, "+a+b+c-c-b-a");
    Init(never, {'z'});
    EXPECT_TRUE(a == nullptr && b == nullptr && c == nullptr && never == nullptr);
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
    auto const makeInner = [&] {
        Init(a, {'a'});
        return Item('i', [] { EXPECT_EQ(g_outer.Peek(), nullptr); });
    };
    Item* const outer = g_outer.Get([&] {
        static_cast<void>(g_inner.Get(makeInner));
        return Item('o', [] { EXPECT_NE(g_inner.Peek(), nullptr); });
    });
    EXPECT_NE(outer, nullptr);
    static_cast<void>(g_last.Get([] { return new Item('l'); }));
    DeinitializeStaticRepository();
    EXPECT_EQ(g_log, "+a+i+o+l-l-o-i-a");
}

} // namespace
