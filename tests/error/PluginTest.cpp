// Exceptions that cross the border to a library that was loaded at run time keep their exact type.

#include <stdexcept>
#include <typeinfo>

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
bool Caught(int which)
{
    try {
        Plugin().Get<void(int)>("ThrowFromPlugin")(which);
    } catch (E const& e) {
        return typeid(e) == typeid(E);
    } catch (...) {
    }
    return false;
}

TEST(Plugin, ExceptionsAreCaughtByTheirExactType)
{
    EXPECT_TRUE(Caught<QuorvexException>(0));
    EXPECT_TRUE(Caught<QuorvexOutOfMemoryException>(1));
    EXPECT_TRUE(Caught<QuorvexUserErrorException>(2));
    EXPECT_TRUE(Caught<TScanStringCore::Exception>(3));
    EXPECT_TRUE(Caught<TFormatStringCore::Exception>(4));
    EXPECT_TRUE(Caught<LogicException>(5));
    EXPECT_TRUE(Caught<TStringCore::Exception>(6));
    EXPECT_TRUE(Caught<TScanStringCore::Exception>(8));
    EXPECT_TRUE(Caught<TFormatStringCore::Exception>(9));
    EXPECT_TRUE(Caught<std::out_of_range>(10));
}

TEST(Plugin, OwnExceptionIsSeenAsItsBaseAndKeepsItsClass)
{
    try {
        try {
            Plugin().Get<void(int)>("ThrowFromPlugin")(7);
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
