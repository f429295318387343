// Text decoded in chunks.
//
// The encodings that are decoded here (all but those left to ICU's converters) share one scheme. WholeLength() says
// where a piece of text can be cut so that nothing reaches across, and DecodeWhole() decodes up to such a cut. What
// lies behind the cut, at most three bytes, is held back. The next chunk first lends its bytes to the held ones, one by
// one, until nothing of the previous chunk is left (at most three bytes are lent); the rest of the chunk is decoded
// where it lies.

#include <qvxsys/TTextDecoder.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

#include <qvxsys/CharacterUtils.h>
#include <qvxsys/QvxICU.h>

#include "Latin9.h"
#include "Stretch.h"
#include "TextErrors.h"
#include "kernels/Kernels.h"

namespace text = qvxsys::text;
using namespace QvxICU;

namespace {

constexpr char16_t kReplacement = static_cast<char16_t>(CharacterUtils::kReplacement);

enum class Form { Utf8, Utf16LE, Utf16BE, Utf32LE, Utf32BE, Latin1, Latin9, Converter };

// The encodings decoded here, by the names ICU's converters have for themselves.
struct NamedForm
{
    std::string_view icuName;
    char const* name;
    Form form;
};
constexpr NamedForm kForms[] = {
    {"UTF-8", "UTF-8", Form::Utf8},
    {"UTF-16LE", "UTF-16LE", Form::Utf16LE},
    {"UTF-16BE", "UTF-16BE", Form::Utf16BE},
    {"UTF-32LE", "UTF-32LE", Form::Utf32LE},
    {"UTF-32BE", "UTF-32BE", Form::Utf32BE},
    {"ISO-8859-1", "ISO-8859-1", Form::Latin1},
    {"ibm-923_P100-1998", "ISO-8859-15", Form::Latin9},
};

struct Closer
{
    void operator()(ICUConverter* converter) const noexcept { t_ucnv_close(converter); }
    void operator()(ICUCharsetDetector* detector) const noexcept { t_ucsdet_close(detector); }
};
using Converter = std::unique_ptr<ICUConverter, Closer>;

// Null for an encoding that ICU does not know. ICU itself would take null and "" for the default converter.
Converter Open(char const* name) noexcept
{
    if (name == nullptr || *name == '\0') {
        return nullptr;
    }
    auto status = ICUErrorCode::ZeroError;
    Converter converter(t_ucnv_open(std::string_view(name) == "local" ? nullptr : name, &status));
    return ICU_SUCCESS(status) ? std::move(converter) : nullptr;
}

unsigned ByteAt(char const* data, std::size_t i) noexcept
{
    return static_cast<unsigned char>(data[i]);
}

// ---- where text can be cut

std::size_t WholeUtf16(char const* data, std::size_t n, std::size_t highByte) noexcept
{
    std::size_t const units = n & ~std::size_t{1};
    bool const pairOpen = units != 0 && (ByteAt(data, units - 2 + highByte) & 0xFC) == 0xD8;
    return pairOpen ? units - 2 : units;
}

std::size_t WholeLength(Form form, char const* data, std::size_t n) noexcept
{
    switch (form) {
    case Form::Utf8:
        return text::WholeCodePoints(data, n);
    case Form::Utf16LE:
        return WholeUtf16(data, n, 1);
    case Form::Utf16BE:
        return WholeUtf16(data, n, 0);
    case Form::Utf32LE:
    case Form::Utf32BE:
        return n & ~std::size_t{3};
    default:
        return n;
    }
}

// ---- decoding what is whole

char16_t Swapped(char16_t unit) noexcept
{
    return static_cast<char16_t>(unit << 8 | unit >> 8);
}
char32_t Swapped(char32_t unit) noexcept
{
    return unit << 24 | (unit & 0xFF00) << 8 | (unit >> 8 & 0xFF00) | unit >> 24;
}

// Brings the units into a block of the right alignment and byte order that stays in the first-level cache, and converts
// from there.
template<class Unit, class Convert>
std::size_t DecodeUnits(char const* data, std::size_t n, std::endian order, char16_t* dst, Convert convert) noexcept
{
    constexpr std::size_t kBlock = 4096 / sizeof(Unit);
    Unit block[kBlock];
    char16_t* out = dst;
    for (std::size_t left = n / sizeof(Unit); left != 0;) {
        std::size_t stretch = std::min(left, kBlock);
        std::memcpy(block, data, stretch * sizeof(Unit));
        if (order != std::endian::native) {
            std::transform(block, block + stretch, block, [](Unit unit) { return Swapped(unit); });
        }
        if (stretch < left) {
            stretch = text::WholeCodePoints(block, stretch);
        }
        out += convert(block, stretch, out);
        data += stretch * sizeof(Unit);
        left -= stretch;
    }
    return static_cast<std::size_t>(out - dst);
}

std::size_t DecodeUtf16(char const* data, std::size_t n, std::endian order, char16_t* dst,
                        std::size_t& malformed) noexcept
{
    return DecodeUnits<char16_t>(data, n, order, dst, [&](char16_t const* src, std::size_t count, char16_t* out) {
        text::kernels().copyWellFormed(src, count, out, malformed);
        return count;
    });
}

std::size_t DecodeUtf32(char const* data, std::size_t n, std::endian order, char16_t* dst,
                        std::size_t& malformed) noexcept
{
    return DecodeUnits<char32_t>(data, n, order, dst, [&](char32_t const* src, std::size_t count, char16_t* out) {
        return text::kernels().utf32ToUtf16(src, count, out, malformed);
    });
}

// Room at dst: n units. Returns the units written.
std::size_t DecodeWhole(Form form, char const* data, std::size_t n, char16_t* dst, std::size_t& malformed) noexcept
{
    switch (form) {
    case Form::Utf8:
        return text::kernels().utf8ToUtf16(data, n, dst, malformed);
    case Form::Utf16LE:
        return DecodeUtf16(data, n, std::endian::little, dst, malformed);
    case Form::Utf16BE:
        return DecodeUtf16(data, n, std::endian::big, dst, malformed);
    case Form::Utf32LE:
        return DecodeUtf32(data, n, std::endian::little, dst, malformed);
    case Form::Utf32BE:
        return DecodeUtf32(data, n, std::endian::big, dst, malformed);
    case Form::Latin9:
        std::transform(data, data + n, dst, [](char c) { return text::FromLatin9(static_cast<unsigned char>(c)); });
        return n;
    default:
        std::transform(data, data + n, dst, [](char c) { return static_cast<unsigned char>(c); });
        return n;
    }
}

// ---- ICU's converters

// Leaves the failed status as it is: the converter stops behind the malformed sequence and can go on from there. ICU's
// own substitution would write U+001A for some.
void StopAtMalformed(void const*, ICUToUnicodeArgs*, char const*, std::int32_t, ICUConverterCallbackReason,
                     ICUErrorCode*)
{}

bool IsMalformedText(ICUErrorCode status) noexcept
{
    return status == ICUErrorCode::InvalidCharFound || status == ICUErrorCode::TruncatedCharFound ||
           status == ICUErrorCode::IllegalCharFound || status == ICUErrorCode::IllegalEscapeSequence ||
           status == ICUErrorCode::UnsupportedEscapeSequence;
}

// The decoder itself: what State is made of.
struct ChunkDecoder
{
    Form form = Form::Converter;
    std::string name;
    Converter converter;   // for Form::Converter only
    char16_t heldHigh = 0; // a high surrogate that the converter gave by itself (CESU-8, SCSU), else 0
    char held[4] = {};     // what the chunks so far left unfinished
    std::size_t heldCount = 0;
    std::size_t malformed = 0;
    TStringCore buffer; // its length is the room for results, not that of one

