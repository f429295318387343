#pragma once
// Formats of dates and times by patterns: "yyyy-MM-dd HH:mm:ss.SSS". The letters are those of Unicode Technical
// Standard 35, part 4; words in a pattern stand in apostrophes. Which pattern suits a locale
// ICUDateTimePatternGenerator tells.
//
//     QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
//     auto const iso = QvxICU::ICUSimpleDateFormat::createInstance(u"yyyy-MM-dd'T'HH:mm:ss",
//                                                                  *QvxICU::ICULocale::createFromName("en"), status);
//     iso->setTimeZone(u"UTC", status);
//     TStringCore const text = iso->format(951782400000.0, status); // u"2000-02-29T00:00:00"
//
// Sharing, threads and failures are as with ICUDateFormat.

#include <memory>
#include <string>

#include <qvxsys/ICUDateFormat.h>
#include <qvxsys/ICUDateFormatSymbols.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringView.h>
#include <qvxsys/TextArguments.h>
#include <qvxsys/WideText.h>

namespace QvxICU {

/// A date format with a pattern.
class QVXSYS_API ICUSimpleDateFormat : public ICUDateFormat
{
public:
    /// The default locale's pattern of date and time, short.
    [[nodiscard]] static std::unique_ptr<ICUSimpleDateFormat> createInstance(ICUErrorCode& status);
    /// Patterns are not checked here: letters that mean nothing are found when the format is used.
    [[nodiscard]] static std::unique_ptr<ICUSimpleDateFormat>
    createInstance(TStringView pattern, ICULocale const& locale, ICUErrorCode& status);
    /// For the default locale.
    [[nodiscard]] static std::unique_ptr<ICUSimpleDateFormat> createInstance(TStringView pattern, ICUErrorCode& status);
    /// UTF-8; malformed bytes become U+FFFD. A null pattern, here as above, is empty.
    [[nodiscard]] static std::unique_ptr<ICUSimpleDateFormat>
    createInstance(char const* pattern, ICULocale const& locale, ICUErrorCode& status);
    /// wchar_t const* and arrays of it.
    template<qvxsys::detail::WidePointer W>
    [[nodiscard]] static std::unique_ptr<ICUSimpleDateFormat> createInstance(W const& pattern, ICULocale const& locale,
                                                                             ICUErrorCode& status)
    {
        return createInstance(TStringView(qvxsys::detail::WideText(pattern)), locale, status);
    }
    /// The pattern is only read.
    [[nodiscard]] static std::unique_ptr<ICUSimpleDateFormat> createInstance(std::u16string& pattern,
                                                                             ICUErrorCode& status);
    [[nodiscard]] static std::unique_ptr<ICUSimpleDateFormat>
    createInstance(std::u16string& pattern, ICULocale const& locale, ICUErrorCode& status);
    /// With names of one's own, which are copied; otherwise of the default locale. IllegalArgumentError for symbols
    /// that ICU did not make.
    [[nodiscard]] static std::unique_ptr<ICUSimpleDateFormat>
    createInstance(TStringView pattern, ICUDateFormatSymbols const& symbols, ICUErrorCode& status);
    /// A copy, as clone() makes it.
    [[nodiscard]] static std::unique_ptr<ICUSimpleDateFormat> createInstance(ICUSimpleDateFormat const& other);
    /// A copy of a format made for a style, whose pattern can then be read and changed. IllegalArgumentError if that
    /// has no pattern.
    [[nodiscard]] static std::unique_ptr<ICUSimpleDateFormat> createFromDateFormat(ICUDateFormat const& format,
                                                                                   ICUErrorCode& status);

    ~ICUSimpleDateFormat() override;

    /// The pattern.
    [[nodiscard]] virtual TStringCore toPattern() const = 0;
    /// With the locale's own letters for the fields.
    [[nodiscard]] virtual TStringCore toLocalizedPattern(ICUErrorCode& status) const = 0;
    /// Not checked, as with createInstance().
    virtual void applyPattern(TStringView pattern) = 0;
    /// Sets the pattern, in the letters of the locale.
    virtual void applyLocalizedPattern(TStringView pattern, ICUErrorCode& status) = 0;
    /// The moment from which on a hundred years can be written with two digits.
    [[nodiscard]] virtual double get2DigitYearStart(ICUErrorCode& status) const = 0;
    /// At first 80 years before the format was made. Not a number: IllegalArgumentError.
    virtual void set2DigitYearStart(double millis, ICUErrorCode& status) = 0;
    /// A copy.
    [[nodiscard]] virtual std::unique_ptr<ICUDateFormatSymbols> getDateFormatSymbols(ICUErrorCode& status) const = 0;
    /// Takes a copy. IllegalArgumentError for symbols that ICU did not make.
    virtual void setDateFormatSymbols(ICUDateFormatSymbols const& symbols, ICUErrorCode& status) = 0;

protected:
    ICUSimpleDateFormat() = default;
    ICUSimpleDateFormat(ICUSimpleDateFormat const&) = default;
    ICUSimpleDateFormat& operator=(ICUSimpleDateFormat const&) = default;
};

} // namespace QvxICU
