// sha2 on every instruction set: the examples of FIPS 180, and published test vectors.

#include <gtest/gtest.h>

#include "hash/HashSupport.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

#include <qvxsys/sha2.h>

namespace fs = std::filesystem;
using namespace hash_test;

namespace {

TEST(Sha2, ExamplesOfTheStandard)
{
    struct
    {
        std::string message;
        char const* digests[5];
    } const table[] = {
        {"",
         {"da39a3ee5e6b4b0d3255bfef95601890afd80709", "d14a028c2a3a2bc9476102bb288234c415a2b01f828ea62ac5b3e42f",
          "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855",
          "38b060a751ac96384cd9327eb1b1e36a21fdb71114be07434c0cc7bf63f6e1da274edebfe76f65fbd51ad2f14898b95b",
          "cf83e1357eefb8bdf1542850d66d8007d620e4050b5715dc83f4a921d36ce9ce47d0d13c5d85f2b0ff8318d2877eec2f63b931bd4741"
          "7a81a538327af927da3e"}},
        {"abc",
         {"a9993e364706816aba3e25717850c26c9cd0d89d", "23097d223405d8228642a477bda255b32aadbce4bda0b3f7e36c9da7",
          "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad",
          "cb00753f45a35e8bb5a03d699ac65007272c32ab0eded1631a8b605a43ff5bed8086072ba1e7cc2358baeca134c825a7",
          "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a2192992a274fc1a836ba3c23a3feebbd454d4423643c"
          "e80e2a9ac94fa54ca49f"}},
        {std::string(1'000'000, 'a'),
         {"34aa973cd4c4daa4f61eeb2bdbad27316534016f", "20794655980c91d8bbb4c1ea97618a4bf03f42581948b2ee4ee7ad67",
          "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0",
          "9d0e1809716474cb086e834e310a4a1ced149e9c00f248527972cec5704c2a5b07b8b3dc38ecc4ebae97ddd87f3d8985",
          "e718483d0ce769644e2e42c7bc15b4638e1f98b13b2044285632a803afa973ebde0ff244877ea60a4cb0432ce577c31beb009c5c2c49"
          "aa2e4eadb217ad8cc09b"}},
    };
    std::mt19937 random(1);
    for (auto const& [message, digests] : table) {
        for (sha2::SHA_TYPE const type : kTypes) {
            std::string const expected = digests[type - sha2::SHA160];
            EXPECT_EQ(message.size() < 1000 ? CheckedDigest(type, message, "", random)
                                            : quorvex::hash::DigestOf(type, Bytes(message)).Hex(),
                      expected);
        }
    }
}

// ---- the vectors of the Cryptographic Algorithm Validation Program

// The file's "name = value" lines, one after the other.
class Vectors
{
public:
    explicit Vectors(std::string const& name)
    {
        if (char const* const folder = std::getenv("QVXSYS_TEST_DATA")) {
            m_in.open(fs::path(folder) / "sha" / name);
        }
    }
    bool IsOpen() const { return m_in.is_open(); }

    // The next value of this name; empty at the end.
    std::string Next(std::string const& name)
    {
        std::string const start = name + " = ";
        for (std::string line; std::getline(m_in, line);) {
            if (line.starts_with(start)) {
                line.erase(0, start.size());
                line.erase(line.find_last_not_of('\r') + 1);
                return line;
            }
        }
        return {};
    }

private:
    std::ifstream m_in;
};

char const* const kNames[] = {"SHA1", "SHA224", "SHA256", "SHA384", "SHA512"};

TEST(Sha2, PublishedMessages)
{
    for (sha2::SHA_TYPE const type : kTypes) {
        for (char const* const kind : {"ShortMsg.rsp", "LongMsg.rsp"}) {
            Vectors vectors(std::string(kNames[type - sha2::SHA160]) + kind);
            if (!vectors.IsOpen()) {
                GTEST_SKIP() << "QVXSYS_TEST_DATA names no folder with vectors";
            }
            std::mt19937 random(1);
            int count = 0;
            for (std::string bits; !(bits = vectors.Next("Len")).empty(); ++count) {
                std::string const message = FromHex(vectors.Next("Msg")).substr(0, std::stoul(bits) / 8);
                ASSERT_EQ(CheckedDigest(type, message, "", random), vectors.Next("MD")) << kind << bits;
            }
            EXPECT_GE(count, 64);
        }
    }
}

} // namespace

TEST(Sha2Object, AnotherDigestBeginsBehindTheEnd)
{
    sha2 hash;
    hash.GetHash(sha2::SHA224, Data("abc"), 3);
    std::string const ofAbc = hash.StringHash();
    hash.End();
    hash.Update(nullptr, 0);
    EXPECT_EQ(hash.StringHash(), ofAbc);
    hash.Update(Data("ab"), 2);
    EXPECT_THROW(static_cast<void>(hash.StringHash()), std::runtime_error);
    hash.Update(Data("c"), 1);
    hash.End();
    EXPECT_EQ(hash.StringHash(), ofAbc);
}

TEST(Sha2Object, Types)
{
    sha2 hash;
    EXPECT_EQ(hash.GetEnumType(), 0);
    EXPECT_EQ(hash.GetTypeString(), "Unknown!");
    EXPECT_FALSE(hash.IsBigEndian());
    char const* const names[] = {"SHA160", "SHA224", "SHA256", "SHA384", "SHA512"};
    for (int type = 1; type <= 5; ++type) {
        hash.Init(static_cast<sha2::SHA_TYPE>(type));
        EXPECT_EQ(hash.GetEnumType(), type);
        EXPECT_EQ(hash.GetTypeString(), names[type - 1]);
    }
}

TEST(Sha2Object, Errors)
{
    constexpr char const* kNoType = "Invalid SHA_TYPE type!";
    constexpr char const* kUnfinished = "Unfinished execution!";
    int length = 0;
    sha2 fresh;
    sha2 begun;
    begun.GetHash(sha2::SHA256, Data("a"), 1);
    begun.Init(sha2::SHA256);
    auto const type = [](int value) { return static_cast<sha2::SHA_TYPE>(value); };
    std::pair<std::function<void()>, char const*> const table[] = {
        {[&] { fresh.Init(type(0)); }, kNoType},
        {[&] { fresh.GetHash(type(6), Data("a"), 1); }, kNoType},
        {[&] { fresh.Init(type(-1)); }, kNoType},
        {[&] { fresh.Update(Data("a"), 1); }, kNoType},
        {[&] { fresh.Update(nullptr, 0); }, kNoType},
        {[&] { fresh.End(); }, kNoType},
        {[&] { static_cast<void>(fresh.HexHash()); }, kUnfinished},
        {[&] { static_cast<void>(begun.HexHash()); }, kUnfinished},
        {[&] { static_cast<void>(begun.StringHash()); }, kUnfinished},
        {[&] { static_cast<void>(begun.RawHash(length)); }, kUnfinished},
        {[&] { begun.Update(nullptr, 1); }, "Null data!"},
        {[&] { static_cast<void>(quorvex::hash::DigestOf(type(0), {})); }, kNoType},
        {[&] { quorvex::hash::Hmac(type(6), {}); }, kNoType},
    };
    for (auto const& [call, message] : table) {
        try {
            call();
            ADD_FAILURE() << "no " << message;
        } catch (std::runtime_error const& error) {
            EXPECT_STREQ(error.what(), message);
        }
    }
    begun.End();
    EXPECT_THROW(begun.Init(type(7)), std::runtime_error);
    EXPECT_EQ(begun.StringHash(), quorvex::hash::DigestOf(sha2::SHA256, {}).Hex());
}
