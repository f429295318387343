#pragma once
// Regular expressions in ICU's syntax, compiled once. Matching is done by matchers (ICURegexMatcher.h).
//
//     QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
//     auto const pattern = QvxICU::ICURegexPattern::createInstance(u"(?<key>\\w+)=(\\d*)", 0, status);
//     auto const matcher = pattern->matcher(text, status);
//     while (matcher->find(status)) {
//         values[matcher->group(u"key", status)] = matcher->group(2, status);
//     }
//     if (QvxICU::ICU_FAILURE(status)) { ... } // a bad pattern, no such group, or a limit was hit
//
// As everywhere in this layer nothing happens when the status is a failure already, so one look at the end is enough.
//
// Matchers keep what they need of a pattern alive: the wrapper may end before them. Matching has limits by default, so
// that no pattern and no text can hang a program or use up its memory; ICURegexMatcher.h tells what they are.

#include <memory>
#include <vector>

#include <qvxsys/ICURegexMatcher.h>
#include <qvxsys/ICUString.h>
#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>
#include <qvxsys/WideText.h>

namespace QvxICU {

/// Never changes: may be used from any number of threads at once, each with matchers of its own. A clone shares the
/// compiled pattern.
class QVXSYS_API ICURegexPattern
{
public:
    /// @name Making
    /// `flags` are ICURegexpFlag values combined. A pattern that is none leaves ICU's status (RegexRuleSyntax,
    /// RegexMismatchedParen, RegexInvalidFlag...), which all operations of the wrapper then report.
    /// @{
    [[nodiscard]] static std::unique_ptr<ICURegexPattern> createInstance(ICUString const& pattern, unsigned flags,
                                                                         ICUErrorCode& status);
    [[nodiscard]] static std::unique_ptr<ICURegexPattern> createInstance(TStringCore const& pattern, unsigned flags,
                                                                         ICUErrorCode& status);
    /// Also tells where in the pattern the error is.
    [[nodiscard]] static std::unique_ptr<ICURegexPattern> createInstance(ICUString const& pattern, unsigned flags,
                                                                         ICUParseError& error, ICUErrorCode& status);
    [[nodiscard]] static std::unique_ptr<ICURegexPattern> createInstance(TStringCore const& pattern, unsigned flags,
                                                                         ICUParseError& error, ICUErrorCode& status);
    /// @}

    virtual ~ICURegexPattern();

    [[nodiscard]] virtual std::unique_ptr<ICURegexPattern> clone() const = 0;
    /// Same text and same flags.
    [[nodiscard]] virtual bool operator==(ICURegexPattern const& other) const = 0;
    /// What the pattern was made with; flags that stand in its text ("(?i)") are not among them.
    [[nodiscard]] virtual unsigned flags() const = 0;
    /// The pattern's text; empty for a failed one.
    [[nodiscard]] virtual TStringCore pattern() const = 0;
    /// RegexInvalidCaptureGroupName, and 0, for a name that the pattern has not.
    [[nodiscard]] virtual int groupNumberFromName(TStringCore const& name, ICUErrorCode& status) const = 0;

    /// @name Matchers
    /// See ICURegexMatcher.h for how long the text must live. A failed pattern makes a matcher that reports its status.
    /// @{
    /// Reads the text in place: it must outlive the matcher, or the matcher's next reset with another text.
    [[nodiscard]] virtual std::unique_ptr<ICURegexMatcher> matcher(TStringView text QVXSYS_LIFETIME_BOUND,
                                                                   ICUErrorCode& status) const = 0;
    /// Holds the string's text: what happens to the ICUString afterwards does not matter. No units are copied unless
    /// the text is short or an alias.
    [[nodiscard]] virtual std::unique_ptr<ICURegexMatcher> matcher(ICUString const& text,
                                                                   ICUErrorCode& status) const = 0;
    /// Holds the string, sharing its block. Wide text comes here, too.
    template<RegexHeldText T>
    [[nodiscard]] std::unique_ptr<ICURegexMatcher> matcher(T const& text, ICUErrorCode& status) const
    {
        return matcherHolding(text, status);
    }
    [[nodiscard]] virtual std::unique_ptr<ICURegexMatcher> matcherHolding(TStringCore text,
                                                                          ICUErrorCode& status) const = 0;
    /// @}

    /// @name Without a matcher
    /// With the default limits.
    /// @{
    /// Whether the pattern matches the whole text.
    [[nodiscard]] virtual bool matches(TStringView text, ICUErrorCode& status) const = 0;
    template<qvxsys::detail::WideTextLike W>
    [[nodiscard]] bool matches(W const& text, ICUErrorCode& status) const
    {
        return matches(TStringCore(text).view(), status);
    }
    /// As ICURegexMatcher::split.
    [[nodiscard]] virtual std::vector<TStringCore> split(TStringView text, ICUErrorCode& status,
                                                         int limit = 0) const = 0;
    template<qvxsys::detail::WideTextLike W>
    [[nodiscard]] std::vector<TStringCore> split(W const& text, ICUErrorCode& status, int limit = 0) const
    {
        return split(TStringCore(text).view(), status, limit);
    }
    /// @}

    /// For the library's own use: the icu::RegexPattern behind the wrapper, not to be changed, or null.
    [[nodiscard]] virtual void* Native() noexcept = 0;

protected:
    ICURegexPattern() = default;
    ICURegexPattern(ICURegexPattern const&) = default;
    ICURegexPattern& operator=(ICURegexPattern const&) = default;
};

} // namespace QvxICU
