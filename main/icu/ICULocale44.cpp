// Locales over ICU.

#include <qvxsys/ICULocale.h>

#include <array>
#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>

#include <unicode/localpointer.h>
#include <unicode/locid.h>
#include <unicode/strenum.h>

#include "IcuBridge.h"

using QvxICU44::ICULocale44Impl;
using QvxICU44::Status;

namespace QvxICU44 {

/// The ICU locale behind the wrapper.
class ICULocale44Impl
{
public:
    explicit ICULocale44Impl(icu::Locale const& locale) : m_locale(locale) {}
    explicit ICULocale44Impl(icu::Locale&& locale) noexcept : m_locale(std::move(locale)) {}

    [[nodiscard]] icu::Locale const& Get() const noexcept { return m_locale; }
    [[nodiscard]] icu::Locale& Get() noexcept { return m_locale; }

private:
    icu::Locale m_locale;
};

namespace {

template<class Locale>
std::shared_ptr<ICULocale44Impl> Make(Locale&& locale)
{
    return std::make_shared<ICULocale44Impl>(std::forward<Locale>(locale));
}

/// A locale that a change was made to. Always a new one: whether the old one is shared can only be known of what other
/// threads do with their copies at this moment.
template<class Change>
std::shared_ptr<ICULocale44Impl> Changed(ICULocale44Impl const& from, Change change)
{
    auto changed = Make(from.Get());
    change(changed->Get());
    return changed;
}

icu::StringPiece Piece(char const* text)
{
    return icu::StringPiece(text == nullptr ? "" : text);
}

/// ICU hands out no enumeration where there is nothing to enumerate.
std::vector<std::string> Names(icu::StringEnumeration* created, UErrorCode& status)
{
    icu::LocalPointer<icu::StringEnumeration> const names(created);
    std::vector<std::string> all;
    if (names.isValid()) {
        std::int32_t length = 0;
        while (char const* const name = names->next(&length, status)) {
            all.emplace_back(name, static_cast<std::size_t>(length));
        }
    }
    return all;
}

std::span<char const* const> List(char const* const* terminated) noexcept
{
    std::size_t count = 0;
    while (terminated[count] != nullptr) {
        ++count;
    }
    return {terminated, count};
}

enum Constant : std::size_t {
    kRoot,
    kEnglish,
    kFrench,
    kGerman,
    kItalian,
    kJapanese,
    kKorean,
    kChinese,
    kSimplifiedChinese,
    kTraditionalChinese,
    kFrance,
    kGermany,
    kItaly,
    kJapan,
    kKorea,
    kChina,
    kPRC,
    kTaiwan,
    kUK,
    kUS,
    kCanada,
    kCanadaFrench,
};

using IcuLocale = icu::Locale;
constexpr IcuLocale const& (*kConstants[])() = {
    IcuLocale::getRoot,
    IcuLocale::getEnglish,
    IcuLocale::getFrench,
    IcuLocale::getGerman,
    IcuLocale::getItalian,
    IcuLocale::getJapanese,
    IcuLocale::getKorean,
    IcuLocale::getChinese,
    IcuLocale::getSimplifiedChinese,
    IcuLocale::getTraditionalChinese,
    IcuLocale::getFrance,
    IcuLocale::getGermany,
    IcuLocale::getItaly,
    IcuLocale::getJapan,
    IcuLocale::getKorea,
    IcuLocale::getChina,
    IcuLocale::getPRC,
    IcuLocale::getTaiwan,
    IcuLocale::getUK,
    IcuLocale::getUS,
    IcuLocale::getCanada,
    IcuLocale::getCanadaFrench,
};
static_assert(std::size(kConstants) == kCanadaFrench + 1);

} // namespace

icu::Locale const& Icu(QvxICU::ICULocale const& locale) noexcept
{
    icu::Locale const& own = locale.Implementation().Get();
    return own.isBogus() ? icu::Locale::getRoot() : own;
}

} // namespace QvxICU44

