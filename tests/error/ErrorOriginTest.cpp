// What is recorded beside an error when a program asks for it.

#include <algorithm>
#include <memory>

#include "support/TextPrinters.h"

namespace {

using namespace TError;

class Recording
{
public:
    explicit Recording(OriginHook hook) : m_before(SetOriginHook(hook)) {}
    ~Recording() { SetOriginHook(m_before); }
    Recording(Recording const&) = delete;
    Recording& operator=(Recording const&) = delete;

private:
    OriginHook m_before;
};

QuorvexException Caught()
{
    try {
        TScanStringCore(u"x").skipInt();
    } catch (QuorvexException const& e) {
        return e;
    }
    return {};
}

TEST(ErrorOrigin, KnowsTheThrowSite)
{
    QuorvexException const without = Caught();
    EXPECT_EQ(GetOrigin(without.GetErrorInfo()), nullptr);
    Recording const recording(&RecordLocation);
    QuorvexException const e = Caught();
    EXPECT_EQ(e.CollateMessagesForLog(), without.CollateMessagesForLog());
    EXPECT_EQ(e.GetErrorName(), without.GetErrorName());
    ErrorOrigin const* const origin = GetOrigin(e.GetErrorInfo());
    ASSERT_NE(origin, nullptr);
    EXPECT_STREQ(origin->location.file, "qvxsys/main/qvxsys/message/TScanStringCore.cpp");
    EXPECT_STREQ(origin->location.function, "lengthInt");
    EXPECT_GT(origin->location.line, 0u);
    EXPECT_EQ(origin->frameCount, 0);
    EXPECT_EQ(GetOrigin(QuorvexException(e).GetErrorInfo()), origin);
    // A cause takes its origin along, and an error made of it has its own.
    QuorvexException const outer(u"outer", LocatedErrorInfo(ErrorInfo(e.GetError(), e)));
    unsigned const line = __LINE__ - 1;
    EXPECT_EQ(GetOrigin(outer.GetErrorInfo())->location.line, line);
    EXPECT_STREQ(GetOrigin(*outer.GetErrorInfo().inner)->location.function, "lengthInt");
}

// Not inlined: its frame is looked for.
[[gnu::noinline]] std::unique_ptr<QuorvexException> Make(void** caller)
{
    *caller = __builtin_extract_return_addr(__builtin_return_address(0));
    return std::make_unique<QuorvexException>(u"x", ErrorInfo::TestError());
}

TEST(ErrorOrigin, TraceHoldsTheCallers)
{
    Recording const recording(&RecordTrace);
    void* caller = nullptr;
    auto const e = Make(&caller);
    ErrorOrigin const* const origin = GetOrigin(e->GetErrorInfo());
    ASSERT_NE(origin, nullptr);
    EXPECT_EQ(origin->location.line, 0u);
    EXPECT_LE(origin->frameCount, ErrorOrigin::kMaxFrames);
    bool const found =
        std::find(origin->frames, origin->frames + origin->frameCount, caller) != origin->frames + origin->frameCount;
    EXPECT_TRUE(found) << origin->frameCount << " frames";
}

TEST(ErrorOrigin, OwnHookSeesTheError)
{
    static unsigned seen = 0;
    Recording const recording([](ErrorInfo const& info, ErrorOrigin& origin) noexcept {
        seen = info.error.GetCode();
        origin.frameCount = 1;
    });
    QuorvexException const e(u"x", ErrorInfo(QuorvexError::MakeError(77, u""), SourceTest));
    EXPECT_EQ(seen, 77u);
    EXPECT_EQ(GetOrigin(e.GetErrorInfo())->frameCount, 1);
}

} // namespace
