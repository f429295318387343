#include <qvxsys/Hash.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <istream>
#include <memory>
#include <system_error>

#include <qvxsys/QuorvexException.h>
#include <qvxsys/TFormatStringCore.h>

#include "ShaCore.h"
#include "ThrowSite.h"

struct qvxsys::detail::DigestMaker
{
    static quorvex::hash::Digest Make(sha2::SHA_TYPE type, std::span<std::byte const> data)
    {
        quorvex::hash::Digest digest;
        digest.m_size = quorvex::hash::DigestLength(type);
        ShaOf(type, data.data(), data.size(), digest.m_bytes);
        return digest;
    }
    static quorvex::hash::Digest Finish(ShaState& state, sha2::SHA_TYPE type)
    {
        quorvex::hash::Digest digest;
        digest.m_size = quorvex::hash::DigestLength(type);
        qvxsys::hash::Finish(state, type, digest.m_bytes);
        return digest;
    }
};

namespace quorvex::hash {
namespace {

using qvxsys::detail::DigestMaker;
using namespace qvxsys::hash;
using qvxsys::error::ThrowSite;

// What is read at once: enough to make the call for it not count, and within the second-level cache.
constexpr std::size_t kPiece = std::size_t{64} * 1024;

// Absorbs what the buffer has, to its end. What the buffer throws goes through.
void AbsorbAll(ShaState& state, sha2::SHA_TYPE type, std::streambuf& in)
{
    auto const piece = std::make_unique_for_overwrite<char[]>(kPiece);
    for (std::streamsize n = 1; n > 0;) {
        n = in.sgetn(piece.get(), kPiece);
        Absorb(state, type, piece.get(), static_cast<std::size_t>(n));
    }
}

// In the words of the C library where it has them, which are the same on every system.
TStringCore Reason(std::error_code error)
{
    std::error_condition const condition = error.default_error_condition();
    bool const isGeneric = condition.category() == std::generic_category();
    return TStringCore::fromLocal8Bit((isGeneric ? condition.message() : error.message()).c_str());
}

TFormatStringCore FileMessage(char16_t const* format, std::filesystem::path const& path, std::error_code error)
{
    TFormatStringCore message(format);
    message.arg(TStringCore(path.c_str())).arg(Reason(error));
    return message;
}

// Not to be left out because nobody reads it afterwards.
void Overwrite(void* memory, std::size_t size) noexcept
{
    std::memset(memory, 0, size);
    asm volatile("" : : "r"(memory) : "memory");
}

} // namespace

std::string Digest::Hex() const
{
    char hex[2 * kMostBytes];
    WriteHex(static_cast<unsigned char const*>(static_cast<void const*>(m_bytes)), m_size, hex);
    return std::string(hex, 2 * m_size);
}

bool operator==(Digest const& a, Digest const& b) noexcept
{
    return EqualInConstantTime(a.Bytes(), b.Bytes());
}

Digest DigestOf(sha2::SHA_TYPE type, std::span<std::byte const> data)
{
    RequireType(type);
    return DigestMaker::Make(type, data);
}

Digest DigestOfStream(sha2::SHA_TYPE type, std::istream& in)
{
    RequireType(type);
    bool readable = !in.fail() && in.rdbuf() != nullptr;
    ShaState state;
    Start(state, type);
    if (readable && !in.eof()) {
        try {
            AbsorbAll(state, type, *in.rdbuf());
        } catch (std::ios_base::failure const&) {
            readable = false;
        }
    }
    if (!readable) {
        throw QuorvexException(u"Cannot read the stream.", ThrowSite(0x6BD14F02));
    }
    return DigestMaker::Finish(state, type);
}

Digest DigestOfFile(sha2::SHA_TYPE type, std::filesystem::path const& path)
{
    RequireType(type);
    std::filebuf file;
    file.pubsetbuf(nullptr, 0); // reads go straight to the piece
    errno = 0;
    if (file.open(path, std::ios::in | std::ios::binary) == nullptr) {
        std::error_code const error(errno, std::generic_category());
        throw QuorvexException(FileMessage(u"Cannot open \"%1\": %2", path, error), ThrowSite(0xE2073A9C));
    }
    try {
        ShaState state;
        Start(state, type);
        AbsorbAll(state, type, file);
        return DigestMaker::Finish(state, type);
    } catch (std::ios_base::failure const& failure) {
        throw QuorvexException(FileMessage(u"Cannot read \"%1\": %2", path, failure.code()), ThrowSite(0x41B8C65D));
    }
}

bool EqualInConstantTime(std::span<std::byte const> a, std::span<std::byte const> b) noexcept
{
    if (a.size() != b.size()) {
        return false;
    }
    unsigned difference = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        difference |= std::to_integer<unsigned>(a[i] ^ b[i]);
        asm volatile("" : "+r"(difference)); // nothing is known of it, so nothing can be left out
    }
    return difference == 0;
}

Hmac::Hmac(sha2::SHA_TYPE type, std::span<std::byte const> key) : m_type(type)
{
    RequireType(type);
    constexpr std::byte kInner{0x36};
    constexpr std::byte kOuter{0x5C};
    std::byte block[128] = {};
    std::size_t const size = BlockLength(type);
    if (key.size() > size) {
        qvxsys::detail::ShaOf(type, key.data(), key.size(), block);
    } else if (!key.empty()) {
        std::memcpy(block, key.data(), key.size());
    }
    for (std::byte& byte : block) {
        byte ^= kInner;
    }
    Start(m_inner, type);
    Absorb(m_inner, type, block, size);
    for (std::byte& byte : block) {
        byte ^= kInner ^ kOuter;
    }
    Start(m_outer, type);
    Absorb(m_outer, type, block, size);
    m_current = m_inner;
    Overwrite(block, sizeof block);
}

Hmac::~Hmac()
{
    for (ShaState* const state : {&m_inner, &m_outer, &m_current}) {
        Overwrite(state, sizeof *state);
    }
}

void Hmac::Update(std::span<std::byte const> data) noexcept
{
    Absorb(m_current, m_type, data.data(), data.size());
}

Digest Hmac::End() noexcept
{
    std::byte inner[Digest::kMostBytes];
    Finish(m_current, m_type, inner);
    m_current = m_outer;
    Absorb(m_current, m_type, inner, DigestLength(m_type));
    Digest const digest = DigestMaker::Finish(m_current, m_type);
    m_current = m_inner;
    return digest;
}

Digest HmacOf(sha2::SHA_TYPE type, std::span<std::byte const> key, std::span<std::byte const> message)
{
    Hmac hmac(type, key);
    hmac.Update(message);
    return hmac.End();
}

} // namespace quorvex::hash
