#pragma once
// ICU's own classes beside the wrappers: short forms for tests that make the same calls on both.

#include <functional>
#include <initializer_list>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>
#include <qvxsys/qvxsys.h>
#include <unicode/unistr.h>
#include <unicode/utypes.h>

namespace testing_support {

using QvxICU::ICUErrorCode;

/// What ICU has written, as our text.
inline TStringCore Text(icu::UnicodeString const& text)
{
    return TStringCore(text.getBuffer(), text.isBogus() ? 0 : text.length());
}
inline TStringCore Text(TStringCore const& text)
{
    return text;
}
inline TStringCore Text(QvxICU::ICUString const& text)
{
    return text.toString();
}

inline icu::UnicodeString Unicode(TStringView text)
{
    return icu::UnicodeString(text.data(), text.length());
}

inline int Number(ICUErrorCode code)
{
    return static_cast<int>(code);
}
inline int Number(UErrorCode code)
{
    return code;
}

/// Without warnings, which ICU gives to whoever comes first.
template<class Code>
int Failure(Code code)
{
    return Number(code) > 0 ? Number(code) : 0;
}

/// A value of any enumeration.
struct As
{
    int value;
    template<class Enum>
    requires std::is_enum_v<Enum>
    operator Enum() const { return static_cast<Enum>(value); }
};

/// One call, ours and ICU's, each with a status of its own: same results, same statuses. A text that ICU fails to make
/// is empty.
template<class Theirs, class Own>
void ExpectSame(Theirs const& theirs, Own const& own, auto const& what)
{
    UErrorCode code = U_ZERO_ERROR;
    ICUErrorCode status{};
    if constexpr (std::is_void_v<decltype(own(status))>) {
        theirs(code);
        own(status);
    } else {
        auto const expected = theirs(code);
        auto const actual = own(status);
        if constexpr (std::is_same_v<decltype(expected), icu::UnicodeString const>) {
            EXPECT_EQ(Text(actual), U_SUCCESS(code) ? Text(expected) : TStringCore()) << what;
        } else {
            EXPECT_EQ(actual, static_cast<decltype(actual)>(expected)) << what;
        }
    }
    EXPECT_EQ(Failure(status), Failure(code)) << what;
}

/// The same call of a member on both, where `s` is the status of each.
#define EXPECT_SAME(OURS, ICUS, ...)                                                                                   \
    testing_support::ExpectSame([&]([[maybe_unused]] UErrorCode& s) -> decltype(auto) { return (ICUS).__VA_ARGS__; },  \
                                [&]([[maybe_unused]] QvxICU::ICUErrorCode& s) { return (OURS).__VA_ARGS__; },          \
                                #__VA_ARGS__)

/// Calls that say whether something came of them: nothing does, and each says why.
inline void ExpectRefused(ICUErrorCode why, std::initializer_list<std::function<bool(ICUErrorCode&)>> calls)
{
    for (auto const& call : calls) {
        ICUErrorCode status{};
        EXPECT_FALSE(call(status)) << "call " << &call - calls.begin();
        EXPECT_EQ(status, why) << "call " << &call - calls.begin();
    }
}

} // namespace testing_support
