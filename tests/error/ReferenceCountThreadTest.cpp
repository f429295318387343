// References taken and dropped on many threads at once: none is lost, and the object dies exactly once, after all
// writes to it. Run under ThreadSanitizer.

#include <array>
#include <atomic>

#include <gtest/gtest.h>
#include <qvxsys/ReferenceCount.h>

#include "support/Threads.h"

namespace {

constexpr int kThreads = 4;
std::atomic<int> g_deleted = 0;

class Shared : public RefCntObject
{
public:
    int written[kThreads] = {};

protected:
    ~Shared() override
    {
        // Reads what the threads wrote before they let go.
        int sum = 0;
        for (int const n : written) {
            sum += n;
        }
        g_deleted += sum == kThreads ? 1 : 1000;
    }
};

TEST(ReferenceCountThreads, LastOneDeletes)
{
    constexpr int kRounds = 200;
    for (int round = 0; round < kRounds; ++round) {
        std::array<RefCntPtr<Shared>, kThreads> owners;
        owners.fill(MakeRefCnt<Shared>());
        InParallel(kThreads, [&owners](int t) {
            RefCntPtr<Shared> own = std::move(owners[static_cast<std::size_t>(t)]);
            for (int i = 0; i < 50; ++i) {
                RefCntPtr<Shared> const copy = own;
                RefCntPtr<Shared> const another = copy;
            }
            own->written[t] = 1;
            own.reset();
        });
    }
    EXPECT_EQ(g_deleted, kRounds);
}

} // namespace
