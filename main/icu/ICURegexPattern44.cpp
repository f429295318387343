// Regular expressions over ICU.

#include <qvxsys/ICURegexPattern.h>

#include <memory>
#include <utility>
#include <vector>

#include "ICURegex44Impl.h"

namespace QvxICU44 {

ICURegexPattern44Impl::ICURegexPattern44Impl(SharedPattern pattern, ErrorCode created)
    : m_pattern(std::move(pattern)), m_created(created)
{
    if (m_pattern == nullptr) {
        Fail(m_created, ErrorCode::InvalidStateError);
    }
}

std::unique_ptr<QvxICU::ICURegexPattern> ICURegexPattern44Impl::clone() const
{
    return std::make_unique<ICURegexPattern44Impl>(m_pattern, m_created);
}

bool ICURegexPattern44Impl::operator==(ICURegexPattern const& other) const
{
    return flags() == other.flags() && pattern() == other.pattern();
}

unsigned ICURegexPattern44Impl::flags() const
{
    return Forward(m_pattern.get(), [](auto& pattern) -> unsigned { return pattern.flags(); });
}

TStringCore ICURegexPattern44Impl::pattern() const
{
    return Forward(m_pattern.get(), [](auto& pattern) { return Own(pattern.pattern()); });
}

int ICURegexPattern44Impl::groupNumberFromName(TStringCore const& name, ErrorCode& status) const
{
    if (m_pattern == nullptr) {
        Fail(status, m_created);
    }
    return Forward(m_pattern.get(), status,
                   [&name](auto& pattern, auto& code) { return pattern.groupNumberFromName(Alias(name), code); });
}

namespace {

template<class SetText>
std::unique_ptr<ICURegexMatcher44Impl> MakeMatcher(SharedPattern const& pattern, QvxICU::ICUErrorCode created,
                                                   QvxICU::ICUErrorCode& status, SetText const& setText)
{
    if (pattern == nullptr) {
        Fail(status, created);
    }
    auto matcher = std::make_unique<ICURegexMatcher44Impl>(pattern, status);
    setText(*matcher);
    return matcher;
}

} // namespace

std::unique_ptr<QvxICU::ICURegexMatcher> ICURegexPattern44Impl::matcher(TStringView text, ErrorCode& status) const
{
    return MakeMatcher(m_pattern, m_created, status, [text](auto& matcher) { matcher.reset(text); });
}

std::unique_ptr<QvxICU::ICURegexMatcher> ICURegexPattern44Impl::matcher(QvxICU::ICUString const& text,
                                                                        ErrorCode& status) const
{
    return MakeMatcher(m_pattern, m_created, status, [&text](auto& matcher) { matcher.reset(text); });
}

std::unique_ptr<QvxICU::ICURegexMatcher> ICURegexPattern44Impl::matcherHolding(TStringCore text,
                                                                               ErrorCode& status) const
{
    return MakeMatcher(m_pattern, m_created, status, [&text](auto& matcher) { matcher.resetHolding(std::move(text)); });
}

bool ICURegexPattern44Impl::matches(TStringView text, ErrorCode& status) const
{
    return matcher(text, status)->matches(status);
}

std::vector<TStringCore> ICURegexPattern44Impl::split(TStringView text, ErrorCode& status, int limit) const
{
    return matcher(text, status)->split(status, limit);
}

void* ICURegexPattern44Impl::Native() noexcept
{
    return const_cast<icu::RegexPattern*>(m_pattern.get());
}

} // namespace QvxICU44

namespace QvxICU {

ICURegexPattern::~ICURegexPattern() = default;
ICURegexMatcher::~ICURegexMatcher() = default;

namespace {

std::unique_ptr<ICURegexPattern> Compile(icu::UnicodeString const& text, unsigned flags, ICUParseError* error,
                                         ICUErrorCode& status)
{
    std::unique_ptr<icu::RegexPattern> pattern;
    if (ICU_SUCCESS(status)) {
        QvxICU44::Status code(status);
        UParseError where{};
        pattern.reset(icu::RegexPattern::compile(text, flags, where, code));
        if (error != nullptr) {
            QvxICU44::Own(where, *error);
        }
    }
    return std::make_unique<QvxICU44::ICURegexPattern44Impl>(QvxICU44::Made(pattern.release(), status), status);
}

} // namespace

std::unique_ptr<ICURegexPattern> ICURegexPattern::createInstance(ICUString const& pattern, unsigned flags,
                                                                 ICUErrorCode& status)
{
    return Compile(QvxICU44::Icu(pattern), flags, nullptr, status);
}

std::unique_ptr<ICURegexPattern> ICURegexPattern::createInstance(TStringCore const& pattern, unsigned flags,
                                                                 ICUErrorCode& status)
{
    return Compile(QvxICU44::Alias(pattern), flags, nullptr, status);
}

std::unique_ptr<ICURegexPattern> ICURegexPattern::createInstance(ICUString const& pattern, unsigned flags,
                                                                 ICUParseError& error, ICUErrorCode& status)
{
    return Compile(QvxICU44::Icu(pattern), flags, &error, status);
}

std::unique_ptr<ICURegexPattern> ICURegexPattern::createInstance(TStringCore const& pattern, unsigned flags,
                                                                 ICUParseError& error, ICUErrorCode& status)
{
    return Compile(QvxICU44::Alias(pattern), flags, &error, status);
}

} // namespace QvxICU
