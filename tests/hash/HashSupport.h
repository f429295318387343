#pragma once
// What the tests of digests share.

#include <array>
#include <cstddef>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <qvxsys/Hash.h>
#include <qvxsys/Processor.h>

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
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
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

/// Runs each test once for each instruction set that this processor has.
class OnEverySet : public testing::TestWithParam<InstructionSet>
{
protected:
    void SetUp() override
    {
        m_before = quorvex::cpu::LimitInstructionSet(GetParam());
        if (quorvex::cpu::CurrentInstructionSet() != GetParam()) {
            GTEST_SKIP() << "this processor has no " << quorvex::cpu::InstructionSetName(GetParam());
        }
    }
    void TearDown() override { quorvex::cpu::LimitInstructionSet(m_before); }

private:
    InstructionSet m_before{};
};

#define HASH_TEST_ON_EVERY_SET(suite)                                                                                  \
    INSTANTIATE_TEST_SUITE_P(All, suite,                                                                               \
                             testing::Values(InstructionSet::Portable, InstructionSet::Avx2, InstructionSet::Avx512),  \
                             [](auto const& test) { return quorvex::cpu::InstructionSetName(test.param); })

} // namespace hash_test
