#include <optional>
#include <thread>

#include "TaskSupport.h"

using namespace AsyncTask;

namespace {

using Event = RefCntPtr<TCancelEvent>;

class State : public SharedStateBase
{
public:
    int cancels = 0;
    void Cancel() override { ++cancels; }
};

class Handler : public IWaitHandler
{
public:
    explicit Handler(int* alive = nullptr) : m_alive(alive) {}
    ~Handler() override
    {
        if (m_alive != nullptr) {
            // Still owned, but not installed any more.
            *m_alive = TLS::Get().GetWaitHandler() == this ? 2 : 0;
        }
    }
    void BeforeBlocking(SharedStateBase const&) noexcept override {}
    void AfterBlocking(SharedStateBase const&) noexcept override {}

private:
    int* m_alive;
};

void Cleanup()
{}

} // namespace

TEST(Tls, KeepsWhatItIsGivenPerThread)
{
    TLS::Get().SetDepth(41);
    TLS::Get().IncrementDepth();
    EXPECT_EQ(TLS::Get().GetDepth(), 42u);
    Elsewhere([] {
        TLS record = TLS::Get();
        EXPECT_EQ(record.GetDepth(), 0u);
        EXPECT_TRUE(record.GetCancelEvent() == nullptr && record.GetWaitHandler() == nullptr);
        EXPECT_EQ(record.GetThreadCleanupFunc(), nullptr);
        record.SetThreadCleanupFunc(&Cleanup);
        EXPECT_EQ(TLS::Get().GetThreadCleanupFunc(), &Cleanup);
        ExpectFailedCheck([&] { record.DecrementDepth(); }, "qvxsys/main/thread/AsyncTaskTls 96: depth > 0");
        EXPECT_EQ(record.GetDepth(), 0u);
    });
    TLS::Get().DecrementDepth();
    EXPECT_EQ(TLS::Get().GetDepth(), 41u);
    TLS::Get().SetDepth(0);
}

TEST(Tls, WaitHandlersNest)
{
    Handler outer;
    int alive = 1;
    {
        WaitHandlerScopeGuard const scope(&outer);
        auto owned = std::make_unique<Handler>(&alive);
        Handler* const inner = owned.get();
        {
            OwningWaitHandlerScopeGuard const owning(std::move(owned));
            EXPECT_EQ(TLS::Get().GetWaitHandler(), inner);
            EXPECT_EQ(alive, 1);
        }
        EXPECT_EQ(TLS::Get().GetWaitHandler(), &outer);
        EXPECT_EQ(alive, 0);
    }
    EXPECT_EQ(TLS::Get().GetWaitHandler(), nullptr);
}

TEST(CancelEvent, IsCreatedOnceAndReplacedByClearing)
{
    auto const lasting = MakeRefCnt<TCancelEvent>();
    Elsewhere([&lasting] {
        EXPECT_EQ(Cancel::Get(), nullptr);
        Cancel::Set(nullptr);
        Cancel::Create();
        Event const created = Cancel::Get();
        ASSERT_NE(created, nullptr);
        EXPECT_FALSE(created->IsSet());
        EXPECT_EQ(&Cancel::GetNonNull(), created.get());
        ExpectFailedCheck([] { Cancel::Create(); },
                          "qvxsys/main/thread/Cancel 58: TLS::Get().GetCancelEvent() == nullptr");
        EXPECT_EQ(Cancel::Get(), created);
        EXPECT_EQ(FailedCheck([&] { Cancel::Set(lasting); }), "qvxsys/main/thread/Cancel 80: !newCancelEvent");
        EXPECT_EQ(Cancel::Get(), lasting);
        EXPECT_EQ(created.use_count(), 1);
    }); // the thread ends with an event
    // On Windows what a thread does at its end may come after it was joined.
    YieldUntil([&] { return lasting.use_count() == 1; });
}

TEST(CancelEvent, ChecksWithoutOne)
{
    Elsewhere([] {
        ExpectFailedCheck([] { Cancel::ThrowIfCancelled(); }, ": m_ptr");
        ExpectFailedCheck([] { EXPECT_FALSE(Cancel::GetNonNull().IsSet()); },
                          "qvxsys/main/thread/Cancel 95: nullptr != ptr");
    });
}

