// References taken and dropped on many threads at once: none is lost, and the object dies exactly once, after all
// writes to it. Run under ThreadSanitizer.

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <qvxsys/ReferenceCount.h>

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
        RefCntPtr<Shared> shared = MakeRefCnt<Shared>();
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([own = shared, t]() mutable {
                for (int i = 0; i < 50; ++i) {
                    RefCntPtr<Shared> const copy = own;
                    RefCntPtr<Shared> const another = copy;
                }
                own->written[t] = 1;
                own.reset();
            });
        }
        shared.reset();
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    EXPECT_EQ(g_deleted, kRounds);
}

} // namespace
