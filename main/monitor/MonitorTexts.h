#pragma once
// The lines that the resource manager hands to the host, word for word. Tools of the host read them: they do not
// change.

#include <chrono>
#include <cstddef>
#include <cstdint>

#include <qvxsys/ResourceValues.h>
#include <qvxsys/TStringCore.h>

namespace qvxsys::monitor {

/// What a line about the machine's memory tells.
struct MemoryFigures
{
    std::uint64_t own = 0;
    std::uint64_t total = 0;   ///< of all known processes
    std::uint64_t machine = 0; ///< in use, by whomever
    std::size_t count = 0;     ///< of known processes
};

namespace texts {

/// 2147483648 is "2,147,483,648 bytes", in every locale.
[[nodiscard]] TStringCore Bytes(std::uint64_t bytes);

[[nodiscard]] TStringCore CpuLimit(unsigned int maxCpu, std::chrono::seconds sustained);
[[nodiscard]] TStringCore PerProcessLimit(std::uint64_t bytes);
[[nodiscard]] TStringCore AllProcessesLimit(std::uint64_t bytes);
[[nodiscard]] TStringCore CheckInterval(std::chrono::seconds interval);
[[nodiscard]] TStringCore Listening(unsigned int port);
[[nodiscard]] TStringCore Stopped();

[[nodiscard]] TStringCore CpuIdle();
[[nodiscard]] TStringCore CpuInfo(unsigned int own, unsigned int total, std::size_t count);
[[nodiscard]] TStringCore CpuDetected(unsigned int total);
[[nodiscard]] TStringCore CpuExceeded(unsigned int maxCpu, std::chrono::seconds sustained, unsigned int own);

[[nodiscard]] TStringCore MemoryExceededByProcess(std::uint64_t own);
[[nodiscard]] TStringCore MemoryInfo(MemoryFigures const& figures);
[[nodiscard]] TStringCore MemoryExceededByAll(MemoryFigures const& figures);

/// Before the functions are called, and of each. `what` is "CPU" or "memory".
[[nodiscard]] TStringCore Reclaiming(TStringCore const& what, std::size_t registered);
[[nodiscard]] TStringCore CallingFunction(TStringCore const& name);
[[nodiscard]] TStringCore CpuReclaimed(bool enough);
[[nodiscard]] TStringCore MemoryReclaimed(bool enough);
/// Also what the terminate function is given as the reason.
[[nodiscard]] TStringCore CpuTermination();
[[nodiscard]] TStringCore MemoryTermination();

[[nodiscard]] TStringCore AddingChild(unsigned int pid);
[[nodiscard]] TStringCore RemovingChild(unsigned int pid);

[[nodiscard]] TStringCore ProcessesFollow();
[[nodiscard]] TStringCore Process(ResourceValues const& values);
[[nodiscard]] TStringCore DryRun(TStringCore const& reason);

[[nodiscard]] TStringCore SocketError(TStringCore const& reason);
/// The address in the host's byte order.
[[nodiscard]] TStringCore RejectedPacket(std::uint32_t address, unsigned int port);
[[nodiscard]] TStringCore ListeningStopped();

} // namespace texts
} // namespace qvxsys::monitor
