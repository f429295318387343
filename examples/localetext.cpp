// The examples of <qvxsys/LocaleBreaks.h>, <qvxsys/LocaleCase.h>, <qvxsys/LocaleCompare.h> and
// <qvxsys/LocaleNormalize.h>.

#include <iostream>
#include <set>
#include <vector>

#include <qvxsys/qvxsys.h>

namespace {

bool Breaks()
{
    TStringCore const text = u"e\u0301\U0001F1F8\U0001F1EA!";
    int characters = 0;
    for (TStringView const character : QvxICU::graphemes(text)) { // a flag is one, as is "e\u0301"
        characters += character.empty() ? 0 : 1;
    }
    int numbers = 0;
    TStringCore const price = u"3.50 or 4";
    for (QvxICU::TextPiece const& piece : QvxICU::pieces(price, QvxICU::ICUBreakIteratorType::Word)) {
        numbers += piece.rule >= QvxICU::ICUWordNumber && piece.rule < QvxICU::ICUWordNumberLimit ? 1 : 0;
    }
    std::vector<TStringCore> found;
    for (TStringView const word : QvxICU::words(u"Don't panic: 3.14!")) {
        found.emplace_back(word);
    }
    TStringCore const title = text.left(QvxICU::unitsOfGraphemes(text, 2));
    return characters == 3 && numbers == 2 && found == std::vector<TStringCore>{u"Don't", u"panic", u"3.14"} &&
           title == u"e\u0301\U0001F1F8\U0001F1EA";
}

bool Case()
{
    TStringCore const key = QvxICU::toLowerRoot(u"TITLE"); // "title", wherever it runs
    TStringCore const shown = QvxICU::toLower(u"TITLE", *QvxICU::ICULocale::createFromName("tr"));
    TStringCore const name = QvxICU::toTitle(u"o'neill and sons", *QvxICU::ICULocale::createFromName("en"));
    TStringCore const time = QvxICU::withPlainSpaces(u"5:30\u202FPM");
    return key == u"title" && shown == u"t\u0131tle" && name == u"O'neill And Sons" && time == u"5:30 PM";
}

bool Order()
{
    std::vector<TStringCore> names = {u"\u00D6berg", u"Zorn", u"Aalto"};
    QvxICU::sortByLocale(names, *QvxICU::ICULocale::createFromName("sv"));

    QvxICU::LocaleComparator const natural(QvxICU::ICULocale(), {.numeric = true});
    std::set<TStringCore, QvxICU::LocaleComparator> files(natural); // "file9" before "file10"
    files.insert({u"file10", u"file9"});
    return names == std::vector<TStringCore>{u"Aalto", u"Zorn", u"\u00D6berg"} && *files.begin() == u"file9";
}

bool NormalForms()
{
    TStringCore const name = QvxICU::normalizeNFC(u"Zu\u0308rich"); // u"Z\u00FCrich"
    bool const same = QvxICU::areEquivalent(u"Zu\u0308rich", u"Z\u00FCrich");
    return same && name == u"Z\u00FCrich";
}

} // namespace

int main()
{
    bool const ok = Breaks() && Case() && Order() && NormalForms();
    std::cout << (ok ? "ok\n" : "not as documented\n");
    return ok ? 0 : 1;
}
