// Call frame information and notes of any bytes: nothing outside of them is read, and a rule that the cache takes comes
// back the same.

#include "BuildIdNote.h"
#include "CfiRules.h"
#include "Fuzz.h"
#include "RuleCache.h"

using namespace qvxsys::unwind;

void Fuzz(std::uint8_t const* data, std::size_t size)
{
    if (size < 8) {
        return;
    }
    std::size_t const commonSize = std::min<std::size_t>(data[0], size - 8);
    std::uint32_t pc;
    std::memcpy(&pc, data + 1, sizeof pc);
    std::uint64_t const function = data[5] % 2 == 0 ? pc & ~0xFFFu : ~std::uint64_t{0};
    std::size_t const ownSize = size - 8 - commonSize;
    auto const common = Exact<std::uint8_t>(data + 8, commonSize);
    auto const own = Exact<std::uint8_t>(data + 8 + commonSize, ownSize);
    FrameRule const rule =
        ReadRule({common.get(), common.get() + commonSize, own.get(), own.get() + ownSize, function}, pc);
    auto const id = BuildIdIn({own.get(), ownSize}, data[6] % 2 == 0 ? 4 : 8);
    Require(id.empty() || (id.data() >= own.get() && id.data() + id.size() <= own.get() + ownSize));
    // Each address has one rule here, as it has in a process.
    static RuleCache cache;
    static std::uintptr_t fresh = 0;
    ++fresh;
    cache.Insert(fresh, rule, 1023);
    auto const entry = cache.Find(fresh);
    Require(entry.Is() == RuleCache::None || RuleCache::Unpack(entry) == rule);
}
