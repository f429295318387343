#pragma once
// The compression functions of SHA-1 and SHA-2 (FIPS 180-4, section 6): each absorbs whole blocks into a hash state.
// There is one set for any processor and one for those with the instructions for it; ShaDispatch.cpp chooses, at run
// time.
//
// Rules for every implementation: `blocks` has `count` blocks of 64 bytes (128 for SHA-512), at any address; nothing
// else is read; `count` may be 0. SHA-224 and SHA-384 differ from SHA-256 and SHA-512 in their initial state only. No
// allocation, no exceptions, no state; safe from any thread.

#include <cstddef>
#include <cstdint>

/// For the pieces that a compression function is put together from.
#define QVX_INLINE [[gnu::always_inline]] inline

namespace qvxsys::hash {

using Compress32 = void(std::uint32_t* state, unsigned char const* blocks, std::size_t count) noexcept;
using Compress64 = void(std::uint64_t* state, unsigned char const* blocks, std::size_t count) noexcept;

struct ShaKernels
{
    Compress32* sha1;
    Compress32* sha256;
    Compress64* sha512;
};

/// The best ones this processor has within the limit of quorvex::cpu::LimitInstructionSet: a limit to the portable set
/// is one to the portable digests. The SHA extensions have no level of their own, they are used under any other limit.
[[nodiscard]] ShaKernels const& CurrentShaKernels() noexcept;

/// The round constants (FIPS 180-4, sections 4.2.2 and 4.2.3), aligned to 64 bytes.
extern std::uint32_t const kSha256Constants[64];
extern std::uint64_t const kSha512Constants[80];

namespace portable {
Compress32 Sha1;
Compress32 Sha256;
Compress64 Sha512;
} // namespace portable

/// For processors with the SHA extensions, SSSE3 and SSE4.1.
namespace sha_ni {
Compress32 Sha1;
Compress32 Sha256;
} // namespace sha_ni

/// For InstructionSet::Avx2.
namespace avx2 {
Compress64 Sha512;
} // namespace avx2

/// For InstructionSet::Avx512.
namespace avx512 {
Compress64 Sha512;
} // namespace avx512

} // namespace qvxsys::hash
