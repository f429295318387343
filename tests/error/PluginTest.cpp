// Exceptions that cross the border to a library that was loaded at run time keep their exact type.

#include <stdexcept>
#include <typeinfo>
#include <vector>

#include "support/SharedLibrary.h"
#include "support/TextPrinters.h"

namespace {

SharedLibrary& Plugin()
{
    // Kept loaded: exception objects outlive the tests' handlers.
    static auto* const plugin = new SharedLibrary(THROWING_PLUGIN);
    return *plugin;
}

/// Caught by a handler for E itself, not for a base, and of exactly that type.
template<class E>
bool IsCaught(int which)
{
    try {
        Plugin().Get<void(int)>("ThrowFromPlugin")(which);
    } catch (E const& e) {
        return typeid(e) == typeid(E);
    } catch (...) {
    }
    return false;
}

template<class... E>
std::vector<bool> AreCaught()
{
    int which = 0;
    return {IsCaught<E>(which++)...};
}

TEST(Plugin, ExceptionsAreCaughtByTheirExactType)
{
    EXPECT_EQ((AreCaught<QuorvexException, QuorvexOutOfMemoryException, QuorvexUserErrorException, LogicException,
                         TStringCore::Exception, TScanStringCore::Exception, TFormatStringCore::Exception,
                         std::out_of_range>()),
              std::vector<bool>(8, true));
}

TEST(Plugin, OwnExceptionIsSeenAsItsBaseAndKeepsItsClass)
{
    try {
        try {
            Plugin().Get<void(int)>("ThrowFromPlugin")(8);
        } catch (QuorvexException const& e) {
            EXPECT_EQ(e.GetErrorName(), u"Plugin_Error");
            EXPECT_EQ(e.GetErrorSource(), 77);
            e.Throw();
        }
    } catch (QuorvexException const& e) {
        EXPECT_NE(typeid(e), typeid(QuorvexException));
        EXPECT_EQ(e.GetMessagesFront(), u"own");
    }
}

TEST(Plugin, StacksOnExceptionFromOutside)
{
    try {
        Plugin().Get<void(void (*)())>("CallFromPlugin")([] { TScanStringCore(u"x").end(); });
        FAIL();
    } catch (TScanStringCore::Exception const& e) {
        EXPECT_EQ(e.GetMessagesVector().back(), u"seen by the plug-in");
    }
}

} // namespace
