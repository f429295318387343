#include <qvxsys/TStringCore.h>

#include <climits>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "support/TextPrinters.h"

namespace {

using testing_support::FailingReallocation;
using testing_support::TextError;

constexpr char const* kOverflow = "Allocation size less than zero; probable overflow";

TStringCore Xs(int n)
{
    return TStringCore(u'x', n);
}

// Whether two strings share one block.
bool Share(TStringCore const& a, TStringCore const& b)
{
    return a.constData() == b.constData();
}

static_assert(std::is_nothrow_copy_constructible_v<TStringCore> && std::is_nothrow_move_constructible_v<TStringCore> &&
              std::is_nothrow_move_assignable_v<TStringCore>);
static_assert(!std::is_constructible_v<bool, TStringCore>);

// Blocks alternate between a power of two and three quarters of the next, less 7 units.
TEST(TStringCore, FormsAndCapacities)
{
    int capacity = 15;
    for (int length = 0; length < 3000; ++length) {
        for (int power = 16; length > 14 && capacity <= length; power *= 2) {
            capacity = power - 7 > length ? power - 7 : power + power / 2 - 7;
        }
        TStringCore const s = Xs(length);
        ASSERT_EQ(s.capacity(), length == 15 || length == 16 ? 17 : capacity) << length;
        ASSERT_EQ(s.length(), length);
        ASSERT_EQ(s.size() * 2, s.lengthInBytes());
        ASSERT_TRUE(s.constData()[length] == 0 && s[length] == 0 && s.isEmpty() == (length == 0));
    }
}

TEST(TStringCore, ReserveSqueezeClear)
{
    constexpr int kTable[][4] = {
        {14, 14, 15, 15}, {14, 15, 16, 15}, {14, 5, 15, 15}, {100, 5, 121, 101}, {100, 1000, 1001, 101}};
    for (auto const& [length, reserved, capacity, squeezed] : kTable) {
        TStringCore s = Xs(length);
        s.reserve(reserved);
        EXPECT_EQ(s.capacity(), capacity);
        EXPECT_EQ(s, Xs(length));
        s.squeeze();
        EXPECT_EQ(s.capacity(), squeezed);
        EXPECT_EQ(s, Xs(length));
    }

    // A shared short block detaches to the inline capacity and stays a block.
    TStringCore shortBlock = Xs(20);
    shortBlock.resize(10);
    TStringCore const other = shortBlock;
    shortBlock.squeeze();
    EXPECT_EQ(shortBlock.capacity(), 15);
    EXPECT_EQ(shortBlock.compare(other), 0);
    EXPECT_FALSE(Share(shortBlock, other));
    char const* const object = reinterpret_cast<char const*>(&shortBlock);
    char const* const text = reinterpret_cast<char const*>(shortBlock.constData());
    EXPECT_FALSE(text >= object && text < object + sizeof shortBlock);
    TStringCore s = Xs(100);
    EXPECT_EQ(TextError([&] { s.reserve(-1); }), "Negative allocation size; probable overflow");
    EXPECT_EQ(TextError([&] { s.reserve(INT_MAX); }), kOverflow);
    s.clear();
    EXPECT_EQ(s.capacity(), 15);
    s = Xs(100);
    s.resize(-5);
    EXPECT_EQ(s.length(), 0);
    EXPECT_EQ(s.capacity(), 121); // the block is kept
}

TEST(TStringCore, CopiesShareUntilWritten)
{
    TStringCore const original = Xs(100);
    TStringCore copy = original;
    EXPECT_TRUE(Share(original, copy));
    copy[0] = u'y';
    EXPECT_EQ(copy, u"y" + Xs(99));

    // Reading, and appending nothing, detach nothing.
    TStringCore quiet = original;
    EXPECT_EQ(quiet.cbegin(), original.cbegin());
    quiet.append(u"").append(TStringView()).append("").append(TStringCore()).append(L"").append(u"abc", 0);
    quiet.append(static_cast<char16_t const*>(nullptr)).append(static_cast<char const*>(nullptr), 7);
    quiet.insert(3, u"").prepend("");
    static_cast<void>(quiet.codePointView().begin());
    quiet.assign(quiet.constData(), 100);
    EXPECT_TRUE(Share(original, quiet));

    // Each of these writes and must detach first.
    using Write = void (*)(TStringCore&);
    for (Write const write :
         {Write([](TStringCore& s) { s.data()[0] = u'y'; }), Write([](TStringCore& s) { *s.begin() = u'y'; }),
          Write([](TStringCore& s) { s.front() = u'y'; }), Write([](TStringCore& s) { s.back() = u'y'; }),
          Write([](TStringCore& s) { *s.rbegin() = u'y'; }), Write([](TStringCore& s) { s[std::size_t{1}] = u'y'; }),
          Write([](TStringCore& s) { s.append(u'y'); }), Write([](TStringCore& s) { s.prepend(u"y"); }),
          Write([](TStringCore& s) { s.resize(5); }), Write([](TStringCore& s) { s.assign(s.constData() + 1, 5); }),
          Write([](TStringCore& s) { *s.codePointView().begin() = U'y'; })}) {
        TStringCore writer = original;
        write(writer);
        EXPECT_EQ(original, Xs(100));
        EXPECT_NE(writer, original);
        EXPECT_FALSE(Share(original, writer));
    }
}

TEST(TStringCore, CopyAssignmentKeepsAnUnsharedBlock)
{
    TStringCore target = Xs(100);
    char16_t const* const block = target.constData();
    target = TStringCore(u"short");
    EXPECT_EQ(target.constData(), block);
    EXPECT_EQ(target, u"short");
    EXPECT_EQ(target.capacity(), 121);

    TStringCore shared = Xs(100);
    TStringCore const keeper = shared;
    TStringCore const inlineText = u"short";
    shared = inlineText;
    EXPECT_EQ(shared.capacity(), 15);
    EXPECT_EQ(shared, u"short");
    EXPECT_EQ(keeper, Xs(100));

    TStringCore& self = shared;
    shared = self;
    EXPECT_EQ(shared, u"short");
    TStringCore block2 = Xs(50);
    TStringCore const sharer = block2;
    block2 = sharer; // one block on both sides
    EXPECT_TRUE(Share(block2, sharer));
}

TEST(TStringCore, MovedFromIsEmptyInBothForms)
{
    for (int const n : {3, 100}) {
        TStringCore source = Xs(n);
        TStringCore const taken = std::move(source);
        EXPECT_TRUE(source.empty());
        EXPECT_EQ(source, u"");
        EXPECT_EQ(source.capacity(), 15);
        EXPECT_EQ(taken, Xs(n));
        TStringCore target = Xs(40);
        source = taken;
        target = std::move(source);
        EXPECT_TRUE(source.empty());
        EXPECT_EQ(target, Xs(n));
    }
    TStringCore a = u"inline";
    TStringCore b = Xs(77);
    swap(a, b);
    EXPECT_EQ(a, Xs(77));
    EXPECT_EQ(b, u"inline");
}

TEST(TStringCore, SourcesInsideTheOwnText)
{
    TStringCore const digits = u"0123456789";
    TStringCore const longDigits = digits + digits + digits;
    for (TStringCore const& base : {digits, longDigits}) {
        std::u16string const reference = base.toStdUString();
        int const length = base.length();
        for (int k = 0; k <= length; ++k) {
            for (int n : {-1, 0, 1, 3, length - k, length, 1000}) {
                auto const count = static_cast<std::size_t>(n < 0 ? length : n);
                auto const tail = reference.substr(static_cast<std::size_t>(k), count);
                TStringCore s = base;
                s.append(s.constData() + k, n);
                EXPECT_EQ(s.toStdUString(), reference + tail) << k << ' ' << n;
                s = base;
                s.assign(s.constData() + k, n);
                EXPECT_EQ(s.toStdUString(), k == 0 && n < 0 ? reference : tail) << k << ' ' << n;
                s = base;
                s.insert(2, s.view().mid(k, n));
                EXPECT_EQ(s.toStdUString(), std::u16string(reference).insert(2, n < 0 ? u"" : tail)) << k << ' ' << n;
            }
        }
    }
    TStringCore s = digits;
    EXPECT_EQ(TStringCore(digits).insert(0, digits.constData() + 2, 3), u"2340123456789");
    s.insert(0, s.constData() + 8, 100); // cut to what is there
    EXPECT_EQ(s, u"890123456789");
    s = digits;
    EXPECT_EQ(s.append(s), digits + digits);
    EXPECT_EQ(s.append(s), digits + digits + digits + digits);
    s += s.view();
    EXPECT_EQ(s.length(), 80);
    // A negative count on the own text stops at an embedded 0 when assigning, not when appending.
    TStringCore zero(u"ab\0cd", 5);
    zero.append(zero.constData() + 1, -1);
    EXPECT_EQ(zero.length(), 9);
    zero.assign(zero.constData() + 1, -1);
    EXPECT_EQ(zero, u"b");
    EXPECT_EQ(zero.length(), 1);
}

TEST(TStringCore, CodePointsAtTheEnds)
{
    TStringCore s = u"abc";
    s.append(char32_t{0x110000}).append32(0x1F600).prepend32(0x20AC).insert(1, u"xyz", 2);
    s.push_front32(0x1F600);
    s.push_back32(0x1F601);
    EXPECT_EQ(s, u"\U0001F600\u20ACxyabc\uFFFD\U0001F600\U0001F601");
    TStringCore zero;
    zero.append(u'\0').append(u'a');
    zero += u'\0';
    EXPECT_EQ(zero.length(), 3);
}

TEST(TStringCore, FillingConstructors)
{
    EXPECT_EQ(TStringCore('\xE9', 3), u"\u00E9\u00E9\u00E9");
    EXPECT_EQ(TStringCore(u'x', -1), u"");
    EXPECT_EQ(TStringCore(char32_t{0x1F600}, 3).length(), 6);
    EXPECT_EQ(TStringCore(char32_t{0x1F600}, 3).lengthInCodePoints(), 3);
    EXPECT_EQ(TStringCore(L'\u20AC', 20), TStringCore(u'\u20AC', 20));
    EXPECT_EQ(TStringCore().assign32(0x110000), u"\uFFFD");
    EXPECT_EQ(TStringCore(u"abcdef", 3), u"abc");
    EXPECT_EQ(TStringCore("abcdef", 3), u"abc");
    EXPECT_EQ(TStringCore(L"abcdef", 3), u"abc");
    EXPECT_EQ(TStringCore(u"a\0b", 3).length(), 3);
    EXPECT_EQ(TStringCore(static_cast<char const*>(nullptr), 5), u"");
    EXPECT_EQ(TStringCore(static_cast<char16_t const*>(nullptr), 5), u"");
    EXPECT_EQ(TStringCore(static_cast<wchar_t const*>(nullptr), 5), u"");
    EXPECT_EQ(TextError([] { TStringCore(char32_t{0x1F600}, INT_MAX / 2 + 1); }), kOverflow);
    // A view's length is cut to int.
    EXPECT_EQ(TStringCore(TStringView(u"abcdef", (std::size_t{1} << 32) + 4)), u"abcd");
}

TEST(TStringCore, ElementAccessAndItsErrors)
{
    TStringCore s = u"abc";
    TStringCore const& c = s;
    EXPECT_EQ(c.at(3) + s[s.length()] + TStringCore().back(), 0);
    EXPECT_EQ(c[0u], u'a');
    EXPECT_EQ(c[std::ptrdiff_t{2}], u'c');
    EXPECT_EQ(c.front(), u'a');
    EXPECT_EQ(c.back(), u'c');
    EXPECT_EQ(std::u16string(c.rbegin(), c.rend()), u"cba");
    std::pair<std::function<void()>, std::string> const table[] = {
        {[&] { static_cast<void>(c.at(4)); }, "at(int):"},
        {[&] { static_cast<void>(c.at(-1)); }, "at(int):"},
        {[&] { s[-1] = u'x'; }, "operator[int]"},
        {[&] { static_cast<void>(c[4]); }, "operator[int] const"},
        {[&] { s[std::size_t{4}] = u'x'; }, "operator[size_type]"},
        {[&] { static_cast<void>(c[std::size_t{1} << 40]); }, "operator[size_type] const"},
        {[&] { static_cast<void>(c[std::ptrdiff_t{-1}]); }, "operator[size_type] const"},
    };
    for (auto const& [access, where] : table) {
        EXPECT_EQ(TextError(access), "TStringCore::" + where + " argument out of range.");
    }
}

TEST(TStringCore, ComparingStopsAtZero)
{
    TStringCore const b(u"a\0b", 3);
    TStringCore const c(u"a\0c", 3);
    EXPECT_EQ(b, c);
    EXPECT_EQ(b, u"a");
    EXPECT_NE(b, TStringCore(u"a"));            // lengths differ
    EXPECT_EQ(b.compare(TStringCore(u"a")), 0); // the order ignores what follows the 0
    EXPECT_FALSE(b < c);
    EXPECT_TRUE(b <= c && b >= c);
    EXPECT_NE(b.view(), c.view());
    EXPECT_EQ(TStringCore(), static_cast<char16_t const*>(nullptr));
    EXPECT_LT(TStringCore(u"\xD83D\xDE00"), u"\uFFFF"); // by unit, not by code point
}

TEST(TStringCore, ConcatenationIsACopyWithTheRightOneAppended)
{
    TStringCore const a = Xs(20);
    EXPECT_TRUE(Share(a + u"", a));
    for (int left : {0, 5, 14, 15, 60}) {
        for (int right : {1, 9, 10, 200}) {
            TStringCore expected = Xs(left);
            TStringCore const keeper = expected; // so that the append detaches, as it does on a copy
            expected.append(TStringCore(u'y', right));
            TStringCore const sum = keeper + TStringCore(u'y', right);
            EXPECT_EQ(sum, expected);
            EXPECT_EQ(sum.capacity(), expected.capacity());
        }
    }
}

// Every growth that cannot be held, and every failing allocation, leaves text, length and sharing as they were. (That
// nothing leaks on the way is what the run under AddressSanitizer tells: accounting charges failed requests too.)
TEST(TStringCore, FailedGrowthLeavesTheStringAlone)
{
    using Grow = void (*)(TStringCore&);
    Grow const growths[] = {
        [](TStringCore& s) { s.resize(5000); },
        [](TStringCore& s) { s.reserve(5000); },
        [](TStringCore& s) { s.append(Xs(5000)); },
        [](TStringCore& s) { s.append(std::string(5000, 'a').c_str()); },
        [](TStringCore& s) { s.append(std::wstring(5000, L'a').c_str()); },
        [](TStringCore& s) { s.assign(u'y', 5000); },
        [](TStringCore& s) { s.assign(std::string(5000, 'a').c_str()); },
        [](TStringCore& s) { s.insert(1, std::u16string(5000, u'a')); },
        [](TStringCore& s) { s.assign32(0x1F600, 5000); },
    };
    for (int const length : {5, 60}) {
        for (bool const shared : {false, true}) {
            for (Grow const grow : growths) {
                for (unsigned nth = 1; nth <= 3; ++nth) {
                    TStringCore s = Xs(length);
                    TStringCore const sharer = shared ? s : TStringCore();
                    std::string const error = TextError([&] {
                        FailingReallocation const failing(nth);
                        grow(s);
                    });
                    EXPECT_TRUE(error == "Out of memory" || (error.empty() && nth > 1)) << error;
                    EXPECT_TRUE(error.empty() || s.view().startsWith(Xs(length))) << length;
                    EXPECT_TRUE(nth > 1 || s.length() == length);
                    EXPECT_TRUE(!shared || sharer == Xs(length));
                }
            }
        }
    }
    TStringCore s = Xs(30);
    EXPECT_EQ(TextError([&] { s.resize(INT_MAX); }), kOverflow);
    EXPECT_EQ(TextError([&] { s.resize(0x7FFFFFF9); }), kOverflow);
    EXPECT_EQ(TextError([&] { s.append(u"x", INT_MAX - 10); }), kOverflow);
    EXPECT_EQ(TextError([&] { s = TStringCore(u"abcde") + TStringView(u"x", INT_MAX); }), kOverflow);
    EXPECT_EQ(TextError([&] { s.append("x", INT_MAX - 10); }), kOverflow);
    EXPECT_EQ(TextError([&] { s.insert(0, u"x", INT_MAX - 10); }), kOverflow);
    EXPECT_EQ(s, Xs(30));
}

TEST(TStringCore, ExceptionsAreStringsOfTheirOwn)
{
    TStringCore::Exception const thrown(L"what happened");
    std::unique_ptr<TStringCore::Exception> const clone(thrown.Clone());
    EXPECT_EQ(clone->CollateMessagesForLog(), u"what happened");
    EXPECT_EQ(thrown.GetConcatenatedMessages(), u"what happened");
    EXPECT_EQ(TextError([&] { clone->Throw(); }), "what happened");
}

} // namespace
