// Digests of arbitrary bytes in arbitrary pieces: the same in every instruction set, at once and piece by piece, by
// copies in mid-message and by a stream; and the authentication code against its definition.

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>

#include <qvxsys/Hash.h>
#include <qvxsys/Processor.h>

namespace {

using namespace quorvex::hash;

void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

std::span<std::byte const> Bytes(std::string_view text)
{
    return std::as_bytes(std::span(text));
}

unsigned char const* Data(std::string_view text)
{
    return static_cast<unsigned char const*>(static_cast<void const*>(text.data()));
}

// RFC 2104, section 2.
Digest CodeByDefinition(sha2::SHA_TYPE type, std::string_view key, std::string_view message)
{
    std::size_t const block = type >= sha2::SHA384 ? 128 : 64;
    auto const text = [](Digest const& digest) {
        return std::string(static_cast<char const*>(static_cast<void const*>(digest.Bytes().data())), digest.Size());
    };
    std::string inner = key.size() > block ? text(DigestOf(type, Bytes(key))) : std::string(key);
    inner.resize(block);
    std::string outer = inner;
    for (std::size_t i = 0; i < block; ++i) {
        inner[i] = static_cast<char>(inner[i] ^ 0x36);
        outer[i] = static_cast<char>(outer[i] ^ 0x5C);
    }
    return DigestOf(type, Bytes(outer + text(DigestOf(type, Bytes(inner + std::string(message))))));
}

} // namespace

// The first byte is the type, the second the seed of the pieces' lengths, the third the length of a key in the rest.
extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size < 3) {
        return 0;
    }
    auto const type = static_cast<sha2::SHA_TYPE>(1 + data[0] % 5);
    unsigned seed = data[1];
    std::string const message(static_cast<char const*>(static_cast<void const*>(data + 3)), size - 3);
    std::string_view const key = std::string_view(message).substr(0, data[2]);
    quorvex::cpu::LimitInstructionSet(quorvex::cpu::InstructionSet::Portable);
    Digest const expected = DigestOf(type, Bytes(message));
    Digest const expectedCode = CodeByDefinition(type, key, message);
    for (int set = 0; set < 3; ++set) {
        quorvex::cpu::LimitInstructionSet(static_cast<quorvex::cpu::InstructionSet>(set));
        Require(DigestOf(type, Bytes(message)) == expected);
        std::istringstream in(message);
        Require(DigestOfStream(type, in) == expected);
        sha2 hash;
        hash.Init(type);
        Hmac hmac(type, Bytes(key));
        for (std::string_view rest = message; !rest.empty();) {
            seed = seed * 1103515245 + 12345;
            std::string_view const piece = rest.substr(0, (seed >> 16) % ((seed & 0x8000) != 0 ? 8 : 400));
            hash.Update(Data(piece), piece.size());
            hmac.Update(Bytes(piece));
            rest.remove_prefix(piece.size());
            sha2 copy = hash;
            copy.Update(Data(rest), rest.size());
            copy.End();
            Require(copy.StringHash() == expected.Hex());
        }
        hash.End();
        Require(hash.StringHash() == expected.Hex());
        Require(hmac.End() == expectedCode);
    }
    return 0;
}
