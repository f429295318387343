// A library of its own that throws the exceptions of the other one.

#include <stdexcept>

#include <qvxsys/qvxsys.h>

namespace {

/// Known to nobody outside: seen as its base there.
class PluginException : public QuorvexException
{
public:
    using QuorvexException::QuorvexException;
    [[noreturn]] void Throw() const override { throw PluginException(*this); }
};

TError::ErrorInfo Info()
{
    return {QuorvexError::MakeError(0x10000001, u"Plugin_Error"), static_cast<TError::ErrorSource>(77)};
}

} // namespace

extern "C" PLUGIN_EXPORT void ThrowFromPlugin(int which)
{
    switch (which) {
    case 0:
        throw QuorvexException(u"base", Info());
    case 1:
        throw QuorvexOutOfMemoryException(Info());
    case 2:
        throw QuorvexUserErrorException(u"user", Info());
    case 3:
        throw LogicException(u"logic", Info());
    case 4:
        throw TStringCore::Exception(u"text");
    case 5:
        TScanStringCore(u"x").skipInt();
        break;
    case 6:
        static_cast<void>(TFormatStringCore(u"%"));
        break;
    case 7:
        throw std::out_of_range("standard");
    default:
        throw PluginException(u"own", Info());
    }
}

/// A handler inside the plug-in for an exception from outside.
extern "C" PLUGIN_EXPORT void CallFromPlugin(void (*function)())
{
    try {
        function();
    } catch (TScanStringCore::Exception const&) {
        StackExceptionAndRethrow(u"seen by the plug-in");
    }
}
