#pragma once
// Memory straight from the kernel, given back all at once. Running out is remembered, not thrown: Take() then returns
// null, and whoever uses the arena asks Failed() once at the end. It is mapped by the C library's functions, which are
// bare system calls but for errno, since race detectors must learn when an address is used anew.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <span>
#include <string_view>
#include <type_traits>

#include <sys/mman.h>

#include "KernelCalls_linux.h"

namespace qvxsys::dump {

inline constexpr std::size_t kPage = 4096; // of x86-64

class Arena
{
public:
    Arena() noexcept = default;
    Arena(Arena const&) = delete;
    Arena& operator=(Arena const&) = delete;
    ~Arena()
    {
        while (m_chunks != nullptr) {
            Chunk* const next = m_chunks->next;
            ::munmap(m_chunks, m_chunks->size);
            m_chunks = next;
        }
    }

    [[nodiscard]] void* Take(std::size_t size) noexcept
    {
        size = (size + 15) & ~std::size_t{15};
        if (size > m_left && !Grow(size)) {
            return nullptr;
        }
        void* const result = m_next;
        m_next += size;
        m_left -= size;
        return result;
    }

    [[nodiscard]] bool Failed() const noexcept { return m_failed; }

private:
    struct alignas(16) Chunk
    {
        Chunk* next;
        std::size_t size;
    };

    bool Grow(std::size_t least) noexcept
    {
        constexpr std::size_t kChunk = 1 << 20;
        std::size_t const size = (least + sizeof(Chunk) + kChunk - 1) & ~(kChunk - 1);
        void* const where = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (size < least || where == MAP_FAILED) {
            m_failed = true;
            return false;
        }
        m_chunks = new (where) Chunk{m_chunks, size};
        m_next = reinterpret_cast<std::byte*>(m_chunks + 1);
        m_left = size - sizeof(Chunk);
        return true;
    }

    Chunk* m_chunks = nullptr;
    std::byte* m_next = nullptr;
    std::size_t m_left = 0;
    bool m_failed = false;
};

/// A growing array in an arena, of values that are copied as bytes. What does not fit is dropped.
template<class T>
class ArenaArray
{
    static_assert(std::is_trivially_copyable_v<T>);

public:
    explicit ArenaArray(Arena& arena) noexcept : m_arena(&arena) {}

    /// The new last element, zeroed; null without memory.
    T* Add() noexcept { return Append(nullptr, 1); }
    void Add(T const& value) noexcept { Append(&value, 1); }
    /// `count` elements, zeroed when `values` is null; the first of them.
    T* Append(T const* values, std::size_t count) noexcept
    {
        if (count == 0) {
            return m_data;
        }
        if (count > m_capacity - m_size && !Reserve(m_size + count)) {
            return nullptr;
        }
        T* const first = m_data + m_size;
        if (values != nullptr) {
            std::memcpy(static_cast<void*>(first), values, count * sizeof(T));
        } else {
            std::memset(static_cast<void*>(first), 0, count * sizeof(T));
        }
        m_size += count;
        return first;
    }
    bool Reserve(std::size_t capacity) noexcept
    {
        capacity = capacity < 2 * m_capacity ? 2 * m_capacity : capacity;
        capacity = capacity < 64 ? 64 : capacity;
        T* const data = static_cast<T*>(m_arena->Take(capacity * sizeof(T)));
        if (data == nullptr) {
            return false;
        }
        if (m_size != 0) {
            std::memcpy(static_cast<void*>(data), m_data, m_size * sizeof(T));
        }
        m_data = data;
        m_capacity = capacity;
        return true;
    }
    void Shrink(std::size_t size) noexcept { m_size = size; }

    [[nodiscard]] std::size_t Size() const noexcept { return m_size; }
    [[nodiscard]] T* Data() const noexcept { return m_data; }
    T& operator[](std::size_t i) const noexcept { return m_data[i]; }
    [[nodiscard]] T* begin() const noexcept { return m_data; }
    [[nodiscard]] T* end() const noexcept { return m_data + m_size; }

private:
    Arena* m_arena;
    T* m_data = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

using ArenaBytes = ArenaArray<char>;

/// A path put together from pieces and numbers, terminated, cut at 255 bytes.
class ShortPath
{
public:
    ShortPath& operator<<(std::string_view piece) noexcept
    {
        for (char const c : piece) {
            if (m_length + 1 < sizeof m_text) {
                m_text[m_length++] = c;
            }
        }
        m_text[m_length] = 0;
        return *this;
    }
    ShortPath& operator<<(std::uint64_t number) noexcept
    {
        char digits[20];
        std::size_t at = sizeof digits;
        do {
            digits[--at] = static_cast<char>('0' + number % 10);
            number /= 10;
        } while (number != 0);
        return *this << std::string_view(digits + at, sizeof digits - at);
    }
    operator char const*() const noexcept { return m_text; }

private:
    char m_text[256] = {};
    std::size_t m_length = 0;
};

/// Appends what the file has to `bytes`, up to `limit` bytes. False if it cannot be opened.
inline bool ReadFile(char const* path, ArenaBytes& bytes, std::size_t limit) noexcept
{
    int const file = kernel::Open(path, O_RDONLY);
    if (file < 0) {
        return false;
    }
    std::size_t const end = bytes.Size() + limit;
    char piece[4096];
    for (long count; bytes.Size() < end && (count = kernel::Read(file, piece, sizeof piece)) > 0;) {
        std::size_t const room = end - bytes.Size();
        bytes.Append(piece, static_cast<std::size_t>(count) < room ? static_cast<std::size_t>(count) : room);
    }
    kernel::Close(file);
    return true;
}

} // namespace qvxsys::dump
