#pragma once
// Objects of which a process has one: made at first use, destroyed together when the host says so, and not made again
// after that. Neither depends on the order of global constructors and destructors.
//
//     constinit TStaticObject<Cache> g_cache;                     // nothing runs before main
//     constinit TStaticObject<Codec const> g_codec;
//
//     void Work()
//     {
//         Cache* const cache = g_cache.Get();                     // made by the first call, of whatever thread
//         Codec const* const codec = g_codec.Get([] { return Codec{"utf-8"}; });
//         if (cache != nullptr && codec != nullptr) {             // null when the process is shutting down
//             cache->Store(codec->name, 1);
//         }
//     }
//
//     int main()
//     {
//         InitializeStaticRepository();                           // optional: the first use does it
//         Work();
//         DeinitializeStaticRepository();                         // newest first
//     }
//
// What the host does not destroy stays until the process ends, without a destructor being run: threads may still use
// it.
//
// TStaticObject is the comfortable way; InitOnce is what it stands on, for objects that are kept in a boost::any.
//
// Any thread may call anything here. An object is made exactly once, by one thread, while others that want any object
// which is not there yet wait. DeinitializeStaticRepository is for the time when no other thread uses the objects any
// more; other threads may still ask for them, and get null.

#include <atomic>
#include <concepts>
#include <functional>
#include <memory>
#include <type_traits>

#include <qvxsys/Platform.h>

namespace boost {
class any;
}

/// Makes the repository if there is none, so that objects can be made (again). Has no effect while objects are being
/// destroyed by the calling thread.
QVXSYS_API void InitializeStaticRepository();

/// Destroys all objects, newest first, and sets each one's slot to null after its destructor has run. From its
/// beginning on no object is made and slots stay null, until InitializeStaticRepository is called: a destructor still
/// finds the objects that are older than its own in their slots, not the newer ones. Does nothing when there is no
/// repository, or when a destructor that it runs calls it. Throws QuorvexException (0x8964FD20) with the text
/// "DeinitializeStaticRepository: an object is being created." when it is called by the creation of an object.
QVXSYS_API void DeinitializeStaticRepository();

/// Sees to it that `*slot` points to the object that belongs to `slot`, the address of a null pointer of static storage
/// (it is written by DeinitializeStaticRepository). Does nothing when `slot` is null, when `*slot` is not, or after
/// DeinitializeStaticRepository. Otherwise `create(arg)` makes the holder, which the repository owns from then on, and
/// `extract(holder)` tells the object's address. A filled slot costs one read, without a lock; read by other means, a
/// slot may be looked at by a thread after its own call of InitOnce.
///
/// `create` may call InitOnce for other slots. An object takes its place in the order when its creation begins: one
/// that is created by the creation of another is newer, and so destroyed before it.
///
/// When `create` throws or returns null, everything is as before and the next call tries again; what it has created for
/// other slots stays. When `extract` throws or returns null, the holder stays and the next call extracts again. Throws
/// what they throw, std::bad_alloc, a LogicException when one of them is needed and null, and QuorvexException
/// (0x50D0BB91) with the text "InitOnce: the object is needed for its own creation." when `create` asks for its own
/// slot.
QVXSYS_API void InitOnce(void** slot, boost::any* (*create)(void* arg), void* arg, void* (*extract)(boost::any*));

namespace qvxsys::detail {

/// InitOnce without a boost::any: `make` returns the object (null for none), `destroy` ends it. It takes its place in
/// the order when it is complete.
QVXSYS_API void InitStaticObject(void** slot, void* (*make)(void* context), void* context,
                                 void (*destroy)(void* object) noexcept);

} // namespace qvxsys::detail

/// The one object of its kind in the process, kept in the static repository. Has static storage: a global, a static
/// member or a static variable. Objects are ordered by when they were complete, so what the making of an object has
/// asked for outlives it.
template<class T>
class TStaticObject
{
public:
    constexpr TStaticObject() noexcept = default;
    TStaticObject(TStaticObject const&) = delete;
    TStaticObject& operator=(TStaticObject const&) = delete;

    /// The object, made by `new T()` if it is not there yet. Null after DeinitializeStaticRepository. Throws what the
    /// constructor throws, and then the next call tries again; else as InitOnce. Costs one read once it is there.
    [[nodiscard]] T* Get()
    {
        return Get([] { return new T(); });
    }

    /// The same, made by `factory()`, which returns a T, or the address of a new one as a pointer or std::unique_ptr
    /// (of T or, where T has a virtual destructor, a class derived from it). When that is null, so is the result, and
    /// the next call tries again.
    template<class Factory>
    requires std::invocable<Factory&>
    [[nodiscard]] T* Get(Factory&& factory)
    {
        T* object = Peek();
        if (object == nullptr) [[unlikely]] {
            using Function = std::remove_reference_t<Factory>;
            qvxsys::detail::InitStaticObject(&m_object, &Make<Function>, Untyped(std::addressof(factory)), &Destroy);
            object = Peek();
        }
        return object;
    }

    /// The object if it is there; makes none.
    [[nodiscard]] T* Peek() noexcept
    {
        return static_cast<T*>(std::atomic_ref<void*>(m_object).load(std::memory_order_acquire));
    }

private:
    template<class Object>
    static void* Untyped(Object* object) noexcept
    {
        return const_cast<std::remove_cv_t<Object>*>(object);
    }

    template<class Function>
    static void* Make(void* context)
    {
        Function& factory = *static_cast<Function*>(context);
        using Result = std::invoke_result_t<Function&>;
        if constexpr (std::convertible_to<Result, T*>) {
            T* const object = std::invoke(factory);
            return Untyped(object);
        } else if constexpr (std::convertible_to<Result, std::unique_ptr<T>>) {
            std::unique_ptr<T> object = std::invoke(factory);
            return Untyped(object.release());
        } else {
            return Untyped(new T(std::invoke(factory)));
        }
    }

    static void Destroy(void* object) noexcept { delete static_cast<T*>(object); }

    void* m_object = nullptr;
};
