#pragma once
// TTextDecoder: decodes text into UTF-16 chunk by chunk, as it is read, and tells how much of it was malformed. The
// encoding is given, or found out from the text itself.
//
//     TTextDecoder decoder("UTF-8");
//     TStringCore text;
//     decoder.Decode("Gr\xC3", 3, text, false);                 // text == u"Gr": the third character is not whole yet
//     decoder.Decode("\xBC\xC3\x9F" "e", 4, text, true);        // text == u"Gr\u00FC\u00DFe"
//     bool const sound = decoder.Malformed() == 0;              // true
//
//     TTextDecoder unknown = TTextDecoder::Detecting();
//     char const bytes[] = {'\xFF', '\xFE', 'G', '\0', 'r', '\0'};
//     TStringCore const detected(unknown.Decode(bytes, 6, true)); // detected == u"Gr"
//     bool const isUtf16 = unknown.Found().encoding == "UTF-16LE"; // true, by its byte order mark
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
// "UTF-32" and a few more converters of ICU consume it), unless the encoding was found by it.
//
// How an encoding is found out: by the byte order mark of UTF-8, UTF-16 or UTF-32; else the bytes tell, 64 KiB of them
// from where it matters. UTF-16 and UTF-32 have zeros among their bytes and read well. What is well-formed UTF-8 is
// UTF-8, ASCII and no bytes at all as well, and so is what has more of its multi-byte characters than faults. Then
// there is ICU's detection: ISO-2022, Shift_JIS, EUC-JP, EUC-KR, Big5, GB18030, the ISO-8859 and windows code pages of
// Europe and the Near East, KOI8-R. What nothing is known of is taken for ISO-8859-1. It matters from the beginning or,
// in a text that begins with 64 KiB of ASCII, from the first other byte, however far behind it is (an escape sequence
// of ISO 2022, which is ASCII, in the first MiB). The code pages of one script differ in few characters; one is as good
// as another for a text that has none of these.
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
    /// How an encoding is known.
    enum class FoundBy {
        Given,         ///< the constructor was told
        ByteOrderMark, ///< the text begins with it
        Utf8,          ///< the text is well-formed UTF-8, as far as it was looked at
        Statistics,    ///< the text looks like it
    };

    /// What is known about a text's encoding.
    struct Detection
    {
        std::string encoding;            ///< a name that the constructor takes
        FoundBy foundBy = FoundBy::Utf8; ///< see there
        int confidence = 100;            ///< in percent; 100 unless found by statistics, 0 for want of anything better
        std::size_t bomLength = 0;       ///< the bytes of the byte order mark at the beginning, 0 without one
        bool looksBinary = false;        ///< there is a byte 0 that the encoding does not explain

        /// True for a guess that is as likely wrong as right: less than 50 percent of confidence.
        [[nodiscard]] bool IsUncertain() const noexcept { return confidence < 50; }
    };

    /// The most bytes that one call of Decode takes.
    QVXSYS_API_CONSTANT static constexpr std::size_t kMaxChunk = 0x0FFFFFFF;

    /// True when the constructor takes the name. Opens the encoding to find out: some microseconds, the first time for
    /// a table of ICU's up to milliseconds.
    [[nodiscard]] static bool IsKnownEncoding(char const* name) noexcept;

    /// The encoding of the text that begins with these n bytes, or is them when they are less than 64 KiB. Looks at no
    /// more than it needs to: see above. Up to a millisecond where ICU has to guess. Throws "Out of memory" only.
    [[nodiscard]] static Detection Detect(char const* data, std::size_t n);

    /// A decoder that finds out the encoding from the text. Until it is settled, up to 64 KiB are held back, so that
    /// the result does not depend on how the text is cut into chunks; nothing comes out before. A byte order mark does
    /// not come out at all. Every text that it decodes has an encoding of its own.
    [[nodiscard]] static TTextDecoder Detecting();

    /// Throws "Unknown text encoding: NAME" (for null and "" too).
    explicit TTextDecoder(char const* encoding);
    TTextDecoder(TTextDecoder&& other) noexcept;
    /// Lets go of its own state and takes over the other's.
    TTextDecoder& operator=(TTextDecoder&& other) noexcept;
    ~TTextDecoder();
    // A decoder that was moved from may only be assigned to or destroyed.

    /// How the encoding is known. That of a decoder which finds it out is final when the text was decoded to its end;
    /// up to there it is UTF-8 while all was ASCII. Changed by Decode and Reset.
    [[nodiscard]] Detection const& Found() const noexcept QVXSYS_LIFETIME_BOUND;

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
    TTextDecoder();

    struct State;
    std::unique_ptr<State> m_state;
};
