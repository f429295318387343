#pragma once
// What the tests of calendars and date formats share: places, moments, and how results are held against ICU's.

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <qvxsys/ICUCalendar.h>
#include <qvxsys/ICULocale.h>
#include <qvxsys/ICUTypes.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/std.h>
#include <unicode/calendar.h>
#include <unicode/unistr.h>

using Code = QvxICU::ICUErrorCode;

inline constexpr char const* kLocales[] = {"en_US",
                                           "de_CH",
                                           "fr_FR",
                                           "ar_EG",
                                           "hi_IN",
                                           "th_TH",
                                           "fa_IR",
                                           "ja_JP@calendar=japanese",
                                           "he_IL@calendar=hebrew",
                                           "zh_CN@calendar=chinese",
                                           "ar_SA@calendar=islamic-umalqura",
                                           "en@calendar=islamic-civil",
                                           "am_ET@calendar=ethiopic",
                                           "ko@calendar=dangi",
                                           "en@calendar=coptic",
                                           "hi@calendar=indian",
                                           "zh_TW@calendar=roc",
                                           "en@calendar=iso8601"};

inline constexpr char16_t const* kZones[] = {
    u"UTC",       u"Europe/Zurich", u"America/New_York", u"Australia/Lord_Howe", u"Asia/Kathmandu",
    u"GMT-03:30", u"Pacific/Apia"};

/// The year 1, both sides of 1582-10-15, gaps and overlaps of summer time, a skipped day, the ends of 9999 and
/// before 1.
inline constexpr double kMoments[] = {0.0,
                                      -1.0,
                                      951782400123.0,
                                      -62135596800000.0,
                                      -62135596800001.0,
                                      -12219292800000.0,
                                      -12219292800001.0,
                                      1711846799999.0,
                                      1711846800000.0,
                                      1729990800000.0,
                                      1301752800000.0,
                                      1325239200000.0,
                                      253402300799999.0,
                                      -100000000000000.0,
                                      400000000000000.0};

inline icu::UnicodeString ToIcu(TStringView text)
{
    return icu::UnicodeString(text.data(), text.length());
}

inline TStringCore Ours(icu::UnicodeString const& text)
{
    return TStringCore(text.getBuffer(), text.length());
}

inline std::unique_ptr<QvxICU::ICULocale> Locale(char const* name)
{
    return QvxICU::ICULocale::createFromName(name);
}

/// A status without its warnings, which depend on what ICU has loaded before.
template<class AnyStatus>
int Failure(AnyStatus status)
{
    return std::max(static_cast<int>(status), 0);
}

/// One call, ours and ICU's, each with a status of its own: same results, same statuses.
template<class Theirs, class Own>
void ExpectSame(Theirs const& theirs, Own const& own, char const* what)
{
    UErrorCode code = U_ZERO_ERROR;
    Code status = Code::ZeroError;
    auto const expected = theirs(code);
    auto const actual = own(status);
    EXPECT_EQ(Failure(status), Failure(code)) << what;
    if constexpr (std::is_same_v<decltype(expected), icu::UnicodeString const>) {
        EXPECT_EQ(actual, U_SUCCESS(code) ? Ours(expected) : TStringCore()) << what;
    } else {
        EXPECT_EQ(actual, static_cast<decltype(actual)>(expected)) << what;
    }
}

/// The message and the code of what `f` throws.
template<class F>
std::string Thrown(F const& f)
{
    try {
        f();
    } catch (QuorvexException const& e) {
        return (e.GetErrorName() + u": " + e.GetMessagesFront()).toStdString();
    }
    return "";
}

inline constexpr char kNoField[] = "QuorvexException_AutoGen_0xDECF1A87: Unknown calendar date field.";
inline constexpr char kNoDay[] = "QuorvexException_AutoGen_0xA4F1F77D: Unknown day of week.";
inline constexpr char kNoStyle[] = "QuorvexException_AutoGen_0x80A9CA1D: Unknown UEStyle";
inline constexpr char kNoWidth[] = "QuorvexException_AutoGen_0x8AAE7D56: Unknown width type.";
inline constexpr char kNoContext[] = "QuorvexException_AutoGen_0x0EF0FAE5: Unknown context type.";
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
