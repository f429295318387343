// Which encoding a text has that does not say. In this order: a byte order mark; what has zeros and reads well as
// UTF-16 or UTF-32; what is UTF-8; what ICU's charset detection makes of it.
//
// UTF-16 and UTF-32 without a mark. Bytes can be read in four ways, and most bytes make up characters in more than one
// of them: Latin text with the bytes of each unit swapped is a row of ideographs. What tells is what the characters are
// like. In the right reading they are ASCII, or lie in the same half-block of 128 as the one before them, as they do in
// every alphabet, or are the kana and punctuation that stand between ideographs; each such character is a point. In a
// wrong one there are characters that no text has: controls (a swapped line feed is U+0A00, which is unassigned), lone
// surrogates, private and unassigned ones. The best reading is taken if it has hardly any of these and some points.
// Text without a single zero byte is never read so: the Hangul of UTF-16 and that of EUC-KR cannot be told apart that
// way, and spaces and line ends, ASCII all, are in nearly any text. The reverse danger are strings with a NUL at their
// end, of which every pair of letters is an ideograph as well: where most units are two printable bytes, it is no
// UTF-16.
//
// ICU's detection looks at no more than the first 8192 bytes for most encodings, which may be nothing but ASCII. It is
// given the lines that have other bytes.

#include "TextDetection.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include <qvxsys/CharacterUtils.h>
#include <qvxsys/IcuPointer.h>
#include <qvxsys/QvxICU.h>
#include <qvxsys/TStringCore.h>

#include "Stretch.h"
#include "kernels/Kernels.h"

using namespace QvxICU;

namespace qvxsys::text {
namespace {

using Detection = TTextDecoder::Detection;
using FoundBy = TTextDecoder::FoundBy;

struct ByteOrderMark
{
    std::string_view bytes;
    char const* encoding;
    bool unitsHaveZeros;
};
// UTF-32LE before UTF-16LE, whose mark it begins with: text that begins with U+0000 is the less likely reading.
constexpr ByteOrderMark kMarks[] = {
    {{"\xEF\xBB\xBF", 3}, "UTF-8", false},   {{"\xFF\xFE\0\0", 4}, "UTF-32LE", true},
    {{"\0\0\xFE\xFF", 4}, "UTF-32BE", true}, {{"\xFF\xFE", 2}, "UTF-16LE", true},
    {{"\xFE\xFF", 2}, "UTF-16BE", true},
};

constexpr char kEscape = '\x1B';

// How many ASCII characters the text begins with.
std::size_t AsciiLength(std::string_view text) noexcept
{
    std::size_t at = 0;
    for (std::uint64_t word = 0; text.size() - at >= sizeof word; at += sizeof word) {
        std::memcpy(&word, text.data() + at, sizeof word);
        if ((word & 0x8080808080808080) != 0) {
            break;
        }
    }
    while (at < text.size() && static_cast<unsigned char>(text[at]) < 0x80) {
        ++at;
    }
    return at;
}

bool IsPrintable(char32_t c) noexcept
{
    return (c >= 0x20 && c < 0x7F) || c == '\t' || c == '\n' || c == '\r';
}

// ---- UTF-16 and UTF-32 by their characters

struct Reading
{
    char const* encoding;
    std::size_t width; // bytes of a unit
    bool bigEndian;
};
constexpr Reading kReadings[] = {
    {"UTF-16LE", 2, false}, {"UTF-16BE", 2, true}, {"UTF-32LE", 4, false}, {"UTF-32BE", 4, true}};

struct Impression
{
    std::size_t units = 0;
    std::size_t points = 0;
    std::size_t faults = 0;
    std::size_t printablePairs = 0; // units of two printable bytes that got no point

