// Digests and codes of arbitrary bytes with arbitrary keys, in arbitrary pieces.

#include "Fuzz.h"
#include "hash/HashSupport.h"

// The first byte is the type, the second the seed of the pieces' lengths, the third the length of a key in the rest.
void Fuzz(std::uint8_t const* data, std::size_t size)
{
    if (size >= 3) {
        std::string const message(Bytes(data + 3, size - 3));
        std::mt19937 random(data[1]);
        hash_test::CheckedDigest(static_cast<sha2::SHA_TYPE>(1 + data[0] % 5), message,
                                 std::string_view(message).substr(0, data[2]), random);
    }
}
