// Regular expressions: random patterns, texts, flags and calls give what ICU's own classes give; the limits hold.

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/regex.h>

#include "support/IcuOracle.h"

using namespace QvxICU;
using namespace testing_support;

namespace {

using Pattern = ICURegexPattern;

std::unique_ptr<Pattern> Compiled(TStringCore const& pattern, unsigned flags = 0)
{
    ICUErrorCode status{};
    auto compiled = Pattern::createInstance(pattern, flags, status);
    EXPECT_TRUE(ICU_SUCCESS(status)) << pattern;
    return compiled;
}

/// One to six of the pieces, which together are a pattern or not.
std::u16string Joined(std::mt19937& random, std::vector<std::u16string> const& pieces, std::size_t most)
{
    std::u16string text;
    for (std::size_t n = random() % most + 1; n > 0; --n) {
        text += pieces[random() % pieces.size()];
    }
    return text;
}

std::vector<std::u16string> const kPatternPieces = {
    u"a",      u"b*",    u"(a|bc)",     u"(?<x>b+)", u"[^a]",   u".",       u"^",      u"$",    u"\\b",
    u"\\w+?",  u"(?=b)", u"\U0001F600", u"(a*)*",    u"\\1",    u"{2}",     u"(",      u")",    u"[",
    u"\\",     u"?",     u"\\X",        u"|",        u"\xD83D", u"(?<!a)",  u"\\p{L}", u"(?i)", u"\\k<x>",
    u"(?>a+)", u"\\R",   u"[a-c]",      u"\\d{1,}",  u"\\Z",    u"\\p{No}", u"#"};
std::vector<std::u16string> const kTextPieces = {u"a",      u"b",       u"c",          u"abc",    u"aaa",    u" ",
                                                 u"\n",     u"\r\n",    u"\U0001F600", u"\xD83D", u"\xDE00", u"A",
                                                 u"\u00E9", u"e\u0301", u"1",          u"$"};
std::vector<std::u16string> const kReplacementPieces = {u"x",  u"$0", u"$1", u"${x}", u"\\$",
                                                        u"$9", u"$",  u"${", u"\\",   u"\U0001F600"};
constexpr unsigned kFlags[] = {0, 2, 8, 32, 4, 16, 1 | 8, 256, 64, 128}; // the last two are none, and not there

#define SAME(...) EXPECT_SAME(ours, icus, __VA_ARGS__)

/// The matcher's state.
void ExpectSameMatch(ICURegexMatcher& ours, icu::RegexMatcher& icus)
{
    SAME(hitEnd());
    SAME(requireEnd());
    SAME(regionStart());
    SAME(regionEnd());
    for (int group = -1; group <= icus.groupCount() + 1; ++group) {
        SAME(group(group, s));
        SAME(start(group, s));
        SAME(end(group, s));
    }
    for (char16_t const* const name : {u"x", u"none"}) {
        ExpectSame([&](UErrorCode& code) { return icus.group(icus.pattern().groupNumberFromName(name, code), code); },
                   [&](ICUErrorCode& status) { return ours.group(name, status); }, TStringCore(name));
    }
}

/// One random call on both.
void CallBoth(std::mt19937& random, ICURegexMatcher& ours, icu::RegexMatcher& icus, ICUString& oursOut,
              icu::UnicodeString& icusOut)
{
    int const length = ours.input().length();
    // Anywhere, but not inside of a pair, where ICU's texts of groups begin elsewhere than it says.
    auto const place = [&] {
        int const at = static_cast<int>(random() % static_cast<unsigned>(length + 3)) - 1;
        return at > 0 && at < length ? Unicode(ours.input()).getChar32Start(at) : at;
    };
    int const from = place();
    int const to = place();
    bool const on = random() % 2 != 0;
    std::u16string const with = Joined(random, kReplacementPieces, 3);
    auto const call = random() % 14;
    SCOPED_TRACE(testing::Message() << "call " << call << " from " << from << " to " << to << " with "
                                    << TStringCore(with));
    std::function<void()> const calls[] = {
        [&] { SAME(find(from, s)); },
        [&] { SAME(lookingAt(s)); },
        [&] { SAME(lookingAt(from, s)); },
        [&] { SAME(matches(s)); },
        [&] { SAME(matches(from, s)); },
        [&] { SAME(useAnchoringBounds(on)); },
        [&] { SAME(useTransparentBounds(on)); },
        [&] { SAME(reset(from, s)); },
        [&] {
            bool const ordered = 0 <= from && from <= to;
            ExpectSame(
                [&](UErrorCode& code) {
                    if (!ordered || to > length) { // then ICU reads beyond the text
                        code = ordered ? U_INDEX_OUTOFBOUNDS_ERROR : U_ILLEGAL_ARGUMENT_ERROR;
                    }
                    icus.region(from, to, code);
                },
                [&](ICUErrorCode& status) { ours.region(from, to, status); }, "region");
        },
        [&] {
            ExpectSame([&](UErrorCode& code) { icus.appendReplacement(icusOut, Unicode(with), code); },
                       [&](ICUErrorCode& status) { ours.appendReplacement(oursOut, with, status); }, "append");
        },
        [&] {
            ExpectSame([&](UErrorCode&) { icus.appendTail(icusOut); },
                       [&](ICUErrorCode& status) { ours.appendTail(oursOut, status); }, "append the tail");
        },
        [&] { SAME(find(s)); }};
    calls[std::min<std::size_t>(call, std::size(calls) - 1)]();
    EXPECT_EQ(oursOut.toString(), Text(icusOut));
    ExpectSameMatch(ours, icus);
}

void ExpectSameReplacing(ICURegexMatcher& ours, icu::RegexMatcher& icus, std::u16string const& replacement)
{
    for (bool const all : {false, true}) {
        ExpectSame(
            [&](UErrorCode& code) {
                auto const with = Unicode(replacement);
                return all ? icus.replaceAll(with, code) : icus.replaceFirst(with, code);
            },
            [&](ICUErrorCode& status) {
                return all ? ours.replaceAll(replacement, status) : ours.replaceFirst(replacement, status);
            },
            TStringCore(replacement));
    }
}

void ExpectSameSplitting(Pattern const& ours, icu::RegexPattern const& icus, TStringView text)
{
    for (int const limit : {1, 2, 3, 5, 100}) {
        std::vector<icu::UnicodeString> fields(100);
        UErrorCode code = U_ZERO_ERROR;
        int const count = icus.split(Unicode(text), fields.data(), limit, code);
        std::vector<TStringCore> expected;
        for (int i = 0; i < count && U_SUCCESS(code); ++i) {
            expected.push_back(Text(fields[static_cast<std::size_t>(i)]));
        }
        ICUErrorCode status{};
        EXPECT_EQ(ours.split(text, status, limit == 100 ? 0 : limit), expected) << limit;
        EXPECT_EQ(Failure(status), Failure(code));
    }
}

TEST(Regex, RandomPatternsTextsAndCallsAsInIcu)
{
    std::mt19937 random(20101);
    int good = 0;
    for (int round = 0; round < 3000; ++round) {
        auto const expression = Joined(random, kPatternPieces, 6);
        std::u16string text = Joined(random, kTextPieces, 12);
        text.resize(round % 50 == 0 ? 0 : text.size());
        unsigned const flags = kFlags[random() % std::size(kFlags)];
        SCOPED_TRACE(testing::Message() << TStringCore(expression) << " flags " << flags << " on "
                                        << TStringCore(text));
        UErrorCode code = U_ZERO_ERROR;
        UParseError where{};
        std::unique_ptr<icu::RegexPattern> const icus(
            icu::RegexPattern::compile(Unicode(expression), flags, where, code));
        ICUErrorCode status{};
        ICUParseError error;
        auto const ours = Pattern::createInstance(expression, flags, error, status);
        ASSERT_EQ(Number(status), code);
        EXPECT_EQ(error.line, where.line);
        EXPECT_EQ(error.offset, where.offset);
        EXPECT_EQ(TStringCore(error.preContext), TStringCore(where.preContext));
        if (U_FAILURE(code)) {
            continue;
        }
        ++good;
        EXPECT_EQ(ours->flags(), icus->flags());
        EXPECT_EQ(ours->pattern(), Text(icus->pattern()));
        EXPECT_TRUE(*ours == *ours->clone());
        auto const input = Unicode(text);
        std::unique_ptr<icu::RegexMatcher> const icusMatcher(icus->matcher(input, code));
        auto const matcher = ours->matcher(text, status);
        auto const out = ICUString::createInstance();
        icu::UnicodeString icusOut;
        ExpectSameMatch(*matcher, *icusMatcher);
        for (int call = 0; call < 12 && !testing::Test::HasFailure(); ++call) {
            CallBoth(random, *matcher, *icusMatcher, *out, icusOut);
        }
        ExpectSameReplacing(*matcher, *icusMatcher, Joined(random, kReplacementPieces, 3));
        ExpectSameSplitting(*ours, *icus, text);
        EXPECT_EQ(ours->matches(text, status), icusMatcher->reset().matches(code) != 0);
        ASSERT_FALSE(testing::Test::HasFailure());
    }
    EXPECT_GT(good, 1000);
}

// What a matcher reads lives as long as it is told, and what it holds as long as itself. (AddressSanitizer looks on.)
TEST(Regex, TextsAndPatternsOutliveWhoMadeThem)
{
    for (int const length : {3, 5000}) {
        ICUErrorCode status{};
        auto own = std::make_unique<TStringCore>(TStringCore(u"x").repeated(length) + u"END");
        auto string = ICUString::createInstance(own->view());
        auto alias = ICUString::createAlias(own->view());
        auto pattern = Compiled(u"x(?<end>E)ND");
        std::vector<std::unique_ptr<ICURegexMatcher>> matchers;
        matchers.push_back(pattern->matcher(*own, status));
        matchers.push_back(pattern->matcher(*string, status));
        matchers.push_back(pattern->matcher(*alias, status));
        matchers.push_back(pattern->matcher(own->toStdWString(), status));
        matchers.push_back(pattern->matcher(u"", status));
        matchers.back()->reset(*own + u"");
        matchers.push_back(pattern->matcher(L"", status));
        matchers.back()->reset(*string);
        for (std::size_t i = 0; i < 6; ++i) {
            matchers.push_back(matchers[i]->clone());
        }
        own->data()[0] = u'y';
        own.reset();
        string.reset();
        alias.reset();
        pattern.reset();
        matchers.front().reset();
        matchers.erase(matchers.begin());
        for (auto const& matcher : matchers) {
            EXPECT_TRUE(matcher->find(status));
            EXPECT_EQ(matcher->start(status), length - 1);
            EXPECT_EQ(matcher->groupView(1, status), u"E");
            matcher->reset(matcher->input().mid(1)); // a part of what it holds
            EXPECT_TRUE(matcher->find(status));
            EXPECT_EQ(matcher->start(1, status), length - 1);
            EXPECT_EQ(matcher->pattern()->pattern(), u"x(?<end>E)ND");
            EXPECT_EQ(matcher->group("end", status) + matcher->group(L"end", status), u"EE");
        }
        EXPECT_EQ(status, ICUErrorCode::ZeroError);
    }
    std::u16string const text = u"aab";
    ICUErrorCode status{};
    EXPECT_EQ(Compiled(u"a")->matcher(text, status)->input().data(), text.data()); // in place
}

TEST(Regex, ClonesHaveRegionBoundsAndLimits)
{
    ICUErrorCode status{};
    auto const matcher = Compiled(u"^b")->matcher(u"abc", status);
    matcher->useAnchoringBounds(false);
    matcher->useTransparentBounds(true);
    matcher->setTimeLimit(7, status);
    matcher->setStackLimit(100'000, status);
    matcher->region(1, 2, status);
    auto const clone = matcher->clone();
    EXPECT_EQ(clone->regionStart() * 10 + clone->regionEnd(), 12);
    EXPECT_EQ(clone->getTimeLimit() * clone->getStackLimit(), 700'000);
    EXPECT_TRUE(clone->hasTransparentBounds());
    EXPECT_FALSE(clone->hasAnchoringBounds());
    EXPECT_FALSE(clone->find(status));
    EXPECT_EQ(status, ICUErrorCode::ZeroError);
}

TEST(Regex, LimitsEndWhatWouldNot)
{
    TStringCore const text = TStringCore(u"a").repeated(200) + u"c";
    for (int const limit : {0, 20}) { // 0: as it is by default
        ICUErrorCode status{};
        auto const matcher = Compiled(u"(a+)+b")->matcher(text, status);
        EXPECT_EQ(matcher->getTimeLimit(), ICURegexMatcher::kDefaultTimeLimit);
        EXPECT_EQ(matcher->getStackLimit(), ICURegexMatcher::kDefaultStackLimit);
        if (limit != 0) {
            matcher->setTimeLimit(limit, status);
        }
        EXPECT_FALSE(matcher->find(status));
        EXPECT_EQ(status, ICUErrorCode::RegexTimeOut);
        status = ICUErrorCode::ZeroError;
        EXPECT_EQ(matcher->start(status), -1);
        EXPECT_EQ(status, ICUErrorCode::RegexInvalidState);
        if (limit != 0) {
            ExpectRefused(ICUErrorCode::RegexTimeOut, {[&](auto& s) { return !matcher->replaceAll(u"x", s).isEmpty(); },
                                                       [&](auto& s) { return !matcher->split(s).empty(); },
                                                       [&](auto& s) { return matcher->matches(s); }});
        }
        matcher->reset(u"aab");
        status = ICUErrorCode::ZeroError;
        EXPECT_TRUE(matcher->matches(status));
    }
}

TEST(Regex, LimitsAreOfOneSearchAndLetSaneOnesPass)
{
    TStringCore const text = TStringCore(u"ab").repeated(300'000);
    ICUErrorCode status{};
    auto const matcher = Compiled(u"(?:a|b)")->matcher(text, status);
    matcher->setTimeLimit(2, status); // for 20,000 steps; all searches together take 1,200,000
    int count = 0;
    while (matcher->find(status)) {
        ++count;
    }
    EXPECT_EQ(count, 600'000);
    EXPECT_EQ(matcher->replaceAll(u"", status), u"");
    EXPECT_EQ(matcher->split(status).size(), 600'001U);
    EXPECT_EQ(status, ICUErrorCode::ZeroError);
    // By default a search may go through a long text, and keep a state for each of its characters.
    EXPECT_TRUE(Compiled(u"(?:a|b)*")->matches(text, status));
    EXPECT_EQ(status, ICUErrorCode::ZeroError);
    // Three million states are beyond the default, and within what is set.
    auto const deep = Compiled(u"(?:a|b)*")->matcher(text.repeated(5), status);
    EXPECT_FALSE(deep->matches(status));
    EXPECT_EQ(status, ICUErrorCode::RegexStackOverflow);
    status = ICUErrorCode::ZeroError;
    deep->setStackLimit(0, status);
    EXPECT_TRUE(deep->matches(status));
    ExpectRefused(ICUErrorCode::IllegalArgumentError, {[&](auto& s) { return deep->setTimeLimit(-1, s), false; },
                                                       [&](auto& s) { return deep->setStackLimit(-1, s), false; }});
}

TEST(Regex, FailedPatternsMakeMatchersThatSayWhy)
{
    ICUErrorCode status{};
    auto const made = Pattern::createInstance(L"(a", 0, status);
    EXPECT_EQ(status, ICUErrorCode::RegexMismatchedParen);
    auto const failed = made->clone();
    EXPECT_EQ(failed->pattern(), u"");
    status = ICUErrorCode::ZeroError;
    auto const matcher = failed->matcher(u"aa", status)->clone();
    EXPECT_EQ(status, ICUErrorCode::RegexMismatchedParen);
    auto const out = ICUString::createInstance();
    ExpectRefused(ICUErrorCode::RegexMismatchedParen,
                  {[&](auto& s) { return matcher->find(s); }, [&](auto& s) { return matcher->matches(1, s); },
                   [&](auto& s) { return !matcher->group(s).isEmpty() || !matcher->group(u"x", s).isEmpty(); },
                   [&](auto& s) { return !matcher->replaceAll(u"$1", s).isEmpty() || !matcher->split(s).empty(); },
                   [&](auto& s) { return matcher->appendTail(*out, s), matcher->region(0, 1, s), false; },
                   [&](auto& s) { return matcher->setTimeLimit(1, s), false; },
                   [&](auto& s) { return failed->groupNumberFromName(u"x", s) != 0; }});
    matcher->reset();
    matcher->reset(u"b");
    EXPECT_EQ(matcher->groupCount() + matcher->regionEnd() + matcher->getStackLimit(), 0);
    EXPECT_EQ(matcher->pattern()->pattern(), u"");
}

} // namespace
