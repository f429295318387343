// Programs that crash with and without the handler: they end alike, and the dump tells how.

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <qvxsys/CrashHandler.h>
#include <qvxsys/TStringCore.h>

#include "DumpSupport.h"
#include "MinidumpReader.h"
#include "support/TemporaryFolder.h"

namespace {

struct Kind
{
    char const* name;
    int signal; ///< in the dump
    int code;   ///< si_code
    char const* where;
};

class CrashTest : public testing::TestWithParam<Kind>
{};

constexpr Kind kKinds[] = {
    {"write", SIGSEGV, SEGV_MAPERR, "CrashHere"},
    {"noncanonical", SIGSEGV, SI_KERNEL, "CrashHere"},
    {"divide", SIGFPE, FPE_INTDIV, "CrashHere"},
    {"illegal", SIGILL, ILL_ILLOPN, "CrashHere"},
    {"breakpoint", SIGTRAP, SI_KERNEL, "CrashHere"},
    {"abort", SIGABRT, SI_TKILL, "CrashHere"},
    {"terminate", SIGABRT, SI_TKILL, "CrashHere"},
    {"sent", SIGSEGV, SI_USER, "CrashHere"},
    {"overflow", SIGSEGV, SEGV_MAPERR, "UseTheStack"},
    {"on a thread", SIGSEGV, SEGV_ACCERR, "UseTheStack"},
    {"malloc", SIGABRT, SI_TKILL, "malloc"},
    {"two at once", SIGSEGV, SEGV_MAPERR, "CrashHere"},
    {"chained", SIGSEGV, SEGV_MAPERR, "CrashHere"},
    {"bus", SIGBUS, BUS_ADRERR, "CrashHere"},
    {"forbidden", SIGSYS, 1 /* SYS_SECCOMP */, "CrashHere"},
};

} // namespace

TEST_P(CrashTest, DiesAsItWouldHaveAndLeavesADump)
{
    SKIP_WITHOUT_TRACING();
    Kind const& kind = GetParam();
    TemporaryFolder const folder;
    std::string const here = folder.Path() / "%p"; // a folder of that name
    std::filesystem::create_directory(here);
    ChildResult const without = RunChild({DUMP_VICTIM, "crash", kind.name});
    ChildResult const with = RunChild({"/usr/bin/env", "-C", here, DUMP_VICTIM, "crash", kind.name, "%%%p.dmp"});
    EXPECT_EQ(with.status, without.status);
    EXPECT_EQ(with.out, without.out);
    EXPECT_EQ(with.err, without.err);

    ASSERT_EQ(Entries(here), 1U);
    std::filesystem::path const file = std::filesystem::directory_iterator(here)->path();
    MinidumpReader const dump(file);
    EXPECT_EQ(file.filename().string(), "%" + std::to_string(dump.In<std::uint32_t>(15, 8)) + ".dmp");
    ASSERT_TRUE(dump.Has(6));
    EXPECT_EQ(dump.In<std::uint32_t>(6, 8), static_cast<std::uint32_t>(kind.signal));
    EXPECT_EQ(dump.In<std::int32_t>(6, 12), kind.code);
    if (kind.signal == SIGSEGV && kind.code == SEGV_MAPERR && std::string(kind.where) == "CrashHere") {
        EXPECT_EQ(dump.In<std::uint64_t>(6, 24), 0x1230u);
    }
    std::string const stack = Debugger(file, {"thread list", "bt 8"});
    if (!stack.empty()) {
        EXPECT_NE(stack.find("stop reason = signal SIG"), std::string::npos) << stack;
        EXPECT_NE(stack.find(kind.where), std::string::npos) << stack;
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, CrashTest, testing::ValuesIn(kKinds), [](testing::TestParamInfo<Kind> const& kind) {
    std::string name = kind.param.name;
    std::erase(name, ' ');
    return name;
});

TEST(CrashHandler, InstallingAndRemoving)
{
    struct sigaction before
    {};
    struct sigaction after
    {};
    sigaction(SIGSEGV, nullptr, &before);
    EXPECT_FALSE(quorvex::crash::InstallHandler(TStringView(u"a\0b", 3)));
    EXPECT_EQ(errno, EINVAL);
    EXPECT_FALSE(quorvex::crash::InstallHandler(TStringCore(std::string(5000, 'x'))));
    EXPECT_EQ(errno, ENAMETOOLONG);
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(quorvex::crash::InstallHandler(L"/nonexistent/a.dmp"));
        EXPECT_FALSE(quorvex::crash::InstallHandler(u"/nonexistent/a.dmp"));
        EXPECT_EQ(errno, EALREADY);
        quorvex::crash::RemoveHandler();
        quorvex::crash::RemoveHandler();
    }
    sigaction(SIGSEGV, nullptr, &after);
    EXPECT_EQ(before.sa_handler, after.sa_handler);
    EXPECT_TRUE(quorvex::crash::PrepareThread());
}
