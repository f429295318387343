// The code of docs/guides/text.md.

#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <unordered_map>

#include <qvxsys/qvxsys.h>

namespace {

/// Settings out of a file's text: "key = value" lines, "#" begins a comment.
std::map<TStringCore, TStringCore, std::less<>> ReadSettings(TStringView text)
{
    std::map<TStringCore, TStringCore, std::less<>> settings;
    for (TStringView line : text.split(u'\n')) {
        line = line.left(line.indexOf(u'#') < 0 ? line.length() : line.indexOf(u'#')).trimmed();
        int const at = line.indexOf(u'=');
        if (at > 0) {
            settings[line.left(at).trimmed()] = line.mid(at + 1).trimmed();
        }
    }
    return settings;
}

bool Settings()
{
    auto const settings = ReadSettings(u"name = Zo\u00EB\n# a comment\ntimeout = 250 # ms\n");
    bool ok = false;
    int const timeout = settings.at(u"timeout").toInt(&ok);
    return ok && timeout == 250 && settings.at(u"name").toStdString() == "Zo\xC3\xAB";
}

/// Bytes of any encoding, read piece by piece.
TStringCore ReadText(std::istream& in, char const* encoding)
{
    TTextDecoder decoder(encoding);
    TStringCore text;
    char bytes[4096];
    while (in.read(bytes, sizeof bytes), in.gcount() > 0) {
        decoder.Decode(bytes, static_cast<std::size_t>(in.gcount()), text, in.eof());
    }
    if (decoder.Malformed() > 0) {
        std::cerr << decoder.Malformed() << " malformed sequences were replaced by U+FFFD\n";
    }
    return text;
}

bool Decoding()
{
    std::istringstream in("Gr\xFC\xDF"
                          "e");
    return ReadText(in, "windows-1252") == u"Gr\u00FC\u00DFe";
}

/// A label of at most so many characters, never half a one.
TStringCore Shortened(TStringCore const& text, int characters)
{
    if (text.lengthInCodePoints() <= characters) {
        return text;
    }
    TStringCore result;
    for (char32_t const c : text.view().codePoints()) {
        if (--characters < 1) {
            break;
        }
        result.append32(c);
    }
    return result.append(u'\u2026');
}

bool Shortening()
{
    return Shortened(u"\U0001F600\U0001F600\U0001F600\U0001F600", 3) == u"\U0001F600\U0001F600\u2026";
}

bool Finding()
{
    TStringView const line = u"Die STRASSE ist lang";
    bool const found = line.contains(u"strasse", CaseCompare::Insensitive);
    KMP::StringTable const table(u"stra\u00DFe", CaseCompare::Insensitive); // one pattern, many texts
    return found && KMP::searchString(u"eine Stra\u00DFe", table) == 5;
}

bool Standard()
{
    std::unordered_map<TStringCore, int> counts;
    TStringView const text = u"one two one";
    for (TStringView const word : text.split(u' ')) {
        ++counts[TStringCore(word)];
    }
    std::ostringstream out;
    out << TStringCore(u"one") << ": " << counts[u"one"];
    std::u16string_view const same = TStringView(u"text");
    return out.str() == "one: 2" && same == u"text";
}

} // namespace

int main()
{
    bool const ok = Settings() && Decoding() && Shortening() && Finding() && Standard();
    std::cout << (ok ? "ok\n" : "not as documented\n");
    return ok ? 0 : 1;
}
