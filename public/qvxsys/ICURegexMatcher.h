#pragma once
// A regular expression at work on a text: finding, groups, replacing, splitting. Matchers are made by a pattern
// (ICURegexPattern::matcher).
//
//     auto const matcher = pattern->matcher(u"width=20 height=30", status);
//     while (matcher->find(status)) {
//         TStringView const value = matcher->groupView(2, status);   // in place: "20", "30"
//     }
//     TStringCore const swapped = matcher->replaceAll(u"$2=${key}", status);
//
// Texts. A TStringView or an array is read in place and never copied: it must stay as it is until the matcher ends or
// is reset with another text. A TStringCore or an ICUString is held: the matcher shares its text, so the string may be
// changed (which copies it then) or end. Replacements and names are needed during the call only. The pattern is held,
// too.
//
// Limits. A pattern like (a+)+b takes time that doubles with each character of a text of a's. Matching therefore has
// two limits, in force unless they are set otherwise:
//
//     time    kDefaultTimeLimit = 10,000 units of 10,000 steps (a step is a saved state of the search), and one unit
//             more for each 100 characters of the text, for each single search: RegexTimeOut when it takes more. That
//             is a few seconds at most. A search that goes once through the text takes a few steps a character and
//             never comes near, however long the text; the limit is not what all calls take together.
//     stack   kDefaultStackLimit = 32,000,000, in ICU's bytes; ICU counts half of what it takes, so up to 64 MB:
//             RegexStackOverflow when a search wants more. That is two million turns of a group, (?:ab|c)*, in one
//             match. The memory is taken as it is needed and kept until the matcher ends.
//
// setTimeLimit and setStackLimit change them, 0 meaning none. Looking at the time costs one call in 10,000 steps.
// After a limit was hit there is no current match; the matcher can be used on.
//
// Offsets are units. In a text with lone surrogates each counts as a character of its own. Starts and regions are taken
// as they are, also inside of a pair; the text of a group is always what is between its start and its end.

#include <concepts>
#include <memory>
#include <vector>

#include <qvxsys/ICUString.h>
#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>
#include <qvxsys/TextArguments.h>

namespace QvxICU {

class ICURegexPattern;

/// Text that a matcher holds.
template<class T>
concept RegexHeldText = std::same_as<T, TStringCore> || qvxsys::detail::WideTextLike<T>;

/// Used from one thread at a time. Operations that ask for a match when there is none report RegexInvalidState.
class QVXSYS_API ICURegexMatcher
{
public:
    /// The time limit of a new matcher.
    QVXSYS_API_CONSTANT static constexpr int kDefaultTimeLimit = 10'000;
    /// The stack limit of a new matcher.
    QVXSYS_API_CONSTANT static constexpr int kDefaultStackLimit = 32'000'000;

    virtual ~ICURegexMatcher();

    /// A matcher of the same pattern on the same text, held or in place as here, with the same region, bounds and
    /// limits, and no match yet.
    [[nodiscard]] virtual std::unique_ptr<ICURegexMatcher> clone() const = 0;
    /// The pattern that it matches.
    [[nodiscard]] virtual std::unique_ptr<ICURegexPattern> pattern() const = 0;
    /// The text in place.
    [[nodiscard]] virtual TStringView input() const = 0;

    /// @name Matching
    /// @{
    /// The next match in the region, behind the last one; after an empty match from the next character on.
    [[nodiscard]] virtual bool find(ICUErrorCode& status) = 0;
    /// The first match from `start` on; the region becomes the whole text. IndexOutOfBoundsError for a start outside.
    [[nodiscard]] virtual bool find(int start, ICUErrorCode& status) = 0;
    /// Whether the region begins with a match, of any length.
    [[nodiscard]] virtual bool lookingAt(ICUErrorCode& status) = 0;
    /// From `start` on; the region becomes the whole text. IndexOutOfBoundsError for a start outside.
    [[nodiscard]] virtual bool lookingAt(int start, ICUErrorCode& status) = 0;
    /// Whether the whole region is a match.
    [[nodiscard]] virtual bool matches(ICUErrorCode& status) = 0;
    /// From `start` on, as lookingAt.
    [[nodiscard]] virtual bool matches(int start, ICUErrorCode& status) = 0;
    /// Whether the last search came to the end of the text, so that more text could have changed its result.
    [[nodiscard]] virtual bool hitEnd() const = 0;
    /// Whether more text could turn the last match into none.
    [[nodiscard]] virtual bool requireEnd() const = 0;
    /// @}

