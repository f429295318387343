// Strings of ICU's.

#include <qvxsys/ICUString.h>

#include <memory>
#include <utility>

#include <unicode/unistr.h>

#include "IcuBridge.h"

namespace QvxICU44 {

class ICUString44Impl final : public QvxICU::ICUString
{
public:
    explicit ICUString44Impl(icu::UnicodeString text) : m_text(std::move(text)) {}

    [[nodiscard]] std::unique_ptr<ICUString> clone() const override
    {
        return std::make_unique<ICUString44Impl>(m_text);
    }
    [[nodiscard]] int length() const noexcept override { return m_text.length(); }
    [[nodiscard]] TStringView view() const noexcept override { return View(m_text); }
    [[nodiscard]] TStringCore toString() const override { return Own(m_text); }
    [[nodiscard]] void* Native() noexcept override { return &m_text; }

private:
    icu::UnicodeString m_text;
};

} // namespace QvxICU44

namespace QvxICU {

using QvxICU44::ICUString44Impl;

ICUString::~ICUString() = default;

std::unique_ptr<ICUString> ICUString::createInstance()
{
    return std::make_unique<ICUString44Impl>(icu::UnicodeString());
}

std::unique_ptr<ICUString> ICUString::createInstance(char const* utf8)
{
    return createInstance(TStringCore::fromUtf8(utf8).view());
}

std::unique_ptr<ICUString> ICUString::createInstance(wchar_t const* text)
{
    return createInstance(TStringCore(text).view());
}

std::unique_ptr<ICUString> ICUString::createInstance(TStringView text)
{
    return std::make_unique<ICUString44Impl>(icu::UnicodeString(text.data(), text.length()));
}

std::unique_ptr<ICUString> ICUString::createAlias(TStringView text)
{
    return std::make_unique<ICUString44Impl>(icu::UnicodeString(static_cast<UBool>(false), text.data(), text.length()));
}

} // namespace QvxICU