    [[nodiscard]] long Score() const noexcept { return static_cast<long>(points) - 4 * static_cast<long>(faults); }
    [[nodiscard]] bool IsText() const noexcept
    {
        return points >= 4 && points * 16 >= units && faults * 32 <= units + 31 && printablePairs * 2 < units;
    }
    [[nodiscard]] int Confidence() const noexcept
    {
        return static_cast<int>(std::min<std::size_t>(100, 5 * points) * (units - faults) / units);
    }
};

char32_t UnitAt(char const* p, Reading const& reading) noexcept
{
    char32_t unit = 0;
    for (std::size_t i = 0; i < reading.width; ++i) {
        unit = unit << 8 | static_cast<unsigned char>(p[reading.bigEndian ? i : reading.width - 1 - i]);
    }
    return unit;
}

bool IsUnlikely(char32_t c) noexcept
{
    switch (t_u_charType(c)) {
    case ICUCharCategory::Unassigned:
    case ICUCharCategory::PrivateUseChar:
    case ICUCharCategory::Surrogate:
        return true;
    case ICUCharCategory::ControlChar:
        return !IsPrintable(c);
    default:
        return c > 0x10FFFF;
    }
}

// Each ideograph is likely to lie in another half-block than the one before it, and so is each Hangul syllable; they
// tell nothing.
std::size_t PointsFor(char32_t c, char32_t previous) noexcept
{
    if (IsPrintable(c)) {
        return 2;
    }
    bool const isBetweenIdeographs = (c >= 0x3000 && c < 0x3100) || (c >= 0xFF00 && c < 0xFFF0);
    bool const hasNoAlphabet = (c >= 0x3400 && c < 0xA000) || (c >= 0xAC00 && c < 0xD7A4) || c >= 0x20000;
    return isBetweenIdeographs || (!hasNoAlphabet && c >> 7 == previous >> 7) ? 1 : 0;
}

Impression ReadAs(Reading const& reading, std::string_view sample) noexcept
{
    constexpr std::size_t kMost = 8192; // bytes: looking up properties is not free
    Impression result;
    std::size_t const length = std::min(sample.size(), kMost);
    std::size_t const whole = length - length % reading.width;
    result.faults = whole != length ? 1 : 0;
    char32_t previous = 0;
    for (std::size_t at = 0; at < whole; at += reading.width) {
        char const* const p = sample.data() + at;
        char32_t c = UnitAt(p, reading);
        bool isPrintablePair = false;
        ++result.units;
        if (reading.width == 2) {
            isPrintablePair = IsPrintable(c & 0xFF) && IsPrintable(c >> 8);
            char32_t const next = at + 4 <= whole ? UnitAt(p + 2, reading) : 0;
            if (c >> 10 == 0x36 && next >> 10 == 0x37) {
                c = 0x10000 + ((c & 0x3FF) << 10) + (next & 0x3FF);
                at += 2;
            } else if (c >> 10 == 0x36 && at + 2 == whole && length < sample.size()) {
                break; // the other half of the pair lies behind what is looked at
            }
        }
        if (IsUnlikely(c)) {
            ++result.faults;
        } else if (std::size_t const points = PointsFor(c, previous); points != 0) {
            result.points += points;
        } else {
            result.printablePairs += isPrintablePair ? 1 : 0;
        }
        previous = c;
    }
    return result;
}

bool FindWideReading(std::string_view sample, Detection& result)
{
    Impression best;
    for (Reading const& reading : kReadings) {
        Impression const impression = ReadAs(reading, sample);
        if (impression.IsText() && (best.units == 0 || impression.Score() > best.Score())) {
            best = impression;
            result.encoding = reading.encoding;
        }
    }
    if (best.units == 0) {
        return false;
    }
    result.foundBy = FoundBy::Statistics;
    result.confidence = best.Confidence();
    return true;
}

// ---- UTF-8

// Text of an encoding other than UTF-8 has hardly any bytes that happen to be well-formed multi-byte sequences, so
// damaged UTF-8 can be told from it: such sequences are more than the faults. One that the text's end cuts off speaks
// against UTF-8 only where there is no other: many a text of another encoding ends with a byte that could begin one.
bool FindUtf8(std::string_view sample, Detection& result)
{
    std::size_t const n = WholeCodePoints(sample.data(), sample.size());
    TStringCore decoded;
    decoded.resize(static_cast<int>(n));
    std::size_t malformed = 0;
    std::size_t const units = kernels().utf8ToUtf16(sample.data(), n, decoded.data(), malformed);
    auto const isMultiByte = [](char16_t unit) { return unit >= 0x80 && !CharacterUtils::IsLowSurrogate(unit); };
    char16_t const* const begin = decoded.constData();
    bool const isCutOff = n != sample.size() && sample.size() < Detector::kSample;
    if (malformed == 0 && !isCutOff) {
        result.encoding = "UTF-8";
        result.foundBy = FoundBy::Utf8;
        result.confidence = 100;
        return true;
    }
    auto const multiByte = static_cast<std::size_t>(std::count_if(begin, begin + units, isMultiByte)) - malformed;
    if (multiByte <= malformed) {
        return false;
    }
    malformed += isCutOff ? 1 : 0;
    result.encoding = "UTF-8";
    result.foundBy = FoundBy::Statistics;
    result.confidence = static_cast<int>(100 * multiByte / (multiByte + malformed));
    return true;
}

// ---- ICU's detection

// The lines with bytes that are not plain ASCII, as many as ICU looks at. Of a line that is too long the part from
// shortly before its first such byte is taken. A line feed is never part of a longer sequence, and before the first
// byte that is not ASCII no sequence is open.
std::string TellingLines(std::string_view sample)
{
    constexpr std::size_t kMost = 8192;
    constexpr std::size_t kBefore = 64;
    std::string result = "\n"; // so that nothing looks like a byte order mark
    for (std::size_t at = 0; at < sample.size() && result.size() < kMost;) {
        std::size_t const telling = at + std::min(AsciiLength(sample.substr(at)), sample.substr(at).find(kEscape));
        if (telling == sample.size()) {
            break;
        }
        std::size_t const lineFeed = sample.rfind('\n', telling);
        std::size_t const lineStart = lineFeed == std::string_view::npos ? 0 : lineFeed + 1;
        std::size_t const start = std::max(lineStart, telling - std::min(telling, kBefore));
        std::size_t const end = std::min(sample.find('\n', telling), sample.size() - 1) + 1;
        result.append(sample.substr(start, std::min(end - start, kMost - result.size())));
        at = end;
    }
    return result;
}

// False when ICU has no opinion worth the name, or one that it cannot decode itself, or says UTF-8, of which more is
// known here.
bool Guess(std::string_view sample, Detection& result)
{
    constexpr std::int32_t kLeastConfidence = 15;
    std::string const telling = TellingLines(sample);
    auto status = ICUErrorCode::ZeroError;
    ICULocalPointer<ICUCharsetDetector, t_ucsdet_close> const detector(t_ucsdet_open(&status));
    t_ucsdet_setText(detector.getAlias(), telling.data(), static_cast<std::int32_t>(telling.size()), &status);
    ICUCharsetMatch const* const match = t_ucsdet_detect(detector.getAlias(), &status);
    if (match == nullptr) {
        return false;
    }
    // One letter can look like an alphabet to it. What is ASCII has escape sequences, and these are not chance.
    auto const others = std::count_if(telling.begin(), telling.end(), [](char c) { return AsciiLength({&c, 1}) == 0; });
    std::int32_t const confidence =
        std::min(t_ucsdet_getConfidence(match, &status), others == 0 ? 100 : static_cast<std::int32_t>(10 * others));
    char const* const name = t_ucsdet_getName(match, &status);
    if (ICU_FAILURE(status) || confidence < kLeastConfidence || std::string_view(name) == "UTF-8" ||
        !TTextDecoder::IsKnownEncoding(name)) {
        return false;
    }
    result.encoding = name;
    result.foundBy = FoundBy::Statistics;
    result.confidence = confidence;
    return true;
}

// Text of seven bits with escape sequences is UTF-8 as it stands (a coloured log, say), or of ISO 2022.
bool FindIso2022(std::string_view sample, Detection& result)
{
    bool const mayBe = sample.find(kEscape) != std::string_view::npos && AsciiLength(sample) == sample.size();
    Detection guess;
    if (!mayBe || !Guess(sample, guess) || !guess.encoding.starts_with("ISO-2022")) {
        return false;
    }
    result = guess;
    return true;
}

Detection DetectUnmarked(std::string_view sample, bool zerosMatter)
{
    Detection result;
    bool const hasZeros = zerosMatter && sample.find('\0') != std::string_view::npos;
    if (hasZeros && FindWideReading(sample, result)) {
        return result;
    }
    result.looksBinary = hasZeros;
    // A guess takes a millisecond and is worth nothing for a binary file.
    if ((!hasZeros && FindIso2022(sample, result)) || FindUtf8(sample, result) ||
        (!hasZeros && Guess(sample, result))) {
        return result;
    }
    result.encoding = "ISO-8859-1";
    result.foundBy = FoundBy::Statistics;
    result.confidence = 0;
    return result;
}

Detection DetectAtStart(std::string_view sample)
{
    for (ByteOrderMark const& mark : kMarks) {
        if (sample.starts_with(mark.bytes)) {
            Detection result;
            result.encoding = mark.encoding;
            result.foundBy = FoundBy::ByteOrderMark;
            result.bomLength = mark.bytes.size();
            result.looksBinary = !mark.unitsHaveZeros && sample.find('\0') != std::string_view::npos;
            return result;
        }
    }
    return DetectUnmarked(sample, true);
}

} // namespace

std::size_t Detector::Pass(std::string_view next, bool isAscii) noexcept
{
    if (m_atStart) {
        return 0;
    }
    std::size_t const ascii = isAscii ? next.size() : AsciiLength(next);
    std::size_t const passed = std::min(ascii, next.substr(0, m_escapesTell).find(kEscape));
    m_escapesTell -= std::min(m_escapesTell, passed);
    return passed;
}

void Detector::Look(std::string_view sample)
{
    m_found = m_atStart ? DetectAtStart(sample) : DetectUnmarked(sample, false);
    m_isOpen = m_found.foundBy == FoundBy::Utf8 && !m_found.looksBinary && AsciiLength(sample) == sample.size();
    bool const hasEscapes = sample.find(kEscape) != std::string_view::npos;
    m_escapesTell -= hasEscapes ? m_escapesTell : std::min(m_escapesTell, sample.size());
    m_atStart = false;
}

} // namespace qvxsys::text