    char16_t* Room(std::size_t units);
    std::size_t DecodeHeld(char const*& data, char const* end, char16_t* dst) noexcept;
    std::size_t DecodeChunk(char const* data, std::size_t n, bool last);
    std::size_t ConvertChunk(char const* data, std::size_t n, bool last);
};

char16_t* ChunkDecoder::Room(std::size_t units)
{
    if (buffer.size() < units) {
        if (units > static_cast<std::size_t>(INT32_MAX)) {
            text::ThrowOverflow();
        }
        buffer.resize(static_cast<int>(units));
    }
    return buffer.data();
}

// Decodes what was held back with as many bytes from `data` as it takes. On return either nothing is held or the chunk
// is used up. Returns the units written.
std::size_t ChunkDecoder::DecodeHeld(char const*& data, char const* end, char16_t* dst) noexcept
{
    std::size_t lent = 0; // the bytes of this chunk among those held: the last ones
    std::size_t written = 0;
    while (heldCount > lent && data != end) {
        held[heldCount++] = *data++;
        ++lent;
        std::size_t const whole = WholeLength(form, held, heldCount);
        written += DecodeWhole(form, held, whole, dst + written, malformed);
        heldCount -= whole;
        std::memmove(held, held + whole, heldCount);
    }
    if (heldCount <= lent) {
        data -= heldCount;
        heldCount = 0;
    }
    return written;
}

std::size_t ChunkDecoder::DecodeChunk(char const* data, std::size_t n, bool last)
{
    char16_t* const dst = Room(heldCount + n);
    char const* const end = data + n;
    std::size_t written = DecodeHeld(data, end, dst);
    if (heldCount == 0) {
        auto const left = static_cast<std::size_t>(end - data);
        std::size_t const whole = WholeLength(form, data, left);
        written += DecodeWhole(form, data, whole, dst + written, malformed);
        heldCount = left - whole;
        std::copy(data + whole, end, held);
    }
    if (last && heldCount != 0) {
        if (form == Form::Utf8) {
            written += DecodeWhole(form, held, heldCount, dst + written, malformed);
        } else {
            dst[written++] = kReplacement;
            ++malformed;
        }
        heldCount = 0;
    }
    return written;
}

std::size_t ChunkDecoder::ConvertChunk(char const* data, std::size_t n, bool last)
{
    constexpr std::size_t kSpare = 16; // what a converter may hold back, and the substitute
    char const* const end = data + n;
    std::size_t written = 0;
    for (;;) {
        char16_t* const dst = Room(written + static_cast<std::size_t>(end - data) + kSpare);
        if (heldHigh != 0) {
            dst[written++] = std::exchange(heldHigh, u'\0');
        }
        char16_t* out = dst + written;
        auto status = ICUErrorCode::ZeroError;
        t_ucnv_toUnicode(converter.get(), &out, dst + buffer.size() - 1, &data, end, nullptr, last, &status);
        written = static_cast<std::size_t>(out - dst);
        if (ICU_SUCCESS(status)) {
            if (!last && written != 0 && CharacterUtils::IsHighSurrogate(dst[written - 1])) {
                heldHigh = dst[--written];
            }
            return written;
        }
        if (IsMalformedText(status)) {
            dst[written++] = kReplacement;
            ++malformed;
        } else if (status != ICUErrorCode::BufferOverflowError) {
            text::ThrowIcuError(static_cast<int>(status), "TTextDecoder::Decode", "ucnv_toUnicode");
        }
    }
}

// ---- detection

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

// Text of an encoding other than UTF-8 has hardly any bytes that happen to be well-formed multi-byte sequences, so
// damaged UTF-8 can be told from it: such sequences are more than the faults.
bool LooksLikeUtf8(std::string_view sample)
{
    std::size_t const n = text::WholeCodePoints(sample.data(), sample.size());
    TStringCore decoded;
    decoded.resize(static_cast<int>(n));
    std::size_t malformed = 0;
    std::size_t const units = text::kernels().utf8ToUtf16(sample.data(), n, decoded.data(), malformed);
    if (malformed == 0) {
        return true;
    }
    auto const isMultiByte = [](char16_t unit) { return unit >= 0x80 && !CharacterUtils::IsLowSurrogate(unit); };
    char16_t const* const begin = decoded.constData();
    auto const multiByte = static_cast<std::size_t>(std::count_if(begin, begin + units, isMultiByte));
    return multiByte - malformed > malformed;
}

// Empty when ICU has no opinion worth the name (UTF-16 without a mark gets 10 of 100 for hardly anything), or one that
// it cannot decode itself.
std::string GuessCharset(std::string_view sample)
{
    constexpr std::int32_t kLeastConfidence = 15;
    auto status = ICUErrorCode::ZeroError;
    std::unique_ptr<ICUCharsetDetector, Closer> const detector(t_ucsdet_open(&status));
    t_ucsdet_setText(detector.get(), sample.data(), static_cast<std::int32_t>(sample.size()), &status);
    ICUCharsetMatch const* const match = t_ucsdet_detect(detector.get(), &status);
    if (match == nullptr || t_ucsdet_getConfidence(match, &status) < kLeastConfidence) {
        return {};
    }
    char const* const name = t_ucsdet_getName(match, &status);
    return ICU_SUCCESS(status) && TTextDecoder::IsKnownEncoding(name) ? name : "";
}

} // namespace

