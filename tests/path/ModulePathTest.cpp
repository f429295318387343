#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <qvxsys/qvxsys.h>

namespace {

TEST(ModulePath, OfProgramAndLibrary)
{
    TPathCore const program = TSystem::ExecutableFilename();
    EXPECT_EQ(program.Stem(), u"path_test");
    EXPECT_TRUE(std::filesystem::exists(qvxsys::ToFileSystem(program)));
    EXPECT_EQ(TSystem::ModuleFilename(nullptr), program);
    static int const here = 0;
    EXPECT_EQ(TSystem::ModuleFilename(&here), program);
    EXPECT_EQ(TSystem::ExecutablePath(), program.Parent());

    TPathCore const library = TSystem::ModuleFilename(reinterpret_cast<void const*>(&qvxsys::detail::PathFromBytes));
    EXPECT_TRUE(std::filesystem::exists(qvxsys::ToFileSystem(library)));
    EXPECT_TRUE(library == program || library.Filename().GenericString().contains(u"qvxsys")) << library;
    EXPECT_EQ(TSystem::ModulePath(u"somewhere" / library.Filename()), library);
    EXPECT_EQ(TSystem::ModulePath(program.Filename()), program);
}

TEST(ModulePath, WhatIsNoModule)
{
    int const local = 0;
    EXPECT_EQ(TSystem::ModuleFilename(&local), u"");
    EXPECT_EQ(TSystem::ModuleFilename(reinterpret_cast<void const*>(16)), u"");
    EXPECT_EQ(TSystem::ModuleDirectory(&local), u"");
    EXPECT_EQ(TSystem::ModulePath(u"no-such-module.so"), u"");
    EXPECT_EQ(TSystem::ModulePath(u"C:/"), u"");
    EXPECT_EQ(TSystem::unmangleClassName("4T\xC3\xA9st"), u"4T\u00E9st");
    EXPECT_EQ(TSystem::unmangleClassName(nullptr), u"");
}

} // namespace
