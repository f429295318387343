#include "LocalEncoding.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <iterator>

#include <qvxsys/TSystem.h>

#include "KernelText.h"

namespace qvxsys::system {
namespace {

struct CodePage
{
    std::uint16_t number;
    char const* name;
};

constexpr CodePage kCodePages[] = {
    {37, "EBCDIC"},         {437, "US-ASCII"},      {819, "iso-8859-1"},    {874, "tis-620"},
    {912, "iso-8859-2"},    {914, "iso-8859-4"},    {915, "iso-8859-5"},    {920, "iso-8859-9"},
    {922, "iso-8859-13"},   {923, "iso-8859-15"},   {932, "Shift_JIS"},     {936, "GBK"},
    {943, "Shift_JIS"},     {949, "EUC-KR"},        {950, "Big5"},          {964, "EUC-TW"},
    {970, "EUC-KR"},        {1089, "iso-8859-6"},   {1200, "UTF-16LE"},     {1201, "UTF-16BE"},
    {1250, "windows-1250"}, {1251, "windows-1251"}, {1252, "windows-1252"}, {1253, "windows-1253"},
    {1254, "windows-1254"}, {1255, "windows-1255"}, {1256, "windows-1256"}, {1257, "windows-1257"},
    {1258, "windows-1258"}, {1363, "EUC-KR"},       {1386, "EUC-CN"},       {20127, "US-ASCII"},
    {20866, "KOI8-R"},      {28591, "iso-8859-1"},  {28592, "iso-8859-2"},  {28593, "iso-8859-3"},
    {28594, "iso-8859-4"},  {28595, "iso-8859-5"},  {28596, "iso-8859-6"},  {28597, "iso-8859-7"},
    {28598, "iso-8859-8"},  {28599, "iso-8859-9"},  {28600, "iso-8859-10"}, {28601, "iso-8859-11"},
    {28602, "iso-8859-12"}, {28603, "iso-8859-13"}, {28604, "iso-8859-14"}, {28605, "iso-8859-15"},
    {28606, "iso-8859-16"}, {38596, "iso-8859-6"},  {38598, "iso-8859-8"},  {51949, "EUC-KR"},
    {54936, "GB18030"},     {65000, "UTF-7"},       {65001, "UTF-8"},
};
static_assert(std::size(kCodePages) == 55);
static_assert(std::is_sorted(std::begin(kCodePages), std::end(kCodePages),
                             [](CodePage const& a, CodePage const& b) { return a.number < b.number; }));

std::atomic<char const*> g_lastFound = "UTF-8";

CodePage const* Find(std::uint64_t number) noexcept
{
    auto const row = std::lower_bound(std::begin(kCodePages), std::end(kCodePages), number,
                                      [](CodePage const& page, std::uint64_t wanted) { return page.number < wanted; });
    return row != std::end(kCodePages) && row->number == number ? row : nullptr;
}

// Names under which character sets go, besides their own in the list, by the IANA's registry and the C library's.
struct Alias
{
    std::string_view alias; // as Plain() leaves it
    std::uint16_t codePage;
};
constexpr Alias kAliases[] = {
    {"ansix341968", 20127}, {"646", 20127},         {"ascii", 20127},  {"usascii", 20127}, {"iso646us", 20127},
    {"latin1", 28591},      {"latin2", 28592},      {"latin3", 28593}, {"latin4", 28594},  {"latin5", 28599},
    {"latin6", 28600},      {"latin7", 28603},      {"latin8", 28604}, {"latin9", 28605},  {"latin10", 28606},
    {"sjis", 932},          {"windows31j", 932},    {"uhc", 949},      {"gb2312", 1386},   {"tis6200", 874},
    {"tis62025331", 874},   {"gb180302000", 54936},
};

// Without anything but letters, in lower case, and digits. Empty for what is too long to be a name.
std::string_view Plain(std::string_view name, char (&buffer)[32]) noexcept
{
    std::size_t length = 0;
    for (char const c : name) {
        bool const isLetter = (c | 0x20) >= 'a' && (c | 0x20) <= 'z';
        if (isLetter || (c >= '0' && c <= '9')) {
            if (length == sizeof buffer) {
                return {};
            }
            buffer[length++] = isLetter ? static_cast<char>(c | 0x20) : c;
        }
    }
    return {buffer, length};
}

} // namespace

char const* NameOfCodePage(unsigned int codePage) noexcept
{
    if (CodePage const* const row = Find(codePage)) {
        g_lastFound.store(row->name, std::memory_order_relaxed);
    }
    return g_lastFound.load(std::memory_order_relaxed);
}

char const* NameOfCharset(std::string_view charset) noexcept
{
    char buffer[32];
    char rowBuffer[32];
    std::string_view const name = Plain(charset, buffer);
    for (CodePage const& row : kCodePages) {
        if (!name.empty() && name == Plain(row.name, rowBuffer)) {
            return row.name;
        }
    }
    for (Alias const& alias : kAliases) {
        if (name == alias.alias) {
            return Find(alias.codePage)->name;
        }
    }
    for (std::string_view const prefix : {"cp", "ibm", "windows"}) {
        std::optional<std::uint64_t> const number =
            name.starts_with(prefix) ? ParseNumber(name.substr(prefix.size())) : std::nullopt;
        if (CodePage const* const row = number ? Find(*number) : nullptr) {
            return row->name;
        }
    }
    return nullptr;
}

} // namespace qvxsys::system

char const* TSystem::Local8BitEncoding() noexcept
{
    struct Name
    {
        char text[20];
        Name() noexcept { qvxsys::system::platform::LocalEncodingName(text); }
    };
    static Name const name;
    return name.text;
}
