#pragma once
// What the tests of calendars and date formats share: places, moments, and how results are held against ICU's.

#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <unicode/calendar.h>

#include "support/IcuOracle.h"

using Code = QvxICU::ICUErrorCode;
using testing_support::As;
using testing_support::ExpectRefused;
using testing_support::ExpectSame;
using testing_support::Failure;
using testing_support::Text;
using testing_support::Unicode;

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

inline std::unique_ptr<QvxICU::ICULocale> Locale(char const* name)
{
    return QvxICU::ICULocale::createFromName(name);
}

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