struct TTextDecoder::State : ChunkDecoder
{};

bool TTextDecoder::IsKnownEncoding(char const* name) noexcept
{
    return Open(name) != nullptr;
}

TTextDecoder::Detection TTextDecoder::Detect(char const* data, std::size_t n)
{
    constexpr std::size_t kSample = 65536;
    std::string_view const sample(data, std::min(n, kSample));
    Detection result;
    bool const hasZeros = sample.find('\0') != std::string_view::npos;
    for (ByteOrderMark const& mark : kMarks) {
        if (sample.starts_with(mark.bytes)) {
            result.encoding = mark.encoding;
            result.bomLength = mark.bytes.size();
            result.looksBinary = hasZeros && !mark.unitsHaveZeros;
            return result;
        }
    }
    result.looksBinary = hasZeros;
    if (LooksLikeUtf8(sample)) {
        result.encoding = "UTF-8";
    } else if (!hasZeros) { // the guess takes a millisecond and is worth nothing for a binary file
        result.encoding = GuessCharset(sample);
    }
    if (result.encoding.empty()) {
        result.encoding = "ISO-8859-1";
    }
    return result;
}

TTextDecoder::TTextDecoder(char const* encoding) : m_state(std::make_unique<State>())
{
    Converter converter = Open(encoding);
    if (converter == nullptr) {
        text::Throw("Unknown text encoding: " + std::string(encoding != nullptr ? encoding : ""));
    }
    auto status = ICUErrorCode::ZeroError;
    char const* const icuName = t_ucnv_getName(converter.get(), &status);
    std::string_view const known = icuName != nullptr ? icuName : "";
    auto const* const found = std::find_if(std::begin(kForms), std::end(kForms),
                                           [known](NamedForm const& each) { return each.icuName == known; });
    if (found != std::end(kForms)) {
        m_state->form = found->form;
        m_state->name = found->name;
        return;
    }
    m_state->name = std::string_view(encoding) == "local" ? known : encoding;
    t_ucnv_setToUCallBack(converter.get(), StopAtMalformed, nullptr, nullptr, nullptr, &status);
    m_state->converter = std::move(converter);
}

