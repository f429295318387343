#include <qvxsys/sha2.h>

#include <stdexcept>

#include <qvxsys/Hash.h>

#include "ShaCore.h"

namespace hash = qvxsys::hash;

sha2::sha2() noexcept
    : m_type(static_cast<SHA_TYPE>(0)), m_finished(false), m_bigEndian(false), m_hexHash{}, m_rawHash{}, m_state{}
{}

void sha2::Init(SHA_TYPE type)
{
    hash::RequireType(type);
    m_type = type;
    m_finished = false;
    hash::Start(m_state, type);
}

void sha2::Update(unsigned char const* data, unsigned long long length)
{
    hash::RequireType(m_type);
    if (length == 0) {
        return;
    }
    if (data == nullptr) {
        throw std::runtime_error("Null data!");
    }
    if (m_finished) {
        Init(m_type);
    }
    hash::Absorb(m_state, m_type, data, length);
}

void sha2::End()
{
    hash::RequireType(m_type);
    if (m_finished) {
        return;
    }
    std::size_t const digits = 2 * quorvex::hash::DigestLength(m_type);
    hash::Finish(m_state, m_type, m_rawHash);
    hash::WriteHex(m_rawHash, digits / 2, m_hexHash);
    m_hexHash[digits] = '\0';
    m_stringHash.assign(m_hexHash, digits);
    m_finished = true;
}

std::string const& sha2::GetHash(SHA_TYPE type, unsigned char const* data, unsigned long long length)
{
    Init(type);
    Update(data, length);
    End();
    return m_stringHash;
}

char const* sha2::HexHash() const
{
    RequireFinished();
    return m_hexHash;
}

std::string const& sha2::StringHash() const
{
    RequireFinished();
    return m_stringHash;
}

unsigned char const* sha2::RawHash(int& length) const
{
    RequireFinished();
    length = static_cast<int>(quorvex::hash::DigestLength(m_type));
    return m_rawHash;
}

std::string sha2::GetTypeString() const
{
    constexpr char const* kNames[] = {"SHA160", "SHA224", "SHA256", "SHA384", "SHA512"};
    return hash::IsType(m_type) ? kNames[m_type - SHA160] : "Unknown!";
}

void sha2::RequireFinished() const
{
    if (!m_finished) {
        throw std::runtime_error("Unfinished execution!");
    }
}
