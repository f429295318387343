// Building messages from a format and arguments, beside what people would use instead. Formats are texts that come at
// run time, as translated messages do; rows "own, literal" have them checked at compile time.

#include <string>

#include <qvxsys/Format.h>
#include <qvxsys/TFormatStringCore.h>

#ifdef QVXSYS_BENCH_ICU
#include <unicode/simpleformatter.h>
#include <unicode/unistr.h>
#endif
#ifdef QVXSYS_BENCH_QT
#include <QString>
#endif
#ifdef QVXSYS_BENCH_ABSL
#include <absl/strings/str_cat.h>
#include <absl/strings/str_format.h>
#include <absl/strings/substitute.h>
#endif
#ifdef QVXSYS_BENCH_FMT
#include <fmt/format.h>
#endif

#include "BenchSupport.h"

namespace {

using bench::Row;

char const* const kThree = "e1 three texts";
char const* const kNumber = "e2 text and number";
char const* const kReal = "e3 text, number and real";

/// What the messages are made of; opaque to the compiler each time.
struct Values
{
    int number = 20417;
    double real = 1234.5678;

    void Opaque()
    {
        benchmark::DoNotOptimize(number);
        benchmark::DoNotOptimize(real);
        benchmark::ClobberMemory();
    }
};

template<class String, class Body>
void MessageRow(char const* row, char const* who, Body body)
{
    Row(row, who, [body = std::move(body), values = Values()]() mutable {
        values.Opaque();
        String result = body(values);
        benchmark::DoNotOptimize(result);
    });
}

void OwnRows()
{
    using S = TStringCore;
    S const a = u"settings", b = u"archive.db", c = u"not found";
    MessageRow<S>(kThree, "own", [=, f = S(u"Cannot copy %1 to %2: %3")](Values const&) {
        return TFormatStringCore(f).arg(a, b, c).result();
    });
    MessageRow<S>(kThree, "own, literal",
                  [=](Values const&) { return qvxsys::Format(u"Cannot copy %1 to %2: %3", a, b, c); });
    MessageRow<S>(kThree, "[appends]", [=](Values const&) {
        S s = u"Cannot copy ";
        s.reserve(45);
        s.append(a).append(u" to ", 4).append(b).append(u": ", 2).append(c);
        return s;
    });
    MessageRow<S>(kNumber, "own", [=, f = S(u"Reading %1, line %2")](Values const& v) {
        return TFormatStringCore(f).arg(a).arg(v.number).result();
    });
    MessageRow<S>(kNumber, "own, literal",
                  [=](Values const& v) { return qvxsys::Format(u"Reading %1, line %2", a, v.number); });
    MessageRow<S>(kReal, "own", [=, f = S(u"Reading %1, line %2: %3 ms")](Values const& v) {
        return TFormatStringCore(f).arg(a).arg(v.number).arg(v.real, 0, 'f', 2).result();
    });
}

#ifdef QVXSYS_BENCH_QT
void QtRows()
{
    using S = QString;
    S const a = u"settings"_qs, b = u"archive.db"_qs, c = u"not found"_qs;
    MessageRow<S>(kThree, "QString::arg",
                  [=, f = u"Cannot copy %1 to %2: %3"_qs](Values const&) { return f.arg(a, b, c); });
    MessageRow<S>(kNumber, "QString::arg",
                  [=, f = u"Reading %1, line %2"_qs](Values const& v) { return f.arg(a, S::number(v.number)); });
    MessageRow<S>(kReal, "QString::arg", [=, f = u"Reading %1, line %2: %3 ms"_qs](Values const& v) {
        return f.arg(a, S::number(v.number), S::number(v.real, 'f', 2));
    });
    MessageRow<S>(kReal, "QString::arg chain", [=, f = u"Reading %1, line %2: %3 ms"_qs](Values const& v) {
        return f.arg(a).arg(v.number).arg(v.real, 0, 'f', 2);
    });
}
#endif

#ifdef QVXSYS_BENCH_ICU
void IcuRows()
{
    using S = icu::UnicodeString;
    S const a = u"settings", b = u"archive.db", c = u"not found";
    UErrorCode status = U_ZERO_ERROR;
    icu::SimpleFormatter const prepared(u"Cannot copy {0} to {1}: {2}", 3, 3, status);
    MessageRow<S>(kThree, "ICU SimpleFormatter", [=](Values const&) {
        UErrorCode error = U_ZERO_ERROR;
        S s;
        prepared.format(a, b, c, s, error);
        return s;
    });
}
#endif

#ifdef QVXSYS_BENCH_ABSL
void AbseilRows()
{
    using S = std::string;
    S const a = "settings", b = "archive.db", c = "not found";
    MessageRow<S>(kThree, "absl::Substitute",
                  [=, f = S("Cannot copy $0 to $1: $2")](Values const&) { return absl::Substitute(f, a, b, c); });
    MessageRow<S>(kNumber, "absl::Substitute",
                  [=, f = S("Reading $0, line $1")](Values const& v) { return absl::Substitute(f, a, v.number); });
    MessageRow<S>(kNumber, "absl::StrCat",
                  [=](Values const& v) { return absl::StrCat("Reading ", a, ", line ", v.number); });
    MessageRow<S>(kReal, "absl::StrFormat", [=](Values const& v) {
        return absl::StrFormat("Reading %s, line %d: %.2f ms", a, v.number, v.real);
    });
    MessageRow<S>(kReal, "absl::Substitute", [=, f = S("Reading $0, line $1: $2 ms")](Values const& v) {
        return absl::Substitute(f, a, v.number, v.real);
    });
}
#endif

#ifdef QVXSYS_BENCH_FMT
void FmtRows()
{
    using S = std::string;
    S const a = "settings", b = "archive.db", c = "not found";
    MessageRow<S>(kThree, "fmt", [=, f = S("Cannot copy {} to {}: {}")](Values const&) {
        return fmt::format(fmt::runtime(f), a, b, c);
    });
    MessageRow<S>(kNumber, "fmt", [=, f = S("Reading {}, line {}")](Values const& v) {
        return fmt::format(fmt::runtime(f), a, v.number);
    });
    MessageRow<S>(kReal, "fmt", [=, f = S("Reading {}, line {}: {:.2f} ms")](Values const& v) {
        return fmt::format(fmt::runtime(f), a, v.number, v.real);
    });
}
#endif

void RegisterRows()
{
    OwnRows();
#ifdef QVXSYS_BENCH_QT
    QtRows();
#endif
#ifdef QVXSYS_BENCH_ICU
    IcuRows();
#endif
#ifdef QVXSYS_BENCH_ABSL
    AbseilRows();
#endif
#ifdef QVXSYS_BENCH_FMT
    FmtRows();
#endif
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
