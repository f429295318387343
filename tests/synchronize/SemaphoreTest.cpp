// TSemaphore and TSemaphoreScope. OVERFLOW_CODE and INVALID_CODE are the system's error codes.

#include <gtest/gtest.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/TSemaphore.h>

#include "support/LogicAsserts.h"
#include "support/Threads.h"

namespace {

using Semaphore = RefCntPtr<TSemaphore>;
constexpr unsigned int kMaximum = 0x7FFFFFFF;

/// Code, name, source and message of what `f` throws.
template<class F>
std::string ErrorOf(F f)
{
    try {
        f();
    } catch (QuorvexException const& e) {
        return std::to_string(e.GetErrorCode()) + ' ' + e.GetErrorName().toStdString() + ' ' +
               std::to_string(e.GetErrorSource()) + ' ' + e.GetConcatenatedMessages().toStdString();
    }
    return "nothing";
}

std::string Expected(unsigned int code, std::string const& digits, std::string const& message)
{
    return std::to_string(code) + " QuorvexException_AutoGen_0x" + digits + " 4 " + message + '\n';
}

TEST(Semaphore, CountsUnits)
{
    for (unsigned int const units : {0U, 1U, 2U, 100U}) {
        Semaphore const semaphore = TSemaphore::Construct(units);
        EXPECT_EQ(semaphore.use_count(), 1);
        for (unsigned int i = 0; i < units; ++i) {
            EXPECT_TRUE(i % 3 == 0   ? semaphore->TryAcquire(0)
                        : i % 3 == 1 ? semaphore->TryAcquire()
                                     : (semaphore->Acquire(), true));
        }
        EXPECT_FALSE(semaphore->TryAcquire());
        EXPECT_FALSE(semaphore->TryAcquire(0));
        semaphore->Release();
        EXPECT_TRUE(Elsewhere([&] { return semaphore->TryAcquire(); }));
        EXPECT_FALSE(semaphore->TryAcquire());
    }
}

TEST(Semaphore, HasAMaximum)
{
    std::string const tooMany = "TSemaphore::Construct: error=" + std::to_string(INVALID_CODE);
    for (unsigned int const units : {kMaximum + 1, 0xFFFFFFFFU}) {
        EXPECT_EQ(ErrorOf([units] { static_cast<void>(TSemaphore::Construct(units)); }),
                  Expected(0x0D655B98, "0D655B98", tooMany));
    }
    Semaphore const semaphore = TSemaphore::Construct(kMaximum);
    std::string const overflow = "TSemaphore::Release: error=" + std::to_string(OVERFLOW_CODE);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(ErrorOf([&] { semaphore->Release(); }), Expected(0x26B5EE1F, "26B5EE1F", overflow));
    }
    EXPECT_TRUE(semaphore->TryAcquire());
    semaphore->Release();
    EXPECT_NE(ErrorOf([&] { semaphore->Release(); }), "nothing");
}

TEST(Semaphore, WaitsForUnits)
{
    Semaphore const semaphore = TSemaphore::Construct(0);
    for (unsigned int const timeout : {1U, 20U}) {
        auto const start = std::chrono::steady_clock::now();
        EXPECT_FALSE(semaphore->TryAcquire(timeout));
        EXPECT_GE(Since(start).count(), timeout);
    }
    for (unsigned int const timeout : {60000U, 0xFFFFFFFEU, 0xFFFFFFFFU}) {
        std::jthread const releasing([&] { semaphore->Release(); });
        EXPECT_TRUE(semaphore->TryAcquire(timeout));
    }
    std::jthread const releasing([&] { semaphore->Release(); });
    semaphore->Acquire();
    EXPECT_FALSE(semaphore->TryAcquire());
}

TEST(SemaphoreScope, HoldsAUnit)
{
    Semaphore const semaphore = TSemaphore::Construct(2);
    {
        auto const waited = MakeRefCnt<TSemaphoreScope>(semaphore);
        RefCntPtr<TSemaphoreScope> timed = MakeRefCnt<TSemaphoreScope>(semaphore, 10U);
        RefCntPtr<TSemaphoreScope> const shared = timed;
        timed.reset();
        EXPECT_TRUE(waited->IsAcquired() && shared->IsAcquired());
        EXPECT_EQ(semaphore.use_count(), 3);

        auto const start = std::chrono::steady_clock::now();
        auto const late = MakeRefCnt<TSemaphoreScope>(semaphore, 10U);
        EXPECT_GE(Since(start).count(), 10);
        EXPECT_FALSE(late->IsAcquired());
        EXPECT_EQ(semaphore.use_count(), 3);
    }
    EXPECT_EQ(semaphore.use_count(), 1);
    EXPECT_TRUE(semaphore->TryAcquire() && semaphore->TryAcquire());
    EXPECT_FALSE(semaphore->TryAcquire()) << "two were returned, not three";
}

TEST(SemaphoreScope, OfNothing)
{
    for (HookThat const does : {HookThat::Throws, HookThat::Returns}) {
        for (bool const timed : {false, true}) {
            auto const raised = AssertRaisedBy(
                [timed] {
                    EXPECT_FALSE((timed ? MakeRefCnt<TSemaphoreScope>(Semaphore(), 0U)
                                        : MakeRefCnt<TSemaphoreScope>(Semaphore()))
                                     ->IsAcquired());
                },
                does);
            EXPECT_EQ(raised.value_or(RaisedAssert{}).condition, "m_ptr");
        }
    }
}

} // namespace
