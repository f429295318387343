#pragma once
// Strings and views as arguments of {fmt}, where {fmt} is installed: fmt::print("{:>10}|", u"text"_qs). With the format
// specifications of strings; UTF-8 in narrow formats. Not part of <qvxsys/qvxsys.h>, as it includes <fmt/format.h>.

#include <string_view>

#include <qvxsys/StringUtils.h>
#include <qvxsys/TStringCore.h>

#if __has_include(<fmt/format.h>)
#include <fmt/format.h>

template<>
struct fmt::formatter<TStringView, char> : fmt::formatter<fmt::string_view, char>
{
    template<class Context>
    auto format(TStringView text, Context& context) const
    {
        return fmt::formatter<fmt::string_view, char>::format(StringUtils::toStdString(text), context);
    }
};
template<>
struct fmt::formatter<TStringView, wchar_t> : fmt::formatter<fmt::basic_string_view<wchar_t>, wchar_t>
{
    template<class Context>
    auto format(TStringView text, Context& context) const
    {
        return fmt::formatter<fmt::basic_string_view<wchar_t>, wchar_t>::format(StringUtils::toStdWString(text),
                                                                                context);
    }
};
template<class Char>
struct fmt::formatter<TStringCore, Char> : fmt::formatter<TStringView, Char>
{};
#endif
