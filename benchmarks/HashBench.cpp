// Digests beside what people would use instead: OpenSSL's functions for one algorithm each ("low level", of which its
// manual says not to use them any more) and its interface for all of them (EVP), Crypto++ and Qt.

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <qvxsys/Hash.h>
#include <qvxsys/sha2.h>

#ifdef QVXSYS_BENCH_OPENSSL
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/evp.h>
#include <openssl/sha.h>
#endif
#ifdef QVXSYS_BENCH_CRYPTOPP
#include <cryptopp/sha.h>
#endif
#ifdef QVXSYS_BENCH_QT
#include <QByteArray>
#include <QCryptographicHash>
#endif

#include "BenchSupport.h"

namespace {

using bench::OwnRows;
using bench::Row;

struct Length
{
    char const* row;
    std::size_t bytes;
};
constexpr Length kLengths[] = {{"i1 %, 1 MB", 1'000'000}, {"i2 %, 64 bytes", 64}, {"i3 %, 1 KB", 1024}};
constexpr Length kWithText = {"i2 %, 64 bytes to text", 64};

std::string Name(Length const& length, char const* algorithm)
{
    std::string name = length.row;
    return name.replace(name.find('%'), 1, algorithm);
}

/// A message, opaque to the compiler each time.
struct Message
{
    explicit Message(std::size_t size) : bytes(size)
    {
        for (std::size_t i = 0; i < size; ++i) {
            bytes[i] = static_cast<unsigned char>(i * 7919 >> 3);
        }
    }
    unsigned char const* Data() const
    {
        unsigned char const* data = bytes.data();
        benchmark::DoNotOptimize(data);
        benchmark::ClobberMemory();
        return data;
    }
    std::size_t Size() const { return bytes.size(); }

    std::vector<unsigned char> bytes;
};

template<sha2::SHA_TYPE type>
void OwnRowsOf(char const* algorithm)
{
    for (Length const& length : kLengths) {
        OwnRows(Name(length, algorithm), [message = Message(length.bytes)]() {
            auto digest = quorvex::hash::DigestOf<type>(std::as_bytes(std::span(message.Data(), message.Size())));
            benchmark::DoNotOptimize(digest);
        });
    }
    OwnRows(Name(kWithText, algorithm), [message = Message(kWithText.bytes), hash = std::make_shared<sha2>()]() {
        benchmark::DoNotOptimize(hash->GetHash(type, message.Data(), message.Size()).data());
        benchmark::ClobberMemory();
    });
}

#ifdef QVXSYS_BENCH_OPENSSL
// As simple as its users write it.
std::string Hex(unsigned char const* bytes, std::size_t count)
{
    constexpr char const* kDigits = "0123456789abcdef";
    std::string hex(2 * count, '\0');
    for (std::size_t i = 0; i < count; ++i) {
        hex[2 * i] = kDigits[bytes[i] >> 4];
        hex[2 * i + 1] = kDigits[bytes[i] & 15];
    }
    return hex;
}

template<class Context, auto init, auto update, auto final>
void LowLevelRows(char const* algorithm)
{
    for (Length const& length : kLengths) {
        Row(Name(length, algorithm), "OpenSSL", [message = Message(length.bytes)]() mutable {
            std::array<unsigned char, 64> digest;
            Context context;
            init(&context);
            update(&context, message.Data(), message.Size());
            final(digest.data(), &context);
            benchmark::DoNotOptimize(digest);
        });
    }
}

void EvpRows(char const* algorithm, EVP_MD const* kind)
{
    std::shared_ptr<EVP_MD_CTX> const context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    auto const digest = [kind, context](Message& message, unsigned char* bytes) {
        unsigned count = 0;
        EVP_DigestInit_ex(context.get(), kind, nullptr);
        EVP_DigestUpdate(context.get(), message.Data(), message.Size());
        EVP_DigestFinal_ex(context.get(), bytes, &count);
        return count;
    };
    for (Length const& length : kLengths) {
        Row(Name(length, algorithm), "OpenSSL's EVP", [digest, message = Message(length.bytes)]() mutable {
            std::array<unsigned char, 64> bytes;
            digest(message, bytes.data());
            benchmark::DoNotOptimize(bytes);
        });
    }
    Row(Name(kWithText, algorithm), "OpenSSL's EVP", [digest, message = Message(kWithText.bytes)]() mutable {
        std::array<unsigned char, 64> bytes;
        unsigned const count = digest(message, bytes.data());
        std::string text = Hex(bytes.data(), count);
        benchmark::DoNotOptimize(text);
    });
}

void OpenSslRows()
{
    LowLevelRows<SHA_CTX, SHA1_Init, SHA1_Update, SHA1_Final>("SHA-1");
    LowLevelRows<SHA256_CTX, SHA256_Init, SHA256_Update, SHA256_Final>("SHA-256");
    LowLevelRows<SHA512_CTX, SHA512_Init, SHA512_Update, SHA512_Final>("SHA-512");
    EvpRows("SHA-1", EVP_sha1());
    EvpRows("SHA-256", EVP_sha256());
    EvpRows("SHA-512", EVP_sha512());
}
#endif

#ifdef QVXSYS_BENCH_CRYPTOPP
template<class Algorithm>
void CryptoPpRows(char const* algorithm)
{
    for (Length const& length : kLengths) {
        Row(Name(length, algorithm), "Crypto++",
            [message = Message(length.bytes), hash = std::make_shared<Algorithm>()]() mutable {
                std::array<unsigned char, Algorithm::DIGESTSIZE> digest;
                hash->CalculateDigest(digest.data(), message.Data(), message.Size());
                benchmark::DoNotOptimize(digest);
            });
    }
}
#endif

#ifdef QVXSYS_BENCH_QT
void QtRows(char const* algorithm, QCryptographicHash::Algorithm kind)
{
    for (Length const& length : kLengths) {
        Row(Name(length, algorithm), "QCryptographicHash", [kind, message = Message(length.bytes)]() mutable {
            auto const* const data = static_cast<char const*>(static_cast<void const*>(message.Data()));
            QByteArray digest =
                QCryptographicHash::hash(QByteArray::fromRawData(data, static_cast<int>(message.Size())), kind);
            benchmark::DoNotOptimize(digest);
        });
    }
    Row(Name(kWithText, algorithm), "QCryptographicHash", [kind, message = Message(kWithText.bytes)]() mutable {
        auto const* const data = static_cast<char const*>(static_cast<void const*>(message.Data()));
        QByteArray text =
            QCryptographicHash::hash(QByteArray::fromRawData(data, static_cast<int>(message.Size())), kind).toHex();
        benchmark::DoNotOptimize(text);
    });
}
#endif

void RegisterRows()
{
    OwnRowsOf<sha2::SHA160>("SHA-1");
    OwnRowsOf<sha2::SHA256>("SHA-256");
    OwnRowsOf<sha2::SHA512>("SHA-512");
#ifdef QVXSYS_BENCH_OPENSSL
    OpenSslRows();
#endif
#ifdef QVXSYS_BENCH_CRYPTOPP
    CryptoPpRows<CryptoPP::SHA1>("SHA-1");
    CryptoPpRows<CryptoPP::SHA256>("SHA-256");
    CryptoPpRows<CryptoPP::SHA512>("SHA-512");
#endif
#ifdef QVXSYS_BENCH_QT
    QtRows("SHA-1", QCryptographicHash::Sha1);
    QtRows("SHA-256", QCryptographicHash::Sha256);
    QtRows("SHA-512", QCryptographicHash::Sha512);
#endif
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
