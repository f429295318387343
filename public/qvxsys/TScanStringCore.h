#pragma once
// TScanStringCore: reads values one after another from a terminated text.
//
//     TStringCore const line = u"  width: 12.5 mm\n";
//     TStringCore key, unit;
//     double value = 0;
//     TScanStringCore scan(line);
//     scan.skipWhitespace().readAnyNotOf(key, u":").skip(u":").skipWhitespace();
//     scan.readFloat(value).skipWhitespace().readNonWhitespace(unit).skipNewline().end();
//     // "width", 12.5, "mm"
//
// A scanner is a pointer and a position: it does not own the text, which must stay as it is, and copies are
// independent. The text ends at its first 0 unit. Each operation measures what it wants at the position and steps over
// it, and returns the scanner, so calls chain. White space, sets and counted runs may be empty; what is not there where
// it has to be throws TScanStringCore::Exception, source 4, and leaves the position where it was before the call, with
// the exceptions that are named. A `read` that throws has not changed its output.
//
// A set or literal is a view, text, wide text or a single character. Wide text can be scanned where wchar_t is a UTF-16
// unit; elsewhere make a TStringCore of it first. As thread-safe as a pointer.

#include <concepts>
#include <cstdint>
#include <limits>
#include <type_traits>

#include <qvxsys/Platform.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

/// Reads values out of a text, one after another.
class QVXSYS_API TScanStringCore
{
public:
    class Exception;

    /// Null text fails the logic assertion "m_input"; when its hook returns, the text is empty.
    /// Takes strings only: from other text a string would be made that ends with the statement.
    template<std::derived_from<TStringCore> S>
    TScanStringCore(S const& text QVXSYS_LIFETIME_BOUND) : TScanStringCore(text.constData())
    {}
    TScanStringCore(char16_t const* text);
    template<qvxsys::detail::WidePointer W>
    requires qvxsys::kWideIsUtf16 TScanStringCore(W const& text)
        : TScanStringCore(reinterpret_cast<char16_t const*>(+text))
    {}
    TScanStringCore(TScanStringCore const&) noexcept = default;
    TScanStringCore& operator=(TScanStringCore const&) noexcept = default;

    /// Back to the start.
    TScanStringCore& reset();

    /// @name Stepping over
    /// @{
    /// TCType::isSpace and its opposite; may be empty.
    TScanStringCore& skipWhitespace() noexcept;
    TScanStringCore& skipNonWhitespace() noexcept;
    /// Units that are in the set, or are not; may be empty.
    TScanStringCore& skipAnyOf(TStringView set) noexcept;
    TScanStringCore& skipAnyNotOf(TStringView set) noexcept;
    /// n units or what is left of them; all that is left for a negative n.
    TScanStringCore& skipString(int n) noexcept;
    /// "1", "0", "true", "false", "yes" or "no" in any case, whatever follows. Throws 0xE9FB330D
    /// "TScanStringCore::lengthBool: Boolean value not found."
    TScanStringCore& skipBool();
    /// The longest whole number in a base (TStringCore::leftIntegerLength). Throws 0x3AD2C18B
    /// "TScanStringCore::lengthInt: Integer value not found.", or what leftIntegerLength throws for the base.
    TScanStringCore& skipInt(int base = 10);
    /// The longest floating-point number (TStringCore::leftDoubleLength). Throws 0xE601166D
    /// "TScanStringCore::lengthFloat: Float value not found."
    TScanStringCore& skipFloat();
    /// One line break: CR LF, LF CR, CR or LF; nothing at the end of the text. Throws 0xB44D5F02
    /// "TScanStringCore::lengthNewLine: No new line found."
    TScanStringCore& skipNewline();
    /// Up to the next LF, and over it and a CR behind it; to the end when there is none.
    TScanStringCore& skipLine();
    /// Exactly this text; an empty one is always there. Throws 0x9DAC629F "TScanStringCore::skip: String mismatch."
    TScanStringCore& skip(TStringView literal);
    /// @}

