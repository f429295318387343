// What a failed check does when nobody reads its message any more.

#include <csignal>

#include <unistd.h>

#include "support/TextPrinters.h"

namespace {

volatile std::sig_atomic_t g_signals = 0;

template<class Get>
bool HasPipe(Get get)
{
    sigset_t set;
    sigemptyset(&set);
    get(&set);
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
    EXPECT_THROW(ThrowLogicException("a.cpp", 1, "x"), LogicException);
    ::dup2(before, STDERR_FILENO);
    ::close(before);
}

TEST(DebugOutput, ClosedPipeRaisesNoSignal)
{
    struct sigaction action = {};
    struct sigaction previous = {};
    action.sa_handler = [](int) { g_signals = g_signals + 1; };
    ASSERT_EQ(sigaction(SIGPIPE, &action, &previous), 0);
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    for (auto const& [blocked, pending] : {std::pair(false, false), {true, false}, {true, true}}) {
        SCOPED_TRACE(testing::Message() << blocked << pending);
        pthread_sigmask(blocked ? SIG_BLOCK : SIG_UNBLOCK, &pipe, nullptr);
        if (pending) {
            ::raise(SIGPIPE);
        }
        FailUnheard();
        EXPECT_EQ(g_signals, 0);
        EXPECT_EQ(HasPipe([](sigset_t* set) { pthread_sigmask(SIG_BLOCK, nullptr, set); }), blocked);
        EXPECT_EQ(HasPipe(&sigpending), pending);
    }
    pthread_sigmask(SIG_UNBLOCK, &pipe, nullptr);
    EXPECT_EQ(g_signals, 1); // the one that was pending before
    sigaction(SIGPIPE, &previous, nullptr);
}

} // namespace
