#pragma once
// How functions that take views take wide text: in place where wchar_t is a UTF-16 unit, else converted for the call.

#include <type_traits>

#include <qvxsys/TStringCore.h>

namespace qvxsys::detail {

/// Wide text as something that can be viewed: in place where it is UTF-16, else converted.
class WideText
{
public:
    explicit WideText(wchar_t const* text) : m_text(Make(text)) {}
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

    Text m_text;
};

template<WidePointer W>
WideText ToView(W const& text)
{
    return WideText(text);
}

} // namespace qvxsys::detail
