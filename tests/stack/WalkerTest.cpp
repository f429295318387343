// Lines, switches and limits of TStackWalker.

#include <algorithm>
#include <atomic>
#include <iomanip>
#include <iterator>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include <qvxsys/Symbols.h>
#include <qvxsys/TStackWalker.h>
#include <qvxsys/TSystem.h>

#include "support/ChildProcess.h"
#include "support/Threads.h"

namespace {

using Lines = std::list<std::string>;

struct Walker : TStackWalker
{
    using TStackWalker::GenerateCallstackImpl;
};

/// Active as long as it lives.
struct Active
{
    Active() { TStackWalker::InitSym(true); }
    ~Active() { TStackWalker::InitSym(false); }
};

StackWalkerConfig Config(unsigned switches)
{
    StackWalkerConfig config;
    config.includeThreadInfo = switches & 1;
    config.includeSystemMemoryAddresses = (switches >> 1) & 1;
    config.includeFileLineNumber = (switches >> 2) & 1;
    config.includeFileName = (switches >> 3) & 1;
    return config;
}

constexpr unsigned kAll = 15;
constexpr unsigned kWithSource = 12;

// Run by the test below, in a process of its own.
TEST(FreshProcess, DISABLED_WalksNotBeforeInitSym)
{
    TStackWalker walker;
    EXPECT_FALSE(TStackWalker::IsActive());
    EXPECT_FALSE(walker.GenerateCallstack());
    EXPECT_TRUE(walker.GetCollected().empty());
    EXPECT_FALSE(TStackWalker::InitSym(true));
    EXPECT_TRUE(TStackWalker::InitSym(true));
    EXPECT_TRUE(walker.GenerateCallstack());
    EXPECT_TRUE(walker.GetCollected().front().starts_with("0x"));
}

TEST(StackWalker, FreshProcess)
{
    auto const child = RunChild(
        {testing::internal::GetArgvs()[0], "--gtest_also_run_disabled_tests", "--gtest_filter=FreshProcess.*"});
    EXPECT_EQ(child.status, 0) << child.out;
}

TEST(StackWalker, LinesOfAllSwitches)
{
    std::vector<Lines> made;
    for (unsigned switches = 0; switches <= kAll; ++switches) {
        made.push_back(Walker().GenerateCallstackImpl(Config(switches)));
    }
    std::ostringstream thread;
    thread << "0x" << std::hex << std::setw(16) << std::setfill('0') << TSystem::ThreadID();
    std::regex const whole("(0x[0-9a-f]{16})(?: (.*)(\\(-?\\d+\\): )|( 0x[0-9A-F]{16} ))(.*?)!(.*)");
    Lines const& full = made[kAll];
    ASSERT_FALSE(full.empty());
    for (unsigned switches = 0; switches <= kAll; ++switches) {
        ASSERT_GE(made[switches].size(), full.size());
        // Without source files the frames of the walker itself are there, too.
        EXPECT_TRUE((switches & kWithSource) == 0 || made[switches].size() == full.size());
        auto line = std::prev(made[switches].end(), static_cast<std::ptrdiff_t>(full.size()));
        for (auto of = full.begin(); of != full.end(); ++of, ++line) {
            std::smatch piece;
            ASSERT_TRUE(std::regex_match(*of, piece, whole)) << *of;
            EXPECT_EQ(piece[1], thread.str());
            bool const hasFile = piece[2].length() != 0;
            std::string const start = switches & 1 ? thread.str() : "";
            std::string const names = piece[5].str() + '!' + piece[6].str();
            if (hasFile && (switches & kWithSource) != 0) {
                EXPECT_EQ(*line, start + (switches & 8 ? ' ' + piece[2].str() : "") +
                                     (switches & 4 ? piece[3].str() : "") + names);
            } else if ((switches & 2) == 0) {
                EXPECT_EQ(*line, start + names);
            } else if (hasFile) {
                EXPECT_TRUE(line->starts_with(start + " 0x") && line->ends_with(' ' + names)) << *line;
            } else {
                EXPECT_EQ(*line, start + piece[4].str() + names);
            }
            EXPECT_FALSE(std::regex_search(*of, std::regex("stackwalker\\.cpp\\(", std::regex::icase))) << *of;
        }
    }
}

Lines FromOddSource(unsigned switches);

TEST(StackWalker, SourcesAreLeftOutInAnyCase)
{
    auto const itself = quorvex::symbols::ResolveAddress(reinterpret_cast<void*>(&FromOddSource));
    if (itself.File().empty() || itself.Symbol().empty()) {
        GTEST_SKIP() << "no line information here";
    }
    for (unsigned switches = 0; switches <= kAll; ++switches) {
        Lines const lines = FromOddSource(switches);
        bool const isThere = std::any_of(lines.begin(), lines.end(), [](std::string const& line) {
            return line.find("FromOddSource") != std::string::npos;
        });
        EXPECT_EQ(isThere, (switches & kWithSource) == 0) << switches;
    }
}

TEST(StackWalker, AddressesHaveSixteenDigits)
{
    int variable = 0;
    for (void* const address : {static_cast<void*>(nullptr), static_cast<void*>(&variable)}) {
        std::ostringstream expected;
        expected << "0x00000000deadbeef 0x" << std::hex << std::uppercase << std::setw(16) << std::setfill('0')
                 << reinterpret_cast<std::uintptr_t>(address) << " (module name not available)!(symbol not available)";
        EXPECT_EQ(quorvex::symbols::Format({&address, 1}, Config(kAll), 0xDEADBEEF).front(), expected.str());
    }
}

int Deep(int depth, Lines& lines, unsigned switches);
int (*volatile g_deep)(int, Lines&, unsigned) = Deep;
int Deep(int depth, Lines& lines, unsigned switches)
{
    if (depth == 0) {
        lines = Walker().GenerateCallstackImpl(Config(switches));
        return 0;
    }
    return g_deep(depth - 1, lines, switches) + 1;
}

TEST(StackWalker, TwoHundredFramesAreTheMost)
{
    Lines lines;
    EXPECT_EQ(Deep(300, lines, 0), 300);
    EXPECT_EQ(lines.size(), 200u);
    Deep(300, lines, kAll);
    EXPECT_GE(lines.size(), 195u);
    EXPECT_LE(lines.size(), 200u);
    EXPECT_EQ(StackWalkerConfig::numberOfStackWalks, 200);
}

TEST(StackWalker, SettingsReachTheImplementation)
{
    struct Recorder : TStackWalker
    {
        std::list<std::string> GenerateCallstackImpl(StackWalkerConfig const& config) override
        {
            seen = {config.active, config.includeThreadInfo, config.includeSystemMemoryAddresses,
                    config.includeFileLineNumber, config.includeFileName};
            return {};
        }
        std::vector<int> seen;
    } recorder;
    Active const active;
    void (*const setters[])(bool) = {TStackWalker::IncludeThreadInfo, TStackWalker::IncludeSystemMemoryAddresses,
                                     TStackWalker::IncludeFileLineNumber, TStackWalker::IncludeFileName};
    for (std::size_t i = 0; i < 4; ++i) {
        setters[i](false);
        recorder.GenerateCallstack();
        std::vector<int> expected(5, 1);
        expected[i + 1] = 0;
        EXPECT_EQ(recorder.seen, expected);
        setters[i](true);
    }
}

TEST(StackWalker, FailureKeepsTheLines)
{
    struct Scripted : TStackWalker
    {
        std::list<std::string> GenerateCallstackImpl(StackWalkerConfig const&) override
        {
            if (step == 1) {
                throw std::runtime_error("no");
            }
            return step == 0 ? Lines{"a", "b"} : Lines{};
        }
        int step = 0;
    } walker;
    EXPECT_FALSE(walker.GenerateCallstack());
    Active const active;
    EXPECT_TRUE(walker.GenerateCallstack());
    TStackWalker const copy = walker;
    walker.step = 1;
    EXPECT_FALSE(walker.GenerateCallstack());
    EXPECT_EQ(walker.GetCollected(), (Lines{"a", "b"}));
    TStackWalker::InitSym(false);
    EXPECT_FALSE(walker.GenerateCallstack());
    EXPECT_EQ(walker.GetCollected(), (Lines{"a", "b"}));
    TStackWalker::InitSym(true);
    walker.step = 2;
    EXPECT_FALSE(walker.GenerateCallstack());
    EXPECT_TRUE(walker.GetCollected().empty());
    EXPECT_EQ(copy.GetCollected(), (Lines{"a", "b"}));
}

TEST(StackWalker, ManyThreadsAtOnce)
{
    std::atomic<int> wrong{0};
    InParallel(16, [&wrong](int i) {
        Lines first;
        Deep(20, first, kAll);
        for (int round = 0; round < 20; ++round) {
            if (i == 0 && round % 5 == 0) {
                quorvex::symbols::ClearCache();
            }
            Lines again;
            Deep(20, again, kAll);
            // The innermost functions are the same; the thread's first ones may differ by where Deep was called.
            wrong += !std::equal(first.begin(), std::next(first.begin(), 20), again.begin());
        }
    });
    EXPECT_EQ(wrong, 0);
}

// Says that it is from elsewhere; the last function here.
#line 1 "odd/MyStackWalker.CPP"
[[gnu::noinline]] Lines FromOddSource(unsigned switches)
{
    Walker walker;
    return walker.GenerateCallstackImpl(Config(switches));
}

} // namespace
