// Conversions between UTF-8, UTF-16 and UTF-32, beside ICU and Qt.
//
// Where a row says nothing else, source and destination are existing arrays of about a megabyte (of UTF-8), and every
// party writes into the same destination. Each row is checked once before it is measured: own and ICU's results must be
// the same, otherwise the program ends.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <qvxsys/StringUtils.h>
#include <qvxsys/TStringCore.h>

#ifdef QVXSYS_BENCH_ICU
#include <unicode/unistr.h>
#include <unicode/ustring.h>
#include <unicode/utf8.h>
#endif
#ifdef QVXSYS_BENCH_QT
#include <QString>
#include <QStringConverter>
#endif

#include "BenchSupport.h"
#include "BenchText.h"

namespace {

using bench::Text;

// A megabyte of UTF-8 does not fit into the nearest caches together with what it is converted to, as texts that are
// worth the hurry do not; QVXSYS_BENCH_BYTES can make it smaller, which shows the instructions without the memory.
std::size_t TextBytes()
{
    char const* const bytes = std::getenv("QVXSYS_BENCH_BYTES");
    return bytes != nullptr ? static_cast<std::size_t>(std::atoll(bytes)) : std::size_t{1} << 20;
}

[[maybe_unused]] constexpr std::int32_t kSubstitute = 0xFFFD;

int Size(auto const& text)
{
    return static_cast<int>(text.size());
}

// One destination for all, large enough for any result and already touched.
template<class Unit>
struct Destination
{
    static inline std::vector<Unit> buffer = std::vector<Unit>(4 * TextBytes() + 64);
    static Unit* data() { return buffer.data(); }
    static int capacity() { return Size(buffer); }
};

// A conversion's operation: reads a text, gives the length of the result. `convert` is called as
// convert(source, length, destination, capacity).
template<class To, class From, class Convert>
auto Converting(std::basic_string<From> const& source, Convert convert)
{
    return [from = source.data(), n = Size(source), to = Destination<To>::data(),
            capacity = Destination<To>::capacity(), convert] {
        int const length = convert(from, n, to, capacity);
        benchmark::DoNotOptimize(length);
        benchmark::ClobberMemory();
        return length;
    };
}

void Fail(std::string const& row, char const* who)
{
    std::cerr << row << ": wrong result of " << who << '\n';
    std::exit(1);
}

template<class To, class From, class Convert>
void CheckedRow(std::string const& row, char const* who, std::basic_string<From> const& source,
                std::basic_string<To> const& expected, Convert convert)
{
    auto const op = Converting<To>(source, convert);
    if (op() != Size(expected) || !std::equal(expected.begin(), expected.end(), Destination<To>::data())) {
        Fail(row, who);
    }
    if (std::strcmp(who, "own") == 0) {
        bench::OwnRows(row, op);
    } else {
        bench::Row(row, who, op);
    }
}

// What moving as many bytes as the result has costs.
template<class Unit>
void CopyBound(std::string const& row, std::basic_string<Unit> const& result)
{
    bench::Row(row, "[memcpy of the result]",
               [from = result.data(), n = result.size() * sizeof(Unit), to = Destination<Unit>::data()] {
                   std::memcpy(to, from, n);
                   benchmark::ClobberMemory();
               });
}

#ifdef QVXSYS_BENCH_QT
// Qt's converters with a destination of the caller's. They keep a state between calls, as for a stream; making one is
// part of the call, as it is for anybody who converts one text.
int QtDecode(QStringConverter::Encoding encoding, char const* source, int bytes, char16_t* to)
{
    QStringDecoder decoder(encoding);
    auto* const begin = reinterpret_cast<QChar*>(to);
    return static_cast<int>(decoder.appendToBuffer(begin, QByteArrayView(source, bytes)) - begin);
}

int QtEncode(QStringConverter::Encoding encoding, char16_t const* source, int n, char* to)
{
    QStringEncoder encoder(encoding);
    return static_cast<int>(encoder.appendToBuffer(to, QStringView(source, n)) - to);
}
#endif

// ---- b1 to b4

void DecodeRows(Text const& text, std::string const& row)
{
    CheckedRow(row, "own", text.utf8, text.utf16, [](char const* s, int n, char16_t* to, int capacity) {
        return StringUtils::Utf8ToUtf16(s, n, to, capacity);
    });
#ifdef QVXSYS_BENCH_ICU
    CheckedRow(row, "ICU", text.utf8, text.utf16, [](char const* s, int n, char16_t* to, int capacity) {
        UErrorCode error = U_ZERO_ERROR;
        int length = 0;
        u_strFromUTF8WithSub(to, capacity, &length, s, n, kSubstitute, nullptr, &error);
        return length;
    });
#endif
#ifdef QVXSYS_BENCH_QT
    // Unchecked: within a damaged sequence Qt may count the substitutions otherwise.
    bench::Row(row, "QStringDecoder", Converting<char16_t>(text.utf8, [](char const* s, int n, char16_t* to, int) {
                   return QtDecode(QStringConverter::Utf8, s, n, to);
               }));
#endif
    CopyBound(row, text.utf16);
}

// ---- b5

void EncodeRows(Text const& text, std::string const& row)
{
    CheckedRow(row, "own", text.utf16, text.utf8, [](char16_t const* s, int n, char* to, int capacity) {
        return StringUtils::Utf16ToUtf8(s, n, to, capacity);
    });
#ifdef QVXSYS_BENCH_ICU
    CheckedRow(row, "ICU", text.utf16, text.utf8, [](char16_t const* s, int n, char* to, int capacity) {
        UErrorCode error = U_ZERO_ERROR;
        int length = 0;
        u_strToUTF8WithSub(to, capacity, &length, s, n, kSubstitute, nullptr, &error);
        return length;
    });
#endif
#ifdef QVXSYS_BENCH_QT
    CheckedRow(row, "QStringEncoder", text.utf16, text.utf8,
               [](char16_t const* s, int n, char* to, int) { return QtEncode(QStringConverter::Utf8, s, n, to); });
#endif
    CopyBound(row, text.utf8);
}

// ---- b6: into a new string, which is freed again

void NewStringRows(Text const& text)
{
    auto const decode = "b6 to a new string from UTF-8, " + text.kind;
    auto const encode = "b6 to a new UTF-8 string, " + text.kind;
    bench::OwnRows(decode, [s = text.utf8.data(), n = Size(text.utf8)] {
        auto result = TStringCore::fromUtf8(s, n);
        benchmark::DoNotOptimize(result);
    });
    bench::OwnRows(encode, [source = TStringCore(text.utf16.data(), Size(text.utf16))] {
        auto result = source.toStdString();
        benchmark::DoNotOptimize(result);
    });
#ifdef QVXSYS_BENCH_ICU
    bench::Row(decode, "UnicodeString", [s = text.utf8.data(), n = Size(text.utf8)] {
        auto result = icu::UnicodeString::fromUTF8(icu::StringPiece(s, n));
        benchmark::DoNotOptimize(result);
    });
    bench::Row(encode, "UnicodeString", [source = icu::UnicodeString(text.utf16.data(), Size(text.utf16))] {
        std::string result;
        source.toUTF8String(result);
        benchmark::DoNotOptimize(result);
    });
    // Measured first, then made at the right size.
    bench::Row(encode, "ICU, measured", [s = text.utf16.data(), n = Size(text.utf16)] {
        UErrorCode error = U_ZERO_ERROR;
        int length = 0;
        u_strToUTF8WithSub(nullptr, 0, &length, s, n, kSubstitute, nullptr, &error);
        std::string result(static_cast<std::size_t>(length), '\0');
        error = U_ZERO_ERROR;
        u_strToUTF8WithSub(result.data(), length + 1, nullptr, s, n, kSubstitute, nullptr, &error);
        benchmark::DoNotOptimize(result);
    });
#endif
#ifdef QVXSYS_BENCH_QT
    bench::Row(decode, "QString", [s = text.utf8.data(), n = Size(text.utf8)] {
        auto result = QString::fromUtf8(s, n);
        benchmark::DoNotOptimize(result);
    });
    bench::Row(encode, "QString", [source = QString::fromUtf16(text.utf16.data(), Size(text.utf16))] {
        auto result = source.toUtf8();
        benchmark::DoNotOptimize(result);
    });
#endif
}

// ---- b7

void Utf32Rows(Text const& text)
{
    auto const from16 = "b7 UTF-16 to UTF-32, " + text.kind;
    auto const to16 = "b7 UTF-32 to UTF-16, " + text.kind;
    CopyBound(from16, text.utf32);
    CopyBound(to16, text.utf16);
    CheckedRow(from16, "own", text.utf16, text.utf32, [](char16_t const* s, int n, char32_t* to, int capacity) {
        return StringUtils::Utf16ToUtf32(s, n, to, capacity);
    });
    CheckedRow(to16, "own", text.utf32, text.utf16, [](char32_t const* s, int n, char16_t* to, int capacity) {
        return StringUtils::Utf32ToUtf16(s, n, to, capacity);
    });
#ifdef QVXSYS_BENCH_ICU
    CheckedRow(from16, "ICU", text.utf16, text.utf32, [](char16_t const* s, int n, char32_t* to, int capacity) {
        UErrorCode error = U_ZERO_ERROR;
        int length = 0;
        u_strToUTF32WithSub(reinterpret_cast<UChar32*>(to), capacity, &length, s, n, kSubstitute, nullptr, &error);
        return length;
    });
    CheckedRow(to16, "ICU", text.utf32, text.utf16, [](char32_t const* s, int n, char16_t* to, int capacity) {
        UErrorCode error = U_ZERO_ERROR;
        int length = 0;
        u_strFromUTF32WithSub(to, capacity, &length, reinterpret_cast<UChar32 const*>(s), n, kSubstitute, nullptr,
                              &error);
        return length;
    });
#endif
#ifdef QVXSYS_BENCH_QT
    CheckedRow(from16, "QStringEncoder", text.utf16, text.utf32, [](char16_t const* s, int n, char32_t* to, int) {
        return QtEncode(QStringConverter::Utf32, s, n, reinterpret_cast<char*>(to)) / 4;
    });
    CheckedRow(to16, "QStringDecoder", text.utf32, text.utf16, [](char32_t const* s, int n, char16_t* to, int) {
        return QtDecode(QStringConverter::Utf32, reinterpret_cast<char const*>(s), 4 * n, to);
    });
#endif
}

#ifdef QVXSYS_BENCH_ICU
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion" // inside the macro
int DecodeByMacro(char const* s, int n, char32_t* to)
{
    char32_t* out = to;
    for (int i = 0; i < n;) {
        UChar32 c = 0;
        U8_NEXT_OR_FFFD(s, i, n, c);
        *out++ = static_cast<char32_t>(c);
    }
    return static_cast<int>(out - to);
}
#pragma GCC diagnostic pop
#endif

void Utf32FromBytesRows(Text const& text)
{
    auto const from8 = "b7 UTF-8 to UTF-32, " + text.kind;
    auto const to8 = "b7 UTF-32 to UTF-8, " + text.kind;
    CopyBound(from8, text.utf32);
    CopyBound(to8, text.utf8);
    CheckedRow(from8, "own", text.utf8, text.utf32, [](char const* s, int n, char32_t* to, int capacity) {
        return StringUtils::Utf8ToUtf32(s, n, to, capacity);
    });
    CheckedRow(to8, "own", text.utf32, text.utf8, [](char32_t const* s, int n, char* to, int capacity) {
        return StringUtils::Utf32ToUtf8(s, n, to, capacity);
    });
#ifdef QVXSYS_BENCH_ICU
    // ICU has no such function; its users write these loops.
    CheckedRow(from8, "ICU's macros", text.utf8, text.utf32,
               [](char const* s, int n, char32_t* to, int) { return DecodeByMacro(s, n, to); });
    CheckedRow(to8, "ICU's macros", text.utf32, text.utf8, [](char32_t const* s, int n, char* to, int) {
        int length = 0;
        for (int i = 0; i < n; ++i) {
            U8_APPEND_UNSAFE(to, length, s[i]);
        }
        return length;
    });
#endif
}

// ---- b8: many short strings, one after another

template<class String, class Make>
std::vector<String> Sliced(Text const& text, Make make)
{
    constexpr std::size_t kUnits = 30;
    std::vector<String> result;
    for (std::size_t i = 0; result.size() < 64; i += kUnits) {
        result.push_back(make(TStringCore(text.utf16.data() + i, kUnits)));
    }
    return result;
}

template<class String, class Convert>
auto ConvertingEach(std::vector<String> strings, Convert convert)
{
    return [strings = std::move(strings), convert] {
        for (String const& s : strings) {
            auto result = convert(s);
            benchmark::DoNotOptimize(result);
        }
    };
}

void ShortRows(Text const& text)
{
    auto const decode = "b8 30 units, UTF-8 to string, " + text.kind;
    auto const encode = "b8 30 units, string to UTF-8, " + text.kind;
    auto const bytes = Sliced<std::string>(text, [](TStringCore const& s) { return s.toStdString(); });
    bench::OwnRows(
        decode, ConvertingEach(bytes, [](std::string const& s) { return TStringCore::fromUtf8(s.data(), Size(s)); }));
    bench::OwnRows(encode,
                   ConvertingEach(Sliced<TStringCore>(text, [](TStringCore const& s) { return TStringCore(s.view()); }),
                                  [](TStringCore const& s) { return s.toStdString(); }));
#ifdef QVXSYS_BENCH_ICU
    bench::Row(decode, "UnicodeString", ConvertingEach(bytes, [](std::string const& s) {
                   return icu::UnicodeString::fromUTF8(icu::StringPiece(s.data(), Size(s)));
               }));
    auto const unicode = [](TStringCore const& s) { return icu::UnicodeString(s.constData(), s.length()); };
    bench::Row(encode, "UnicodeString",
               ConvertingEach(Sliced<icu::UnicodeString>(text, unicode), [](icu::UnicodeString const& s) {
                   std::string result;
                   s.toUTF8String(result);
                   return result;
               }));
#endif
#ifdef QVXSYS_BENCH_QT
    bench::Row(decode, "QString",
               ConvertingEach(bytes, [](std::string const& s) { return QString::fromUtf8(s.data(), Size(s)); }));
    auto const qt = [](TStringCore const& s) { return QString::fromUtf16(s.constData(), s.length()); };
    bench::Row(encode, "QString",
               ConvertingEach(Sliced<QString>(text, qt), [](QString const& s) { return s.toUtf8(); }));
#endif
}

// ---- b9

template<class From, class Measure>
auto Measuring(std::basic_string<From> const& source, Measure measure)
{
    return [from = source.data(), n = Size(source), measure] {
        int const length = measure(from, n);
        benchmark::DoNotOptimize(length);
        benchmark::ClobberMemory();
    };
}

void MeasureRows(Text const& text)
{
    auto const count = "b9 count code points, " + text.kind;
    auto const measure8 = "b9 measure as UTF-8, " + text.kind;
    auto const measure16 = "b9 measure UTF-8 as UTF-16, " + text.kind;
    bench::OwnRows(count, Measuring(text.utf16,
                                    [](char16_t const* s, int n) { return StringUtils::LengthInCodePoints(s, 0, n); }));
    bench::OwnRows(measure8, Measuring(text.utf16,
                                       [](char16_t const* s, int n) { return StringUtils::MeasureUtf16ToUtf8(s, n); }));
    bench::OwnRows(measure16,
                   Measuring(text.utf8, [](char const* s, int n) { return StringUtils::MeasureUtf8ToUtf16(s, n); }));
#ifdef QVXSYS_BENCH_ICU
    bench::Row(count, "ICU", Measuring(text.utf16, [](char16_t const* s, int n) { return u_countChar32(s, n); }));
    bench::Row(measure8, "ICU", Measuring(text.utf16, [](char16_t const* s, int n) {
                   UErrorCode error = U_ZERO_ERROR;
                   int length = 0;
                   u_strToUTF8WithSub(nullptr, 0, &length, s, n, kSubstitute, nullptr, &error);
                   return length;
               }));
    bench::Row(measure16, "ICU", Measuring(text.utf8, [](char const* s, int n) {
                   UErrorCode error = U_ZERO_ERROR;
                   int length = 0;
                   u_strFromUTF8WithSub(nullptr, 0, &length, s, n, kSubstitute, nullptr, &error);
                   return length;
               }));
#endif
    auto const copy = "b9 copy well-formed, " + text.kind;
    CheckedRow(copy, "own", text.utf16, text.utf16, [](char16_t const* s, int n, char16_t* to, int capacity) {
        return StringUtils::StringValidateCopy(s, n, to, capacity);
    });
    CopyBound(copy, text.utf16);
}

void RegisterRows()
{
    static std::vector<Text> const texts = bench::WellFormedTexts(TextBytes());
    static std::vector<Text> const damaged = {bench::Damaged(texts[1], 64), bench::Damaged(texts[1], 4096)};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        auto const& text = texts[i];
        DecodeRows(text, (i == 0 ? "b1" : i < 3 ? "b2" : "b3") + std::string(" UTF-8 to UTF-16, ") + text.kind);
        EncodeRows(text, "b5 UTF-16 to UTF-8, " + text.kind);
        NewStringRows(text);
        Utf32Rows(text);
        Utf32FromBytesRows(text);
        ShortRows(text);
        MeasureRows(text);
    }
    for (Text const& text : damaged) {
        DecodeRows(text, "b4 UTF-8 to UTF-16, " + text.kind);
    }
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
