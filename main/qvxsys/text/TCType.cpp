#include <qvxsys/TCType.h>

#include <qvxsys/QvxICU.h>

namespace TCType {
namespace {

// Zero-initialised, so they take no room in the file and no memory until an entry is asked for. Two threads may fill
// one entry at once; they write the same value, and nothing else is published by it: relaxed order is enough.
constinit std::atomic<std::uint16_t> s_classes[0x10000] = {};
constinit std::atomic<char16_t> s_folded[0x10000] = {};
constinit std::atomic<char16_t> s_lower[0x10000] = {};
constinit std::atomic<char16_t> s_upper[0x10000] = {};

using namespace QvxICU;

char16_t Fill(std::atomic<char16_t>* table, char16_t c, char32_t mapped) noexcept
{
    table[c].store(static_cast<char16_t>(mapped + 1), std::memory_order_relaxed);
    return static_cast<char16_t>(mapped);
}

} // namespace

namespace detail {

constinit std::atomic<std::uint16_t> const* const g_classes = s_classes;
constinit std::atomic<char16_t> const* const g_folded = s_folded;
constinit std::atomic<char16_t> const* const g_lower = s_lower;
constinit std::atomic<char16_t> const* const g_upper = s_upper;

std::uint16_t ClassesOf(char32_t c) noexcept
{
    unsigned bits = kKnown;
    auto const add = [&bits](bool is, ClassBits bit) { bits |= is ? static_cast<unsigned>(bit) : 0u; };
    add(t_u_hasBinaryProperty(c, ICUProperty::PosixAlnum), kAlnum);
    add(t_u_isUAlphabetic(c), kAlpha);
    add(t_u_isblank(c), kBlank);
    add(t_u_charType(c) == ICUCharCategory::ControlChar, kCntrl);
    add(t_u_isdigit(c), kDigit);
    add(t_u_hasBinaryProperty(c, ICUProperty::PosixGraph), kGraph);
    add(t_u_isULowercase(c), kLower);
    add(t_u_hasBinaryProperty(c, ICUProperty::PosixPrint), kPrint);
    add(t_u_ispunct(c), kPunct);
    add(t_u_isUWhiteSpace(c), kSpace);
    add(t_u_isUUppercase(c), kUpper);
    add(t_u_isxdigit(c), kXDigit);
    return static_cast<std::uint16_t>(bits);
}

std::uint16_t FillClasses(char16_t c) noexcept
{
    std::uint16_t const classes = ClassesOf(c);
    s_classes[c].store(classes, std::memory_order_relaxed);
    return classes;
}

char16_t FillFolded(char16_t c) noexcept
{
    return Fill(s_folded, c, t_u_foldCase(c, 0));
}

char16_t FillLower(char16_t c) noexcept
{
    return Fill(s_lower, c, t_u_tolower(c));
}

char16_t FillUpper(char16_t c) noexcept
{
    return Fill(s_upper, c, t_u_toupper(c));
}

} // namespace detail

char32_t ToLower32(char32_t c) noexcept
{
    return t_u_tolower(c);
}

char32_t ToUpper32(char32_t c) noexcept
{
    return t_u_toupper(c);
}

} // namespace TCType
