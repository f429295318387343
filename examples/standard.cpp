// Strings with the standard library, and numbers.

#include <functional>
#include <iomanip>
#include <iostream>
#include <set>
#include <sstream>
#include <unordered_map>

#include <qvxsys/qvxsys.h>

namespace {

bool Containers()
{
    using namespace qvxsys::literals;
    std::unordered_map<TStringCore, int, std::hash<TStringCore>, std::equal_to<>> ages;
    ages[u"J\u00FCrgen"_qs] = 41;
    bool const known = ages.contains(u"J\u00FCrgen");                          // no string is made for the question
    std::set<TStringCore, qvxsys::FoldedLess> const names{"ada"_qs, "ADA"_qs}; // one element
    std::ostringstream out;
    out << std::setw(12) << std::left << ages.begin()->first << '|'; // padded by code points, UTF-8
    std::cout << out.str() << '\n';
    return known && names.size() == 1 && out.str() == "J\xC3\xBCrgen      |";
}

bool Numbers()
{
    TStringCore const hours = TStringCore::number(7, 10, 2, '0') + ":" + TStringCore::number(5, 10, 2, '0');
    TStringCore const price = TStringCore::number(1234.5, 'f', 2);
    double const tenth = TStringCore::numberShortest(0.1).toDouble();
    bool ok = false;
    int const value = TStringView(u" 0x1F ").toInt(&ok, 0);
    return hours == u"07:05" && price == u"1234.50" && !(tenth < 0.1 || tenth > 0.1) && ok && value == 31;
}

} // namespace

int main()
{
    return Containers() && Numbers() ? 0 : 1;
}
