// What a failed check does when nobody reads its message any more.

#include <csignal>

#include <unistd.h>

#include "support/TextPrinters.h"

namespace {

volatile std::sig_atomic_t g_signals = 0;

sigset_t OnlyPipe()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    return set;
}

bool IsPending()
{
    sigset_t set;
    sigemptyset(&set);
    sigpending(&set);
    return sigismember(&set, SIGPIPE) == 1;
}

bool IsBlocked()
{
    sigset_t set;
    sigemptyset(&set);
    pthread_sigmask(SIG_BLOCK, nullptr, &set);
    return sigismember(&set, SIGPIPE) == 1;
}

/// Throws with stderr a pipe that nobody reads.
void FailUnheard()
{
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    ::close(pipe[0]);
    int const before = ::dup(STDERR_FILENO);
    ASSERT_GE(::dup2(pipe[1], STDERR_FILENO), 0);
    ::close(pipe[1]);
    bool thrown = false;
    try {
        ThrowLogicException("a.cpp", 1, "x");
    } catch (LogicException const&) {
        thrown = true;
    }
    ::dup2(before, STDERR_FILENO);
    ::close(before);
    EXPECT_TRUE(thrown);
}

TEST(DebugOutput, ClosedPipeRaisesNoSignal)
{
    struct sigaction action = {};
    struct sigaction previous = {};
    action.sa_handler = [](int) { g_signals = g_signals + 1; };
    ASSERT_EQ(sigaction(SIGPIPE, &action, &previous), 0);
    sigset_t const pipe = OnlyPipe();
    struct
    {
        bool blocked, pending;
    } const cases[] = {{false, false}, {true, false}, {true, true}};
    for (auto const& c : cases) {
        SCOPED_TRACE(testing::Message() << c.blocked << c.pending);
        pthread_sigmask(c.blocked ? SIG_BLOCK : SIG_UNBLOCK, &pipe, nullptr);
        if (c.pending) {
            ::raise(SIGPIPE);
        }
        FailUnheard();
        EXPECT_EQ(g_signals, 0);
        EXPECT_EQ(IsBlocked(), c.blocked);
        EXPECT_EQ(IsPending(), c.pending);
    }
    pthread_sigmask(SIG_UNBLOCK, &pipe, nullptr);
    EXPECT_EQ(g_signals, 1); // the one that was pending before
    sigaction(SIGPIPE, &previous, nullptr);
}

} // namespace
