#pragma once
// A locale: a language with its script, country, variant and keywords, and what belongs to it by name.
//
//     auto const locale = QvxICU::ICULocale::createFromName("de_CH");
//     TStringCore const name = locale->getDisplayName();    // in the words of the default locale
//     QvxICU::ICULocale const copy = *locale;               // shares the locale with *locale
//
//     QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
//     locale->setKeywordValue("collation", "phonebook", status);     // *locale only, not the copy
//     std::string const tag = locale->toLanguageTag(status);         // "de-CH-u-co-phonebk"
//
// Names are 8-bit and as ICU has them ("sr_Latn_RS", "de@collation=phonebook"); BCP 47 tags ("sr-Latn-RS") are
// understood too. Every text is a valid name: what ICU does not know falls back to parents and in the end to the root
// locale. Only what cannot be a name at all (a part of more than some hundred bytes, for instance) gives a bogus
// locale, which has empty parts; where a locale is asked for, it is the root locale.
//
// Ownership. The create functions hand a wrapper over to the caller, as a std::unique_ptr. Copies, clones and what is
// assigned share one ICU locale, which lives as long as the last of them; it never changes: an operation that changes a
// wrapper gives this wrapper an ICU locale of its own. A copy costs two small allocations.
//
// Names handed out as `char const*` belong to the wrapper, and are valid until it is changed, assigned to or ends.
// Statuses: as in ICU, a function that is given a failed status does nothing, and its result is empty.

#include <any>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>

namespace QvxICU44 {
class ICULocale44Impl;
}

namespace QvxICU {

/// A wrapper may be read and copied from several threads at once, and changed by one that no other uses it beside;
/// copies are independent of each other.
class QVXSYS_API ICULocale
{
public:
    /// @name Creation
    /// @{
    /// The default locale, by what it is at the time of the call.
    [[nodiscard]] static std::unique_ptr<ICULocale> createInstance();
    /// From its parts; null for those that are not wanted. Without language, country and variant it is the default
    /// locale. Keywords: "collation=phonebook;currency=EUR".
    [[nodiscard]] static std::unique_ptr<ICULocale> createInstance(char const* language, char const* country = nullptr,
                                                                   char const* variant = nullptr,
                                                                   char const* keywords = nullptr);
    /// From a whole name; null means the default locale.
    [[nodiscard]] static std::unique_ptr<ICULocale> createFromName(char const* name);
    /// The same, with the name brought into its canonical form, which replaces what is obsolete ("iw_IL" is "he_IL",
    /// "sh_YU" is "sr_Latn_RS", "en_US.utf8" is "en_US").
    [[nodiscard]] static std::unique_ptr<ICULocale> createCanonical(char const* name);
    /// From a BCP 47 tag. A tag that is not well-formed gives IllegalArgumentError and a bogus locale.
    [[nodiscard]] static std::unique_ptr<ICULocale> forLanguageTag(char const* tag, ICUErrorCode& status);
    /// The default locale, as createInstance().
    [[nodiscard]] static std::unique_ptr<ICULocale> getDefault();
    [[nodiscard]] static std::unique_ptr<ICULocale> getRoot();
    /// Makes it the default of the process, which ICU's functions without a locale use from now on. Locales that were
    /// made from the former one stay what they are. Thread-safe, yet best done before threads are started.
    static void setDefault(ICULocale const& locale, ICUErrorCode& status);
    /// All that ICU has data of; `count` is their number. Hundreds of locales: keep them.
    [[nodiscard]] static std::vector<std::unique_ptr<ICULocale>> getAvailableLocales(int& count);
    /// @}

    /// @name ICU's constants
    /// They are made at the first use of one and live as long as the process.
    /// @{
    [[nodiscard]] static ICULocale const& getEnglish();
    [[nodiscard]] static ICULocale const& getFrench();
    [[nodiscard]] static ICULocale const& getGerman();
    [[nodiscard]] static ICULocale const& getItalian();
    [[nodiscard]] static ICULocale const& getJapanese();
    [[nodiscard]] static ICULocale const& getKorean();
    [[nodiscard]] static ICULocale const& getChinese();
    [[nodiscard]] static ICULocale const& getSimplifiedChinese();
    [[nodiscard]] static ICULocale const& getTraditionalChinese();
    [[nodiscard]] static ICULocale const& getFrance();
    [[nodiscard]] static ICULocale const& getGermany();
    [[nodiscard]] static ICULocale const& getItaly();
    [[nodiscard]] static ICULocale const& getJapan();
    [[nodiscard]] static ICULocale const& getKorea();
    [[nodiscard]] static ICULocale const& getChina();
    [[nodiscard]] static ICULocale const& getPRC();
    [[nodiscard]] static ICULocale const& getTaiwan();
    [[nodiscard]] static ICULocale const& getUK();
    [[nodiscard]] static ICULocale const& getUS();
    [[nodiscard]] static ICULocale const& getCanada();
    [[nodiscard]] static ICULocale const& getCanadaFrench();
    /// @}

    /// @name Lists of codes, sorted; static data
    /// @{
    /// Of ISO 3166, two letters in upper case.
    [[nodiscard]] static std::span<char const* const> getISOCountries() noexcept;
    /// Of ISO 639, two letters, or three where there are no two.
    [[nodiscard]] static std::span<char const* const> getISOLanguages() noexcept;
    /// @}

    /// The default locale, as createInstance().
    ICULocale();
    ICULocale(ICULocale const&);
    ICULocale& operator=(ICULocale const&);
    virtual ~ICULocale();

