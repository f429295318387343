// Dumps that dbghelp writes: of this process, and of a program that crashes.

#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <qvxsys/CrashDump.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TSystem.h>

#include "MinidumpReader.h"
#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

using namespace qvxsys::minidump;

TEST(CrashDump, OwnProcess)
{
    TemporaryFolder const folder;
    std::filesystem::path const file = folder.Path() / "a.dmp";
    ASSERT_EQ(WriteCrashDump(nullptr, TSystem::ProcessID(), file.wstring().c_str(), MiniDumpNormal), 1)
        << GetLastErrorString();
    MinidumpReader const dump(file);
    EXPECT_EQ(dump.threads.count(static_cast<std::uint32_t>(TSystem::ThreadID())), 1u);
    EXPECT_FALSE(dump.modules.empty());
    EXPECT_FALSE(dump.Has(6)) << "nothing crashed";
}

TEST(CrashDump, Refusals)
{
    TemporaryFolder const folder;
    TStringCore const none((folder.Path() / "none" / "a.dmp").u16string().c_str());
    TStringCore const file((folder.Path() / "a.dmp").u16string().c_str());
    EXPECT_EQ(WriteCrashDump(nullptr, TSystem::ProcessID(), none, MiniDumpNormal), 0);
    EXPECT_EQ(WriteCrashDump(nullptr, TSystem::ProcessID(), file, 0x02000000), 0);
    EXPECT_EQ(WriteCrashDump(nullptr, 0xFFFFFFF0, file, MiniDumpNormal), 0);
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(CrashHandler, WritesADumpAndLetsTheProgramDie)
{
    TemporaryFolder const folder;
    ChildResult const result = RunChild({CRASHING_PROGRAM, (folder.Path() / "a-%p.dmp").string()});
    EXPECT_NE(result.status, 0);
    ASSERT_EQ(Entries(folder.Path()), 1U);
    EXPECT_TRUE(MinidumpReader(std::filesystem::directory_iterator(folder.Path())->path()).Has(6));
}
