// What threads may do with texts at once; run under ThreadSanitizer as well.

#include <atomic>
#include <vector>

#include "support/TextPrinters.h"
#include "support/Threads.h"

namespace {

// Copies of one block are taken, written and dropped on all threads; the original stays as it was.
TEST(TextThreads, CopiesOfOneBlockAreIndependent)
{
    TStringCore const original(u'x', 100);
    InParallel(4, [&](int id) {
        auto const own = static_cast<char16_t>(u'a' + id);
        for (int i = 0; i < 3000; ++i) {
            TStringCore copy = original;
            TStringCore const second = copy;
            copy[i % 100] = own;
            copy.append(second);
            ASSERT_EQ(copy[i % 100], own);
            ASSERT_EQ(second, original);
        }
    });
    EXPECT_EQ(original, TStringCore(u'x', 100));
}

// The last owner frees the block, whichever thread that is, and a sole owner writes in place.
TEST(TextThreads, OwnershipMovesBetweenThreads)
{
    for (int round = 0; round < 300; ++round) {
        std::vector<TStringCore> copies(4, TStringCore(u'x', 200));
        InParallel(4, [&](int id) {
            TStringCore mine = std::move(copies[static_cast<std::size_t>(id)]);
            mine[0] = u'y';
            ASSERT_EQ(mine[1], u'x');
        });
    }
}

// Lazily filled tables, the choice of kernels and the rule texts are first used by all threads at once.
TEST(TextThreads, FirstUseFromManyThreads)
{
    std::atomic<int> spaces{0};
    InParallel(4, [&](int id) {
        int found = 0;
        for (char32_t c = 0; c < 0x3100; ++c) {
            found += TCType::isSpace(static_cast<char16_t>(c)) ? 1 : 0;
            static_cast<void>(TCType::FoldCase(static_cast<char16_t>(c)));
        }
        spaces += found;
        TStringCore const text = "caf\xC3\xA9 \xE2\x82\xAC";
        ASSERT_EQ(text, u"caf\u00E9 \u20AC");
        ASSERT_EQ(QvxICU::t_getIgnoreDigitsRule().length(), 55);
        ASSERT_EQ(text.indexOf(u"\u00C9", TStringCore::CaseInsensitive), 3);
        ASSERT_EQ(text.toUpper(), u"CAF\u00C9 \u20AC");
        ASSERT_EQ(text.toUpper().toLower(), text);
        quorvex::cpu::LimitInstructionSet(static_cast<quorvex::cpu::InstructionSet>(id % 3));
        ASSERT_EQ(text.toStdString(), "caf\xC3\xA9 \xE2\x82\xAC");
    });
    EXPECT_EQ(spaces, 4 * 25);
    quorvex::cpu::LimitInstructionSet(quorvex::cpu::DetectedInstructionSet());
}

} // namespace
