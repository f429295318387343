#pragma once
// Replaces the program's operator new by one that can be made to fail; for one source of a program. (A DLL has an
// operator new of its own.)

#include <cstddef>
#include <cstdlib>
#include <new>

/// While it lives, the call number `nth` of operator new on this thread fails; 0 is the next one.
class FailingNew
{
public:
    explicit FailingNew(int nth) { s_left = nth; }
    ~FailingNew() { s_left = -1; }
    FailingNew(FailingNew const&) = delete;
    FailingNew& operator=(FailingNew const&) = delete;

    static inline thread_local int s_left = -1; ///< calls before the one that fails; negative: none does
};

[[gnu::noinline]] void* operator new(std::size_t bytes)
{
    bool const fails = FailingNew::s_left >= 0 && FailingNew::s_left-- == 0;
    void* const memory = fails ? nullptr : std::malloc(bytes == 0 ? 1 : bytes);
    return memory != nullptr ? memory : throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
