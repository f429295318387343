#pragma once
// What the operating system says by other means than the library's.

#include <cstdint>

/// The processor time of the calling thread in milliseconds.
double ThreadCpuMilliseconds();

/// Whether the platform counts the cycles of threads; how far booked thread times may be off.
bool CountsCycles();
double ThreadTimesTolerance();

std::uint32_t OwnProcessId();
std::uint32_t OwnThreadId();

void SetPlatformError(unsigned code);
unsigned GetPlatformError();
