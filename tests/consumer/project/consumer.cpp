// Uses the installed library: text across the border, and an exception caught by its exact type.

#include <cstdio>

#include <qvxsys/qvxsys.h>

int main()
{
    TStringCore const text = TStringCore(u"across ") + "the border";
    try {
        static_cast<void>(text.at(1000));
    } catch (TStringCore::Exception const& e) {
        bool const exact = e == u"TStringCore::at(int): argument out of range.";
        std::printf("%s: %s\n", text.toStdString().c_str(), e.toStdString().c_str());
        return exact ? 0 : 2;
    }
    return 1;
}
