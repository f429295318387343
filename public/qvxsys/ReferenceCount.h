#pragma once
// Objects that carry their own reference count (RefCntObject), and the pointer that keeps it (RefCntPtr).
//
//     class Session : public RefCntObject
//     {
//     public:
//         int requests = 0;
//
//     protected:
//         ~Session() override = default;                      // the last RefCntPtr deletes it
//     };
//
//     RefCntPtr<Session> session = MakeRefCnt<Session>();
//     RefCntPtr<Session> const other = session;               // two references
//     other->requests += 1;
//     session.reset();                                        // one
//
// Counts are changed atomically: pointers to one object may be copied and dropped on any threads, and the thread that
// drops the last one deletes the object. One pointer object must not be used from two threads when either writes it.
// A constructor may give references to its object away. One that is taken and dropped again before the constructor has
// returned is the last one, and deletes the object: leave that to a function that is called afterwards.
//
// As the count is in the object, a plain pointer may be made a RefCntPtr again at any time while it is referenced.

#include <atomic>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <type_traits>
#include <utility>

#include <qvxsys/Platform.h>

template<class T, class Base>
class RefCntPtr;

namespace qvxsys::detail {

/// Raises the assertion "m_ptr"; returns when the logic-assert hook does.
QVXSYS_API void NullRefCntPtr();

} // namespace qvxsys::detail

/// The count itself. `Derived` has the destructor that the last release calls.
template<class Derived>
class RefCntObjectNonVirtualBase
{
public:
    /// Takes a reference; returns the new count.
    std::int32_t AddReference() const noexcept { return m_references.fetch_add(1) + 1; }
    /// Drops a reference; returns the new count. The drop from 1 to 0 deletes the object.
    std::int32_t RemoveReference() const
    {
        std::int32_t const left = RemoveReferenceInternal();
        if (left == 0) {
            delete static_cast<Derived const*>(this);
        }
        return left;
    }
    /// The count at this moment; exact only while no other thread changes it.
    [[nodiscard]] std::int32_t UseCount() const noexcept { return m_references.load(); }

protected:
    RefCntObjectNonVirtualBase() noexcept = default;
    /// A copy is a new object that nobody refers to yet.
    RefCntObjectNonVirtualBase(RefCntObjectNonVirtualBase const&) noexcept {}
    RefCntObjectNonVirtualBase& operator=(RefCntObjectNonVirtualBase const&) noexcept { return *this; }
    ~RefCntObjectNonVirtualBase() = default;

    /// Drops a reference without ever deleting; returns the new count.
    std::int32_t RemoveReferenceInternal() const noexcept { return m_references.fetch_sub(1) - 1; }

private:
    template<class T, class Base>
    friend class RefCntPtr;

    /// For a new object that goes to its first owner: no other thread can see it.
    void SetRefCountToOne() const noexcept { m_references.store(1, std::memory_order_relaxed); }

    mutable std::atomic<std::int32_t> m_references = 0;
    // Shows live objects in memory dumps; never read.
    [[maybe_unused]] std::uint32_t m_marker = 0xC466E877;
};

/// The base of shared classes. Give them a protected destructor, so that nobody deletes them by hand.
class QVXSYS_API RefCntObject : public RefCntObjectNonVirtualBase<RefCntObject>
{
protected:
    RefCntObject() noexcept = default;
    RefCntObject(RefCntObject const&) noexcept = default;
    RefCntObject& operator=(RefCntObject const&) noexcept = default;
    virtual ~RefCntObject();

private:
    friend class RefCntObjectNonVirtualBase<RefCntObject>;
};

static_assert(sizeof(RefCntObjectNonVirtualBase<RefCntObject>) == 8 && sizeof(std::atomic<std::int32_t>) == 4);
static_assert(sizeof(RefCntObject) == 16);

/// How a pointer takes an object that it is given.
struct AdoptReference
{};
inline constexpr AdoptReference kAdoptReference;

/// Holds one reference to a T, or is null. As large as a plain pointer. `Base` is the class of T that counts.
/// Dereferencing a null pointer raises the logic assertion "m_ptr" (see LogicException.h). When its hook returns, -> is
/// a null pointer and * ends the program.
template<class T, class Base = RefCntObject>
class RefCntPtr
{
public:
    /// What is pointed at.
    using element_type = T;

    constexpr RefCntPtr() noexcept = default;
    /// Null.
    constexpr RefCntPtr(std::nullptr_t) noexcept {}
    /// Takes a reference of its own.
    RefCntPtr(T* object) noexcept : m_ptr(object)
    {
        if (m_ptr != nullptr) {
            Counted(m_ptr)->AddReference();
        }
    }
    /// Takes over a reference that the caller holds, as release() gives it up.
    RefCntPtr(T* object, AdoptReference) noexcept : m_ptr(object) {}
    RefCntPtr(RefCntPtr const& other) noexcept : RefCntPtr(other.m_ptr) {}
    RefCntPtr(RefCntPtr&& other) noexcept : m_ptr(other.release()) {}
    /// Up the class tree, and to const.
    template<class U>
    requires std::convertible_to<U*, T*> RefCntPtr(RefCntPtr<U, Base> const& other)
    noexcept : RefCntPtr(other.get()) {}
    template<class U>
    requires std::convertible_to<U*, T*> RefCntPtr(RefCntPtr<U, Base>&& other)
    noexcept : m_ptr(other.release()) {}
    ~RefCntPtr()
    {
        if (m_ptr != nullptr) {
            Counted(m_ptr)->RemoveReference();
        }
    }

