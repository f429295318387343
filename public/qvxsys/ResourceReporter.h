#pragma once
// ResourceReporter: objects that tell what they use whenever the resource manager takes stock.
//
//     class CacheReporter : public ResourceReporter
//     {
//         void Report(unsigned int seconds) override { Log(m_cache.Size(), m_cache.HitsSince(seconds)); }
//     };
//
// Being there is all it takes: the constructor registers, the destructor takes it back.

#include <qvxsys/Platform.h>

/// Called on every info pass of the resource manager (ResourceManager.h), and when a limit is exceeded.
///
/// Reporters may come and go at any time and on any thread, with or without a resource manager. They are called in the
/// order in which they were constructed, on the manager's worker thread, under a lock that constructing and destroying
/// reporters takes too: a reporter that waits for another thread to do that waits for ever. It may construct and
/// destroy reporters itself; those it adds are called in the same round, those it takes away no more.
///
/// An object is registered before the constructor of its own class has run and until after the destructor has: called
/// in between it has no Report, which ends the process. While a manager runs, what has reporters come and go has to see
/// to it that none is called meanwhile: in a Report of its own, or with the manager stopped.
class QVXSYS_API ResourceReporter
{
public:
    /// Registers this object behind all others.
    ResourceReporter();
    /// Does not register: destroying the copy raises the logic assertion "el != mng.m_reporters.end()", which, thrown
    /// out of a destructor, ends the process. A hook that returns lets it go.
    ResourceReporter(ResourceReporter const& other);
    /// Changes nothing.
    ResourceReporter& operator=(ResourceReporter const& other) noexcept;
    virtual ~ResourceReporter();

    /// Time to report. `seconds` is the time between two info passes.
    virtual void Report(unsigned int seconds) = 0;
};
