// Conversion of TStringCore from and to other encodings and containers.

#include <qvxsys/TStringCore.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

#include <qvxsys/QvxICU.h>
#include <qvxsys/StringUtils.h>

#include "Latin9.h"
#include "TextErrors.h"
#include "WideConversion.h"
#include "kernels/Kernels.h"

namespace text = qvxsys::text;
using namespace QvxICU;

namespace {

char16_t FromLatin1(unsigned char byte) noexcept
{
    return byte;
}

// A byte, or -1 for a unit that has none.
int ToLatin1(char16_t unit) noexcept
{
    return unit <= 0xFF ? unit : -1;
}

int ToLatin9(char16_t unit) noexcept
{
    for (auto const& [latin9, own] : text::kLatin9) {
        if (own == unit) {
            return latin9;
        }
    }
    return ToLatin1(unit);
}

template<class ToByte>
std::string ToBytes(TStringView from, bool* lossy, ToByte toByte)
{
    std::string result(from.size(), '\0');
    bool lost = false;
    std::transform(from.begin(), from.end(), result.begin(), [&](char16_t unit) {
        int const byte = toByte(unit);
        lost = lost || byte < 0;
        return byte < 0 ? '?' : static_cast<char>(byte);
    });
    if (lossy != nullptr) {
        *lossy = lost;
    }
    return result;
}

template<class FromByte>
TStringCore FromBytes(char const* s, int n, FromByte fromByte)
{
    std::size_t const count = s == nullptr ? 0 : n < 0 ? std::strlen(s) : static_cast<std::size_t>(n);
    TStringCore result;
    result.resize(qvxsys::detail::CheckedLength(count));
    std::transform(s, s + count, result.begin(), [&](char c) { return fromByte(static_cast<unsigned char>(c)); });
    return result;
}

struct ConverterCloser
{
    void operator()(ICUConverter* converter) const noexcept { t_ucnv_close(converter); }
};
using Converter = std::unique_ptr<ICUConverter, ConverterCloser>;

// The default converter; null when ICU has none. A warning about an ambiguous name is no failure.
Converter OpenDefault() noexcept
{
    auto status = ICUErrorCode::ZeroError;
    Converter converter(t_ucnv_open(nullptr, &status));
    return ICU_SUCCESS(status) ? std::move(converter) : nullptr;
}

// Notes that something could not be encoded and substitutes as the converter's own handler does. Only real losses
// count, not what ICU drops by design (default-ignorable code points are reported as unassigned, too; they are lost as
// well).
void NoteLoss(void const* context, ICUFromUnicodeArgs* args, char16_t const* units, std::int32_t length,
              char32_t codePoint, ICUConverterCallbackReason reason, ICUErrorCode* status)
{
    if (reason <= ICUConverterCallbackReason::Irregular) {
        *const_cast<bool*>(static_cast<bool const*>(context)) = true;
    }
    t_UCNV_FROM_U_CALLBACK_SUBSTITUTE(nullptr, args, units, length, codePoint, reason, status);
}

} // namespace

int qvxsys::detail::CheckedLength(std::size_t length)
{
    if (length > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        text::Throw("Appended string is too long");
    }
    return static_cast<int>(length);
}

TStringCore TStringCore::fromStdString(std::string const& s)
{
    return TStringCore(s);
}

TStringCore TStringCore::fromStdWString(std::wstring const& s)
{
    return TStringCore(s);
}

TStringCore TStringCore::fromStdUString(std::u16string const& s)
{
    return TStringCore(s);
}

TStringCore TStringCore::fromLatin1(char const* s, int n)
{
    return FromBytes(s, n, FromLatin1);
}

TStringCore TStringCore::fromLatin9(char const* s, int n)
{
    return FromBytes(s, n, [](unsigned char byte) { return text::FromLatin9(byte); });
}

TStringCore TStringCore::fromLocal8Bit(char const* s, int n)
{
    TStringCore result;
    std::size_t const count = s == nullptr ? 0 : n < 0 ? std::strlen(s) : static_cast<std::size_t>(n);
    Converter const converter = count != 0 ? OpenDefault() : nullptr;
    if (converter == nullptr) {
        return result;
    }
    result.reserve(static_cast<int>(std::min(count, static_cast<std::size_t>(std::numeric_limits<int>::max() - 1))));
    char const* const end = s + count;
    char const* at = s;
    while (at < end) {
        auto status = ICUErrorCode::ZeroError;
        char32_t const c = t_ucnv_getNextUChar(converter.get(), &at, end, &status);
        if (ICU_FAILURE(status)) {
            break;
        }
        if (c == 0x1A && at == end) {
            break;
        }
        result.append32(c);
    }
    return result;
}

std::string TStringCore::toStdString() const
{
    return StringUtils::toStdString(view());
}

std::wstring TStringCore::toStdWString() const
{
    return StringUtils::toStdWString(view());
}

std::u16string TStringCore::toStdUString() const
{
    return StringUtils::toStdU16String(view());
}

std::string TStringCore::toLatin1(bool* lossy) const
{
    return ToBytes(view(), lossy, ToLatin1);
}

std::string TStringCore::toLatin9(bool* lossy) const
{
    return ToBytes(view(), lossy, ToLatin9);
}

std::string TStringCore::toLocal8Bit(bool* lossy) const
{
    bool lost = false;
    std::string result;
    Converter const converter = empty() ? nullptr : OpenDefault();
    if (converter != nullptr) {
        auto status = ICUErrorCode::ZeroError;
        t_ucnv_setFromUCallBack(converter.get(), NoteLoss, &lost, nullptr, nullptr, &status);
        auto const encode = [&] {
            return t_ucnv_fromUChars(converter.get(), result.data(), static_cast<int>(result.size()), constData(),
                                     length(), &status);
        };
        // ICU's own bound on the result (UCNV_GET_MAX_BYTES_FOR_STRING); where no int holds that, ICU tells the length.
        std::size_t const most = (size() + 10) * static_cast<std::size_t>(t_ucnv_getMaxCharSize(converter.get()));
        result.resize(std::min(most, static_cast<std::size_t>(std::numeric_limits<int>::max())));
        int produced = encode();
        if (status == ICUErrorCode::BufferOverflowError && produced > 0) {
            status = ICUErrorCode::ZeroError;
            result.resize(static_cast<std::size_t>(produced));
            produced = encode();
        }
        bool const whole = ICU_SUCCESS(status) && produced >= 0;
        result.resize(whole ? static_cast<std::size_t>(produced) : 0);
        lost = lost || !whole;
    } else {
        lost = !empty();
    }
    if (lossy != nullptr) {
        *lossy = lost;
    }
    return result;
}

int TStringCore::toWCharArray(wchar_t* dst, int capacity) const
{
    return text::ToWideArray(view(), dst, capacity, "TStringCore::toWCharArray");
}

std::vector<wchar_t> TStringCore::toWCharVector() const
{
    std::vector<wchar_t> result(text::WideLength(view()) + 1);
    text::ToWide(view(), result.data());
    return result;
}

std::vector<TStringCore> TStringCore::viewsToStrings(std::vector<TStringView> const& views)
{
    return std::vector<TStringCore>(views.begin(), views.end());
}
