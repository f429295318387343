#include "LocalEncoding.h"

#include "WindowsApi.h"

namespace qvxsys::system::platform {

void LocalEncodingName(char (&name)[20]) noexcept
{
    std::string_view const found = NameOfCodePage(::GetACP());
    name[found.copy(name, sizeof name - 1)] = 0;
}

} // namespace qvxsys::system::platform
