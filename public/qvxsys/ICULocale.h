#pragma once
// A locale: a language with its script, country, variant and keywords, and what belongs to it by name.
//
//     auto const locale = QvxICU::ICULocale::createFromName("de_CH");
//     TStringCore const name = locale->getDisplayName();    // in the words of the default locale
//     QvxICU::ICULocale const copy = *locale;               // shares the locale with *locale
//
// Names are 8-bit and as ICU has them ("sr_Latn_RS", "de@collation=phonebook"); BCP 47 tags ("sr-Latn-RS") are
// understood too. Every text is a valid name: what ICU does not know falls back to parents and in the end to the root
// locale.

#include <any>
#include <memory>

#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>

namespace QvxICU44 {
class ICULocale44Impl;
}

namespace QvxICU {

/// Copies share one ICU locale; it is never changed while shared. May be read from several threads at once.
class QVXSYS_API ICULocale
{
public:
    /// The default locale, by what it is at the time of the call.
    [[nodiscard]] static std::unique_ptr<ICULocale> createInstance();
    /// From its parts; null for those that are not wanted.
    [[nodiscard]] static std::unique_ptr<ICULocale> createInstance(char const* language, char const* country = nullptr,
                                                                   char const* variant = nullptr,
                                                                   char const* keywords = nullptr);
    /// From a whole name; null means the default locale.
    [[nodiscard]] static std::unique_ptr<ICULocale> createFromName(char const* name);

    /// The default locale, as createInstance().
    ICULocale();
    ICULocale(ICULocale const&);
    ICULocale& operator=(ICULocale const&);
    virtual ~ICULocale();

    /// The whole name: "de_CH@currency=EUR". Valid as long as the wrapper.
    [[nodiscard]] virtual char const* getName() const noexcept;

    /// For the library's own use: what this wrapper stands for.
    [[nodiscard]] QvxICU44::ICULocale44Impl const& Implementation() const noexcept;

private:
    explicit ICULocale(std::shared_ptr<QvxICU44::ICULocale44Impl> implementation);

    std::any m_implementation; ///< a std::shared_ptr<QvxICU44::ICULocale44Impl>
};

} // namespace QvxICU
