#pragma once
// Finds out the encoding of a text, looking at it in samples from the places where the encoding matters.

#include <cstddef>
#include <string_view>

#include <qvxsys/TTextDecoder.h>

namespace qvxsys::text {

class Detector
{
public:
    /// The size of a sample; one that ends with the text may be smaller.
    static constexpr std::size_t kSample = 65536;

    /// True before the first sample, which is the text's beginning.
    [[nodiscard]] bool IsAtStart() const noexcept { return m_atStart; }
    /// How much of the text that comes next is the same in every encoding that it may still have, and need not be
    /// looked at: nothing at the beginning, then what is ASCII.
    [[nodiscard]] std::size_t Irrelevant(std::string_view next) const noexcept;
    /// True when that is all of this ASCII text.
    [[nodiscard]] bool IsIrrelevant(std::string_view ascii) const noexcept;

    /// Takes the sample that begins there. An empty one is allowed.
    void Look(std::string_view sample);

    /// True until Found is settled; until then it is UTF-8, as everything so far was ASCII.
    [[nodiscard]] bool IsOpen() const noexcept { return m_isOpen; }
    [[nodiscard]] TTextDecoder::Detection const& Found() const noexcept { return m_found; }

private:
    TTextDecoder::Detection m_found{"UTF-8"};
    bool m_isOpen = true;
    bool m_atStart = true;
    bool m_escapesTell = true; // there may still be an encoding of ISO 2022
};

} // namespace qvxsys::text
