// Paths against their slow model, and names of the file system on their way through a path and back.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/PathModel.h"

extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const bytes(reinterpret_cast<char const*>(data), size);
    TPathCore const name = qvxsys::detail::PathFromBytes(bytes);
    if (qvxsys::detail::PathToBytes(name) != bytes || name.GenericString().contains(u'\\')) {
        std::abort();
    }
    // A path, and another one in front of a line feed; by Latin-1, since back slashes and colons were escaped.
    TStringCore const latin = TStringCore::fromLatin1(bytes.data(), static_cast<int>(size));
    int const cut = latin.indexOf(u'\n');
    std::string const error = testing_support::PathCheck().Run(latin.view().mid(cut + 1), latin.view().left(cut)) +
                              testing_support::PathCheck().Run(name.GenericString());
    if (!error.empty()) {
        std::fprintf(stderr, "%s\n", error.c_str());
        std::abort();
    }
    return 0;
}
