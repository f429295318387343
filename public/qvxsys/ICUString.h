#pragma once
// A string of ICU's own, for operations that hand over or take back text many times without copying it. Wherever a text
// is only passed, TStringCore and TStringView do.
//
//     auto text = QvxICU::ICUString::createInstance(u"Stra\u00DFe");
//     text->toUpper();                              // by the rules of the default locale
//     TStringCore const own = text->toString();     // u"STRASSE"

#include <memory>

#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

namespace QvxICU {

/// A string may be read from several threads at once, and written to from one.
class QVXSYS_API ICUString
{
public:
    [[nodiscard]] static std::unique_ptr<ICUString> createInstance();
    /// From UTF-8; malformed bytes become U+FFFD. Null is the empty text.
    [[nodiscard]] static std::unique_ptr<ICUString> createInstance(char const* utf8);
    [[nodiscard]] static std::unique_ptr<ICUString> createInstance(wchar_t const* text);
    [[nodiscard]] static std::unique_ptr<ICUString> createInstance(TStringView text);
    /// Reads the text in place, which must outlive the string and must not change; the first change to the string makes
    /// a copy. The cheap way to hand a text to ICU.
    [[nodiscard]] static std::unique_ptr<ICUString> createAlias(TStringView text);

    virtual ~ICUString();

    [[nodiscard]] virtual std::unique_ptr<ICUString> clone() const = 0;
    /// In units.
    [[nodiscard]] virtual int length() const noexcept = 0;
    /// The text in place, not terminated; valid until the string is changed or ends.
    [[nodiscard]] virtual TStringView view() const noexcept = 0;
    [[nodiscard]] virtual TStringCore toString() const = 0;

    /// For the library's own use: the ICU string behind the wrapper.
    [[nodiscard]] virtual void* Native() noexcept = 0;

protected:
    ICUString() = default;
    ICUString(ICUString const&) = default;
    ICUString& operator=(ICUString const&) = default;
};

} // namespace QvxICU
