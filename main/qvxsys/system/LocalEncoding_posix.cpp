#include "LocalEncoding.h"

#include <clocale>
#include <string_view>

#include <langinfo.h>
#include <locale.h>

#include "KeepErrno.h"

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
    qvxsys::platform::KeepErrno const keep;
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
}

} // namespace qvxsys::system::platform
