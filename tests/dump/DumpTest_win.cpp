// Dumps that dbghelp writes: of this process, and of a program that crashes.

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <qvxsys/CrashDump.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TSystem.h>

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

namespace {

using namespace qvxsys::minidump;

/// The types of the streams in a dump; empty if it is none.
std::set<std::uint32_t> Streams(std::filesystem::path const& path)
{
    std::uint32_t header[4] = {};
    std::ifstream in(path, std::ios::binary);
    std::set<std::uint32_t> types;
    if (!in.read(reinterpret_cast<char*>(header), sizeof header) || std::memcmp(header, "MDMP", 4) != 0) {
        return types;
    }
    in.seekg(header[3]);
    for (std::uint32_t i = 0; i < header[2]; ++i) {
        std::uint32_t entry[3];
        in.read(reinterpret_cast<char*>(entry), sizeof entry);
        types.insert(entry[0]);
    }
    return types;
}

} // namespace

TEST(CrashDump, OwnProcess)
{
    TemporaryFolder const folder;
    std::filesystem::path const file = folder.Path() / "a.dmp";
    ASSERT_EQ(WriteCrashDump(nullptr, TSystem::ProcessID(), file.wstring().c_str(), MiniDumpNormal), 1)
        << GetLastErrorString();
    std::set<std::uint32_t> const streams = Streams(file);
    for (std::uint32_t const type : {3u, 4u, 7u}) { // threads, modules, system
        EXPECT_EQ(streams.count(type), 1u) << type;
    }
    EXPECT_EQ(streams.count(6), 0u) << "nothing crashed";
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
    ASSERT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
    EXPECT_EQ(Streams(std::filesystem::directory_iterator(folder.Path())->path()).count(6), 1u);
}
