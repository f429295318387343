#include "PageMap_linux.h"

#include <algorithm>
#include <iterator>

#include <sys/ioctl.h>

namespace qvxsys::dump {
namespace {

// PAGEMAP_SCAN(2const), which headers older than those of Linux 6.7 do not have.
struct ScannedPages
{
    std::uint64_t start, end, categories;
};
struct ScanRequest
{
    std::uint64_t size, flags, start, end, walkEnd, pages, pagesLength, mostPages;
    std::uint64_t invertedCategories, allOf, anyOf, told;
};
constexpr unsigned long kScan = _IOWR('f', 16, ScanRequest);
constexpr std::uint64_t kPresent = 1 << 3;
constexpr std::uint64_t kSwapped = 1 << 4;

} // namespace

PageMap::PageMap(unsigned int id) noexcept : m_file(kernel::Open(ShortPath() << "/proc/" << id << "/pagemap", O_RDONLY))
{}

PageMap::~PageMap()
{
    if (m_file >= 0) {
        kernel::Close(m_file);
    }
}

bool PageMap::AddRuns(std::uint64_t start, std::uint64_t end, ArenaArray<MemoryRange>& runs) noexcept
{
    m_first = runs.Size();
    if (m_file < 0 || Scan(start, end, runs)) {
        return m_file >= 0;
    }
    runs.Shrink(m_first);
    return Read(start, end, runs);
}

void PageMap::AddRun(std::uint64_t start, std::uint64_t end, ArenaArray<MemoryRange>& runs) const noexcept
{
    constexpr std::uint64_t kBridge = 8 * kPage;
    if (runs.Size() > m_first) {
        MemoryRange& last = runs[runs.Size() - 1];
        if (start - (last.address + last.size) <= kBridge) {
            last.size = end - last.address;
            return;
        }
    }
    runs.Add({start, end - start});
}

/// From Linux 6.7 on: takes as long as there are pages, not as there is address space.
bool PageMap::Scan(std::uint64_t start, std::uint64_t end, ArenaArray<MemoryRange>& runs) noexcept
{
    ScannedPages found[256];
    ScanRequest request{};
    request.size = sizeof request;
    request.end = end;
    request.pages = reinterpret_cast<std::uintptr_t>(found);
    request.pagesLength = std::size(found);
    request.anyOf = kPresent | kSwapped;
    request.told = kPresent | kSwapped;
    while (start < end) {
        request.start = start;
        long const count = kernel::Call(SYS_ioctl, m_file, static_cast<long>(kScan), kernel::Word(&request));
        if (kernel::Failed(count) || request.walkEnd <= start) {
            return false;
        }
        for (long i = 0; i < count; ++i) {
            AddRun(found[i].start, found[i].end, runs);
        }
        start = request.walkEnd;
    }
    return true;
}

/// 64 bits a page, bit 63 present, bit 62 swapped out (Documentation/admin-guide/mm/pagemap.rst).
bool PageMap::Read(std::uint64_t start, std::uint64_t end, ArenaArray<MemoryRange>& runs) noexcept
{
    std::uint64_t entries[1024];
    while (start < end) {
        std::size_t const pages =
            static_cast<std::size_t>(std::min<std::uint64_t>((end - start) / kPage, std::size(entries)));
        long const size = kernel::ReadAt(m_file, entries, pages * sizeof entries[0], start / kPage * sizeof entries[0]);
        if (size < static_cast<long>(sizeof entries[0])) {
            return false;
        }
        for (std::size_t i = 0; i < static_cast<std::size_t>(size) / sizeof entries[0]; ++i, start += kPage) {
            if (entries[i] >> 62 != 0) {
                AddRun(start, start + kPage, runs);
            }
        }
    }
    return true;
}

} // namespace qvxsys::dump
