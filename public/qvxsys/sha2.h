#pragma once
// sha2: SHA-1 and SHA-2 digests (FIPS 180-4) of bytes, at once or piece by piece, raw or as hexadecimal text.
//
//     sha2 hash;
//     std::cout << hash.GetHash(sha2::SHA256, data, length) << '\n';
//
//     hash.Init(sha2::SHA512);
//     while (Read(piece)) {
//         hash.Update(piece.data(), piece.size());
//     }
//     hash.End();
//     std::cout << hash.StringHash() << '\n';
//
// An object can be used again and again; its buffers are kept. It can be copied and moved at any time, also between two
// pieces: each copy then goes on by itself. What was moved from can be assigned to, destroyed, and used again after
// Init. One object must not be used from two threads when either changes it. The instructions for SHA that the
// processor has are used (Processor.h). Digests without an object, of files and streams, and message authentication:
// <qvxsys/Hash.h>.
//
// SHA-1 is here for what demands it; it protects nothing any more.

#include <cstddef>
#include <cstdint>
#include <string>

#include <qvxsys/Platform.h>

namespace qvxsys::detail {

/// A digest in the making.
struct ShaState
{
    union {
        std::uint32_t words32[8]; ///< of SHA-1 (five) and SHA-224/256
        std::uint64_t words64[8]; ///< of SHA-384/512
    };
    std::uint64_t bits[2];    ///< of the message up to now, the low word first
    unsigned char block[128]; ///< of the message, what does not make a whole block (64 or 128 bytes) yet
};

} // namespace qvxsys::detail

/// A digest of the SHA family, taken piece by piece.
class QVXSYS_API sha2
{
public:
    /// A value of 0 is not initialised.
    enum SHA_TYPE : int {
        SHA160 = 1, ///< SHA-1, 20 bytes
        SHA224 = 2, ///< 28 bytes
        SHA256 = 3, ///< 32 bytes
        SHA384 = 4, ///< 48 bytes
        SHA512 = 5, ///< 64 bytes
    };

    /// Of type 0, with an empty text, not finished.
    sha2() noexcept;

    /// Begins a digest. Throws std::runtime_error("Invalid SHA_TYPE type!") for any other type; the object is then as
    /// it was.
    void Init(SHA_TYPE type);

    /// The next `length` bytes; 0 does nothing, whatever `data` is. After End it begins another digest of the same
    /// type. Messages of up to 2^61 - 1 bytes (2^125 - 1 for SHA-384/512) have a digest. Throws
    /// std::runtime_error("Invalid SHA_TYPE type!") before the first Init, std::runtime_error("Null data!") when `data`
    /// is null and `length` is not 0.
    void Update(unsigned char const* data, unsigned long long length);

    /// Ends the message; the results are there from now on. A second End changes nothing.
    /// Throws std::runtime_error("Invalid SHA_TYPE type!") before the first Init.
    void End();

    /// Init, Update, End, StringHash.
    std::string const& GetHash(SHA_TYPE type, unsigned char const* data,
                               unsigned long long length) QVXSYS_LIFETIME_BOUND;

    /// @name Results
    /// Stay until the next Init, Update or GetHash. Throw std::runtime_error("Unfinished execution!") when no digest is
    /// finished.
    /// @{
    /// In lower-case hexadecimal digits, terminated.
    [[nodiscard]] char const* HexHash() const QVXSYS_LIFETIME_BOUND;
    /// The same text.
    [[nodiscard]] std::string const& StringHash() const QVXSYS_LIFETIME_BOUND;
    /// The bytes; `length` is set to how many there are.
    [[nodiscard]] unsigned char const* RawHash(int& length) const QVXSYS_LIFETIME_BOUND;
    /// @}

    /// "SHA160", "SHA224", "SHA256", "SHA384", "SHA512", or "Unknown!" before the first Init.
    [[nodiscard]] std::string GetTypeString() const;
    /// Which digest it is.
    [[nodiscard]] SHA_TYPE GetEnumType() const noexcept { return m_type; }
    /// False: this is a library for little-endian machines.
    [[nodiscard]] bool IsBigEndian() const noexcept { return m_bigEndian; }

private:
    void RequireFinished() const;

    QVXSYS_API_CONSTANT static constexpr std::size_t kMostBytes = 64;

    SHA_TYPE m_type;
    std::string m_stringHash;
    bool m_finished;
    bool m_bigEndian;
    char m_hexHash[kMostBytes * 2 + 1];
    unsigned char m_rawHash[kMostBytes];
    qvxsys::detail::ShaState m_state;
};
