// Chains of scanner operations on arbitrary text, which lies in a heap block of its exact size so that reading past its
// end is found. Each operation may only move forward, a failed one stays where it is (or, where it says so, behind the
// token), and what is read is what was there.

#include <functional>

#include <qvxsys/qvxsys.h>

#include "Fuzz.h"

namespace {

using Scan = TScanStringCore;

TStringCore Rest(Scan scan)
{
    TStringCore rest;
    scan.readString(rest, -1).end();
    return rest;
}

/// One operation; `out` is what it read, when it reads text.
void Do(Scan& scan, unsigned operation, TStringCore& out)
{
    int const n = static_cast<int>(operation >> 5) - 1;
    int const bases[] = {10, 0, 16, 2, 36, 8, 10, 10};
    int const base = bases[operation >> 5];
    bool flag = false;
    float single = 0;
    double real = 0;
    short small = 0;
    unsigned long long large = 0;
    std::function<void()> const operations[] = {
        [&] { scan.skipWhitespace(); },
        [&] { scan.skipNonWhitespace(); },
        [&] { scan.skipAnyOf(u"0123,:"); },
        [&] { scan.skipAnyNotOf(L",:"); },
        [&] { scan.skipString(n); },
        [&] { scan.skipBool(); },
        [&] { scan.skipInt(base); },
        [&] { scan.skipFloat(); },
        [&] { scan.skipNewline(); },
        [&] { scan.skipLine(); },
        [&] { scan.skip(u"ab"); },
        [&] { scan.skip(TStringView(u"a\0b", 3)); },
        [&] { scan.readNonWhitespace(out); },
        [&] { scan.readAnyOf(out, u"abc"); },
        [&] { scan.readAnyNotOf(out, u'a'); },
        [&] { scan.readString(out, n); },
        [&] { scan.readLine(out); },
        [&] { scan.readBool(flag); },
        [&] { scan.readFloat(single); },
        [&] { scan.readFloat(real); },
        [&] { scan.readInt(small, base); },
        [&] { scan.readInt(large, base); },
        [&] { scan.end(); },
        [&] { scan = Scan(scan); },
    };
    operations[operation % std::size(operations)]();
}

} // namespace

void Fuzz(std::uint8_t const* data, std::size_t size)
{
    if (size < 9) {
        return;
    }
    std::uint8_t const* const operations = data;
    data += 8;
    size -= 8;
    // Half of the inputs are narrow text, so that tokens are frequent.
    bool const narrow = data[0] % 2 == 0;
    std::size_t const n = narrow ? size - 1 : (size - 1) / 2;
    std::unique_ptr<char16_t[]> const text(new char16_t[n + 1]);
    for (std::size_t i = 0; i < n; ++i) {
        text[i] = narrow ? data[1 + i] : static_cast<char16_t>(data[1 + 2 * i] | data[2 + 2 * i] << 8);
    }
    text[n] = 0;

    Scan scan(text.get());
    for (int i = 0; i < 8; ++i) {
        TStringCore const before = Rest(scan);
        TStringCore out;
        unsigned code = 0;
        try {
            Do(scan, operations[i], out);
        } catch (Scan::Exception const& e) {
            code = e.GetErrorCode();
        }
        TStringCore const after = Rest(scan);
        Require(after.length() <= before.length());
        Require(before.view().right(after.length()) == after.view() || after.empty());
        Require(before.view().left(out.length()) == out.view() || out.empty());
        bool const behindToken = code == 0x85FD6267 || code == 0x930719DA || code == 0x1D7A94C6;
        Require(code == 0 || (after.length() == before.length()) != behindToken);
        Require(code == 0 || out.empty());
    }
    // Every text is lines.
    scan.reset();
    for (std::size_t lines = 0; !Rest(scan).empty(); ++lines) {
        Require(lines <= n);
        TStringCore line;
        scan.readLine(line);
        Require(line.view().indexOf(u'\n') < 0);
    }
}
