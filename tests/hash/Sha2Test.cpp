// sha2 on every instruction set: the examples of FIPS 180, and published test vectors.

#include "hash/HashSupport.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <utility>

#include <qvxsys/sha2.h>

namespace fs = std::filesystem;
using namespace hash_test;

namespace {

using Sha2 = OnEverySet;
HASH_TEST_ON_EVERY_SET(Sha2);

char const* const kTwoBlocks32 = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
char const* const kTwoBlocks64 = "abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmno"
                                 "ijklmnopjklmnopqklmnopqrlmnopqrsmnopqrstnopqrstu";

TEST_P(Sha2, ExamplesOfTheStandard)
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
        {kTwoBlocks32,
         {"84983e441c3bd26ebaae4aa1f95129e5e54670f1", "75388b16512776cc5dba5da1fd890150b0c6455cb4f58b1952522525",
          "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1",
          "3391fdddfc8dc7393707a65b1b4709397cf8b1d162af05abfe8f450de5f36bc6b0455a8520bc4e6f5fe95b1fe3c8452b",
          "204a8fc6dda82f0a0ced7beb8e08a41657c16ef468b228a8279be331a703c33596fd15c13b1b07f9aa1d3bea57789ca031ad85c7a71d"
          "d70354ec631238ca3445"}},
        {kTwoBlocks64,
         {"a49b2446a02c645bf419f995b67091253a04a259", "c97ca9a559850ce97a04a96def6d99a9e0e0e2ab14e6b8df265fc0b3",
          "cf5b16a778af8380036ce59e7b0492370b249b11e8f07a51afac45037afee9d1",
          "09330c33f71147e83d192fc782cd1b4753111b173b3b05d22fa08086e3b0f712fcc7c71a557e2db966c3e9fa91746039",
          "8e959b75dae313da8cf4f72814fc143f8f7779c6eb9f7fa17299aeadb6889018501d289e4900f7e4331b99dec4b5433ac7d329eeb6dd"
          "26545e96e55b874be909"}},
        {std::string(1'000'000, 'a'),
         {"34aa973cd4c4daa4f61eeb2bdbad27316534016f", "20794655980c91d8bbb4c1ea97618a4bf03f42581948b2ee4ee7ad67",
          "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0",
          "9d0e1809716474cb086e834e310a4a1ced149e9c00f248527972cec5704c2a5b07b8b3dc38ecc4ebae97ddd87f3d8985",
          "e718483d0ce769644e2e42c7bc15b4638e1f98b13b2044285632a803afa973ebde0ff244877ea60a4cb0432ce577c31beb009c5c2c49"
          "aa2e4eadb217ad8cc09b"}},
    };
    sha2 hash;
    for (auto const& [message, digests] : table) {
        for (sha2::SHA_TYPE const type : kTypes) {
            std::string const expected = digests[type - sha2::SHA160];
            EXPECT_EQ(hash.GetHash(type, Data(message), message.size()), expected);
            EXPECT_EQ(hash.StringHash(), expected);
            EXPECT_STREQ(hash.HexHash(), expected.c_str());
            int length = -1;
            auto const* const raw = static_cast<void const*>(hash.RawHash(length));
            EXPECT_EQ(static_cast<std::size_t>(length), expected.size() / 2);
            EXPECT_EQ(std::string_view(static_cast<char const*>(raw), static_cast<std::size_t>(length)),
                      FromHex(expected));
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

TEST_P(Sha2, PublishedMessages)
{
    for (sha2::SHA_TYPE const type : kTypes) {
        for (char const* const kind : {"ShortMsg.rsp", "LongMsg.rsp"}) {
            Vectors vectors(std::string(kNames[type - sha2::SHA160]) + kind);
            if (!vectors.IsOpen()) {
                GTEST_SKIP() << "QVXSYS_TEST_DATA names no folder with vectors";
            }
            sha2 hash;
            std::mt19937 random(1);
            int count = 0;
            for (std::string bits; !(bits = vectors.Next("Len")).empty(); ++count) {
                std::string const message = FromHex(vectors.Next("Msg")).substr(0, std::stoul(bits) / 8);
                std::string const expected = vectors.Next("MD");
                ASSERT_EQ(hash.GetHash(type, Data(message), message.size()), expected) << kind << bits;
                hash.Init(type);
                for (std::string_view const piece : Pieces(random, message)) {
                    hash.Update(Data(piece), piece.size());
                }
                hash.End();
                ASSERT_EQ(hash.StringHash(), expected) << kind << bits;
            }
            EXPECT_GE(count, 64);
        }
    }
}

// 100,000 digests, each of the three before it.
TEST_P(Sha2, PublishedChains)
{
    for (sha2::SHA_TYPE const type : kTypes) {
        Vectors vectors(std::string(kNames[type - sha2::SHA160]) + "Monte.rsp");
        if (!vectors.IsOpen()) {
            GTEST_SKIP() << "QVXSYS_TEST_DATA names no folder with vectors";
        }
        std::string seed = FromHex(vectors.Next("Seed"));
        std::size_t const size = seed.size();
        ASSERT_EQ(size, quorvex::hash::DigestLength(type));
        sha2 hash;
        for (int count = 0; count < 100; ++count) {
            std::string last = seed + seed + seed;
            for (int i = 0; i < 1000; ++i) {
                hash.Init(type);
                hash.Update(Data(last), last.size());
                hash.End();
                int length = 0;
                auto const* const raw = static_cast<void const*>(hash.RawHash(length));
                last.erase(0, size).append(static_cast<char const*>(raw), size);
            }
            seed = last.substr(2 * size);
            ASSERT_EQ(hash.StringHash(), vectors.Next("MD")) << count;
        }
    }
}

// ---- copies, reuse

TEST_P(Sha2, CopiesGoOnByThemselves)
{
    std::mt19937 random(7);
    std::string const message = RandomBytes(random, 517);
    std::string_view const text = message;
    for (sha2::SHA_TYPE const type : kTypes) {
        for (std::size_t const at : {0u, 1u, 64u, 100u, 128u, 300u}) {
            sha2 first;
            first.Init(type);
            first.Update(Data(text), at);
            sha2 second = first;
            sha2 moved = std::move(first);
            second.Update(Data("x"), 1);
            second.End();
            moved.Update(Data(text.substr(at)), message.size() - at);
            moved.End();
            EXPECT_EQ(moved.StringHash(), quorvex::hash::DigestOf(type, Bytes(message)).Hex());
            EXPECT_EQ(second.StringHash(), quorvex::hash::DigestOf(type, Bytes(message.substr(0, at) + "x")).Hex());
            first = second;
            EXPECT_EQ(first.StringHash(), second.StringHash());
            EXPECT_STREQ(first.HexHash(), second.HexHash());
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
        {[&] { fresh.Init(type(6)); }, kNoType},
        {[&] { fresh.Init(type(-1)); }, kNoType},
        {[&] { fresh.GetHash(type(9), Data("a"), 1); }, kNoType},
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
