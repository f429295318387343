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
    /// How far from the beginning escape sequences are looked for. Looking would cost a tenth of the time that ASCII
    /// takes to be read and decoded.
    static constexpr std::size_t kEscapes = std::size_t{1} << 20;

    /// True before the first sample, which is the text's beginning.
    [[nodiscard]] bool IsAtStart() const noexcept { return m_atStart; }
    /// Passes what comes next of the text as far as it is the same in every encoding that it may still have, so need
    /// not be looked at: nothing at the beginning, then ASCII. Returns its length. `isAscii` is true when all is known
    /// to be.
    [[nodiscard]] std::size_t Pass(std::string_view next, bool isAscii) noexcept;

    /// Takes the sample that begins there. An empty one is allowed.
    void Look(std::string_view sample);

    /// True until Found is settled; until then it is UTF-8, as everything so far was ASCII.
    [[nodiscard]] bool IsOpen() const noexcept { return m_isOpen; }
    [[nodiscard]] TTextDecoder::Detection const& Found() const noexcept { return m_found; }

private:
    TTextDecoder::Detection m_found{"UTF-8"};
    bool m_isOpen = true;
    bool m_atStart = true;
    std::size_t m_escapesTell = kEscapes; // in how many more bytes they may be those of ISO 2022
};

} // namespace qvxsys::text
