// A first program: text in, text out.

#include <iostream>

#include <qvxsys/qvxsys.h>

int main()
{
    TStringCore greeting = u"Gr\u00FC\u00DFe";
    greeting.append(", ").append(L"Jos\u00E9 ").append32(0x1F600);
    std::cout << greeting.toStdString() << '\n'
              << greeting.length() << " units, " << greeting.lengthInCodePoints() << " code points\n";
}