    /// @name The match
    /// Group 0 is the whole match. A group that took no part is at -1 and empty, and so is any on failure.
    /// IndexOutOfBoundsError for a number beyond groupCount, RegexInvalidCaptureGroupName for an unknown name.
    /// @{
    /// The groups of the pattern, group 0 not counted.
    [[nodiscard]] virtual int groupCount() const = 0;
    [[nodiscard]] virtual TStringCore group(int group, ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual TStringCore group(TStringCore const& name, ICUErrorCode& status) const = 0;
    [[nodiscard]] TStringCore group(ICUErrorCode& status) const { return group(0, status); }
    /// In place: valid as long as the text is.
    [[nodiscard]] virtual TStringView groupView(int group, ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual int start(int group, ICUErrorCode& status) const = 0;
    [[nodiscard]] int start(ICUErrorCode& status) const { return start(0, status); }
    /// Behind the group's last unit.
    [[nodiscard]] virtual int end(int group, ICUErrorCode& status) const = 0;
    [[nodiscard]] int end(ICUErrorCode& status) const { return end(0, status); }
    /// @}

    /// @name Replacing and splitting
    /// In replacements $1 and ${name} stand for groups, and a backslash takes the next character as it is.
    /// IndexOutOfBoundsError and RegexInvalidCaptureGroupName for groups that the pattern has not.
    /// @{
    /// The text with all matches replaced. Resets the matcher first; the region becomes the whole text. Empty on
    /// failure.
    [[nodiscard]] virtual TStringCore replaceAll(TStringCore const& replacement, ICUErrorCode& status) = 0;
    [[nodiscard]] virtual TStringCore replaceFirst(TStringCore const& replacement, ICUErrorCode& status) = 0;
    /// Appends what stands between the last replacement and this match, and the replacement.
    virtual void appendReplacement(ICUString& to, TStringCore const& replacement, ICUErrorCode& status) = 0;
    /// Appends what stands behind the last replacement.
    virtual void appendTail(ICUString& to, ICUErrorCode& status) = 0;
    /// The parts between matches, none of an empty text; the texts of groups in the pattern come between the parts.
    /// With a limit above 0 at most that many, the last one with all that is left. Resets the matcher first; its region
    /// becomes the whole text.
    [[nodiscard]] virtual std::vector<TStringCore> split(ICUErrorCode& status, int limit = 0) = 0;
    /// @}

    /// @name Text and region
    /// @{
    /// Forgets the match; the region becomes the whole text.
    virtual void reset() = 0;
    /// And the next find begins at `index`. IndexOutOfBoundsError when it is outside.
    virtual void reset(int index, ICUErrorCode& status) = 0;
    /// Another text: in place, held, and held.
    virtual void reset(TStringView text) = 0;
    virtual void reset(ICUString const& text) = 0;
    template<RegexHeldText T>
    void reset(T const& text)
    {
        resetHolding(text);
    }
    virtual void resetHolding(TStringCore text) = 0;

    /// Matching sees only the text from start up to limit. Resets. IllegalArgumentError when they are negative or not
    /// in order, IndexOutOfBoundsError when the limit is beyond the text; the region stays as it was then.
    virtual void region(int start, int limit, ICUErrorCode& status) = 0;
    [[nodiscard]] virtual int regionStart() const = 0;
    [[nodiscard]] virtual int regionEnd() const = 0;
    /// Whether looking ahead, looking behind and \b see what is outside of the region; not at first.
    [[nodiscard]] virtual bool hasTransparentBounds() const = 0;
    virtual void useTransparentBounds(bool transparent) = 0;
    /// Whether ^ and $ match at the ends of the region; so at first.
    [[nodiscard]] virtual bool hasAnchoringBounds() const = 0;
    virtual void useAnchoringBounds(bool anchoring) = 0;
    /// @}

    /// @name Limits
    /// @{
    /// In units of 10,000 steps for each search, exactly; 0 for no limit. IllegalArgumentError for a negative one.
    virtual void setTimeLimit(int limit, ICUErrorCode& status) = 0;
    /// kDefaultTimeLimit until it was set.
    [[nodiscard]] virtual int getTimeLimit() const = 0;
    /// In ICU's bytes; 0 for no limit. IllegalArgumentError for a negative one. Resets the matcher.
    virtual void setStackLimit(int limit, ICUErrorCode& status) = 0;
    [[nodiscard]] virtual int getStackLimit() const = 0;
    /// @}

protected:
    ICURegexMatcher() = default;
    ICURegexMatcher(ICURegexMatcher const&) = default;
    ICURegexMatcher& operator=(ICURegexMatcher const&) = default;
};

} // namespace QvxICU
