// Lengths that no test can get to byte by byte, and the choice of kernels.

#include <gtest/gtest.h>

#include "hash/HashSupport.h"

#include "ShaCore.h"
#include "ShaKernels.h"

using namespace hash_test;
using namespace qvxsys::hash;

// A message of which the first bytes are only said to have been there. The padding is put together by hand.
TEST(ShaCore, LengthsBeyond32And64Bits)
{
    // The bits before, high and low, and what ends the padding.
    std::tuple<std::uint64_t, std::uint64_t, char const*> const table[] = {
        {0, 0x0000'0001'0000'0000, "00000000000000000000000100000640"},
        {0, 0x0000'0008'0000'0400, "00000000000000000000000800000a40"},
        {0, 0xFFFF'FFFF'FFFF'FC00, "00000000000000010000000000000240"},
        {1, 0, "00000000000000010000000000000640"},
        {7, 0xFFFF'FFFF'FFFF'FC00, "00000000000000080000000000000240"},
    };
    std::string const rest(200, 'r');
    for (sha2::SHA_TYPE const type : kTypes) {
        for (auto const& [high, low, after] : table) {
            ShaState state;
            Start(state, type);
            state.bits[0] = low;
            state.bits[1] = high;
            Absorb(state, type, rest.data(), rest.size());
            std::string digest(quorvex::hash::DigestLength(type), '\0');
            Finish(state, type, digest.data());

            std::string padded = rest + '\x80';
            std::size_t const length = BlockLength(type) / 8;
            padded.resize(256 - length);
            padded += FromHex(after).substr(16 - length);
            ShaState expected;
            Start(expected, type);
            Absorb(expected, type, padded.data(), padded.size());
            for (std::size_t i = 0; i < digest.size(); ++i) {
                std::uint64_t const word = length == 16 ? expected.words64[i / 8] >> (56 - i % 8 * 8)
                                                        : expected.words32[i / 4] >> (24 - i % 4 * 8);
                ASSERT_EQ(static_cast<unsigned char>(digest[i]), word & 0xFF) << type << ' ' << after;
            }
        }
    }
}

// A limit to the portable set forces the portable digests.
TEST(ShaCore, LimitIsKept)
{
    using quorvex::cpu::InstructionSet;
    InstructionSet const before = quorvex::cpu::LimitInstructionSet(InstructionSet::Portable);
    EXPECT_EQ(CurrentShaKernels().sha256, &portable::Sha256);
    EXPECT_EQ(CurrentShaKernels().sha512, &portable::Sha512);
    quorvex::cpu::LimitInstructionSet(InstructionSet::Avx512);
    if (quorvex::cpu::DetectedInstructionSet() >= InstructionSet::Avx2) {
        EXPECT_NE(CurrentShaKernels().sha512, &portable::Sha512);
    }
    quorvex::cpu::LimitInstructionSet(before);
}
