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

/// Raw wide text as UTF-16: in place and of the length given, or converted and of the length it then has.
class WideUnits
{
public:
    WideUnits(wchar_t const* text, int length)
        : m_text(Make(text, length)), m_length(LengthOf(m_text, text == nullptr, length)), m_isNull(text == nullptr)
    {}
    [[nodiscard]] char16_t const* Units() const noexcept
    {
        return m_isNull ? nullptr : static_cast<char16_t const*>(m_text);
    }
    [[nodiscard]] int Length() const noexcept { return m_length; }

private:
    using Text = std::conditional_t<kWideIsUtf16, char16_t const*, TStringCore>;

    static Text Make(wchar_t const* text, int length)
    {
        if constexpr (kWideIsUtf16) {
            return reinterpret_cast<char16_t const*>(text);
        } else {
            return TStringCore(text, length);
        }
    }

    static int LengthOf(char16_t const*, bool, int given) noexcept { return given; }
    static int LengthOf(TStringCore const& converted, bool isNull, int given) noexcept
    {
        return isNull ? given : converted.length();
    }

    Text m_text;
    int m_length;
    bool m_isNull;
};

template<WidePointer W>
WideUnits ToRaw(W const& text, int length)
{
    return WideUnits(text, length);
}

template<WidePointer W>
WideUnits ToRawStart(W const& text, int n)
{
    wchar_t const* const start = text;
    if (kWideIsUtf16 || n < 0 || start == nullptr) {
        return WideUnits(start, -1);
    }
    // n wchar_t are n UTF-16 units at least, and what lies behind them need not be there.
    int count = 0;
    while (count < n && start[count] != 0) {
        ++count;
    }
    return WideUnits(start, count);
}

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
