// Digests in one call, of files and streams; message authentication codes; comparison.

#include <gtest/gtest.h>

#include "hash/HashSupport.h"

#include <fstream>
#include <sstream>

#include <qvxsys/QuorvexException.h>
#include <qvxsys/TStringCore.h>

#include "support/TemporaryFolder.h"

using namespace hash_test;
using namespace quorvex::hash;

namespace {

// RFC 2202 for SHA-1, RFC 4231 for the others.
struct
{
    std::string key;
    std::string message;
    char const* codes[5];
} const kCodes[] = {
    {std::string(20, '\x0B'),
     "Hi There",
     {"b617318655057264e28bc0b6fb378c8ef146be00", "896fb1128abbdf196832107cd49df33f47b4b1169912ba4f53684b22",
      "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7",
      "afd03944d84895626b0825f4ab46907f15f9dadbe4101ec682aa034c7cebc59cfaea9ea9076ede7f4af152e8b2fa9cb6",
      "87aa7cdea5ef619d4ff0b4241a1d6cb02379f4e2ce4ec2787ad0b30545e17cdedaa833b7d6b8a702038b274eaea3f4e4be9d914eeb61f170"
      "2e696c203a126854"}},
    {std::string(131, '\xAA'),
     "This is a test using a larger than block-size key and a larger than block-size data. The key needs to be hashed "
     "before being used by the HMAC algorithm.",
     {"", "3a854166ac5d9f023f54d517d0b39dbd946770db9c2b95c9f6f565d1",
      "9b09ffa71b942fcb27635fbcd5b0e944bfdc63644f0713938a7f51535c3a35e2",
      "6617178e941f020d351e2f254e8fd32c602420feb0b8fb9adccebb82461e99c5a678cc31e799176d3860e6110c46523e",
      "e37b6a775dc87dbaa4dfa9f96e5e3ffddebd71f8867289865df5a32d20cdc944b6022cac3c4982b10d5eeb55c3e4de15134676fb6de04460"
      "65c97440fa8c6a58"}},
};

TEST(Codes, ExamplesOfTheStandards)
{
    for (auto const& [key, message, codes] : kCodes) {
        for (sha2::SHA_TYPE const type : kTypes) {
            std::string const expected = codes[type - sha2::SHA160];
            EXPECT_TRUE(expected.empty() || HmacOf(type, Bytes(key), Bytes(message)).Hex() == expected) << type;
            EXPECT_EQ(Hmac(type, Bytes(key)).GetEnumType(), type);
        }
    }
}

// Keys around the block's length, and messages around the places where padding changes.
TEST(Digests, AgreeHoweverTheyAreMade)
{
    std::mt19937 random(3);
    for (sha2::SHA_TYPE const type : kTypes) {
        for (std::size_t const keySize : {0u, 1u, 63u, 64u, 65u, 127u, 128u, 129u, 200u}) {
            for (std::size_t const size : {0u, 1u, 55u, 56u, 64u, 111u, 112u, 128u, 517u}) {
                CheckedDigest(type, RandomBytes(random, size), RandomBytes(random, keySize), random);
            }
        }
    }
}

/// The code and the message of what `call` throws.
template<class Call>
std::pair<unsigned, std::string> Error(Call call)
{
    try {
        static_cast<void>(call());
    } catch (QuorvexException const& error) {
        EXPECT_EQ(error.GetErrorSource(), TError::SourceLibrary);
        return {error.GetErrorCode(), error.GetMessagesFront().toStdString()};
    }
    return {};
}

} // namespace

