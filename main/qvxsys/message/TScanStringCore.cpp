#include <qvxsys/TScanStringCore.h>

#include <algorithm>

#include <qvxsys/TCType.h>

#include "LogicAssert.h"
#include "ThrowSite.h"

using qvxsys::error::ThrowSite;

namespace {

template<class Test>
int RunLength(char16_t const* p, Test test) noexcept
{
    int n = 0;
    while (p[n] != 0 && test(p[n])) {
        ++n;
    }
    return n;
}

bool IsIn(TStringView set, char16_t c) noexcept
{
    return std::find(set.begin(), set.end(), c) != set.end();
}

// `word` is in lower case.
bool StartsWithWord(char16_t const* p, TStringView word) noexcept
{
    return std::equal(word.begin(), word.end(), p, [](char16_t w, char16_t c) { return TCType::FoldCase(c) == w; });
}

// The value of a token that TStringCore::leftIntegerLength measured; false when 64 bits do not hold it. (toLongLong
// finds out about an overflow only when the value steps back.)
bool MagnitudeOf(TStringView token, int base, bool& negative, unsigned long long& value) noexcept
{
    negative = token[0] == u'-';
    if (negative || token[0] == u'+') {
        token = token.mid(1);
    }
    bool const prefixed = token.size() > 2 && token[0] == u'0' && (token[1] | 0x20) == u'x';
    if (base == 0) {
        base = prefixed ? 16 : token[0] == u'0' ? 8 : 10;
    }
    if (prefixed && base == 16) {
        token = token.mid(2);
    }
    value = 0;
    for (char16_t const c : token) {
        unsigned const digit = c <= u'9' ? c - u'0' : (c | 0x20u) - u'a' + 10;
        if (__builtin_mul_overflow(value, static_cast<unsigned>(base), &value) ||
            __builtin_add_overflow(value, digit, &value)) {
            return false;
        }
    }
    return true;
}

} // namespace

TScanStringCore::TScanStringCore(char16_t const* text) : m_input(text)
{
    QVX_LOGIC_ASSERT(m_input);
    if (m_input == nullptr) {
        m_input = u"";
    }
}

TScanStringCore& TScanStringCore::reset()
{
    QVX_LOGIC_ASSERT(m_input);
    m_position = 0;
    return *this;
}

int TScanStringCore::lengthWhitespace(char16_t const* p) noexcept
{
    return RunLength(p, TCType::isSpace);
}

int TScanStringCore::lengthNonWhitespace(char16_t const* p) noexcept
{
    return RunLength(p, [](char16_t c) { return !TCType::isSpace(c); });
}

int TScanStringCore::lengthAnyOf(char16_t const* p, TStringView set) noexcept
{
    return RunLength(p, [set](char16_t c) { return IsIn(set, c); });
}

int TScanStringCore::lengthAnyNotOf(char16_t const* p, TStringView set) noexcept
{
    return RunLength(p, [set](char16_t c) { return !IsIn(set, c); });
}

int TScanStringCore::lengthString(char16_t const* p, int n) noexcept
{
    int length = 0;
    while (length != n && p[length] != 0) {
        ++length;
    }
    return length;
}

int TScanStringCore::lengthLine(char16_t const* p) noexcept
{
    return RunLength(p, [](char16_t c) { return c != u'\n'; });
}

int TScanStringCore::lengthNewline(char16_t const* p)
{
    if (*p == 0) {
        return 0;
    }
    if (*p != u'\r' && *p != u'\n') {
        throw Exception(u"TScanStringCore::lengthNewLine: No new line found.", ThrowSite(0xB44D5F02));
    }
    return p[1] != p[0] && (p[1] == u'\r' || p[1] == u'\n') ? 2 : 1;
}

int TScanStringCore::lengthBool(char16_t const* p)
{
    for (TStringView const word : {u"1", u"0", u"true", u"false", u"yes", u"no"}) {
        if (StartsWithWord(p, word)) {
            return word.length();
        }
    }
    throw Exception(u"TScanStringCore::lengthBool: Boolean value not found.", ThrowSite(0xE9FB330D));
}

int TScanStringCore::lengthInt(char16_t const* p, int base)
{
    int const n = TStringCore::leftIntegerLength(p, -1, base);
    if (n <= 0) {
        throw Exception(u"TScanStringCore::lengthInt: Integer value not found.", ThrowSite(0x3AD2C18B));
    }
    return n;
}

int TScanStringCore::lengthFloat(char16_t const* p)
{
    int const n = TStringCore::leftDoubleLength(p, -1);
    if (n <= 0) {
        throw Exception(u"TScanStringCore::lengthFloat: Float value not found.", ThrowSite(0xE601166D));
    }
    return n;
}

TScanStringCore& TScanStringCore::skipWhitespace() noexcept
{
    return Skip(lengthWhitespace(At()));
}

