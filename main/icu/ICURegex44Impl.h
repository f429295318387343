#pragma once
// The ICU patterns and matchers behind the wrappers.

#include <memory>
#include <vector>

#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <qvxsys/ICURegexMatcher.h>
#include <qvxsys/ICURegexPattern.h>

#include "IcuObject.h"

namespace QvxICU44 {

/// Patterns do not change: wrappers and matchers share them.
using SharedPattern = std::shared_ptr<icu::RegexPattern const>;

class ICURegexPattern44Impl final : public QvxICU::ICURegexPattern
{
public:
    using ErrorCode = QvxICU::ICUErrorCode;

    /// `created` is what to report where there is no pattern.
    ICURegexPattern44Impl(SharedPattern pattern, ErrorCode created);

    [[nodiscard]] std::unique_ptr<ICURegexPattern> clone() const override;
    [[nodiscard]] bool operator==(ICURegexPattern const& other) const override;
    [[nodiscard]] unsigned flags() const override;
    [[nodiscard]] TStringCore pattern() const override;
    [[nodiscard]] int groupNumberFromName(TStringCore const& name, ErrorCode& status) const override;
    [[nodiscard]] std::unique_ptr<QvxICU::ICURegexMatcher> matcher(TStringView text, ErrorCode& status) const override;
    [[nodiscard]] std::unique_ptr<QvxICU::ICURegexMatcher> matcher(QvxICU::ICUString const& text,
                                                                   ErrorCode& status) const override;
    [[nodiscard]] std::unique_ptr<QvxICU::ICURegexMatcher> matcherHolding(TStringCore text,
                                                                          ErrorCode& status) const override;
    [[nodiscard]] bool matches(TStringView text, ErrorCode& status) const override;
    [[nodiscard]] std::vector<TStringCore> split(TStringView text, ErrorCode& status, int limit) const override;
    [[nodiscard]] void* Native() noexcept override;

private:
    SharedPattern m_pattern;
    ErrorCode m_created;
};

// ICU counts its time limit, and calls its callback, once in 10,000 states that a search saves; but it counts from one
// reset to the next. A loop of many short searches on a long text would run out of time in the end. So the limit here
// is kept by the callback, and its count begins anew with each search; replacing and splitting are therefore loops of
// searches here, too, each as ICU's own.
class ICURegexMatcher44Impl final : public QvxICU::ICURegexMatcher
{
public:
    using ErrorCode = QvxICU::ICUErrorCode;

    /// On the empty text. `status` is the caller's; what it says afterwards is reported where there is no matcher.
    ICURegexMatcher44Impl(SharedPattern pattern, ErrorCode& status);

    [[nodiscard]] std::unique_ptr<ICURegexMatcher> clone() const override;
    [[nodiscard]] std::unique_ptr<QvxICU::ICURegexPattern> pattern() const override;
    [[nodiscard]] TStringView input() const override { return View(m_input); }

    [[nodiscard]] bool find(ErrorCode& status) override;
    [[nodiscard]] bool find(int start, ErrorCode& status) override;
    [[nodiscard]] bool lookingAt(ErrorCode& status) override;
    [[nodiscard]] bool lookingAt(int start, ErrorCode& status) override;
    [[nodiscard]] bool matches(ErrorCode& status) override;
    [[nodiscard]] bool matches(int start, ErrorCode& status) override;
    [[nodiscard]] bool hitEnd() const override;
    [[nodiscard]] bool requireEnd() const override;

    [[nodiscard]] int groupCount() const override;
    [[nodiscard]] TStringCore group(int group, ErrorCode& status) const override;
    [[nodiscard]] TStringCore group(TStringCore const& name, ErrorCode& status) const override;
    [[nodiscard]] TStringView groupView(int group, ErrorCode& status) const override;
    [[nodiscard]] int start(int group, ErrorCode& status) const override;
    [[nodiscard]] int end(int group, ErrorCode& status) const override;

    [[nodiscard]] TStringCore replaceAll(TStringCore const& replacement, ErrorCode& status) override;
    [[nodiscard]] TStringCore replaceFirst(TStringCore const& replacement, ErrorCode& status) override;
    void appendReplacement(QvxICU::ICUString& to, TStringCore const& replacement, ErrorCode& status) override;
    void appendTail(QvxICU::ICUString& to, ErrorCode& status) override;
    [[nodiscard]] std::vector<TStringCore> split(ErrorCode& status, int limit) override;

    void reset() override;
    void reset(int index, ErrorCode& status) override;
    void reset(TStringView text) override;
    void reset(QvxICU::ICUString const& text) override;
    void resetHolding(TStringCore text) override;
    void region(int start, int limit, ErrorCode& status) override;
    [[nodiscard]] int regionStart() const override;
    [[nodiscard]] int regionEnd() const override;
    [[nodiscard]] bool hasTransparentBounds() const override;
    void useTransparentBounds(bool transparent) override;
    [[nodiscard]] bool hasAnchoringBounds() const override;
    void useAnchoringBounds(bool anchoring) override;

    void setTimeLimit(int limit, ErrorCode& status) override;
    [[nodiscard]] int getTimeLimit() const override { return m_timeLimit; }
    void setStackLimit(int limit, ErrorCode& status) override;
    [[nodiscard]] int getStackLimit() const override;

private:
    /// Where the text is that m_input reads.
    enum class Text { Foreign, Held, HeldString };

    template<class Call>
    auto With(ErrorCode& status, Call const& call) const
    {
        if (m_matcher == nullptr) {
            Fail(status, m_created);
        }
        return Forward(m_matcher.get(), status, call);
    }
    /// One search: search(matcher, code) within the time limit.
    template<class Call>
    bool Search(UErrorCode& code, Call const& search) const;
    [[nodiscard]] bool FindNext(icu::RegexMatcher& matcher, UErrorCode& code) const;
    [[nodiscard]] TStringCore Replaced(TStringCore const& replacement, bool all, ErrorCode& status);
    void Read(Text where, TStringView text);

    SharedPattern m_pattern;
    TStringCore m_held;
    icu::UnicodeString m_heldString;
    icu::UnicodeString m_input; ///< an alias; where it is, ICU remembers
    Text m_where = Text::Foreign;
    int m_timeLimit = kDefaultTimeLimit;
    bool m_timeLimitGrows = true;      ///< with the text
    mutable long long m_unitsLeft = 0; ///< of this search's time
    ErrorCode m_created;
    std::unique_ptr<icu::RegexMatcher> m_matcher; ///< ends before what it reads
};

} // namespace QvxICU44
