// Digests in one call, of files and streams; message authentication codes; comparison.

#include "hash/HashSupport.h"

#include <fstream>
#include <sstream>

#include <qvxsys/QuorvexException.h>
#include <qvxsys/TStringCore.h>

#include "support/TemporaryFolder.h"

using namespace hash_test;
using namespace quorvex::hash;

namespace {

std::string const kCounting = "\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F\x10\x11\x12\x13\x14\x15"
                              "\x16\x17\x18\x19";

// RFC 2202 for SHA-1, RFC 4231 for the others; those with no digest have a test of their own for it.
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
    {"Jefe",
     "what do ya want for nothing?",
     {"effcdf6ae5eb2fa2d27416d5f184df9c259a7c79", "a30e01098bc6dbbf45690f3a7e9e6d0f8bbea2a39e6148008fd05e44",
      "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843",
      "af45d2e376484031617f78d2b58a6b1b9c7ef464f5a01b47e42ec3736322445e8e2240ca5e69e2c78b3239ecfab21649",
      "164b7a7bfcf819e2e395fbe73b56e0a387bd64222e831fd610270cd7ea2505549758bf75c05a994a6d034f65f8f0e6fdcaeab1a34d4a6b4b"
      "636e070a38bce737"}},
    {std::string(20, '\xAA'),
     std::string(50, '\xDD'),
     {"125d7342b9ac11cd91a39af48aa17b4f63f175d3", "7fb3cb3588c6c1f6ffa9694d7d6ad2649365b0c1f65d69d1ec8333ea",
      "773ea91e36800e46854db8ebd09181a72959098b3ef8c122d9635514ced565fe",
      "88062608d3e6ad8a0aa2ace014c8a86f0aa635d947ac9febe83ef4e55966144b2a5ab39dc13814b94e3ab6e101a34f27",
      "fa73b0089d56a284efb0f0756c890be9b1b5dbdd8ee81a3655f83e33b2279d39bf3e848279a722c806b485a47e67c807b946a337bee89426"
      "74278859e13292fb"}},
    {kCounting,
     std::string(50, '\xCD'),
     {"4c9007f4026250c6bc8414f9bf50c86c2d7235da", "6c11506874013cac6a2abc1bb382627cec6a90d86efc012de7afec5a",
      "82558a389a443c0ea4cc819899f2083a85f0faa3e578f8077a2e3ff46729665b",
      "3e8a69b7783c25851933ab6290af6ca77a9981480850009cc5577c6e1f573b4e6801dd23c4a7d679ccf8a386c674cffb",
      "b0ba465637458c6990e5a8c5f61d4af7e576d97ff94b872de76f8050361ee3dba91ca5c11aa25eb4d679275cc5788063a5f19741120c4f2d"
      "e2adebeb10a298dd"}},
    {std::string(80, '\xAA'),
     "Test Using Larger Than Block-Size Key - Hash Key First",
     {"aa4ae5e15272d00e95705637ce8a3b55ed402112", "", "", "", ""}},
    {std::string(80, '\xAA'),
     "Test Using Larger Than Block-Size Key and Larger Than One Block-Size Data",
     {"e8e99d0f45237d786d6bbaa7965c7808bbff1a91", "", "", "", ""}},
    {std::string(131, '\xAA'),
     "Test Using Larger Than Block-Size Key - Hash Key First",
     {"", "95e9a0db962095adaebe9b2d6f0dbce2d499f112f2d2b7273fa6870e",
      "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54",
      "4ece084485813e9088d2c63a041bc5b44f9ef1012a2b588f3cd11f05033ac4c60c2ef6ab4030fe8296248df163f44952",
      "80b24263c7c1a3ebb71493c1dd7be8b49b46d1f41b4aeec1121b013783f8f3526b56d037e05f2598bd0fd2215d6a1e5295e64f73f63f0aec"
      "8b915a985d786598"}},
    {std::string(131, '\xAA'),
     "This is a test using a larger than block-size key and a larger than block-size data. The key needs to be hashed "
     "before being used by the HMAC algorithm.",
     {"", "3a854166ac5d9f023f54d517d0b39dbd946770db9c2b95c9f6f565d1",
      "9b09ffa71b942fcb27635fbcd5b0e944bfdc63644f0713938a7f51535c3a35e2",
      "6617178e941f020d351e2f254e8fd32c602420feb0b8fb9adccebb82461e99c5a678cc31e799176d3860e6110c46523e",
      "e37b6a775dc87dbaa4dfa9f96e5e3ffddebd71f8867289865df5a32d20cdc944b6022cac3c4982b10d5eeb55c3e4de15134676fb6de04460"
      "65c97440fa8c6a58"}},
};

using Codes = OnEverySet;
HASH_TEST_ON_EVERY_SET(Codes);

TEST_P(Codes, ExamplesOfTheStandards)
{
    std::mt19937 random(3);
    for (auto const& [key, message, codes] : kCodes) {
        for (sha2::SHA_TYPE const type : kTypes) {
            std::string const expected = codes[type - sha2::SHA160];
            if (expected.empty()) {
                continue;
            }
            EXPECT_EQ(HmacOf(type, Bytes(key), Bytes(message)).Hex(), expected);
            Hmac hmac(type, Bytes(key));
            EXPECT_EQ(hmac.GetEnumType(), type);
            for (int round = 0; round < 2; ++round) {
                Hmac copy = hmac;
                for (std::string_view const piece : Pieces(random, message)) {
                    hmac.Update(Bytes(piece));
                }
                copy.Update(Bytes(message));
                EXPECT_EQ(hmac.End().Hex(), expected);
                EXPECT_EQ(copy.End(), HmacOf(type, Bytes(key), Bytes(message)));
            }
        }
    }
    // No key and no message: RFC 2104 allows both; the code is that of a block of zeros as the key.
    EXPECT_EQ(HmacOf(sha2::SHA256, {}, {}), HmacOf(sha2::SHA256, Bytes(std::string(64, '\0')), {}));
}

std::string Message(QuorvexException const& error)
{
    return error.GetMessagesFront().toStdString();
}

template<class Call>
void ExpectError(Call call, std::string const& message, unsigned code)
{
    try {
        static_cast<void>(call());
        ADD_FAILURE() << "no " << message;
    } catch (QuorvexException const& error) {
        EXPECT_EQ(Message(error), message);
        EXPECT_EQ(error.GetErrorCode(), code);
        EXPECT_EQ(error.GetErrorSource(), TError::SourceLibrary);
    }
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
    ExpectError([&] { return DigestOfFile(sha2::SHA256, missing); },
                "Cannot open " + quoted(missing) + ": No such file or directory", 0xE2073A9C);
    // A folder cannot be opened, or cannot be read.
    try {
        static_cast<void>(DigestOfFile(sha2::SHA256, folder.Path()));
        ADD_FAILURE();
    } catch (QuorvexException const& error) {
        std::string const name = quoted(folder.Path());
        EXPECT_TRUE(Message(error) == "Cannot read " + name + ": Is a directory" ||
                    Message(error) == "Cannot open " + name + ": Permission denied")
            << Message(error);
    }
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
        ExpectError([in] { return DigestOfStream(sha2::SHA512, *in); }, "Cannot read the stream.", 0x6BD14F02);
    }
    std::istringstream atEnd("abc");
    atEnd.setstate(std::ios::eofbit);
    EXPECT_EQ(DigestOfStream(sha2::SHA512, atEnd), DigestOf(sha2::SHA512, {}));
}
