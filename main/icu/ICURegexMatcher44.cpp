// Matchers over ICU.

#include <qvxsys/ICURegexMatcher.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "ICURegex44Impl.h"

namespace QvxICU44 {

using QvxICU::ICURegexMatcher;

namespace {

constexpr int kUnitsOfTextPerUnitOfTime = 100;

/// Called by ICU for each unit of time that a search takes: whether to go on.
UBool U_CALLCONV SpendTime(void const* unitsLeft, int32_t)
{
    return --*static_cast<long long*>(const_cast<void*>(unitsLeft)) > 0;
}

} // namespace

ICURegexMatcher44Impl::ICURegexMatcher44Impl(SharedPattern pattern, ErrorCode& status)
    : m_pattern(std::move(pattern)), m_created(status)
{
    if (m_pattern != nullptr && QvxICU::ICU_SUCCESS(status)) {
        Status code(status);
        m_matcher.reset(m_pattern->matcher(code));
        if (m_matcher != nullptr) {
            m_matcher->setMatchCallback(SpendTime, &m_unitsLeft, code);
            m_matcher->setStackLimit(kDefaultStackLimit, code);
        }
    }
    m_created = status;
    if (m_matcher == nullptr) {
        Fail(m_created, ErrorCode::InvalidStateError);
    }
}

std::unique_ptr<ICURegexMatcher> ICURegexMatcher44Impl::clone() const
{
    ErrorCode status = m_matcher == nullptr ? m_created : ErrorCode::ZeroError;
    auto copy = std::make_unique<ICURegexMatcher44Impl>(m_pattern, status);
    switch (m_where) {
    case Text::Foreign:
        copy->reset(View(m_input));
        break;
    case Text::Held:
        copy->resetHolding(m_held);
        break;
    case Text::HeldString:
        copy->m_heldString = m_heldString;
        copy->Read(Text::HeldString, View(copy->m_heldString));
        break;
    }
    copy->useTransparentBounds(hasTransparentBounds());
    copy->useAnchoringBounds(hasAnchoringBounds());
    copy->setStackLimit(getStackLimit(), status);
    copy->region(regionStart(), regionEnd(), status);
    copy->m_timeLimit = m_timeLimit;
    copy->m_timeLimitGrows = m_timeLimitGrows;
    return copy;
}

std::unique_ptr<QvxICU::ICURegexPattern> ICURegexMatcher44Impl::pattern() const
{
    return std::make_unique<ICURegexPattern44Impl>(m_pattern, m_created);
}

template<class Call>
bool ICURegexMatcher44Impl::Search(UErrorCode& code, Call const& search) const
{
    long long const limit = m_timeLimit == 0 ? std::numeric_limits<long long>::max() : m_timeLimit;
    m_unitsLeft = m_timeLimitGrows ? limit + m_input.length() / kUnitsOfTextPerUnitOfTime : limit;
    bool const found = search(code);
    if (code == U_REGEX_STOPPED_BY_CALLER) {
        code = U_REGEX_TIME_OUT;
    }
    return found;
}

bool ICURegexMatcher44Impl::FindNext(icu::RegexMatcher& matcher, UErrorCode& code) const
{
    return Search(code, [&matcher](auto& c) { return matcher.find(c); });
}

bool ICURegexMatcher44Impl::find(ErrorCode& status)
{
    return With(status, [this](auto& m, auto& code) { return FindNext(m, code); });
}

bool ICURegexMatcher44Impl::find(int start, ErrorCode& status)
{
    return With(status, [&](auto& m, auto& code) { return Search(code, [&](auto& c) { return m.find(start, c); }); });
}

bool ICURegexMatcher44Impl::lookingAt(ErrorCode& status)
{
    return With(status, [&](auto& m, auto& code) { return Search(code, [&](auto& c) { return m.lookingAt(c); }); });
}

bool ICURegexMatcher44Impl::lookingAt(int start, ErrorCode& status)
{
    return With(status,
                [&](auto& m, auto& code) { return Search(code, [&](auto& c) { return m.lookingAt(start, c); }); });
}

bool ICURegexMatcher44Impl::matches(ErrorCode& status)
{
    return With(status, [&](auto& m, auto& code) { return Search(code, [&](auto& c) { return m.matches(c); }); });
}

bool ICURegexMatcher44Impl::matches(int start, ErrorCode& status)
{
    return With(status,
                [&](auto& m, auto& code) { return Search(code, [&](auto& c) { return m.matches(start, c); }); });
}

bool ICURegexMatcher44Impl::hitEnd() const
{
    return Forward(m_matcher.get(), [](auto& m) { return m.hitEnd() != 0; });
}

bool ICURegexMatcher44Impl::requireEnd() const
{
    return Forward(m_matcher.get(), [](auto& m) { return m.requireEnd() != 0; });
}

int ICURegexMatcher44Impl::groupCount() const
{
    return Forward(m_matcher.get(), [](auto& m) { return m.groupCount(); });
}

int ICURegexMatcher44Impl::start(int group, ErrorCode& status) const
{
    int at = -1;
    With(status, [&at, group](auto& m, auto& code) { at = m.start(group, code); });
    return at;
}

int ICURegexMatcher44Impl::end(int group, ErrorCode& status) const
{
    int at = -1;
    With(status, [&at, group](auto& m, auto& code) { at = m.end(group, code); });
    return at;
}

TStringView ICURegexMatcher44Impl::groupView(int group, ErrorCode& status) const
{
    return With(status, [this, group](auto& m, auto& code) {
        int const start = m.start(group, code);
        return start < 0 || U_FAILURE(code) ? TStringView() : View(m_input).mid(start, m.end(group, code) - start);
    });
}

TStringCore ICURegexMatcher44Impl::group(int group, ErrorCode& status) const
{
    return groupView(group, status);
}

TStringCore ICURegexMatcher44Impl::group(TStringCore const& name, ErrorCode& status) const
{
    int const number =
        With(status, [&](auto&, auto& code) { return m_pattern->groupNumberFromName(Alias(name), code); });
    return groupView(number, status);
}

TStringCore ICURegexMatcher44Impl::Replaced(TStringCore const& replacement, bool all, ErrorCode& status)
{
    return With(status, [&](auto& m, auto& code) {
        auto const with = Alias(replacement);
        icu::UnicodeString text;
        m.reset();
        while (FindNext(m, code)) {
            m.appendReplacement(text, with, code);
            if (!all) {
                break;
            }
        }
        if (U_FAILURE(code)) {
            return TStringCore();
        }
        return Own(m.appendTail(text));
    });
}

TStringCore ICURegexMatcher44Impl::replaceAll(TStringCore const& replacement, ErrorCode& status)
{
    return Replaced(replacement, true, status);
}

TStringCore ICURegexMatcher44Impl::replaceFirst(TStringCore const& replacement, ErrorCode& status)
{
    return Replaced(replacement, false, status);
}

void ICURegexMatcher44Impl::appendReplacement(QvxICU::ICUString& to, TStringCore const& replacement, ErrorCode& status)
{
    With(status, [&](auto& m, auto& code) { m.appendReplacement(Icu(to), Alias(replacement), code); });
}

void ICURegexMatcher44Impl::appendTail(QvxICU::ICUString& to, ErrorCode& status)
{
    With(status, [&to](auto& m, auto&) { m.appendTail(Icu(to)); });
}

std::vector<TStringCore> ICURegexMatcher44Impl::split(ErrorCode& status, int limit)
{
    std::size_t const most = limit > 0 ? static_cast<std::size_t>(limit) : std::numeric_limits<std::size_t>::max();
    TStringView const text = input();
    std::vector<TStringCore> parts;
    With(status, [&](auto& m, auto& code) {
        int next = 0;
        m.reset();
        if (text.isEmpty()) {
            return; // no parts, also where the pattern matches nothing
        }
        while (parts.size() + 1 < most && FindNext(m, code)) {
            parts.emplace_back(text.mid(next, m.start(code) - next));
            next = m.end(code);
            // The last place is not for a group but for the rest.
            for (int g = 1; g <= m.groupCount() && parts.size() + 1 < most; ++g) {
                parts.push_back(group(g, status));
            }
            if (next == text.length()) {
                break;
            }
        }
        if (U_SUCCESS(code)) {
            parts.emplace_back(text.mid(next));
        }
    });
    return QvxICU::ICU_FAILURE(status) ? std::vector<TStringCore>() : std::move(parts);
}

void ICURegexMatcher44Impl::reset()
{
    Forward(m_matcher.get(), [](auto& m) { m.reset(); });
}

void ICURegexMatcher44Impl::reset(int index, ErrorCode& status)
{
    With(status, [index](auto& m, auto& code) { m.reset(index, code); });
}

void ICURegexMatcher44Impl::Read(Text where, TStringView text)
{
    m_where = where;
    m_input.setTo(static_cast<UBool>(false), text.data(), Length(text));
    Forward(m_matcher.get(), [this](auto& m) { m.reset(m_input); });
}

// A text held before stays: the new one may be a part of it.
void ICURegexMatcher44Impl::reset(TStringView text)
{
    Read(Text::Foreign, text);
}

void ICURegexMatcher44Impl::reset(QvxICU::ICUString const& text)
{
    m_heldString = Icu(text);
    Read(Text::HeldString, View(m_heldString));
}

void ICURegexMatcher44Impl::resetHolding(TStringCore text)
{
    m_held = std::move(text);
    Read(Text::Held, m_held.view());
}

// ICU takes every region, also those that it reports, and then reads what is not the text's.
void ICURegexMatcher44Impl::region(int start, int limit, ErrorCode& status)
{
    if (start < 0 || start > limit) {
        Fail(status, ErrorCode::IllegalArgumentError);
    } else if (m_matcher != nullptr && limit > m_input.length()) {
        Fail(status, ErrorCode::IndexOutOfBoundsError);
    }
    With(status, [start, limit](auto& m, auto& code) { m.region(start, limit, code); });
}

int ICURegexMatcher44Impl::regionStart() const
{
    return Forward(m_matcher.get(), [](auto& m) { return m.regionStart(); });
}

int ICURegexMatcher44Impl::regionEnd() const
{
    return Forward(m_matcher.get(), [](auto& m) { return m.regionEnd(); });
}

bool ICURegexMatcher44Impl::hasTransparentBounds() const
{
    return Forward(m_matcher.get(), [](auto& m) { return m.hasTransparentBounds() != 0; });
}

void ICURegexMatcher44Impl::useTransparentBounds(bool transparent)
{
    Forward(m_matcher.get(), [transparent](auto& m) { m.useTransparentBounds(transparent); });
}

bool ICURegexMatcher44Impl::hasAnchoringBounds() const
{
    return Forward(m_matcher.get(), [](auto& m) { return m.hasAnchoringBounds() != 0; });
}

void ICURegexMatcher44Impl::useAnchoringBounds(bool anchoring)
{
    Forward(m_matcher.get(), [anchoring](auto& m) { m.useAnchoringBounds(anchoring); });
}

void ICURegexMatcher44Impl::setTimeLimit(int limit, ErrorCode& status)
{
    if (limit < 0) {
        Fail(status, ErrorCode::IllegalArgumentError);
    }
    With(status, [this, limit](auto&, auto&) {
        m_timeLimit = limit;
        m_timeLimitGrows = false;
    });
}

void ICURegexMatcher44Impl::setStackLimit(int limit, ErrorCode& status)
{
    With(status, [limit](auto& m, auto& code) { m.setStackLimit(limit, code); });
}

int ICURegexMatcher44Impl::getStackLimit() const
{
    return Forward(m_matcher.get(), [](auto& m) { return m.getStackLimit(); });
}

} // namespace QvxICU44