TTextDecoder::TTextDecoder(TTextDecoder&& other) noexcept = default;
TTextDecoder& TTextDecoder::operator=(TTextDecoder&& other) noexcept = default;
TTextDecoder::~TTextDecoder() = default;

char const* TTextDecoder::Encoding() const noexcept
{
    return m_state->name.c_str();
}

TStringView TTextDecoder::Decode(char const* data, std::size_t n, bool last)
{
    if (n > kMaxChunk) {
        text::Throw("Text chunk is too long");
    }
    char const* const bytes = data != nullptr ? data : "";
    std::size_t const written =
        m_state->form == Form::Converter ? m_state->ConvertChunk(bytes, n, last) : m_state->DecodeChunk(bytes, n, last);
    return {m_state->buffer.constData(), written};
}

void TTextDecoder::Decode(char const* data, std::size_t n, TStringCore& out, bool last)
{
    out.append(Decode(data, n, last));
}

std::size_t TTextDecoder::Malformed() const noexcept
{
    return m_state->malformed;
}

void TTextDecoder::Reset() noexcept
{
    m_state->heldCount = 0;
    m_state->heldHigh = 0;
    m_state->malformed = 0;
    if (m_state->converter != nullptr) {
        t_ucnv_reset(m_state->converter.get());
    }
}
