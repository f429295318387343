#pragma once
// Thread-safety annotations: which lock guards which data, checked by Clang at compile time (-Wthread-safety). For
// other compilers they are nothing. The locks of TLocks.h carry them, so this is enough in user code:
//
//     class Account
//     {
//     public:
//         void Deposit(long amount)
//         {
//             TLockScope const lock(m_mutex);                 // without it: warning under Clang
//             m_balance += amount;
//         }
//
//     private:
//         TRecursiveMutex m_mutex;
//         long m_balance QVXSYS_GUARDED_BY(m_mutex) = 0;
//     };
//
// The analysis goes function by function and takes every lock for one that is not re-entrant. A function that enters a
// lock again which it already holds wants QVXSYS_NO_THREAD_SAFETY_ANALYSIS. Clang does not see through std::lock_guard
// and its like; TLockScope and TReadLockScope are annotated. Source: Clang documentation, "Thread Safety Analysis".

#if defined(__clang__)
#define QVXSYS_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define QVXSYS_THREAD_ANNOTATION(x)
#endif

/// On a class: it is a lock.
#define QVXSYS_CAPABILITY(name) QVXSYS_THREAD_ANNOTATION(capability(name))
/// On a class: it holds a lock from construction to destruction.
#define QVXSYS_SCOPED_CAPABILITY QVXSYS_THREAD_ANNOTATION(scoped_lockable)
/// On data: read under the lock, shared or exclusive; written under the exclusive lock.
#define QVXSYS_GUARDED_BY(lock) QVXSYS_THREAD_ANNOTATION(guarded_by(lock))
/// On a pointer: what it points to is guarded.
#define QVXSYS_PT_GUARDED_BY(lock) QVXSYS_THREAD_ANNOTATION(pt_guarded_by(lock))
/// On functions: the caller holds the lock / must not hold it.
#define QVXSYS_REQUIRES(...) QVXSYS_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define QVXSYS_REQUIRES_SHARED(...) QVXSYS_THREAD_ANNOTATION(requires_shared_capability(__VA_ARGS__))
#define QVXSYS_EXCLUDES(...) QVXSYS_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
/// On functions: they take or give up the lock.
#define QVXSYS_ACQUIRE(...) QVXSYS_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define QVXSYS_ACQUIRE_SHARED(...) QVXSYS_THREAD_ANNOTATION(acquire_shared_capability(__VA_ARGS__))
#define QVXSYS_RELEASE(...) QVXSYS_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define QVXSYS_RELEASE_SHARED(...) QVXSYS_THREAD_ANNOTATION(release_shared_capability(__VA_ARGS__))
#define QVXSYS_RELEASE_GENERIC(...) QVXSYS_THREAD_ANNOTATION(release_generic_capability(__VA_ARGS__))
/// On functions: they take the lock when they return the first argument.
#define QVXSYS_TRY_ACQUIRE(...) QVXSYS_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define QVXSYS_TRY_ACQUIRE_SHARED(...) QVXSYS_THREAD_ANNOTATION(try_acquire_shared_capability(__VA_ARGS__))
/// On a function that is right but cannot be followed by the analysis.
#define QVXSYS_NO_THREAD_SAFETY_ANALYSIS QVXSYS_THREAD_ANNOTATION(no_thread_safety_analysis)
