#pragma once
// What goes with the digests of <qvxsys/sha2.h>: digests in one call, without an object and without an allocation; of
// files and streams; message authentication codes; comparison in constant time.
//
//     using namespace quorvex::hash;
//     std::array<std::byte, 32> const id = DigestOf<sha2::SHA256>(std::as_bytes(std::span(text)));
//     std::cout << DigestOfFile(sha2::SHA256, "archive.db").Hex() << '\n';
//
//     Hmac hmac(sha2::SHA256, key);
//     hmac.Update(header);
//     hmac.Update(body);
//     if (!EqualInConstantTime(hmac.End().Bytes(), received)) {
//         Refuse();
//     }
//
// Functions that take a type at run time throw std::runtime_error("Invalid SHA_TYPE type!") when it is none of the
// five.

#include <array>
#include <cstddef>
#include <filesystem>
#include <iosfwd>
#include <span>
#include <string>

#include <qvxsys/Platform.h>
#include <qvxsys/sha2.h>

namespace qvxsys::detail {
struct DigestMaker;
} // namespace qvxsys::detail

namespace quorvex::hash {

/// In bytes; 0 for what is no type.
[[nodiscard]] constexpr std::size_t DigestLength(sha2::SHA_TYPE type) noexcept
{
    constexpr std::size_t kLengths[] = {0, 20, 28, 32, 48, 64};
    return type >= sha2::SHA160 && type <= sha2::SHA512 ? kLengths[type] : 0;
}

/// The bytes of a digest. A value; takes no memory but its own.
class Digest
{
public:
    static constexpr std::size_t kMostBytes = 64; ///< of the largest digest, SHA-512's

    /// No bytes.
    Digest() noexcept = default;

    /// The digest.
    [[nodiscard]] std::span<std::byte const> Bytes() const noexcept QVXSYS_LIFETIME_BOUND { return {m_bytes, m_size}; }
    /// In bytes.
    [[nodiscard]] std::size_t Size() const noexcept { return m_size; }
    /// In lower-case hexadecimal digits.
    [[nodiscard]] QVXSYS_API std::string Hex() const;

    /// As EqualInConstantTime.
    friend QVXSYS_API bool operator==(Digest const& a, Digest const& b) noexcept;

private:
    friend struct qvxsys::detail::DigestMaker;

    std::byte m_bytes[kMostBytes] = {};
    std::size_t m_size = 0;
};

} // namespace quorvex::hash

namespace qvxsys::detail {

/// Writes the digest's bytes; the type is one of the five.
QVXSYS_API void ShaOf(sha2::SHA_TYPE type, std::byte const* data, std::size_t size, std::byte* digest) noexcept;

} // namespace qvxsys::detail

namespace quorvex::hash {

/// The digest of the bytes. Does not allocate.
template<sha2::SHA_TYPE type>
[[nodiscard]] std::array<std::byte, DigestLength(type)> DigestOf(std::span<std::byte const> data) noexcept
{
    static_assert(DigestLength(type) != 0, "no SHA_TYPE");
    std::array<std::byte, DigestLength(type)> digest;
    qvxsys::detail::ShaOf(type, data.data(), data.size(), digest.data());
    return digest;
}

/// The same with the type known at run time only.
[[nodiscard]] QVXSYS_API Digest DigestOf(sha2::SHA_TYPE type, std::span<std::byte const> data);

/// The digest of what is left to read in the stream, which should be a binary one. Reads in pieces of 64 KiB;
/// afterwards the stream stands at its end. A stream at its end (eof) has nothing left. Throws QuorvexException "Cannot
/// read the stream." (0x6BD14F02, source 4) when the stream has failed before or has no buffer, and when the buffer
/// throws std::ios_base::failure. The stream's state is not changed.
[[nodiscard]] QVXSYS_API Digest DigestOfStream(sha2::SHA_TYPE type, std::istream& in);

/// The digest of a file's bytes. Reads in pieces; opening a FIFO waits for a writer.
/// Throws QuorvexException with the file's name and the reason in the words of the C library, "Cannot open \"%1\": %2"
/// (0xE2073A9C, source 4) or "Cannot read \"%1\": %2" (0x41B8C65D, source 4). What is not Unicode in the name is shown
/// as U+FFFD.
[[nodiscard]] QVXSYS_API Digest DigestOfFile(sha2::SHA_TYPE type, std::filesystem::path const& path);

/// True if both have the same bytes. The time depends on the lengths only, not on where bytes differ: for comparing a
/// secret, such as a message authentication code, with what somebody sent. Different lengths are told apart at once, a
/// length being no secret.
[[nodiscard]] QVXSYS_API bool EqualInConstantTime(std::span<std::byte const> a, std::span<std::byte const> b) noexcept;

/// Message authentication codes by a keyed digest (RFC 2104, FIPS 198-1), of one message after the other with the same
/// key. What was computed from the key is overwritten at the end of an object's life. Copies go on by themselves.
class QVXSYS_API Hmac
{
public:
    /// Any key will do; one longer than a block (64 bytes, 128 for SHA-384/512) is replaced by its digest. The key is
    /// not kept.
    Hmac(sha2::SHA_TYPE type, std::span<std::byte const> key);
    Hmac(Hmac const&) noexcept = default;
    Hmac& operator=(Hmac const&) noexcept = default;
    ~Hmac();

    /// The next bytes of the message.
    void Update(std::span<std::byte const> data) noexcept;

    /// The code of the message, as long as a digest; the next message begins.
    Digest End() noexcept;

    /// The digest that it is made with.
    [[nodiscard]] sha2::SHA_TYPE GetEnumType() const noexcept { return m_type; }

private:
    sha2::SHA_TYPE m_type;
    qvxsys::detail::ShaState m_inner; // behind the block that the key makes
    qvxsys::detail::ShaState m_outer;
    qvxsys::detail::ShaState m_current;
};

/// The code of one message.
[[nodiscard]] QVXSYS_API Digest HmacOf(sha2::SHA_TYPE type, std::span<std::byte const> key,
                                       std::span<std::byte const> message);

} // namespace quorvex::hash
