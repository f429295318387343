#pragma once
// TTextDecoder: decodes text of a known encoding into UTF-16 chunk by chunk, as it is read, and tells how much of it
// was malformed. Detect() finds out the encoding of text that does not say.
//
//     TTextDecoder decoder("UTF-8");
//     TStringCore text;
//     decoder.Decode("Gr\xC3", 3, text, false);                 // text == u"Gr": the third character is not whole yet
//     decoder.Decode("\xBC\xC3\x9F" "e", 4, text, true);        // text == u"Gr\u00FC\u00DFe"
//     bool const sound = decoder.Malformed() == 0;              // true
//
// However a text is cut into chunks, the result is that of decoding it in one: what a chunk leaves unfinished (part of
// a sequence, of a unit, of a surrogate pair) is kept until the next one comes.
//
// Encodings are named as ICU knows them, in any spelling it takes ("utf8", "ISO_8859-1"), or "local" for ICU's default
// converter, which on Linux is UTF-8. UTF-8, UTF-16LE, UTF-16BE, UTF-32LE, UTF-32BE, ISO-8859-1 and ISO-8859-15 run
// at gigabytes a second; any other name ("windows-1252", "Shift_JIS", ...) goes through ICU's converter.
//
// Malformed input is no error. It becomes U+FFFD and is counted: one for each maximal subpart of ill-formed UTF-8 (as
// the Unicode Standard recommends and ICU does), each lone surrogate, each UTF-32 unit that is no code point, each
// sequence that ICU reports for its converters (characters without a mapping too), and one for a sequence, pair or unit
// that the end of the text cuts short. A byte order mark is text like any other: it comes out as U+FEFF (but "UTF-16",
// "UTF-32" and a few more converters of ICU consume it), skip it with the help of Detect().
//
// Errors are TStringCore::Exception with the texts given at members. Different objects may be used from different
// threads at once, one object may not.

#include <cstddef>
#include <memory>
#include <string>

#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

/// Decodes bytes of any encoding, chunk by chunk.
class QVXSYS_API TTextDecoder
{
public:
    /// What Detect found out about a text.
    struct Detection
    {
        std::string encoding;      ///< a name that the constructor takes
        std::size_t bomLength = 0; ///< the bytes of the byte order mark at the beginning, 0 without one
        bool looksBinary = false;  ///< there is a byte 0 that the encoding does not explain
    };

    /// The most bytes that one call of Decode takes.
    static constexpr std::size_t kMaxChunk = 0x0FFFFFFF;

    /// True when the constructor takes the name. Opens the encoding to find out: some microseconds, the first time for
    /// a table of ICU's up to milliseconds.
    [[nodiscard]] static bool IsKnownEncoding(char const* name) noexcept;

    /// The encoding of the text that begins with these n bytes; the first 64 KiB are looked at. In this order: the byte
    /// order marks of UTF-8, UTF-16 and UTF-32; UTF-8 when the bytes are well-formed or at least have more multi-byte
    /// characters than faults (what is cut off at the end is neither), so ASCII and no bytes at all are UTF-8; what
    /// ICU's charset detection holds for likely, unless there are zeros among the bytes; else ISO-8859-1. Throws "Out
    /// of memory" only.
    [[nodiscard]] static Detection Detect(char const* data, std::size_t n);

    /// Throws "Unknown text encoding: NAME" (for null and "" too).
    explicit TTextDecoder(char const* encoding);
    TTextDecoder(TTextDecoder&& other) noexcept;
    TTextDecoder& operator=(TTextDecoder&& other) noexcept;
    ~TTextDecoder();
    // A decoder that was moved from may only be assigned to or destroyed.

    /// "UTF-8", "ISO-8859-15", ... for the encodings named above, whichever way they were asked for; for others the
    /// name given to the constructor, for "local" ICU's name of it.
    [[nodiscard]] char const* Encoding() const noexcept QVXSYS_LIFETIME_BOUND;

    /// Decodes the next n bytes of the text; null is allowed for none. With `last` the text ends there: what is not
    /// whole then is malformed, and the next call begins a new text. The result stands in a buffer that the next call
    /// overwrites and that stays as large as the largest chunk needed (a unit a byte): chunks of some 100 KiB are best.
    /// Linear. Throws "Text chunk is too long" above kMaxChunk bytes, "Out of memory", and "ICU error N encountered
    /// while TTextDecoder::Decode was trying to use ucnv_toUnicode" for a failure other than malformed input; call
    /// Reset to go on after the latter two.
    [[nodiscard]] TStringView Decode(char const* data, std::size_t n, bool last) QVXSYS_LIFETIME_BOUND;
    /// The same, appended to `out`; throws what TStringCore::append throws, too.
    void Decode(char const* data, std::size_t n, TStringCore& out, bool last);

    /// The malformed sequences met since construction or Reset. O(1).
    [[nodiscard]] std::size_t Malformed() const noexcept;

    /// Forgets an unfinished text and the count of malformed sequences.
    void Reset() noexcept;

private:
    struct State;
    std::unique_ptr<State> m_state;
};
