// Call frame information and notes of any bytes: nothing outside of them is read, and a rule that the cache takes comes
// back the same.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "BuildIdNote.h"
#include "CfiRules.h"
#include "RuleCache.h"

namespace {

using namespace qvxsys::unwind;

/// In memory of its own, so that the sanitizer sees each byte beyond.
std::unique_ptr<std::uint8_t[]> Copy(std::uint8_t const* data, std::size_t size)
{
    auto copy = std::make_unique<std::uint8_t[]>(size);
    std::copy_n(data, size, copy.get());
    return copy;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size < 8) {
        return 0;
    }
    std::size_t const commonSize = std::min<std::size_t>(data[0], size - 8);
    std::uint32_t pc;
    std::memcpy(&pc, data + 1, sizeof pc);
    std::uint64_t const function = data[5] % 2 == 0 ? pc & ~0xFFFu : ~std::uint64_t{0};
    std::size_t const ownSize = size - 8 - commonSize;
    auto const common = Copy(data + 8, commonSize);
    auto const own = Copy(data + 8 + commonSize, ownSize);
    FrameRule const rule =
        ReadRule({common.get(), common.get() + commonSize, own.get(), own.get() + ownSize, function}, pc);
    auto const id = BuildIdIn({own.get(), ownSize}, data[6] % 2 == 0 ? 4 : 8);
    if (!id.empty() && (id.data() < own.get() || id.data() + id.size() > own.get() + ownSize)) {
        std::abort();
    }
    // Each address has one rule here, as it has in a process.
    static RuleCache cache;
    static std::uintptr_t fresh = 0;
    ++fresh;
    cache.Insert(fresh, rule, 1023);
    auto const entry = cache.Find(fresh);
    if (entry.Is() != RuleCache::None && RuleCache::Unpack(entry) != rule) {
        std::abort();
    }
    return 0;
}