TEST(Digests, OfOneCall)
{
    std::array<std::byte, 20> const ofAbc = DigestOf<sha2::SHA160>(Bytes("abc"));
    Digest const digest = DigestOf(sha2::SHA160, Bytes("abc"));
    EXPECT_EQ(digest.Hex(), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_TRUE(EqualInConstantTime(digest.Bytes(), ofAbc));
    EXPECT_EQ(digest.Size(), 20u);
    EXPECT_EQ(Digest().Size(), 0u);
    EXPECT_EQ(Digest().Hex(), "");
    EXPECT_FALSE(digest == DigestOf(sha2::SHA160, Bytes("abd")));
    EXPECT_FALSE(digest == DigestOf(sha2::SHA224, Bytes("abc")));
    static_assert(DigestLength(static_cast<sha2::SHA_TYPE>(0)) == 0 && DigestLength(sha2::SHA384) == 48);
}

TEST(Digests, ComparedInConstantTime)
{
    std::string const text(40, 'x');
    EXPECT_TRUE(EqualInConstantTime({}, {}));
    EXPECT_TRUE(EqualInConstantTime(Bytes(text), Bytes(std::string(text))));
    EXPECT_FALSE(EqualInConstantTime(Bytes(text), Bytes(text).first(39)));
    for (std::size_t i = 0; i < text.size() * 8; ++i) {
        std::string other = text;
        other[i / 8] = static_cast<char>(other[i / 8] ^ (1 << i % 8));
        EXPECT_FALSE(EqualInConstantTime(Bytes(text), Bytes(other))) << i;
    }
}

TEST(Digests, OfFilesAndStreams)
{
    TemporaryFolder const folder;
    std::mt19937 random(11);
    for (std::size_t const size : {0u, 1u, 65536u, 65537u, 300'000u}) {
        std::string const bytes = RandomBytes(random, size);
        std::filesystem::path const path = folder.Path() / u8"gr\u00FC\u00DFe \u65E5";
        std::ofstream(path, std::ios::binary) << bytes;
        for (sha2::SHA_TYPE const type : kTypes) {
            EXPECT_EQ(DigestOfFile(type, path), DigestOf(type, Bytes(bytes)));
            std::istringstream in("x" + bytes);
            in.exceptions(std::ios::failbit | std::ios::badbit | std::ios::eofbit);
            in.get();
            EXPECT_EQ(DigestOfStream(type, in), DigestOf(type, Bytes(bytes)));
            EXPECT_TRUE(in.good());
        }
    }
}

TEST(Digests, FileErrors)
{
    TemporaryFolder const folder;
    std::filesystem::path const missing = folder.Path() / u8"fehlt \u00FC";
    auto const quoted = [](std::filesystem::path const& path) {
        return "\"" + TStringCore(path.c_str()).toStdString() + "\"";
    };
    EXPECT_EQ(Error([&] { return DigestOfFile(sha2::SHA256, missing); }),
              std::pair(0xE2073A9Cu, "Cannot open " + quoted(missing) + ": No such file or directory"));
    // A folder cannot be opened, or cannot be read.
    std::string const error = Error([&] { return DigestOfFile(sha2::SHA256, folder.Path()); }).second;
    std::string const name = quoted(folder.Path());
    EXPECT_TRUE(error == "Cannot read " + name + ": Is a directory" ||
                error == "Cannot open " + name + ": Permission denied")
        << error;
    EXPECT_THROW(static_cast<void>(DigestOfFile(static_cast<sha2::SHA_TYPE>(0), missing)), std::runtime_error);
}

TEST(Digests, StreamErrors)
{
    struct Broken : std::streambuf
    {
        int_type underflow() override { throw std::ios_base::failure("broken"); }
    } broken;
    std::istream failing(&broken);
    std::istream without(nullptr);
    std::istringstream failed("abc");
    failed.setstate(std::ios::failbit);
    for (std::istream* const in : {&failing, &without, static_cast<std::istream*>(&failed)}) {
        EXPECT_EQ(Error([in] { return DigestOfStream(sha2::SHA512, *in); }),
                  std::pair(0x6BD14F02u, std::string("Cannot read the stream.")));
    }
    std::istringstream atEnd("abc");
    atEnd.setstate(std::ios::eofbit);
    EXPECT_EQ(DigestOfStream(sha2::SHA512, atEnd), DigestOf(sha2::SHA512, {}));
}
