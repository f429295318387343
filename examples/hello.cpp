// The program of docs/packages.md.

#include <cstdio>

#include <qvxsys/qvxsys.h>

int main()
{
    TStringCore const text = TStringCore(u"Gr\u00FC\u00DFe") + " from qvxsys";
    std::printf("%s\n", text.toStdString().c_str());
    try {
        static_cast<void>(text.at(1000));
    } catch (TStringCore::Exception const& exception) {
        std::printf("%s\n", exception.toStdString().c_str());
    }
}
