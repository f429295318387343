// TTextDecoder: random bytes in random chunks against the same bytes in one, and against ICU for UTF-8; and detection.

#include <qvxsys/TTextDecoder.h>

#include <iterator>

#include "Fuzz.h"
#include "support/IcuDecode.h"

namespace {

constexpr char const* kEncodings[] = {"UTF-8",      "UTF-16LE",    "UTF-16BE",  "UTF-32LE", "UTF-32BE",
                                      "ISO-8859-1", "ISO-8859-15", "Shift_JIS", "gb18030",  "ISO-2022-JP",
                                      "UTF-7",      "UTF-16",      "auto"};

TTextDecoder Make(std::string_view encoding)
{
    return encoding == "auto" ? TTextDecoder::Detecting() : TTextDecoder(encoding.data());
}

} // namespace

// The input: the encoding, the number of chunk lengths, these, the text.
void Fuzz(std::uint8_t const* data, std::size_t size)
{
    if (size < 2 || size - 2 < data[1]) {
        return;
    }
    char const* const encoding = kEncodings[data[0] % std::size(kEncodings)];
    std::string_view const lengths = Bytes(data + 2, data[1]);
    std::string_view const bytes = Bytes(data + 2, size - 2).substr(lengths.size());

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
        std::size_t const wanted = i < lengths.size() ? static_cast<std::uint8_t>(lengths[i]) : bytes.size();
        std::size_t const length = std::min(wanted, bytes.size() - at);
        auto const chunk = Exact<char>(bytes.data() + at, length);
        at += length;
        decoded += std::u16string_view(decoder.Decode(chunk.get(), length, at == bytes.size()));
    }
    Require(decoded == expected && decoder.Malformed() == whole.Malformed());
    Require(decoder.Found().encoding == whole.Found().encoding);
}
