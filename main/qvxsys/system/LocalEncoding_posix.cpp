#include "LocalEncoding.h"

#include <cerrno>
#include <clocale>
#include <string_view>

#include <langinfo.h>
#include <locale.h>

namespace qvxsys::system::platform {
namespace {

void CopyName(std::string_view source, char (&name)[20]) noexcept
{
    std::size_t const length = source.copy(name, sizeof name - 1);
    name[length] = 0;
}

} // namespace

void LocalEncodingName(char (&name)[20]) noexcept
{
    int const before = errno;
    // The locale of the process, not one that the calling thread may have put on for itself.
    char const* const set = std::setlocale(LC_CTYPE, nullptr);
    bool const isUnset = set == nullptr || std::string_view(set) == "C" || std::string_view(set) == "POSIX";
    locale_t const locale = isUnset ? ::newlocale(LC_CTYPE_MASK, "", nullptr) : ::duplocale(LC_GLOBAL_LOCALE);
    if (locale != nullptr) {
        std::string_view const charset = ::nl_langinfo_l(CODESET, locale);
        char const* const listed = NameOfCharset(charset);
        CopyName(listed != nullptr ? listed : charset, name);
        ::freelocale(locale);
    } else {
        CopyName("UTF-8", name);
    }
    errno = before;
}

} // namespace qvxsys::system::platform