    /// From any pointer that converts. The old object is dropped last, so assigning from what it owns works.
    RefCntPtr& operator=(RefCntPtr const& other) noexcept
    {
        RefCntPtr(other).swap(*this);
        return *this;
    }
    RefCntPtr& operator=(RefCntPtr&& other) noexcept
    {
        RefCntPtr(std::move(other)).swap(*this);
        return *this;
    }

    /// A new object with its first reference.
    template<class... Arguments>
    [[nodiscard]] static RefCntPtr Make(Arguments&&... arguments)
    {
        T* const object = new T(std::forward<Arguments>(arguments)...);
        if (Counted(object)->UseCount() == 0) [[likely]] {
            Counted(object)->SetRefCountToOne();
        } else {
            Counted(object)->AddReference(); // the constructor has given some away
        }
        return RefCntPtr(object, kAdoptReference);
    }

    /// Lets go of the object.
    void reset() noexcept { RefCntPtr().swap(*this); }
    /// Takes another object, with one more reference; null for none.
    void reset(T* object) noexcept { RefCntPtr(object).swap(*this); }
    /// Takes another object, whose reference it takes over.
    void reset(T* object, AdoptReference) noexcept { RefCntPtr(object, kAdoptReference).swap(*this); }
    /// Becomes null and leaves the reference to the caller.
    [[nodiscard]] T* release() noexcept { return std::exchange(m_ptr, nullptr); }
    void swap(RefCntPtr& other) noexcept { std::swap(m_ptr, other.m_ptr); }
    friend void swap(RefCntPtr& a, RefCntPtr& b) noexcept { a.swap(b); }

    /// Null or the object; no check.
    [[nodiscard]] T* get() const noexcept { return m_ptr; }
    /// Whether it points at an object.
    [[nodiscard]] explicit operator bool() const noexcept { return m_ptr != nullptr; }
    /// The references to the object; 0 for null.
    [[nodiscard]] std::int32_t use_count() const noexcept { return m_ptr != nullptr ? Counted(m_ptr)->UseCount() : 0; }

    [[nodiscard]] T* operator->() const
    {
        if (m_ptr == nullptr) [[unlikely]] {
            qvxsys::detail::NullRefCntPtr();
        }
        return m_ptr;
    }
    [[nodiscard]] T& operator*() const
    {
        if (m_ptr == nullptr) [[unlikely]] {
            qvxsys::detail::NullRefCntPtr();
            std::terminate();
        }
        return *m_ptr;
    }

    friend bool operator==(RefCntPtr const& a, std::nullptr_t) noexcept { return a.m_ptr == nullptr; }

private:
    static Base const* Counted(T const* object) noexcept { return object; }

    T* m_ptr = nullptr;
};

/// By address.
template<class T, class U, class Base>
[[nodiscard]] bool operator==(RefCntPtr<T, Base> const& a, RefCntPtr<U, Base> const& b) noexcept
{
    return a.get() == b.get();
}
template<class T, class U, class Base>
[[nodiscard]] bool operator==(RefCntPtr<T, Base> const& a, U* b) noexcept
{
    return a.get() == b;
}
template<class T, class U, class Base>
[[nodiscard]] std::strong_ordering operator<=>(RefCntPtr<T, Base> const& a, RefCntPtr<U, Base> const& b) noexcept
{
    return std::compare_three_way()(a.get(), b.get());
}

/// A new T with its first reference.
template<class T, class... Arguments>
[[nodiscard]] RefCntPtr<T, RefCntObject> MakeRefCnt(Arguments&&... arguments)
{
    return RefCntPtr<T, RefCntObject>::Make(std::forward<Arguments>(arguments)...);
}

/// The same object as a U; null when it is none (dynamic) or as the caller knows it to be (static).
template<class U, class T, class Base>
[[nodiscard]] RefCntPtr<U, Base> StaticPointerCast(RefCntPtr<T, Base> const& pointer) noexcept
{
    return RefCntPtr<U, Base>(static_cast<U*>(pointer.get()));
}
template<class U, class T, class Base>
[[nodiscard]] RefCntPtr<U, Base> DynamicPointerCast(RefCntPtr<T, Base> const& pointer) noexcept
{
    return RefCntPtr<U, Base>(dynamic_cast<U*>(pointer.get()));
}

/// By the object's address.
template<class T, class Base>
struct std::hash<RefCntPtr<T, Base>>
{
    std::size_t operator()(RefCntPtr<T, Base> const& pointer) const noexcept { return std::hash<T*>()(pointer.get()); }
};
