// The examples of <qvxsys/sha2.h> and <qvxsys/Hash.h>.

#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <span>
#include <sstream>
#include <string>
#include <string_view>

#include <qvxsys/Hash.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/sha2.h>

namespace {

int g_failures = 0;

void Expect(std::string const& actual, std::string const& expected)
{
    if (actual != expected) {
        std::cerr << actual << " instead of " << expected << '\n';
        ++g_failures;
    }
}

constexpr char const* kSha256OfAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

void AtOnceAndInPieces()
{
    unsigned char const data[] = {'a', 'b', 'c'};
    sha2 hash;
    Expect(hash.GetHash(sha2::SHA256, data, sizeof data), kSha256OfAbc);

    hash.Init(sha2::SHA256);
    for (unsigned char const& piece : data) {
        hash.Update(&piece, 1);
    }
    hash.End();
    Expect(hash.StringHash(), kSha256OfAbc);
}

void WithoutAnObject()
{
    using namespace quorvex::hash;
    std::string_view const text = "abc";
    std::array<std::byte, 32> const id = DigestOf<sha2::SHA256>(std::as_bytes(std::span(text)));
    Expect(EqualInConstantTime(id, DigestOf(sha2::SHA256, std::as_bytes(std::span(text))).Bytes()) ? "equal" : "not",
           "equal");

    std::istringstream stream("abc");
    Expect(DigestOfStream(sha2::SHA256, stream).Hex(), kSha256OfAbc);

    auto const path = std::filesystem::temp_directory_path() / "qvxsys-example-hash.txt";
    std::ofstream(path, std::ios::binary) << "abc";
    Expect(DigestOfFile(sha2::SHA256, path).Hex(), kSha256OfAbc);
    std::filesystem::remove(path);
    try {
        std::cout << DigestOfFile(sha2::SHA256, path).Hex() << '\n';
        ++g_failures;
    } catch (QuorvexException const& error) {
        std::cout << error.CollateMessagesForLog().toStdString();
    }
}

void Authentication()
{
    using namespace quorvex::hash;
    auto const bytes = [](std::string_view text) { return std::as_bytes(std::span(text)); };
    Digest const sent = HmacOf(sha2::SHA256, bytes("key"), bytes("header body"));

    Hmac hmac(sha2::SHA256, bytes("key"));
    hmac.Update(bytes("header "));
    hmac.Update(bytes("body"));
    Expect(EqualInConstantTime(hmac.End().Bytes(), sent.Bytes()) ? "accepted" : "refused", "accepted");
    hmac.Update(bytes("header b0dy"));
    Expect(EqualInConstantTime(hmac.End().Bytes(), sent.Bytes()) ? "accepted" : "refused", "refused");
}

} // namespace

int main()
{
    AtOnceAndInPieces();
    WithoutAnObject();
    Authentication();
    return g_failures == 0 ? 0 : 1;
}
