#pragma once
// The little of std::vector that the formatter needs, with room for the first N elements in the object itself.

#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace qvxsys::detail {

template<class T, std::size_t N>
class InlineVector
{
public:
    InlineVector() noexcept = default;
    InlineVector(InlineVector const& other) { AppendCopies(other); }
    InlineVector(InlineVector&& other) noexcept { Take(other); }
    InlineVector& operator=(InlineVector const& other)
    {
        if (this != &other) {
            InlineVector copy(other);
            *this = std::move(copy);
        }
        return *this;
    }
    InlineVector& operator=(InlineVector&& other) noexcept
    {
        if (this != &other) {
            Discard();
            Take(other);
        }
        return *this;
    }
    ~InlineVector() { Discard(); }

    [[nodiscard]] std::size_t size() const noexcept { return m_size; }
    [[nodiscard]] T* begin() noexcept { return m_data; }
    [[nodiscard]] T* end() noexcept { return m_data + m_size; }
    [[nodiscard]] T const* begin() const noexcept { return m_data; }
    [[nodiscard]] T const* end() const noexcept { return m_data + m_size; }
    [[nodiscard]] T const& operator[](std::size_t i) const noexcept { return m_data[i]; }

    /// A new last element made of `from`, which may be an element of this vector.
    template<class From>
    void push_back(From&& from)
    {
        if (m_size == m_capacity) [[unlikely]] {
            PushBackGrowing(T(std::forward<From>(from)));
            return;
        }
        ::new (static_cast<void*>(m_data + m_size)) T(std::forward<From>(from));
        ++m_size;
    }
    /// A new last element, what make() returns: built where it stays, as a move right behind it would wait for its
    /// units to reach the cache.
    template<class Make>
    void PushMade(Make make)
    {
        if (m_size == m_capacity) [[unlikely]] {
            PushBackGrowing(make());
            return;
        }
        ::new (static_cast<void*>(m_data + m_size)) T(make());
        ++m_size;
    }
    void clear() noexcept
    {
        std::destroy_n(m_data, m_size);
        m_size = 0;
    }

private:
    static_assert(std::is_nothrow_move_constructible_v<T>);

    [[nodiscard]] T* Room() noexcept { return reinterpret_cast<T*>(m_room); }

    void Grow(std::size_t capacity)
    {
        T* const data = std::allocator<T>().allocate(capacity);
        std::uninitialized_move_n(m_data, m_size, data);
        std::destroy_n(m_data, m_size);
        Free();
        m_data = data;
        m_capacity = capacity;
    }
    [[gnu::noinline]] void PushBackGrowing(T&& value)
    {
        Grow(2 * m_capacity);
        ::new (static_cast<void*>(m_data + m_size)) T(std::move(value));
        ++m_size;
    }
    void AppendCopies(InlineVector const& other)
    {
        if (other.m_size > m_capacity) {
            Grow(other.m_size);
        }
        try {
            std::uninitialized_copy_n(other.m_data, other.m_size, m_data);
        } catch (...) {
            Free();
            throw;
        }
        m_size = other.m_size;
    }
    // This vector owns nothing.
    void Take(InlineVector& other) noexcept
    {
        if (other.m_data != other.Room()) {
            m_data = std::exchange(other.m_data, other.Room());
            m_capacity = std::exchange(other.m_capacity, N);
        } else {
            m_data = Room();
            m_capacity = N;
            std::uninitialized_move_n(other.m_data, other.m_size, m_data);
            std::destroy_n(other.m_data, other.m_size);
        }
        m_size = std::exchange(other.m_size, 0);
    }
    void Free() noexcept
    {
        if (m_data != Room()) {
            std::allocator<T>().deallocate(m_data, m_capacity);
        }
    }
    void Discard() noexcept
    {
        std::destroy_n(m_data, m_size);
        Free();
    }

    T* m_data = Room();
    std::size_t m_size = 0;
    std::size_t m_capacity = N;
    alignas(T) std::byte m_room[N * sizeof(T)];
};

} // namespace qvxsys::detail
