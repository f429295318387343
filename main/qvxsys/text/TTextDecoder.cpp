// Text decoded in chunks.
//
// The encodings that are decoded here (all but those left to ICU's converters) share one scheme. WholeLength() says
// where a piece of text can be cut so that nothing reaches across, and DecodeWhole() decodes up to such a cut. What
// lies behind the cut, at most three bytes, is held back. The next chunk first lends its bytes to the held ones, one by
// one, until nothing of the previous chunk is left (at most three bytes are lent); the rest of the chunk is decoded
// where it lies.
//
// While the encoding is being found out, ASCII is decoded as UTF-8, at UTF-8's speed: when there are as many units as
// bytes and no fault, it was nothing but ASCII. From the first byte on that tells, a sample is gathered.

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
#include "TextDetection.h"
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
    // Behind what was written already; return how many units there are then.
    std::size_t DecodeChunk(char const* data, std::size_t n, bool last, std::size_t written);
    std::size_t ConvertChunk(char const* data, std::size_t n, bool last, std::size_t written);
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

std::size_t ChunkDecoder::DecodeChunk(char const* data, std::size_t n, bool last, std::size_t written)
{
    char16_t* const dst = Room(written + heldCount + n);
    char const* const end = data + n;
    written += DecodeHeld(data, end, dst + written);
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

std::size_t ChunkDecoder::ConvertChunk(char const* data, std::size_t n, bool last, std::size_t written)
{
    constexpr std::size_t kSpare = 16; // what a converter may hold back, and the substitute
    char const* const end = data + n;
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

} // namespace

struct TTextDecoder::State : ChunkDecoder
{
    void Use(char const* encoding);
    void Begin();
    std::size_t DecodeAny(char const* data, std::size_t n, bool last, std::size_t written);
    std::size_t DecodeIrrelevant(char const* data, std::size_t n, std::size_t written);
    std::size_t DecodeDetecting(char const* data, std::size_t n, bool last);

    Detection found;
    bool detects = false;
    bool atEnd = false; // of a text: the next call begins another one
    text::Detector detector;
    std::string sample; // what was gathered of it
};

void TTextDecoder::State::Use(char const* encoding)
{
    Converter opened = Open(encoding);
    if (opened == nullptr) {
        text::Throw("Unknown text encoding: " + std::string(encoding != nullptr ? encoding : ""));
    }
    auto status = ICUErrorCode::ZeroError;
    char const* const icuName = t_ucnv_getName(opened.get(), &status);
    std::string_view const known = icuName != nullptr ? icuName : "";
    auto const* const named = std::find_if(std::begin(kForms), std::end(kForms),
                                           [known](NamedForm const& each) { return each.icuName == known; });
    if (named != std::end(kForms)) {
        form = named->form;
        name = named->name;
        converter = nullptr;
        return;
    }
    name = std::string_view(encoding) == "local" ? known : encoding;
    t_ucnv_setToUCallBack(opened.get(), StopAtMalformed, nullptr, nullptr, nullptr, &status);
    form = Form::Converter;
    converter = std::move(opened);
}

// A text of unknown encoding.
void TTextDecoder::State::Begin()
{
    detector = {};
    sample.clear();
    found = detector.Found();
    form = Form::Utf8;
    name = found.encoding;
    atEnd = false;
}

// The result stands in the buffer behind `written` units that are there already. Returns how many there are then.
std::size_t TTextDecoder::State::DecodeAny(char const* data, std::size_t n, bool last, std::size_t written)
{
    return form == Form::Converter ? ConvertChunk(data, n, last, written) : DecodeChunk(data, n, last, written);
}

// What is the same text in every encoding it may have; returns its length, in bytes as in units.
std::size_t TTextDecoder::State::DecodeIrrelevant(char const* data, std::size_t n, std::size_t written)
{
    char16_t* const dst = Room(written + n) + written;
    std::size_t faults = 0;
    std::size_t const units = text::kernels().utf8ToUtf16(data, n, dst, faults);
    bool const isAscii = units == n && faults == 0;
    return detector.Pass({data, n}, isAscii);
}

std::size_t TTextDecoder::State::DecodeDetecting(char const* data, std::size_t n, bool last)
{
    if (atEnd) {
        Begin();
    }
    char const* const end = data + n;
    std::size_t written = 0;
    while (detector.IsOpen()) {
        if (sample.empty() && !detector.IsAtStart()) {
            std::size_t const decoded = DecodeIrrelevant(data, static_cast<std::size_t>(end - data), written);
            data += decoded;
            written += decoded;
        }
        std::size_t const taken =
            std::min(static_cast<std::size_t>(end - data), text::Detector::kSample - sample.size());
        bool const inPlace = taken == text::Detector::kSample || (last && sample.empty());
        if (!inPlace) {
            sample.append(data, taken);
        }
        std::string_view const looked = inPlace ? std::string_view(data, taken) : sample;
        data += taken;
        if (looked.size() < text::Detector::kSample && !last) {
            return written;
        }
        detector.Look(looked);
        found = detector.Found();
        Use(found.encoding.c_str());
        written = DecodeAny(looked.data() + found.bomLength, looked.size() - found.bomLength, false, written);
        sample.clear();
        if (data == end) {
            break;
        }
    }
    atEnd = last;
    return DecodeAny(data, static_cast<std::size_t>(end - data), last, written);
}

bool TTextDecoder::IsKnownEncoding(char const* name) noexcept
{
    return Open(name) != nullptr;
}

TTextDecoder::Detection TTextDecoder::Detect(char const* data, std::size_t n)
{
    std::string_view left(data, n);
    text::Detector detector;
    do {
        left.remove_prefix(detector.Pass(left, false));
        std::string_view const sample = left.substr(0, text::Detector::kSample);
        detector.Look(sample);
        left.remove_prefix(sample.size());
    } while (detector.IsOpen() && !left.empty());
    return detector.Found();
}

TTextDecoder::TTextDecoder() : m_state(std::make_unique<State>())
{}

TTextDecoder::TTextDecoder(char const* encoding) : TTextDecoder()
{
    m_state->Use(encoding);
    m_state->found = {m_state->name, FoundBy::Given};
}

TTextDecoder TTextDecoder::Detecting()
{
    TTextDecoder result;
    result.m_state->detects = true;
    result.m_state->Begin();
    return result;
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
        m_state->detects ? m_state->DecodeDetecting(bytes, n, last) : m_state->DecodeAny(bytes, n, last, 0);
    return {m_state->buffer.constData(), written};
}

void TTextDecoder::Decode(char const* data, std::size_t n, TStringCore& out, bool last)
{
    out.append(Decode(data, n, last));
}

TTextDecoder::Detection const& TTextDecoder::Found() const noexcept
{
    return m_state->found;
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
    if (m_state->detects) {
        m_state->Begin();
    } else if (m_state->converter != nullptr) {
        t_ucnv_reset(m_state->converter.get());
    }
}