TEST(CancelEvent, IsThrownWhenSet)
{
    auto const parent = MakeRefCnt<TCancelEvent>();
    auto const child = MakeRefCnt<TCancelEvent>();
    parent->Add(child);
    Cancel::CancelEventSetter const outer(parent);
    {
        Cancel::CancelEventSetter const none(nullptr);
        EXPECT_EQ(Cancel::Get(), nullptr);
    }
    EXPECT_EQ(Cancel::Get(), parent);
    Cancel::CancelEventSetter const setter(child);
    EXPECT_EQ(Cancel::Get(), child);
    Cancel::ThrowIfCancelled();
    parent->Signal();
    try {
        Cancel::ThrowIfCancelled();
        FAIL();
    } catch (CancelException const& e) {
        EXPECT_EQ(e.GetMessagesVector(), std::vector<TStringCore>{u"Canceled"});
        EXPECT_EQ(e.GetErrorCode(), 0x94A93C32);
        EXPECT_EQ(e.GetErrorName(), u"QuorvexException_AutoGen_0x94A93C32");
        EXPECT_EQ(e.GetErrorSource(), 4);
        EXPECT_FALSE(e.IsOrphanQuery());
    }
}

TEST(CancelException, KeepsClassAndFlag)
{
    auto const info = TError::ErrorInfo::TestError();
    CancelException e(u"why", info, true);
    std::unique_ptr<QuorvexException> const clone(e.Clone());
    auto const* const copy = dynamic_cast<CancelException const*>(clone.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(MessageOf<CancelException>([&] { copy->Throw(); }), u"why");
    e.SetIsOrphanQuery(false);
    EXPECT_TRUE(copy->IsOrphanQuery() && !e.IsOrphanQuery());
    EXPECT_EQ(CancelException(info).GetMessagesFront(), u"Canceled");
    EXPECT_EQ(CancelException(std::list<TStringCore>{u"a", u"b"}, info).GetMessagesVector().size(), 2u);
}

TEST(SuppressParentCancel, DeliversAtTheEndOrForgets)
{
    for (bool const clear : {false, true}) {
        auto const parent = MakeRefCnt<TCancelEvent>();
        Cancel::CancelEventSetter const setter(parent);
        Event inner;
        {
            Cancel::SuppressParentCancel scope;
            inner = Cancel::Get();
            parent->Signal();
            Cancel::ThrowIfCancelled();
            if (clear) {
                scope.ClearPendingCancel();
            }
        }
        EXPECT_EQ(Cancel::Get(), parent);
        EXPECT_EQ(parent->IsSet(), !clear);
        EXPECT_EQ(inner->IsSet(), !clear);
        inner->Reset();
        parent->Signal();
        EXPECT_TRUE(inner->IsSet()); // a child from now on
    }
}

TEST(SuppressParentCancel, WithoutParent)
{
    Elsewhere([] {
        ExpectFailedCheck([] { Cancel::SuppressParentCancel().ClearPendingCancel(); }, ": m_ptr");
        EXPECT_EQ(Cancel::Get(), nullptr);
    });
}

TEST(ScopedCancelImpersonation, ForwardsCancelAndLeavesTheOuterEvent)
{
    auto const outer = MakeRefCnt<TCancelEvent>();
    auto const dropped = MakeRefCnt<TCancelEvent>();
    auto const state = std::make_shared<State>();
    Elsewhere([&] {
        Cancel::Set(dropped);
        {
            ScopedCancelImpersonation const scope(true, outer, state);
            EXPECT_FALSE(Cancel::Get() == outer || Cancel::Get() == dropped || Cancel::Get() == nullptr);
            EXPECT_EQ(state->cancels, 0);
            Elsewhere([&outer] { outer->Signal(); });
            EXPECT_EQ(state->cancels, 1);
            EXPECT_FALSE(Cancel::Get()->IsSet()); // to be linked by the state
        }
        EXPECT_EQ(Cancel::Get(), outer);
        outer->Signal();
        EXPECT_EQ(state->cancels, 1);
        {
            ScopedCancelImpersonation const scope(true, outer, state); // set already
            EXPECT_EQ(state->cancels, 2);
        }
        Cancel::Set(nullptr);
        {
            ScopedCancelImpersonation const scope(false, nullptr, state);
            EXPECT_NE(Cancel::Get(), nullptr);
        }
        EXPECT_EQ(Cancel::Get(), nullptr);
    });
    EXPECT_EQ(outer.use_count(), 1);
    EXPECT_EQ(dropped.use_count(), 1);
}

TEST(ScopedCancelImpersonation, NeedsAThreadWithoutEventUnlessItRestores)
{
    Elsewhere([] {
        Cancel::Create();
        EXPECT_EQ(FailedCheck([] { ScopedCancelImpersonation const scope(false, nullptr, nullptr); }),
                  "qvxsys/main/thread/Cancel 58: TLS::Get().GetCancelEvent() == nullptr");
        EXPECT_NE(Cancel::Get(), nullptr);
    });
}
