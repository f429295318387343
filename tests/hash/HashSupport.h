#pragma once
// What the tests of digests and the fuzzer share. What differs is thrown.

#include <algorithm>
#include <array>
#include <cstddef>
#include <random>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "support/InstructionSets.h"
#include <qvxsys/Hash.h>

namespace hash_test {

using quorvex::cpu::InstructionSet;

inline constexpr std::array kTypes = {sha2::SHA160, sha2::SHA224, sha2::SHA256, sha2::SHA384, sha2::SHA512};

inline std::span<std::byte const> Bytes(std::string_view text)
{
    return std::as_bytes(std::span(text));
}

inline unsigned char const* Data(std::string_view text)
{
    return static_cast<unsigned char const*>(static_cast<void const*>(text.data()));
}

inline std::string RandomBytes(std::mt19937& random, std::size_t size)
{
    std::string bytes(size, '\0');
    std::ranges::generate(bytes, [&] { return static_cast<char>(random()); });
    return bytes;
}

inline std::string FromHex(std::string_view digits)
{
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(std::string(digits.substr(i, 2)), nullptr, 16));
    }
    return bytes;
}

/// The text in pieces that end anywhere.
inline std::vector<std::string_view> Pieces(std::mt19937& random, std::string_view text)
{
    std::vector<std::string_view> pieces;
    while (!text.empty()) {
        std::size_t const most = random() % 3 == 0 ? 300 : 10;
        pieces.push_back(text.substr(0, random() % most));
        text.remove_prefix(pieces.back().size());
    }
    return pieces;
}

/// RFC 2104, section 2.
inline quorvex::hash::Digest CodeByDefinition(sha2::SHA_TYPE type, std::string_view key, std::string_view message)
{
    std::size_t const block = type >= sha2::SHA384 ? 128 : 64;
    auto const digest = [type](std::string_view of) {
        auto const result = quorvex::hash::DigestOf(type, Bytes(of));
        return std::string(static_cast<char const*>(static_cast<void const*>(result.Bytes().data())), result.Size());
    };
    std::string inner = key.size() > block ? digest(key) : std::string(key);
    inner.resize(block);
    std::string outer = inner;
    for (std::size_t i = 0; i < block; ++i) {
        inner[i] = static_cast<char>(inner[i] ^ 0x36);
        outer[i] = static_cast<char>(outer[i] ^ 0x5C);
    }
    return quorvex::hash::DigestOf(type, Bytes(outer + digest(inner + std::string(message))));
}

/// In every instruction set, at once, as a stream and piece by piece, by copies in mid-message: the same digest, which
/// is returned; and the authentication code of its definition.
inline std::string CheckedDigest(sha2::SHA_TYPE type, std::string const& message, std::string_view key,
                                 std::mt19937& random)
{
    using namespace quorvex::hash;
    auto const require = [](bool holds) {
        if (!holds) {
            throw std::logic_error(quorvex::cpu::InstructionSetName(quorvex::cpu::CurrentInstructionSet()));
        }
    };
    std::string expected;
    OnEverySet([&] {
        std::string const whole = DigestOf(type, Bytes(message)).Hex();
        expected = expected.empty() ? whole : expected;
        require(whole == expected);
        std::istringstream in(message);
        require(DigestOfStream(type, in).Hex() == expected);
        sha2 hash;
        require(hash.GetHash(type, Data(message), message.size()) == expected);
        hash.Init(type);
        Hmac hmac(type, Bytes(key));
        std::size_t done = 0;
        for (std::string_view const piece : Pieces(random, message)) {
            hash.Update(Data(piece), piece.size());
            hmac.Update(Bytes(piece));
            done += piece.size();
            if (done > 600) {
                continue; // enough copies
            }
            sha2 copy = hash;
            copy.Update(Data(message) + done, message.size() - done);
            copy.End();
            require(copy.StringHash() == expected && copy.HexHash() == expected);
            sha2 const ended = copy;
            int length = 0;
            auto const* const raw = static_cast<void const*>(ended.RawHash(length));
            require(FromHex(expected) == std::string_view(static_cast<char const*>(raw), DigestLength(type)));
        }
        hash.End();
        require(hash.StringHash() == expected);
        Hmac hmacCopy = hmac;
        require(hmac.End() == CodeByDefinition(type, key, message));
        require(hmacCopy.End() == HmacOf(type, Bytes(key), Bytes(message)));
        hmac.Update(Bytes(message)); // begins anew
        require(hmac.End() == CodeByDefinition(type, key, message));
    });
    return expected;
}

} // namespace hash_test
