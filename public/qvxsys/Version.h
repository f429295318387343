#pragma once
// Which version of the library a program was compiled with, and which one it runs with.
//
//     static_assert(qvxsys::kVersion >= qvxsys::Version{1, 0, 0});
//     std::printf("compiled with %s, runs with %s\n", QVXSYS_VERSION_STRING, qvxsys::LoadedVersionText());
//
// Versions are semantic (semver.org): a program runs with every library of the same major number that is not older than
// the one it was compiled with; another major number is another file name (libqvxsys.so.1), so that both can be
// installed. The three numbers stand here and nowhere else: build, packages and resources read them in this file.

#include <compare>

#include <qvxsys/Platform.h>

#define QVXSYS_VERSION_MAJOR 1
#define QVXSYS_VERSION_MINOR 0
#define QVXSYS_VERSION_PATCH 0

/// For comparisons by the preprocessor: 1.2.3 is 10203.
#define QVXSYS_VERSION (QVXSYS_VERSION_MAJOR * 10000 + QVXSYS_VERSION_MINOR * 100 + QVXSYS_VERSION_PATCH)

/// "1.2.3", a literal.
#define QVXSYS_VERSION_STRING QVXSYS_VERSION_JOIN(QVXSYS_VERSION_MAJOR, QVXSYS_VERSION_MINOR, QVXSYS_VERSION_PATCH)
#define QVXSYS_VERSION_JOIN(a, b, c) QVXSYS_VERSION_TEXT(a) "." QVXSYS_VERSION_TEXT(b) "." QVXSYS_VERSION_TEXT(c)
#define QVXSYS_VERSION_TEXT(number) #number

namespace qvxsys {

/// Ordered by precedence: major before minor before patch.
struct Version
{
    int major = 0; ///< another one is another interface
    int minor = 0; ///< grows when something is added
    int patch = 0; ///< grows when something is mended

    [[nodiscard]] friend constexpr auto operator<=>(Version const&, Version const&) noexcept = default;
};

/// The version of the headers that are being compiled.
inline constexpr Version kVersion{QVXSYS_VERSION_MAJOR, QVXSYS_VERSION_MINOR, QVXSYS_VERSION_PATCH};

/// The version of the library that the process has loaded. Thread-safe, as is the text.
[[nodiscard]] QVXSYS_API Version LoadedVersion() noexcept;

/// The same as text, "1.2.3"; valid for as long as the library is loaded.
[[nodiscard]] QVXSYS_API char const* LoadedVersionText() noexcept;

} // namespace qvxsys