    /// @name Reading
    /// As the skip function of the same name, with the units stepped over in `out`.
    /// @{
    TScanStringCore& readNonWhitespace(TStringCore& out);
    TScanStringCore& readAnyOf(TStringCore& out, TStringView set);
    TScanStringCore& readAnyNotOf(TStringCore& out, TStringView set);
    TScanStringCore& readString(TStringCore& out, int n);
    /// Without the LF and the CR behind it; a CR before the LF is part of the line.
    TScanStringCore& readLine(TStringCore& out);
    /// True for "1", "true" and "yes".
    TScanStringCore& readBool(bool& out);
    /// When the number does not fit the type, throws 0x1D7A94C6
    /// "TScanStringCore::readInt: Integer value not found." with the position behind it. An unsigned type takes no
    /// negative number but -0.
    template<std::integral I>
    requires(!std::same_as<I, bool> && !TCType::Character<I> &&
             sizeof(I) <= sizeof(long long)) TScanStringCore& readInt(I& out, int base = 10)
    {
        constexpr auto most = static_cast<unsigned long long>(std::numeric_limits<I>::max());
        out = static_cast<I>(ReadInteger(most, std::is_signed_v<I> ? most + 1 : 0, base));
        return *this;
    }
    /// When the number does not fit the type (see TStringCore::toFloat, toDouble), throw with the position behind it:
    /// 0x85FD6267 "TScanStringCore::readFloat: Float value not found." and
    /// 0x930719DA "TScanStringCore::readDouble: Float value not found."
    TScanStringCore& readFloat(float& out);
    TScanStringCore& readFloat(double& out);
    /// @}

    /// Throws 0x57D65295 "TScanStringCore::end(): Expected null character." unless all of the text has been read.
    TScanStringCore& end();

    // Wide text and single characters for the members above: each stands for the view of its units.
    template<qvxsys::detail::TextArgument A>
    TScanStringCore& skipAnyOf(A const& set)
    {
        return skipAnyOf(TStringView(qvxsys::detail::ToView(set)));
    }
    /// The opposite of skipAnyOf.
    template<qvxsys::detail::TextArgument A>
    TScanStringCore& skipAnyNotOf(A const& set)
    {
        return skipAnyNotOf(TStringView(qvxsys::detail::ToView(set)));
    }
    template<qvxsys::detail::TextArgument A>
    TScanStringCore& skip(A const& literal)
    {
        return skip(TStringView(qvxsys::detail::ToView(literal)));
    }
    /// Reads what skipAnyOf goes over.
    template<qvxsys::detail::TextArgument A>
    TScanStringCore& readAnyOf(TStringCore& out, A const& set)
    {
        return readAnyOf(out, TStringView(qvxsys::detail::ToView(set)));
    }
    /// Reads what skipAnyNotOf goes over.
    template<qvxsys::detail::TextArgument A>
    TScanStringCore& readAnyNotOf(TStringCore& out, A const& set)
    {
        return readAnyNotOf(out, TStringView(qvxsys::detail::ToView(set)));
    }

private:
    static int lengthWhitespace(char16_t const* p) noexcept;
    static int lengthNonWhitespace(char16_t const* p) noexcept;
    static int lengthAnyOf(char16_t const* p, TStringView set) noexcept;
    static int lengthAnyNotOf(char16_t const* p, TStringView set) noexcept;
    static int lengthString(char16_t const* p, int n) noexcept;
    static int lengthLine(char16_t const* p) noexcept;
    static int lengthNewline(char16_t const* p);
    static int lengthBool(char16_t const* p);
    static int lengthInt(char16_t const* p, int base);
    static int lengthFloat(char16_t const* p);

    [[nodiscard]] char16_t const* At() const noexcept { return m_input + m_position; }
    TScanStringCore& Skip(int length) noexcept
    {
        m_position += length;
        return *this;
    }
    TScanStringCore& Read(TStringCore& out, int length);
    /// Modulo 2^64.
    unsigned long long ReadInteger(unsigned long long most, unsigned long long mostNegative, int base);

    char16_t const* m_input; // never null
    std::int32_t m_position = 0;
};
static_assert(sizeof(TScanStringCore) == 16);

/// What is not there where it has to be.
class QVXSYS_API TScanStringCore::Exception : public QuorvexException
{
public:
    /// With a message.
    Exception(TStringCore const& message, TError::ErrorInfo const& info);
    Exception(Exception const&) = default;
    Exception(Exception&&) = default;
    Exception& operator=(Exception const&) = default;
    Exception& operator=(Exception&&) = default;
    ~Exception() override;
    [[nodiscard]] QuorvexException* Clone() const override;
    [[noreturn]] void Throw() const override;
};
