// The examples of <qvxsys/IcuFunctions.h>, the headers it includes, and <qvxsys/IcuHandles.h>.

#include <iostream>
#include <string>

#include <qvxsys/IcuHandles.h>
#include <qvxsys/TStringCore.h>

using namespace QvxICU;

namespace {

int g_failures = 0;

void Expect(bool right, char const* what, ICUErrorCode status)
{
    if (!right || ICU_FAILURE(status)) {
        std::cerr << what << ": " << t_u_errorName(status) << '\n';
        ++g_failures;
    }
}

void Words()
{
    TStringCore const text = u"Two words, 12 signs";
    auto status = ICUErrorCode::ZeroError;
    ICULocalUBreakIteratorPointer const words(
        t_ubrk_open(ICUBreakIteratorType::Word, "en", text.data(), text.length(), &status));
    int count = 0;
    int numbers = 0;
    for (std::int32_t at = t_ubrk_first(words.getAlias()); at != ICUBreakDone; at = t_ubrk_next(words.getAlias())) {
        std::int32_t const tag = t_ubrk_getRuleStatus(words.getAlias());
        count += tag >= ICUWordNoneLimit ? 1 : 0;
        numbers += tag >= ICUWordNumber && tag < ICUWordNumberLimit ? 1 : 0;
    }
    Expect(count == 4 && numbers == 1, "words", status);

    ICULocalURegularExpressionPointer const pattern(t_uregex_openC("\\w+", 0, nullptr, &status));
    t_uregex_setTimeLimit(pattern.getAlias(), 1000, &status);
    t_uregex_setText(pattern.getAlias(), text.data(), text.length(), &status);
    int found = 0;
    while (t_uregex_findNext(pattern.getAlias(), &status)) {
        ++found;
    }
    Expect(found == 4, "matches", status);
}

void Order()
{
    auto status = ICUErrorCode::ZeroError;
    ICULocalUCollatorPointer const swedish(t_ucol_open("sv", &status));
    Expect(t_ucol_greater(swedish.getAlias(), u"\u00E4", -1, u"z", -1), "Swedish order", status);

    ICULocalUCollatorPointer const digits(t_openIgnoreDigitsCollator("sv", &status));
    Expect(t_ucol_equal(digits.getAlias(), u"page 12", -1, u"page 77", -1), "equal digits", status);
}

void Money()
{
    auto status = ICUErrorCode::ZeroError;
    char16_t units[32];
    ICULocalUNumberFormatPointer const money(
        t_unum_open(ICUNumberFormatStyle::Currency, nullptr, 0, "de_DE", nullptr, &status));
    t_unum_formatDouble(money.getAlias(), 12.5, units, 32, nullptr, &status);
    Expect(std::u16string(units) == u"12,50\u00A0\u20AC", "currency", status);
}

void Characters()
{
    auto status = ICUErrorCode::ZeroError;
    char name[64];
    t_u_charName(U'\u00E9', ICUCharNameChoice::UnicodeCharName, name, sizeof name, &status);
    Expect(std::string(name) == "LATIN SMALL LETTER E WITH ACUTE", name, status);
    Expect(t_u_hasBinaryProperty(U'\u00DF', ICUProperty::Alphabetic), "property", status);

    ICULocalUSetPointer const letters(t_uset_openPattern(u"[[:Greek:]&[:L:]]", -1, &status));
    Expect(t_uset_contains(letters.getAlias(), U'\u03B1'), "set", status);

    char target[16];
    std::int32_t const length = t_ucnv_convert("UTF-8", "windows-1252", target, sizeof target, "\x80", 1, &status);
    Expect(std::string(target, static_cast<std::size_t>(length)) == "\xE2\x82\xAC", "conversion", status);
}

} // namespace

int main()
{
    Words();
    Order();
    Money();
    Characters();
    return g_failures == 0 ? 0 : 1;
}