    [[nodiscard]] virtual std::unique_ptr<ICULocale> clone() const;
    /// Whether the names are equal; "de_CH" and "de-CH" give the same name, "zh_CN" and "zh_Hans_CN" do not.
    [[nodiscard]] virtual bool operator==(ICULocale const& other) const noexcept;

    /// @name Names and parts
    /// What is missing is "".
    /// @{
    /// The BCP 47 tag: "sr-Latn-RS"; "und" for the root locale. What cannot be told in a tag is left out.
    [[nodiscard]] virtual std::string toLanguageTag(ICUErrorCode& status) const;
    /// In lower case: "sr".
    [[nodiscard]] virtual char const* getLanguage() const noexcept QVXSYS_LIFETIME_BOUND;
    /// "Latn".
    [[nodiscard]] virtual char const* getScript() const noexcept QVXSYS_LIFETIME_BOUND;
    /// In upper case: "RS".
    [[nodiscard]] virtual char const* getCountry() const noexcept QVXSYS_LIFETIME_BOUND;
    /// In upper case: "POSIX".
    [[nodiscard]] virtual char const* getVariant() const noexcept QVXSYS_LIFETIME_BOUND;
    /// The whole name: "de_CH@currency=EUR".
    [[nodiscard]] virtual char const* getName() const noexcept QVXSYS_LIFETIME_BOUND;
    /// The name without keywords: "de_CH".
    [[nodiscard]] virtual char const* getBaseName() const noexcept QVXSYS_LIFETIME_BOUND;
    /// Three letters of ISO 639-2: "srp"; "" where there are none.
    [[nodiscard]] virtual char const* getISO3Language() const noexcept;
    /// Three letters of ISO 3166: "SRB"; "" where there are none.
    [[nodiscard]] virtual char const* getISO3Country() const noexcept;
    /// The number that Windows has for it, 0x0409 for "en_US"; 0 where there is none.
    [[nodiscard]] virtual unsigned getLCID() const noexcept;
    /// Whether it is written from right to left, by its script or the likely one.
    [[nodiscard]] virtual bool isRightToLeft() const noexcept;
    /// @}

    /// @name Changes of the whole name
    /// @{
    /// "en" becomes "en_Latn_US": what is most likely meant where nothing is said.
    virtual void addLikelySubtags(ICUErrorCode& status);
    /// The shortest name that addLikelySubtags() would make the same of: "zh_Hant_TW" becomes "zh_TW".
    virtual void minimizeSubtags(ICUErrorCode& status);
    /// As createCanonical() does.
    virtual void canonicalize(ICUErrorCode& status);
    /// Makes it a locale that is none.
    virtual void setToBogus();
    [[nodiscard]] virtual bool isBogus() const noexcept;
    /// @}

    /// @name Keywords
    /// By ICU's names and values ("collation", "phonebook") or, as Unicode keywords, by those of BCP 47 ("co",
    /// "phonebk").
    /// @{
    /// The names, sorted.
    [[nodiscard]] virtual std::vector<std::string> getKeywords(ICUErrorCode& status) const;
    [[nodiscard]] virtual std::vector<std::string> getUnicodeKeywords(ICUErrorCode& status) const;
    /// "" for a keyword that is not set. A name that cannot be one gives IllegalArgumentError.
    [[nodiscard]] virtual std::string getKeywordValue(char const* name, ICUErrorCode& status) const;
    [[nodiscard]] virtual std::string getUnicodeKeywordValue(char const* name, ICUErrorCode& status) const;
    /// An empty or null value removes the keyword. Names and values that cannot be ones give IllegalArgumentError.
    virtual void setKeywordValue(char const* name, char const* value, ICUErrorCode& status);
    virtual void setUnicodeKeywordValue(char const* name, char const* value, ICUErrorCode& status);
    /// @}

    /// @name Names for people
    /// In the words of the default locale, or of the one given. A part that ICU has no word for is shown as it is
    /// ("xx"), a missing part as "". They read ICU's data: some microseconds.
    /// @{
    [[nodiscard]] virtual TStringCore getDisplayLanguage() const;
    [[nodiscard]] virtual TStringCore getDisplayLanguage(ICULocale const& inLocale) const;
    [[nodiscard]] virtual TStringCore getDisplayScript() const;
    [[nodiscard]] virtual TStringCore getDisplayScript(ICULocale const& inLocale) const;
    [[nodiscard]] virtual TStringCore getDisplayCountry() const;
    [[nodiscard]] virtual TStringCore getDisplayCountry(ICULocale const& inLocale) const;
    [[nodiscard]] virtual TStringCore getDisplayVariant() const;
    [[nodiscard]] virtual TStringCore getDisplayVariant(ICULocale const& inLocale) const;
    /// All parts and keywords: "German (Switzerland, Currency=Euro)".
    [[nodiscard]] virtual TStringCore getDisplayName() const;
    [[nodiscard]] virtual TStringCore getDisplayName(ICULocale const& inLocale) const;
    /// @}

    /// Equal for equal locales; not the same in every version of ICU.
    [[nodiscard]] virtual int hashCode() const noexcept;

    /// For the library's own use: what this wrapper stands for.
    [[nodiscard]] QvxICU44::ICULocale44Impl const& Implementation() const noexcept;

private:
    explicit ICULocale(std::shared_ptr<QvxICU44::ICULocale44Impl> implementation);

    std::any m_implementation; ///< a std::shared_ptr<QvxICU44::ICULocale44Impl>
};

} // namespace QvxICU
