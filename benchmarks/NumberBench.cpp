// Numbers to text and back, beside the standard library's conversions on bytes and those of other libraries.
//
// An operation converts a whole table of values, so that branches are predicted as well as in real data and not better;
// times are for kValues conversions. "to a buffer" rows produce units or bytes only; the others make a string.

#include <charconv>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <qvxsys/qvxsys.h>

#ifdef QVXSYS_BENCH_QT
#include <QString>
#endif
#ifdef QVXSYS_BENCH_FMT
#include <fmt/compile.h>
#include <fmt/format.h>
#endif
#ifdef QVXSYS_BENCH_FAST_FLOAT
#include <fast_float/fast_float.h>
#endif
#ifdef QVXSYS_BENCH_DOUBLE_CONVERSION
#include <double-conversion/double-conversion.h>
#endif

#include "BenchSupport.h"
#include "NumberText.h"

namespace {

constexpr std::size_t kValues = 1000;

struct Kind
{
    char const* name;
    std::vector<std::int64_t> values;
};

template<class Make>
auto Table(Make make)
{
    std::mt19937_64 engine(6);
    std::vector<decltype(make(engine))> values(kValues);
    for (auto& value : values) {
        value = make(engine);
    }
    return values;
}

std::vector<Kind> Integers()
{
    auto const upTo = [](int digits) {
        return Table([digits](std::mt19937_64& engine) {
            auto const power = static_cast<std::uint64_t>(
                std::pow(10.0, static_cast<double>(1 + engine() % static_cast<unsigned>(digits))));
            return static_cast<std::int64_t>(engine() % power);
        });
    };
    auto const nineteen = Table([](std::mt19937_64& engine) {
        return static_cast<std::int64_t>(1000000000000000000 + engine() % 8000000000000000000);
    });
    return {{"1-3 digits", upTo(3)}, {"1-10 digits", upTo(10)}, {"19 digits", nineteen}};
}

struct Doubles
{
    char const* name;
    std::vector<double> values;
};

std::vector<Doubles> FloatingPoint()
{
    auto const wide = Table([](std::mt19937_64& engine) {
        double const mantissa = 1 + static_cast<double>(engine() >> 11) * 0x1p-53;
        return mantissa * std::pow(10.0, static_cast<double>(static_cast<int>(engine() % 61) - 30));
    });
    auto const money = Table([](std::mt19937_64& engine) { return static_cast<double>(engine() % 100000000) / 100.0; });
    return {{"1e-30..1e30", wide}, {"money", money}};
}

template<class Values, class Op>
void Each(std::string const& row, char const* who, Values values, Op op)
{
    bench::Row(row, who, [values = std::move(values), op] {
        for (auto const& value : values) {
            op(value);
        }
    });
}

void IntegerToText(Kind const& kind)
{
    auto const buffer = std::string("d1 integer to a buffer, ") + kind.name;
    Each(buffer, "own", kind.values, [](std::int64_t v) {
        char16_t units[24];
        auto const magnitude = static_cast<std::uint64_t>(v);
        int length = 0;
        if (magnitude < qvxsys::text::kShortDecimals) {
            length = qvxsys::text::WriteShortDecimal(units, static_cast<std::uint32_t>(magnitude));
        } else {
            length = qvxsys::text::DecimalLength(magnitude);
            qvxsys::text::WriteDecimal(units, magnitude, length);
        }
        benchmark::DoNotOptimize(units);
        benchmark::DoNotOptimize(length);
    });
    Each(buffer, "std::to_chars", kind.values, [](std::int64_t v) {
        char bytes[24];
        auto const end = std::to_chars(bytes, bytes + sizeof bytes, v).ptr;
        benchmark::DoNotOptimize(bytes);
        benchmark::DoNotOptimize(end);
    });
    auto const string = std::string("d1 integer to a string, ") + kind.name;
    auto const make = [&](char const* who, auto convert) {
        Each(string, who, kind.values, [convert](std::int64_t v) {
            auto text = convert(v);
            benchmark::DoNotOptimize(text);
        });
    };
    make("own", [](std::int64_t v) { return TStringCore::number(v); });
    make("std::to_string", [](std::int64_t v) { return std::to_string(v); });
#ifdef QVXSYS_BENCH_FMT
    Each(buffer, "fmt", kind.values, [](std::int64_t v) {
        fmt::format_int const text(v);
        benchmark::DoNotOptimize(text);
    });
    make("fmt::to_string", [](std::int64_t v) { return fmt::to_string(v); });
#endif
#ifdef QVXSYS_BENCH_QT
    make("QString", [](std::int64_t v) { return QString::number(static_cast<qlonglong>(v)); });
#endif
}

void HexToText()
{
    auto const values = Table([](std::mt19937_64& engine) { return engine(); });
    Each("d2 64 bits to hexadecimal", "own", values, [](std::uint64_t v) {
        TStringCore text = TStringCore::number(v, 16);
        benchmark::DoNotOptimize(text);
    });
    Each("d2 64 bits to hexadecimal", "std::to_chars", values, [](std::uint64_t v) {
        char bytes[24];
        auto const end = std::to_chars(bytes, bytes + sizeof bytes, v, 16).ptr;
        std::string text(bytes, end);
        benchmark::DoNotOptimize(text);
    });
#ifdef QVXSYS_BENCH_FMT
    Each("d2 64 bits to hexadecimal", "fmt", values, [](std::uint64_t v) {
        std::string text = fmt::format(FMT_COMPILE("{:x}"), v);
        benchmark::DoNotOptimize(text);
    });
#endif
#ifdef QVXSYS_BENCH_QT
    Each("d2 64 bits to hexadecimal", "QString", values, [](std::uint64_t v) {
        QString text = QString::number(static_cast<qulonglong>(v), 16);
        benchmark::DoNotOptimize(text);
    });
#endif
}

void DoubleToText(Doubles const& kind, char const* row, char format, int precision)
{
    auto const name = std::string(row) + ", " + kind.name;
    auto const make = [&](char const* who, auto convert) {
        Each(name, who, kind.values, [convert](double v) {
            auto text = convert(v);
            benchmark::DoNotOptimize(text);
        });
    };
    auto const notation = format == 'f' ? std::chars_format::fixed : std::chars_format::general;
    make("own", [=](double v) { return TStringCore::number(v, format, precision); });
    make("std::to_chars", [=](double v) {
        char bytes[64];
        return std::string(bytes, std::to_chars(bytes, bytes + sizeof bytes, v, notation, precision).ptr);
    });
    make("snprintf", [=](double v) {
        char const pattern[] = {'%', '.', '*', format, 0};
        char bytes[64];
        return std::string(bytes, static_cast<std::size_t>(std::snprintf(bytes, sizeof bytes, pattern, precision, v)));
    });
#ifdef QVXSYS_BENCH_FMT
    make("fmt", [=](double v) {
        return format == 'f' ? fmt::format(FMT_COMPILE("{:.{}f}"), v, precision)
                             : fmt::format(FMT_COMPILE("{:.{}g}"), v, precision);
    });
#endif
#ifdef QVXSYS_BENCH_QT
    make("QString", [=](double v) { return QString::number(v, format, precision); });
#endif
}

std::vector<TStringCore> Strings(std::vector<std::string> const& bytes)
{
    std::vector<TStringCore> strings;
    for (std::string const& text : bytes) {
        strings.push_back(TStringCore::fromStdString(text));
    }
    return strings;
}

void TextToInteger(Kind const& kind)
{
    auto const name = std::string("d5 text to integer, ") + kind.name;
    std::vector<std::string> bytes;
    for (auto const v : kind.values) {
        bytes.push_back(std::to_string(v));
    }
    auto const strings = Strings(bytes);
    Each(name, "own", strings, [](TStringCore const& text) {
        bool ok = false;
        benchmark::DoNotOptimize(text.toLongLong(&ok));
        benchmark::DoNotOptimize(ok);
    });
    Each(name, "std::from_chars", bytes, [](std::string const& text) {
        std::int64_t value = 0;
        auto const result = std::from_chars(text.data(), text.data() + text.size(), value);
        benchmark::DoNotOptimize(value);
        benchmark::DoNotOptimize(result);
    });
#ifdef QVXSYS_BENCH_QT
    std::vector<QString> texts;
    for (auto const v : kind.values) {
        texts.push_back(QString::number(static_cast<qlonglong>(v)));
    }
    Each(name, "QString", texts, [](QString const& text) {
        bool ok = false;
        benchmark::DoNotOptimize(text.toLongLong(&ok));
        benchmark::DoNotOptimize(ok);
    });
#endif
}

void TextToDouble(Doubles const& kind, int digits)
{
    auto const name = std::string("d6 text to double, ") + (digits == 17 ? "17 digits" : kind.name);
    std::vector<std::string> bytes;
    for (double const v : kind.values) {
        char buffer[64];
        bytes.emplace_back(buffer,
                           std::to_chars(buffer, buffer + sizeof buffer, v, std::chars_format::general, digits).ptr);
    }
    auto const strings = Strings(bytes);
    Each(name, "own", strings, [](TStringCore const& text) {
        bool ok = false;
        benchmark::DoNotOptimize(text.toDouble(&ok));
        benchmark::DoNotOptimize(ok);
    });
    Each(name, "std::from_chars", bytes, [](std::string const& text) {
        double value = 0;
        auto const result = std::from_chars(text.data(), text.data() + text.size(), value);
        benchmark::DoNotOptimize(value);
        benchmark::DoNotOptimize(result);
    });
#ifdef QVXSYS_BENCH_FAST_FLOAT
    Each(name, "fast_float", bytes, [](std::string const& text) {
        double value = 0;
        auto const result = fast_float::from_chars(text.data(), text.data() + text.size(), value);
        benchmark::DoNotOptimize(value);
        benchmark::DoNotOptimize(result);
    });
#endif
#ifdef QVXSYS_BENCH_DOUBLE_CONVERSION
    Each(name, "double-conversion", strings, [](TStringCore const& text) {
        static double_conversion::StringToDoubleConverter const converter(0, 0.0, 0.0, "inf", "nan");
        int used = 0;
        benchmark::DoNotOptimize(
            converter.StringToDouble(reinterpret_cast<std::uint16_t const*>(text.data()), text.length(), &used));
        benchmark::DoNotOptimize(used);
    });
#endif
#ifdef QVXSYS_BENCH_QT
    std::vector<QString> texts;
    for (auto const& text : bytes) {
        texts.push_back(QString::fromStdString(text));
    }
    Each(name, "QString", texts, [](QString const& text) {
        bool ok = false;
        benchmark::DoNotOptimize(text.toDouble(&ok));
        benchmark::DoNotOptimize(ok);
    });
#endif
}

void RegisterRows()
{
    for (Kind const& kind : Integers()) {
        IntegerToText(kind);
        if (kind.values != Integers().front().values) {
            TextToInteger(kind);
        }
    }
    HexToText();
    auto const doubles = FloatingPoint();
    for (Doubles const& kind : doubles) {
        DoubleToText(kind, "d3 %.6f", 'f', 6);
        DoubleToText(kind, "d4 %.17g", 'g', 17);
    }
    TextToDouble(doubles[0], 17);
    TextToDouble(doubles[1], 10);
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
