// TTextDecoder: random bytes in random chunks against the same bytes in one, and against ICU for UTF-8; and detection.

#include <qvxsys/TTextDecoder.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>

#include "support/IcuDecode.h"

namespace {

constexpr char const* kEncodings[] = {"UTF-8",      "UTF-16LE",    "UTF-16BE",  "UTF-32LE", "UTF-32BE",
                                      "ISO-8859-1", "ISO-8859-15", "Shift_JIS", "gb18030",  "ISO-2022-JP",
                                      "UTF-7",      "UTF-16",      "auto"};

TTextDecoder Make(std::string_view encoding)
{
    return encoding == "auto" ? TTextDecoder::Detecting() : TTextDecoder(encoding.data());
}

void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

} // namespace

// The input: the encoding, the number of chunk lengths, these, the text.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t n)
{
    if (n < 2 || n - 2 < data[1]) {
        return 0;
    }
    char const* const encoding = kEncodings[data[0] % std::size(kEncodings)];
    std::uint8_t const* const lengths = data + 2;
    std::size_t const lengthCount = data[1];
    std::string_view const bytes(reinterpret_cast<char const*>(lengths + lengthCount), n - 2 - lengthCount);

    TTextDecoder::Detection const found = TTextDecoder::Detect(bytes.data(), bytes.size());
    Require(TTextDecoder::IsKnownEncoding(found.encoding.c_str()) && found.bomLength <= bytes.size());
    Require(found.confidence >= 0 && found.confidence <= 100);

    TTextDecoder whole = Make(encoding);
    std::u16string const expected(std::u16string_view(whole.Decode(bytes.data(), bytes.size(), true)));
    if (data[0] % std::size(kEncodings) == 0) {
        icu_reference::Decoded const icu = icu_reference::Decode(encoding, bytes);
        Require(icu.text == expected && icu.malformed == whole.Malformed());
    }

    TTextDecoder decoder = Make(encoding);
    std::u16string decoded;
    for (std::size_t at = 0, i = 0; at < bytes.size() || i == 0; ++i) {
        std::size_t const wanted = i < lengthCount ? lengths[i] : bytes.size();
        std::size_t const length = std::min(wanted, bytes.size() - at);
        std::unique_ptr<char[]> const chunk(new char[length]);
        std::copy_n(bytes.data() + at, length, chunk.get());
        at += length;
        decoded += std::u16string_view(decoder.Decode(chunk.get(), length, at == bytes.size()));
    }
    Require(decoded == expected && decoder.Malformed() == whole.Malformed());
    Require(decoder.Found().encoding == whole.Found().encoding);
    return 0;
}
