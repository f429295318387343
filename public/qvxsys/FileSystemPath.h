#pragma once
// Between TPathCore and the names of the file system the program runs on, as std::filesystem::path and as the string
// that the system's own functions take.
//
//     for (auto const& entry : std::filesystem::directory_iterator(folder)) {
//         TPathCore const file = qvxsys::FromFileSystem(entry.path());
//         if (file.Extension() == u"txt") {
//             std::ifstream in(qvxsys::ToFileSystem(file));           // opens it, whatever its name
//         }
//     }
//
// Every name of the file system survives the way through a TPathCore and back, unit for unit, separators at the end and
// doubled ones too; on Windows all but the kind of separator: back come back slashes.
//
// On Linux names are bytes, and as text they are UTF-8. Bytes that are no well-formed UTF-8 and characters that a path
// would take for something else are escaped, each byte B as the lone surrogate U+DC00 + B, which no well-formed text
// has: U+DC80 to U+DCFF for bad bytes, U+DC5C for a back slash, and U+DC3A for a colon unless it is a drive's
// ("C:/dir", "//?/C:" at the beginning, '/' or nothing behind). So the file name of "log/at 12:30" is all of
// "at 12:30". Back, lone surrogates of those values become their bytes and any others three bytes as UTF-8 would have
// them. In the other direction a path comes back from the file system as it was if its text is well-formed and has ':'
// in drives only.
//
// On Windows names are UTF-16 and nothing is escaped.

#include <concepts>
#include <filesystem>
#include <string>
#include <string_view>

#include <qvxsys/Platform.h>
#include <qvxsys/TPathCore.h>

namespace qvxsys {
namespace detail {

// Both conversions are there on every system; which one the system's names go by is chosen below.
[[nodiscard]] QVXSYS_API TPathCore PathFromBytes(std::string_view bytes);
[[nodiscard]] QVXSYS_API std::string PathToBytes(TPathCore const& path);
[[nodiscard]] QVXSYS_API TPathCore PathFromUnits(TStringView units);

template<class Name>
[[nodiscard]] Name NativeNameOf(TPathCore const& path)
{
    if constexpr (std::same_as<Name, std::string>) {
        return PathToBytes(path);
    } else {
        TStringCore const native = path.NativeString();
        return Name(native.begin(), native.end());
    }
}

} // namespace detail

/// What the system's functions take: bytes on Linux, UTF-16 with back slashes on Windows.
using NativeName = std::filesystem::path::string_type;
using NativeNameView = std::basic_string_view<std::filesystem::path::value_type>;

/// The path of a name as the system spells it. Nothing is dropped at its end, unlike in TPathCore's constructors.
[[nodiscard]] inline TPathCore FromNative(NativeNameView name)
{
    if constexpr (sizeof(NativeNameView::value_type) == 1) {
        return detail::PathFromBytes({reinterpret_cast<char const*>(name.data()), name.size()});
    } else {
        return detail::PathFromUnits({reinterpret_cast<char16_t const*>(name.data()), name.size()});
    }
}

/// The name as the system spells it.
[[nodiscard]] inline NativeName ToNative(TPathCore const& path)
{
    return detail::NativeNameOf<NativeName>(path);
}

[[nodiscard]] inline TPathCore FromFileSystem(std::filesystem::path const& path)
{
    return FromNative(path.native());
}

[[nodiscard]] inline std::filesystem::path ToFileSystem(TPathCore const& path)
{
    return ToNative(path);
}

} // namespace qvxsys
