#pragma once
// A digest from its beginning to its end, on raw memory. The classes add types that may be wrong, results and errors.

#include <cstddef>
#include <cstdint>

#include <qvxsys/sha2.h>

namespace qvxsys::hash {

using detail::ShaState;

constexpr bool IsType(sha2::SHA_TYPE type) noexcept
{
    return type >= sha2::SHA160 && type <= sha2::SHA512;
}

/// Throws std::runtime_error("Invalid SHA_TYPE type!") unless it is one of the five. The functions below rely on that.
void RequireType(sha2::SHA_TYPE type);

/// The length of a block in bytes.
constexpr std::size_t BlockLength(sha2::SHA_TYPE type) noexcept
{
    return type >= sha2::SHA384 ? 128 : 64;
}

/// Zeroes the words and loads the initial ones of the type; no bits, no bytes in the block.
void Start(ShaState& state, sha2::SHA_TYPE type) noexcept;

/// The next bytes. `data` may be null if `size` is 0.
void Absorb(ShaState& state, sha2::SHA_TYPE type, void const* data, std::size_t size) noexcept;

/// Pads and writes the digest, DigestLength(type) bytes. The state is of no more use.
void Finish(ShaState& state, sha2::SHA_TYPE type, void* digest) noexcept;

/// `count` (up to 64) bytes as lower-case hexadecimal digits, not terminated. `bytes` must have room for reading, and
/// `hex` for writing, up to the next multiple of 16 and 32.
void WriteHex(unsigned char const* bytes, std::size_t count, char* hex) noexcept;

} // namespace qvxsys::hash
