#pragma once
// Where warnings of memory pressure come from. (PressureSource_linux.cpp, PressureSource_win.cpp)

#include <chrono>
#include <memory>
#include <string>

#include <qvxsys/MemoryPressure.h>

namespace qvxsys::monitor {

class PressureSource
{
public:
    virtual ~PressureSource() = default;

    /// What Wait may return, as bits.
    static constexpr unsigned int kSome = 1;
    static constexpr unsigned int kFull = 2;

    /// Waits for a warning; 0 when Stop was called or there will be none any more.
    virtual unsigned int Wait() noexcept = 0;
    /// Makes Wait return 0 from now on. May be called from any thread.
    virtual void Stop() noexcept = 0;
};

/// The source of this process's control group or of the machine; null when there is none. `status` becomes the name of
/// its file, and behind ": " the reason why it cannot be used.
[[nodiscard]] std::unique_ptr<PressureSource> OpenPressureSource(MemoryPressure::Config const& config,
                                                                 std::string& status);

} // namespace qvxsys::monitor
