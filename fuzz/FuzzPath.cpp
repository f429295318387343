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
    // A path, and another one in front of a line feed.
    TStringView const text = name.GenericString();
    int const cut = text.indexOf(u'\n');
    TStringCore const latin = TStringCore::fromLatin1(bytes.data(), static_cast<int>(size));
    int const latinCut = latin.indexOf(u'\n');
    for (auto const& [left, right] : {std::pair(text.mid(cut + 1), text.left(cut)),
                                      std::pair(latin.view().mid(latinCut + 1), latin.view().left(latinCut))}) {
        std::string const error = testing_support::PathCheck().Run(left, right);
        if (!error.empty()) {
            std::fprintf(stderr, "%s\n", error.c_str());
            std::abort();
        }
    }
    return 0;
}
