// The examples of the text headers.

#include <iostream>

#include <qvxsys/qvxsys.h>

namespace {

bool Strings()
{
    TStringCore greeting = u"Gr\u00FC\u00DFe";
    greeting.append(", ").append(L"Jos\u00E9").append32(0x1F600);
    TStringCore const copy = greeting; // shares the block: O(1)
    std::string const utf8 = greeting.toStdString();
    return copy == greeting && copy.lengthInCodePoints() < copy.length() && utf8.size() == 18;
}

bool Views()
{
    TStringView const line = u"key = value";
    TStringView const key = line.left(3);
    TStringView const value = line.mid(6);
    int letters = 0;
    for (char32_t const c : value.codePoints()) {
        letters += TCType::isAlpha(c) ? 1 : 0;
    }
    return key == u"key" && value == u"value" && letters == 5;
}

bool Reading()
{
    TStringView const line = u"key = \u20AC12; note";
    int const at = line.indexOf(u'=');
    bool const euro = line.contains(L"\u20AC") && line.startsWith("key"); // any kind of text
    std::size_t units = 0;
    for (TStringView const part : line.split(u';')) {
        units += part.trimmed().size();
    }
    return at == 4 && euro && units == 13 && TStringCore(u"/usr/local/bin").section(u'/', 2, 3) == u"local/bin";
}

bool Editing()
{
    TStringCore text = u"one two";
    text.insert(3, u',').prepend(L"\u00AB").append(u'\u00BB'); // each returns the string
    text.replace(u"two", "three").removeAnyOf(u",;");
    TStringCore const name = text.mid(1, 3).toUpper(); // the rest gives a new string
    TStringCore const line = name + u": " + L"text" + '\n';
    return text == u"\u00ABone three\u00BB" && line == u"ONE: text\n" && name < L"P";
}

bool Units()
{
    TStringCore text = u"four";
    text.reserve(100);                       // a block with room for 100 units
    text[0] = u'F';                          // non-const access detaches, that is copies a shared block
    char16_t const last = text.view().at(3); // reading through a view or a const reference does not
    return text == u"Four" && last == u'r' && text.capacity() == 101;
}

bool CodePoints()
{
    TStringCore text = u"a\U0001F600b";
    for (auto c : text.codePointView()) {
        if (c == 0x1F600) {
            c = U'!'; // two units become one
        }
    }
    return text == u"a!b";
}

bool Conversions()
{
    char buffer[64];
    int const bytes = StringUtils::Utf16ToUtf8(u"Gr\u00FC\u00DFe", buffer, sizeof buffer);
    int const needed = StringUtils::MeasureUtf16ToUtf8(u"Gr\u00FC\u00DFe");
    int units = 0;
    char32_t const c = CharacterUtils::GetCodePoint(u"\U0001F600", &units);
    return bytes == 7 && needed == 7 && c == 0x1F600 && units == 2;
}

bool Classes()
{
    return TCType::isSpace(u'\u00A0') && TCType::ToLower(u'\u00C4') == u'\u00E4';
}

bool Icu()
{
    auto status = QvxICU::ICUErrorCode::ZeroError;
    QvxICU::ICUConverter* const converter = QvxICU::t_ucnv_open("windows-1252", &status);
    bool const opened = QvxICU::ICU_SUCCESS(status);
    QvxICU::t_ucnv_close(converter);
    return opened;
}

bool Decoding()
{
    TTextDecoder decoder("UTF-8");
    TStringCore text;
    decoder.Decode("Gr\xC3", 3, text, false); // the third character is not whole yet
    bool const waits = text == u"Gr";
    decoder.Decode("\xBC\xC3\x9F"
                   "e",
                   4, text, true);
    bool const sound = decoder.Malformed() == 0;

    TTextDecoder unknown = TTextDecoder::Detecting();
    char const bytes[] = {'\xFF', '\xFE', 'G', '\0', 'r', '\0'};
    TStringCore const detected(unknown.Decode(bytes, 6, true));
    bool const isUtf16 =
        unknown.Found().encoding == "UTF-16LE" && unknown.Found().foundBy == TTextDecoder::FoundBy::ByteOrderMark;
    return waits && text == u"Gr\u00FC\u00DFe" && sound && detected == u"Gr" && isUtf16;
}

bool Patterns()
{
    KMP::StringTable const table(u"stra\U0001F600e", CaseCompare::Insensitive);
    return KMP::searchString(u"Die STRA\U0001F600E", table) == 4;
}

bool Errors()
{
    TStringCore const text = u"short";
    try {
        static_cast<void>(text.at(1000));
    } catch (TStringCore::Exception const& e) {
        return e.toStdString() == "TStringCore::at(int): argument out of range.";
    }
    return false;
}

bool Processor()
{
    auto const before = quorvex::cpu::LimitInstructionSet(quorvex::cpu::InstructionSet::Portable);
    bool const same = TStringCore("caf\xC3\xA9") == u"caf\u00E9";
    quorvex::cpu::LimitInstructionSet(before);
    return same;
}

} // namespace

int main()
{
    bool const ok = Strings() && Views() && Reading() && Editing() && Units() && CodePoints() && Conversions() &&
                    Classes() && Icu() && Decoding() && Patterns() && Errors() && Processor();
    std::cout << (ok ? "ok\n" : "not as documented\n");
    return ok ? 0 : 1;
}
