#pragma once
// What one process of the soak does: rounds of random work on strings, tasks, events and loops, each with a result that
// is known, some of it cancelled; between rounds everything stands still and is counted.

#include <chrono>
#include <cstdint>
#include <string>

struct SoakResult
{
    unsigned long long done = 0;      ///< pieces of work with the right result
    unsigned long long cancelled = 0; ///< pieces that were cancelled in time
    unsigned rounds = 0;
    std::string faults; ///< one line each; empty when all is well
};

/// Runs until the deadline, and two rounds at least. Starts the pool, and ends it.
SoakResult RunSoak(std::chrono::steady_clock::time_point deadline, std::uint64_t seed);

/// Of this process: open descriptors and threads. A thread that has been joined can stay in the list for a moment: more
/// than `most` are given some seconds to go.
unsigned OpenDescriptors();
unsigned Threads(unsigned most = ~0U);
