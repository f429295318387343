// Strings of ICU's.

#include <qvxsys/ICUString.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <memory>
#include <utility>

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include "IcuBridge.h"

namespace QvxICU44 {

using QvxICU::ICUErrorCode;
using QvxICU::ICULocale;

class ICUString44Impl final : public QvxICU::ICUString
{
public:
    /// With the arguments of ICU's string; what is aliased by it stays so.
    template<class... Arguments>
    explicit ICUString44Impl(std::in_place_t, Arguments&&... arguments) : m_text(std::forward<Arguments>(arguments)...)
    {}

    [[nodiscard]] std::unique_ptr<ICUString> clone() const override { return Make(m_text); }
    [[nodiscard]] int length() const noexcept override { return m_text.length(); }
    [[nodiscard]] TStringView view() const noexcept override { return View(m_text); }
    [[nodiscard]] TStringCore toString() const override { return Own(m_text); }
    [[nodiscard]] void* Native() noexcept override { return &m_text; }

    [[nodiscard]] bool operator==(ICUString const& other) const noexcept override { return m_text == Icu(other); }
    [[nodiscard]] bool equals(TStringView text) const noexcept override { return m_text == Alias(text); }
    [[nodiscard]] int compare(TStringView text) const noexcept override
    {
        return m_text.compare(text.data(), Length(text));
    }
    [[nodiscard]] int compareCodePointOrder(TStringView text) const noexcept override
    {
        return m_text.compareCodePointOrder(text.data(), Length(text));
    }
    [[nodiscard]] int caseCompare(TStringView text, unsigned options) const noexcept override
    {
        return m_text.caseCompare(text.data(), Length(text), options);
    }
    [[nodiscard]] bool startsWith(TStringView text) const noexcept override
    {
        return m_text.startsWith(text.data(), Length(text));
    }
    [[nodiscard]] bool endsWith(TStringView text) const noexcept override
    {
        return m_text.endsWith(text.data(), Length(text));
    }
    [[nodiscard]] int hashCode() const noexcept override { return m_text.hashCode(); }

    [[nodiscard]] int indexOf(TStringView text, int start, int length) const noexcept override
    {
        return m_text.indexOf(text.data(), Length(text), start, length);
    }
    [[nodiscard]] int lastIndexOf(TStringView text, int start, int length) const noexcept override
    {
        return m_text.lastIndexOf(text.data(), Length(text), start, length);
    }

    [[nodiscard]] char16_t charAt(int offset) const noexcept override { return m_text.charAt(offset); }
    [[nodiscard]] char32_t char32At(int offset) const noexcept override
    {
        return static_cast<char32_t>(m_text.char32At(offset));
    }
    [[nodiscard]] int getChar32Start(int offset) const noexcept override { return m_text.getChar32Start(offset); }
    [[nodiscard]] int getChar32Limit(int offset) const noexcept override { return m_text.getChar32Limit(offset); }
    [[nodiscard]] int moveIndex32(int index, int delta) const noexcept override
    {
        return m_text.moveIndex32(index, std::max(delta, -INT_MAX)); // ICU negates it
    }
    [[nodiscard]] int countChar32(int start, int length) const noexcept override
    {
        return m_text.countChar32(start, length);
    }
    [[nodiscard]] bool hasMoreChar32Than(int start, int length, int number) const noexcept override
    {
        return m_text.hasMoreChar32Than(start, length, number);
    }
    [[nodiscard]] bool isEmpty() const noexcept override { return m_text.isEmpty(); }
    [[nodiscard]] bool isBogus() const noexcept override { return m_text.isBogus(); }
    [[nodiscard]] std::unique_ptr<ICUString> substring(int start, int length) const override
    {
        return Make(m_text, start, length);
    }
    [[nodiscard]] std::string toUtf8() const override
    {
        std::string bytes;
        return m_text.toUTF8String(bytes);
    }
    [[nodiscard]] std::string toCodepage(char const* codepage, ICUErrorCode& status) const override;

