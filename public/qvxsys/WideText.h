#pragma once
// How functions that take views take text of other encodings: wide text in place where wchar_t is a UTF-16 unit, else
// converted for the call; UTF-8 converted.

#include <string_view>
#include <type_traits>

#include <qvxsys/TStringCore.h>

namespace qvxsys::detail {

/// Wide text as something that can be viewed: in place where it is UTF-16, else converted.
class WideText
{
public:
    explicit WideText(wchar_t const* text) : m_text(Make(text)) {}
    explicit WideText(std::wstring_view text) : m_text(Make(text)) {}
    operator TStringView() const noexcept QVXSYS_LIFETIME_BOUND { return m_text; }

private:
    using Text = std::conditional_t<kWideIsUtf16, TStringView, TStringCore>;

    static Text Make(wchar_t const* text)
    {
        if constexpr (kWideIsUtf16) {
            return TStringView(reinterpret_cast<char16_t const*>(text));
        } else {
            return TStringCore(text);
        }
    }
    static Text Make(std::wstring_view text)
    {
        if constexpr (kWideIsUtf16) {
            return TStringView(reinterpret_cast<char16_t const*>(text.data()), text.size());
        } else {
            return TStringCore(text);
        }
    }

    Text m_text;
};

/// UTF-8, converted.
class Utf8Text
{
public:
    template<Utf8Like U>
    explicit Utf8Text(U const& text) : m_text(text)
    {}
    operator TStringView() const noexcept QVXSYS_LIFETIME_BOUND { return m_text; }

private:
    TStringCore m_text;
};

template<WideTextLike W>
WideText ToView(W const& text)
{
    return WideText(text);
}

template<Utf8Like U>
Utf8Text ToView(U const& text)
{
    return Utf8Text(text);
}

} // namespace qvxsys::detail
