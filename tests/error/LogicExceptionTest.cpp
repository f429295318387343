// Failed checks, the hooks and LogicException. What is process-wide is put back by each test; the message id, which can
// be set only once, is set in processes of their own (gtest's death tests).

#include <list>
#include <memory>

#include "support/LogicAsserts.h"
#include "support/TextPrinters.h"

namespace {

using TError::ErrorInfo;

TEST(ThrowLogicException, ThrowsWithoutHook)
{
    ::testing::internal::CaptureStderr();
    try {
        ThrowLogicException("a.cpp", 12, "x > 0");
        FAIL();
    } catch (LogicException const& e) {
        EXPECT_EQ(e.GetInternalMessage(), u"LogicAssert failed (but no hook has been set) at a.cpp line 12: x > 0");
        EXPECT_EQ(e.GetMessagesVector(), std::vector<TStringCore>{u"Internal error."});
        EXPECT_EQ(e.GetErrorCode(), 0xA2BCBC42u);
        EXPECT_EQ(e.GetErrorName(), u"QuorvexException_AutoGen_0xA2BCBC42");
        EXPECT_EQ(e.GetErrorSource(), 4);
    }
    std::string const output = ::testing::internal::GetCapturedStderr();
    if (!qvxsys::kWideIsUtf16) { // there it goes to the debugger
        EXPECT_EQ(output, "LogicAssert failed (but no hook has been set) at a.cpp line 12: x > 0\n");
    }
    EXPECT_THROW(ThrowLogicException(nullptr, -1, nullptr), LogicException);
}

TEST(ThrowLogicException, ReturnsWhenTheHookDoes)
{
    EXPECT_EQ(AssertRaisedBy([] { ThrowLogicException("b.cpp", 3, "y"); }, HookThat::Returns),
              (RaisedAssert{"b.cpp", 3, "y"}));
    auto const kept = [](char const*, int, char const*) {};
    AssertHooks::SetDebugAssertHook(kept); // and nothing else
    EXPECT_EQ(AssertHooks::GetDebugAssertHook(), +kept);
    EXPECT_EQ(AssertHooks::GetLogicAssertHook(), nullptr);
    EXPECT_THROW(ThrowLogicException("", 0, ""), LogicException);
    AssertHooks::SetDebugAssertHook(nullptr);
}

TEST(LogicAssert, NamesSourceAndCondition)
{
    auto const scan = [] { EXPECT_NO_THROW(TScanStringCore(static_cast<char16_t const*>(nullptr)).skipLine().end()); };
    auto const raised = AssertRaisedBy(scan, HookThat::Returns); // goes on with an empty text
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->file, "qvxsys/main/qvxsys/message/TScanStringCore.cpp");
    EXPECT_EQ(raised->condition, "m_input");
}

TEST(LogicException, Details)
{
    auto const error = QuorvexError::MakeError(5, u"e");
    std::pair<TStringCore, TStringCore> const cases[] = {{u"abc\n\n", u"abc"},
                                                         {u"\n\n", u"No details given"},
                                                         {u"", u"No details given"},
                                                         {u"a\n b", u"a\n b"},
                                                         {u"a\r\n", u"a\r"}};
    for (auto const& [given, kept] : cases) {
        EXPECT_EQ(LogicException(given, ErrorInfo::TestError()).GetInternalMessage(), kept) << given;
        EXPECT_EQ(LogicException(TFormatStringCore(u"%1").arg(given), error).GetInternalMessage(), kept) << given;
    }
    EXPECT_EQ(LogicException(u"x", error).GetErrorSource(), 4);
    EXPECT_EQ(LogicException(TFormatStringCore(u"%%"), ErrorInfo::TestError()).GetErrorSource(), 5);
    LogicException const listed(std::list<TStringCore>{u"m"}, u"\n");
    EXPECT_EQ(listed.GetInternalMessage(), u""); // not "No details given"
    EXPECT_EQ(listed.GetMessagesVector(), (std::vector<TStringCore>{u"Internal error.", u"m"}));
    EXPECT_TRUE(listed.GetRedactedMessages().empty());
    EXPECT_EQ(listed.GetErrorSource(), 3);
}

TEST(LogicException, CopiesCarryTheDetails)
{
    LogicException const e(u"D", ErrorInfo::TestError());
    EXPECT_EQ(e.CollateMessagesForLog(), u"Internal error.\n\nLogicException details: D\n");
    EXPECT_EQ(std::unique_ptr<QuorvexException>(e.Clone())->CollateMessagesForLog(), e.CollateMessagesForLog());
    LogicException assigned(u"", ErrorInfo::NoError());
    assigned = e;
    EXPECT_EQ(&assigned.GetErrorInfo(), &e.GetErrorInfo());
    try {
        assigned.Throw();
    } catch (LogicException const& thrown) {
        EXPECT_EQ(thrown.GetInternalMessage(), u"D");
    }
}

[[noreturn]] void SetIdsAndExit()
{
    auto const destroyed = std::make_shared<int>(0);
    InjectLookupTStr([destroyed](unsigned int id) { return TStringCore::number(id); });
    bool ok = destroyed.use_count() == 2;
    LogicException::SetLogicExceptionMessageId(0); // leaves it open
    ok = ok && LogicException(u"", ErrorInfo::NoError()).GetMessagesFront() == u"0";
    InjectLookupTStr([](unsigned int id) { return id == 7 ? TStringCore(u"Oops") : TStringCore(); });
    ok = ok && destroyed.use_count() == 1;
    ok = ok && LogicException(u"", ErrorInfo::NoError()).GetMessagesVector().empty();
    LogicException::SetLogicExceptionMessageId(7);
    try {
        LogicException::SetLogicExceptionMessageId(8);
        ok = false;
    } catch (LogicException const& e) {
        ok = ok && e.GetInternalMessage() == u"Cannot set the logic exception message id twice." &&
             e.GetMessagesFront() == u"Oops" && e.GetErrorSource() == 3;
    }
    InjectLookupTStr(nullptr);
    try {
        throw LogicException(u"", ErrorInfo::NoError());
    } catch (std::bad_function_call const&) {
    } catch (...) {
        ok = false;
    }
    std::_Exit(ok ? 0 : 1);
}

TEST(LogicExceptionDeathTest, MessageIdAndLookup)
{
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(SetIdsAndExit(), ::testing::ExitedWithCode(0), "");
}

} // namespace
