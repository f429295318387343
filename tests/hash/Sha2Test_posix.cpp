// sha2 beside the programs that every system of this kind has.

#include <gtest/gtest.h>

#include "hash/HashSupport.h"

#include <fstream>

#include <qvxsys/sha2.h>

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

using namespace hash_test;

namespace {

TEST(Sha2Programs, Agree)
{
    TemporaryFolder const folder;
    std::mt19937 random(20417);
    std::vector<std::string> messages;
    std::vector<std::string> files;
    // Every length past the longest block and its padding, then some.
    for (std::size_t size = 0; size < 100'000; size += size < 140 ? 1 : size) {
        messages.push_back(RandomBytes(random, size + (size > 256 ? random() % 1000 : 0)));
        files.push_back((folder.Path() / std::to_string(files.size())).string());
        std::ofstream(files.back(), std::ios::binary) << messages.back();
    }
    char const* const programs[] = {"sha1sum", "sha224sum", "sha256sum", "sha384sum", "sha512sum"};
    for (sha2::SHA_TYPE const type : kTypes) {
        std::string lines;
        for (std::size_t i = 0; i < messages.size(); ++i) {
            lines += CheckedDigest(type, messages[i], "", random) + "  " + files[i] + "\n";
        }
        std::vector<std::string> command{"/usr/bin/env", programs[type - sha2::SHA160]};
        command.insert(command.end(), files.begin(), files.end());
        EXPECT_EQ(lines, RunChild(command).out);
    }
}

} // namespace
