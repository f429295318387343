#pragma once
// Text from one script to another, and other rewriting by rule: letters without accents, names for characters, full
// width to half width, one's own rules.
//
//     QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
//     auto const toLatin = QvxICU::ICUTransliterator::createInstance(
//         u"Any-Latin; Latin-ASCII", QvxICU::ICUTransDirection::Forward, status);
//     TStringCore const text = toLatin->transliterate(u"Москва");    // "Moskva"
//
//     QvxICU::ICUParseError error;
//     auto const quotes = QvxICU::ICUTransliterator::createInstanceFromRules(
//         u"My-Quotes", u"'<<' > «; '>>' > »;", QvxICU::ICUTransDirection::Forward, error, status);
//
// An ICUTransliterator that could not be made is an object all the same; its operations leave texts as they are and
// report the status of its making where they report any.

#include <memory>
#include <vector>

#include <qvxsys/ICULocale.h>
#include <qvxsys/ICUString.h>
#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>
#include <qvxsys/WideText.h>

namespace QvxICU {

/// What part of a text is to be worked on, in units: rules see the text from contextStart to contextLimit and change
/// what is between start and limit. 0 <= contextStart <= start <= limit <= contextLimit <= length.
struct ICUTransPosition
{
    /// Where what is looked at begins.
    int contextStart = 0;
    /// Where what is looked at ends.
    int contextLimit = 0;
    /// Where what may be changed begins.
    int start = 0;
    /// Where what may be changed ends.
    int limit = 0;
};

/// May be used from several threads at once as long as none changes the filter. Rules are run one at a time in the
/// whole process: ICU has one lock for them.
class QVXSYS_API ICUTransliterator
{
public:
    /// @name Making
    /// Ids and rules are any text: UTF-16, wide or UTF-8. It takes milliseconds to load rules: keep what was made.
    /// @{
    /// From an id ("Greek-Latin"), several in a row ("NFD; [:Mn:] Remove; NFC"), each with a filter or not. InvalidId
    /// for one that is unknown or malformed.
    [[nodiscard]] static std::unique_ptr<ICUTransliterator>
    createInstance(TStringCore const& id, ICUTransDirection direction, ICUErrorCode& status);
    /// From rules of one's own, known by the id to this object only. `error` tells where bad rules are wrong;
    /// MalformedRule for more than 5,000 opening parentheses. Rules are programs: those that double what they
    /// read ("(a+) > | $1 $1;") take time and memory without bound, so none are to be taken from strangers.
    [[nodiscard]] static std::unique_ptr<ICUTransliterator>
    createInstanceFromRules(TStringCore const& id, TStringCore const& rules, ICUTransDirection direction,
                            ICUParseError& error, ICUErrorCode& status);
    /// All ids that ICU has rules for, in its order: some hundreds.
    [[nodiscard]] static std::vector<TStringCore> getAvailableIDs(ICUErrorCode& status);
    /// An id's name in the words of a locale ("Greek to Latin"). It need not be known.
    [[nodiscard]] static TStringCore getDisplayName(TStringCore const& id, ICULocale const& locale);
    /// @}

    virtual ~ICUTransliterator();

    [[nodiscard]] virtual std::unique_ptr<ICUTransliterator> clone() const = 0;
    /// How the making went. Stays as it is.
    [[nodiscard]] virtual ICUErrorCode getCreationStatus() const noexcept = 0;

    /// @name Whole texts
    /// @{
    [[nodiscard]] virtual TStringCore transliterate(TStringView text) const = 0;
    template<qvxsys::detail::WideTextLike W>
    [[nodiscard]] TStringCore transliterate(W const& text) const
    {
        return transliterate(TStringCore(text).view());
    }
    /// In place.
    virtual void transliterate(ICUString& text) const = 0;
    /// In place, from start up to limit, which no rule looks beyond; returns the new limit, or -1 when they are not in
    /// order or outside of the text.
    virtual int transliterate(ICUString& text, int start, int limit) const = 0;
    /// @}

    /// @name As text is typed
    /// Works on what is between position.start and position.limit and stops where more text could change the result;
    /// moves start behind what is done. IllegalArgumentError for positions that are not in order or outside of the
    /// text.
    /// @{
    virtual void transliterate(ICUString& text, ICUTransPosition& position, ICUErrorCode& status) const = 0;
    /// Inserts at position.limit first.
    virtual void transliterate(ICUString& text, ICUTransPosition& position, TStringView insertion,
                               ICUErrorCode& status) const = 0;
    virtual void transliterate(ICUString& text, ICUTransPosition& position, char32_t insertion,
                               ICUErrorCode& status) const = 0;
    /// Does what the others have left because more text could have come.
    virtual void finishTransliteration(ICUString& text, ICUTransPosition& position) const = 0;
    /// The units before a position that rules may look at.
    [[nodiscard]] virtual int getMaximumContextLength() const = 0;
    /// @}

    /// @name What it is
    /// @{
    [[nodiscard]] virtual TStringCore getID() const = 0;
    /// In the words of the default locale, or of one given.
    [[nodiscard]] virtual TStringCore getDisplayName() const = 0;
    [[nodiscard]] virtual TStringCore getDisplayName(ICULocale const& locale) const = 0;
    /// The other direction, as ICU knows it by id. InvalidId where there is none.
    [[nodiscard]] virtual std::unique_ptr<ICUTransliterator> createInverse(ICUErrorCode& status) const = 0;
    /// Rules that make such a transliterator; with escapeUnprintable only of printable ASCII.
    [[nodiscard]] virtual TStringCore toRules(bool escapeUnprintable) const = 0;
    /// The set, as a pattern, of the characters that may be changed; empty where there is no filter.
    [[nodiscard]] virtual TStringCore getFilter() const = 0;
    /// A pattern of a set ("[:Greek:]"), empty text for no filter. A bad pattern (MalformedSet, IllegalArgumentError)
    /// changes nothing.
    virtual void setFilter(TStringCore const& pattern, ICUErrorCode& status) = 0;
    /// The characters that it may change, and those that it may produce, as patterns of sets.
    [[nodiscard]] virtual TStringCore getSourceSet() const = 0;
    [[nodiscard]] virtual TStringCore getTargetSet() const = 0;
    /// @}

    /// For the library's own use: the icu::Transliterator behind the wrapper, or null.
    [[nodiscard]] virtual void* Native() noexcept = 0;

protected:
    ICUTransliterator() = default;
    ICUTransliterator(ICUTransliterator const&) = default;
    ICUTransliterator& operator=(ICUTransliterator const&) = default;
};

} // namespace QvxICU
