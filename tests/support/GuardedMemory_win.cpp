#include "support/GuardedMemory.h"

#include <stdexcept>

#include "WindowsApi.h"

namespace {

std::size_t PageSize()
{
    SYSTEM_INFO info{};
    GetSystemInfo(&info);
    return info.dwPageSize;
}

} // namespace

// Pages that are reserved only may not be touched.
GuardedMemory::GuardedMemory(std::size_t bytes) : page_(PageSize()), size_((bytes + page_ - 1) / page_ * page_)
{
    void* const all = VirtualAlloc(nullptr, size_ + 2 * page_, MEM_RESERVE, PAGE_NOACCESS);
    if (all == nullptr) {
        throw std::runtime_error("VirtualAlloc");
    }
    begin_ = static_cast<char*>(all) + page_;
    if (size_ != 0 && VirtualAlloc(begin_, size_, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
        throw std::runtime_error("VirtualAlloc");
    }
}

GuardedMemory::~GuardedMemory()
{
    VirtualFree(begin_ - page_, 0, MEM_RELEASE);
}
