// Paths against their slow model, and names of the file system on their way through a path and back.

#include "Fuzz.h"
#include "support/PathModel.h"

void Fuzz(std::uint8_t const* data, std::size_t size)
{
    std::string const bytes(Bytes(data, size));
    TPathCore const name = qvxsys::detail::PathFromBytes(bytes);
    Require(qvxsys::detail::PathToBytes(name) == bytes && !name.GenericString().contains(u'\\'));
    // A path, and another one in front of a line feed; by Latin-1, since back slashes and colons were escaped.
    TStringCore const latin = TStringCore::fromLatin1(bytes.data(), static_cast<int>(size));
    int const cut = latin.indexOf(u'\n');
    std::string const error = testing_support::PathCheck().Run(latin.view().mid(cut + 1), latin.view().left(cut)) +
                              testing_support::PathCheck().Run(name.GenericString());
    Require(error.empty(), error);
}