namespace QvxICU {

using namespace QvxICU44;

namespace {

/// All are made at once, and never freed: threads may still use them at exit.
ICULocale const& ConstantLocale(Constant constant)
{
    using All = std::array<ICULocale, std::size(kConstants)>;
    static All const& all = *[] {
        auto made = std::make_unique<All>();
        for (std::size_t i = 0; i < made->size(); ++i) {
            (*made)[i] = *ICULocale::createFromName(kConstants[i]().getName());
        }
        return made.release();
    }();
    return all[constant];
}

} // namespace

ICULocale::ICULocale() : ICULocale(Make(icu::Locale()))
{}

ICULocale::ICULocale(std::shared_ptr<ICULocale44Impl> implementation) : m_implementation(std::move(implementation))
{}

ICULocale::ICULocale(ICULocale const&) = default;
ICULocale& ICULocale::operator=(ICULocale const&) = default;
ICULocale::~ICULocale() = default;

std::unique_ptr<ICULocale> ICULocale::createInstance()
{
    return std::make_unique<ICULocale>();
}

std::unique_ptr<ICULocale> ICULocale::createInstance(char const* language, char const* country, char const* variant,
                                                     char const* keywords)
{
    return std::unique_ptr<ICULocale>(new ICULocale(Make(icu::Locale(language, country, variant, keywords))));
}

std::unique_ptr<ICULocale> ICULocale::createFromName(char const* name)
{
    return std::unique_ptr<ICULocale>(new ICULocale(Make(icu::Locale::createFromName(name))));
}

std::unique_ptr<ICULocale> ICULocale::createCanonical(char const* name)
{
    return std::unique_ptr<ICULocale>(new ICULocale(Make(icu::Locale::createCanonical(name))));
}

std::unique_ptr<ICULocale> ICULocale::forLanguageTag(char const* tag, ICUErrorCode& status)
{
    return std::unique_ptr<ICULocale>(new ICULocale(Make(icu::Locale::forLanguageTag(Piece(tag), Status(status)))));
}

std::unique_ptr<ICULocale> ICULocale::getDefault()
{
    return createInstance();
}

std::unique_ptr<ICULocale> ICULocale::getRoot()
{
    return ConstantLocale(kRoot).clone();
}

void ICULocale::setDefault(ICULocale const& locale, ICUErrorCode& status)
{
    icu::Locale::setDefault(Icu(locale), Status(status));
}

std::vector<std::unique_ptr<ICULocale>> ICULocale::getAvailableLocales(int& count)
{
    count = 0;
    icu::Locale const* const available = icu::Locale::getAvailableLocales(count);
    std::vector<std::unique_ptr<ICULocale>> locales;
    locales.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        locales.emplace_back(new ICULocale(Make(available[i])));
    }
    return locales;
}