TScanStringCore& TScanStringCore::skipNonWhitespace() noexcept
{
    return Skip(lengthNonWhitespace(At()));
}

TScanStringCore& TScanStringCore::skipAnyOf(TStringView set) noexcept
{
    return Skip(lengthAnyOf(At(), set));
}

TScanStringCore& TScanStringCore::skipAnyNotOf(TStringView set) noexcept
{
    return Skip(lengthAnyNotOf(At(), set));
}

TScanStringCore& TScanStringCore::skipString(int n) noexcept
{
    return Skip(lengthString(At(), n));
}

TScanStringCore& TScanStringCore::skipBool()
{
    return Skip(lengthBool(At()));
}

TScanStringCore& TScanStringCore::skipInt(int base)
{
    return Skip(lengthInt(At(), base));
}

TScanStringCore& TScanStringCore::skipFloat()
{
    return Skip(lengthFloat(At()));
}

TScanStringCore& TScanStringCore::skipNewline()
{
    return Skip(lengthNewline(At()));
}

TScanStringCore& TScanStringCore::skipLine()
{
    // What follows the line is a line feed or the end, so this line break is always there.
    Skip(lengthLine(At()));
    return skipNewline();
}

TScanStringCore& TScanStringCore::skip(TStringView literal)
{
    char16_t const* const p = At();
    for (std::size_t i = 0; i < literal.size(); ++i) {
        // A 0 unit in the literal is not the end of the text, behind which nothing may be read.
        if (p[i] != literal[i] || p[i] == 0) {
            throw Exception(u"TScanStringCore::skip: String mismatch.", ThrowSite(0x9DAC629F));
        }
    }
    return Skip(literal.length());
}

TScanStringCore& TScanStringCore::Read(TStringCore& out, int length)
{
    out.assign(At(), length);
    return Skip(length);
}

TScanStringCore& TScanStringCore::readNonWhitespace(TStringCore& out)
{
    return Read(out, lengthNonWhitespace(At()));
}

TScanStringCore& TScanStringCore::readAnyOf(TStringCore& out, TStringView set)
{
    return Read(out, lengthAnyOf(At(), set));
}

TScanStringCore& TScanStringCore::readAnyNotOf(TStringCore& out, TStringView set)
{
    return Read(out, lengthAnyNotOf(At(), set));
}

TScanStringCore& TScanStringCore::readString(TStringCore& out, int n)
{
    return Read(out, lengthString(At(), n));
}

TScanStringCore& TScanStringCore::readLine(TStringCore& out)
{
    Read(out, lengthLine(At()));
    return skipNewline();
}

TScanStringCore& TScanStringCore::readBool(bool& out)
{
    char16_t const* const p = At();
    Skip(lengthBool(p));
    auto const first = static_cast<char16_t>(*p | 0x20);
    out = first == u'1' || first == u't' || first == u'y';
    return *this;
}

unsigned long long TScanStringCore::ReadInteger(unsigned long long most, unsigned long long mostNegative, int base)
{
    int const length = lengthInt(At(), base);
    TStringView const token(At(), static_cast<std::size_t>(length));
    Skip(length);
    bool negative = false;
    unsigned long long value = 0;
    if (!MagnitudeOf(token, base, negative, value) || value > (negative ? mostNegative : most)) {
        throw Exception(u"TScanStringCore::readInt: Integer value not found.", ThrowSite(0x1D7A94C6));
    }
    return negative ? 0 - value : value;
}

TScanStringCore& TScanStringCore::readFloat(float& out)
{
    TStringCore token;
    Read(token, lengthFloat(At()));
    bool ok = false;
    float const value = token.toFloat(&ok);
    if (!ok) {
        throw Exception(u"TScanStringCore::readFloat: Float value not found.", ThrowSite(0x85FD6267));
    }
    out = value;
    return *this;
}

TScanStringCore& TScanStringCore::readFloat(double& out)
{
    TStringCore token;
    Read(token, lengthFloat(At()));
    bool ok = false;
    double const value = token.toDouble(&ok);
    if (!ok) {
        throw Exception(u"TScanStringCore::readDouble: Float value not found.", ThrowSite(0x930719DA));
    }
    out = value;
    return *this;
}

TScanStringCore& TScanStringCore::end()
{
    if (*At() != 0) {
        throw Exception(u"TScanStringCore::end(): Expected null character.", ThrowSite(0x57D65295));
    }
    return *this;
}

TScanStringCore::Exception::Exception(TStringCore const& message, TError::ErrorInfo const& info)
    : QuorvexException(message, info)
{}

TScanStringCore::Exception::~Exception() = default;

QuorvexException* TScanStringCore::Exception::Clone() const
{
    return new Exception(*this);
}

void TScanStringCore::Exception::Throw() const
{
    throw Exception(*this);
}