    ICUString& setTo(ICUString const& other) override
    {
        m_text = Icu(other);
        return *this;
    }
    ICUString& setTo(TStringView text) override
    {
        m_text.setTo(text.data(), Length(text));
        return *this;
    }
    void setToBogus() noexcept override { m_text.setToBogus(); }
    ICUString& setCharAt(int offset, char16_t unit) override
    {
        m_text.setCharAt(offset, unit);
        return *this;
    }
    ICUString& append(TStringView text) override
    {
        m_text.append(text.data(), Length(text));
        return *this;
    }
    ICUString& insert(int start, TStringView text) override
    {
        m_text.insert(start, text.data(), Length(text));
        return *this;
    }
    ICUString& replace(int start, int length, TStringView text) override
    {
        m_text.replace(start, length, text.data(), Length(text));
        return *this;
    }
    ICUString& replaceBetween(int start, int limit, TStringView text) override
    {
        return replace(Pinned(start), Pinned(limit) - Pinned(start), text);
    }
    ICUString& findAndReplace(TStringView oldText, TStringView newText) override;
    ICUString& remove() override
    {
        m_text.remove();
        return *this;
    }
    ICUString& remove(int start, int length) override
    {
        m_text.remove(start, length);
        return *this;
    }
    ICUString& removeBetween(int start, int limit) override
    {
        m_text.removeBetween(Pinned(start), Pinned(limit));
        return *this;
    }
    ICUString& retainBetween(int start, int limit) override
    {
        m_text.retainBetween(Pinned(start), Pinned(limit));
        return *this;
    }
    bool padLeading(int targetLength, char16_t unit) override { return m_text.padLeading(targetLength, unit); }
    bool padTrailing(int targetLength, char16_t unit) override { return m_text.padTrailing(targetLength, unit); }
    bool truncate(int targetLength) override { return m_text.truncate(targetLength); }
    ICUString& trim() override
    {
        m_text.trim();
        return *this;
    }
    ICUString& reverse() override
    {
        m_text.reverse();
        return *this;
    }
    ICUString& reverse(int start, int length) override
    {
        m_text.reverse(start, length);
        return *this;
    }

    ICUString& toUpper() override
    {
        m_text.toUpper();
        return *this;
    }
    ICUString& toUpper(ICULocale const& locale) override
    {
        m_text.toUpper(Icu(locale));
        return *this;
    }
    ICUString& toLower() override
    {
        m_text.toLower();
        return *this;
    }
    ICUString& toLower(ICULocale const& locale) override
    {
        m_text.toLower(Icu(locale));
        return *this;
    }
    ICUString& toTitle() override
    {
        m_text.toTitle(nullptr);
        return *this;
    }
    ICUString& toTitle(ICULocale const& locale, unsigned options) override
    {
        m_text.toTitle(nullptr, Icu(locale), options);
        return *this;
    }
    ICUString& foldCase(unsigned options) override
    {
        m_text.foldCase(options);
        return *this;
    }

    [[nodiscard]] std::unique_ptr<ICUString> unescape() const override { return Make(m_text.unescape()); }
    [[nodiscard]] char32_t unescapeAt(int& offset) const noexcept override
    {
        return static_cast<char32_t>(m_text.unescapeAt(offset));
    }

    template<class... Arguments>
    [[nodiscard]] static std::unique_ptr<ICUString> Make(Arguments&&... arguments)
    {
        return std::make_unique<ICUString44Impl>(std::in_place, std::forward<Arguments>(arguments)...);
    }

private:
    /// ICU takes the difference of two indexes before it pins them, which may overflow and is too long.
    [[nodiscard]] int Pinned(int index) const noexcept { return std::clamp(index, 0, m_text.length()); }

    icu::UnicodeString m_text;
};

std::string ICUString44Impl::toCodepage(char const* codepage, ICUErrorCode& status) const
{
    Status carried(status);
    UErrorCode& code = carried;
    icu::LocalUConverterPointer const converter(ucnv_open(codepage, &code));
    std::string bytes;
    if (U_FAILURE(code)) {
        return bytes;
    }
    bytes.resize(static_cast<std::size_t>(m_text.length()) + 16); // what most texts need at most
    int needed = m_text.extract(bytes.data(), static_cast<int>(bytes.size()), converter.getAlias(), code);
    if (code == U_BUFFER_OVERFLOW_ERROR) {
        code = U_ZERO_ERROR;
        bytes.resize(static_cast<std::size_t>(needed) + 1);
        needed = m_text.extract(bytes.data(), needed + 1, converter.getAlias(), code);
    }
    bytes.resize(static_cast<std::size_t>(needed));
    return bytes;
}

QvxICU::ICUString& ICUString44Impl::findAndReplace(TStringView oldText, TStringView newText)
{
    // The texts may lie in the string, which is changed before they are read for the last time.
    icu::UnicodeString const from(oldText.data(), Length(oldText));
    icu::UnicodeString const to(newText.data(), Length(newText));
    m_text.findAndReplace(from, to);
    return *this;
}

} // namespace QvxICU44

namespace QvxICU {

using QvxICU44::ICUString44Impl;

ICUString::~ICUString() = default;

std::unique_ptr<ICUString> ICUString::createInstance()
{
    return ICUString44Impl::Make();
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
    return ICUString44Impl::Make(text.data(), QvxICU44::Length(text));
}

std::unique_ptr<ICUString> ICUString::createAlias(TStringView text)
{
    return ICUString44Impl::Make(static_cast<UBool>(false), text.data(), QvxICU44::Length(text));
}

std::unique_ptr<ICUString> ICUString::createFromCodepage(char const* bytes, int length, char const* codepage,
                                                         ICUErrorCode& status)
{
    QvxICU44::Status carried(status);
    UErrorCode& code = carried;
    icu::LocalUConverterPointer const converter(ucnv_open(codepage, &code));
    return ICUString44Impl::Make(bytes, length, converter.getAlias(), code);
}

} // namespace QvxICU