#define QVX_CONSTANT_LOCALE(name)                                                                                      \
    ICULocale const& ICULocale::get##name()                                                                            \
    {                                                                                                                  \
        return ConstantLocale(k##name);                                                                                \
    }
QVX_CONSTANT_LOCALE(English)
QVX_CONSTANT_LOCALE(French)
QVX_CONSTANT_LOCALE(German)
QVX_CONSTANT_LOCALE(Italian)
QVX_CONSTANT_LOCALE(Japanese)
QVX_CONSTANT_LOCALE(Korean)
QVX_CONSTANT_LOCALE(Chinese)
QVX_CONSTANT_LOCALE(SimplifiedChinese)
QVX_CONSTANT_LOCALE(TraditionalChinese)
QVX_CONSTANT_LOCALE(France)
QVX_CONSTANT_LOCALE(Germany)
QVX_CONSTANT_LOCALE(Italy)
QVX_CONSTANT_LOCALE(Japan)
QVX_CONSTANT_LOCALE(Korea)
QVX_CONSTANT_LOCALE(China)
QVX_CONSTANT_LOCALE(PRC)
QVX_CONSTANT_LOCALE(Taiwan)
QVX_CONSTANT_LOCALE(UK)
QVX_CONSTANT_LOCALE(US)
QVX_CONSTANT_LOCALE(Canada)
QVX_CONSTANT_LOCALE(CanadaFrench)
#undef QVX_CONSTANT_LOCALE

std::span<char const* const> ICULocale::getISOCountries() noexcept
{
    static std::span<char const* const> const list = List(icu::Locale::getISOCountries());
    return list;
}

std::span<char const* const> ICULocale::getISOLanguages() noexcept
{
    static std::span<char const* const> const list = List(icu::Locale::getISOLanguages());
    return list;
}

std::unique_ptr<ICULocale> ICULocale::clone() const
{
    return std::make_unique<ICULocale>(*this);
}

bool ICULocale::operator==(ICULocale const& other) const noexcept
{
    return Implementation().Get() == other.Implementation().Get();
}

std::string ICULocale::toLanguageTag(ICUErrorCode& status) const
{
    return Implementation().Get().toLanguageTag<std::string>(Status(status));
}

char const* ICULocale::getLanguage() const noexcept
{
    return Implementation().Get().getLanguage();
}

char const* ICULocale::getScript() const noexcept
{
    return Implementation().Get().getScript();
}

char const* ICULocale::getCountry() const noexcept
{
    return Implementation().Get().getCountry();
}

char const* ICULocale::getVariant() const noexcept
{
    return Implementation().Get().getVariant();
}

char const* ICULocale::getName() const noexcept
{
    return Implementation().Get().getName();
}

char const* ICULocale::getBaseName() const noexcept
{
    return isBogus() ? "" : Implementation().Get().getBaseName(); // ICU's is null
}

char const* ICULocale::getISO3Language() const noexcept
{
    return Implementation().Get().getISO3Language();
}

char const* ICULocale::getISO3Country() const noexcept
{
    return Implementation().Get().getISO3Country();
}

unsigned ICULocale::getLCID() const noexcept
{
    return Implementation().Get().getLCID();
}

bool ICULocale::isRightToLeft() const noexcept
{
    return Implementation().Get().isRightToLeft();
}

void ICULocale::addLikelySubtags(ICUErrorCode& status)
{
    m_implementation = Changed(Implementation(), [&](icu::Locale& own) { own.addLikelySubtags(Status(status)); });
}

void ICULocale::minimizeSubtags(ICUErrorCode& status)
{
    m_implementation = Changed(Implementation(), [&](icu::Locale& own) { own.minimizeSubtags(Status(status)); });
}

void ICULocale::canonicalize(ICUErrorCode& status)
{
    m_implementation = Changed(Implementation(), [&](icu::Locale& own) { own.canonicalize(Status(status)); });
}

void ICULocale::setToBogus()
{
    m_implementation = Changed(Implementation(), [](icu::Locale& own) { own.setToBogus(); });
}

bool ICULocale::isBogus() const noexcept
{
    return Implementation().Get().isBogus();
}

std::vector<std::string> ICULocale::getKeywords(ICUErrorCode& status) const
{
    Status code(status);
    return Names(Implementation().Get().createKeywords(code), code);
}

std::vector<std::string> ICULocale::getUnicodeKeywords(ICUErrorCode& status) const
{
    Status code(status);
    return Names(Implementation().Get().createUnicodeKeywords(code), code);
}

std::string ICULocale::getKeywordValue(char const* name, ICUErrorCode& status) const
{
    return Implementation().Get().getKeywordValue<std::string>(Piece(name), Status(status));
}

std::string ICULocale::getUnicodeKeywordValue(char const* name, ICUErrorCode& status) const
{
    return Implementation().Get().getUnicodeKeywordValue<std::string>(Piece(name), Status(status));
}

void ICULocale::setKeywordValue(char const* name, char const* value, ICUErrorCode& status)
{
    m_implementation = Changed(
        Implementation(), [&](icu::Locale& own) { own.setKeywordValue(Piece(name), Piece(value), Status(status)); });
}

void ICULocale::setUnicodeKeywordValue(char const* name, char const* value, ICUErrorCode& status)
{
    m_implementation = Changed(Implementation(), [&](icu::Locale& own) {
        own.setUnicodeKeywordValue(Piece(name), Piece(value), Status(status));
    });
}

#define QVX_DISPLAY_NAME(what)                                                                                         \
    TStringCore ICULocale::getDisplay##what() const                                                                    \
    {                                                                                                                  \
        icu::UnicodeString text;                                                                                       \
        return Own(Implementation().Get().getDisplay##what(text));                                                     \
    }                                                                                                                  \
    TStringCore ICULocale::getDisplay##what(ICULocale const& inLocale) const                                           \
    {                                                                                                                  \
        icu::UnicodeString text;                                                                                       \
        return Own(Implementation().Get().getDisplay##what(Icu(inLocale), text));                                      \
    }
QVX_DISPLAY_NAME(Language)
QVX_DISPLAY_NAME(Script)
QVX_DISPLAY_NAME(Country)
QVX_DISPLAY_NAME(Variant)
QVX_DISPLAY_NAME(Name)
#undef QVX_DISPLAY_NAME

int ICULocale::hashCode() const noexcept
{
    return Implementation().Get().hashCode();
}

ICULocale44Impl const& ICULocale::Implementation() const noexcept
{
    return **std::any_cast<std::shared_ptr<ICULocale44Impl>>(&m_implementation);
}

} // namespace QvxICU
