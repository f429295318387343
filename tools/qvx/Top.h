#pragma once
// Shows what the processes on the machine report to one another.

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <qvxsys/ResourceValues.h>
#include <qvxsys/TStringCore.h>

#include "Watch.h"

namespace qvx {

enum class TopColumn : unsigned char { Pid, Cpu, Memory, Share, Age };

/// What --sort takes, in the order of the columns.
inline constexpr std::string_view kTopColumnNames[] = {"pid", "cpu", "memory", "share", "age"};

struct TopOptions
{
    unsigned short port = kDefaultPort;
    bool once = false;
    bool asJson = false;
    TopColumn sort = TopColumn::Share;
    std::chrono::milliseconds interval{1000};
};

struct TopProcess
{
    ResourceSample sample;
    std::string command; ///< as CommandLineOf has it
};

struct TopView
{
    unsigned short port = 0;
    std::vector<TopProcess> processes; ///< in the order of a column
    TopColumn sort = TopColumn::Share;
    std::uint64_t machineTotal = 0; ///< bytes
    std::uint64_t machineUsed = 0;
};

/// The heaviest or oldest first; by process id, the smallest.
void Sort(TopView& view, TopColumn column);

/// A heading, a line for each process and one of totals behind an empty one. With bars and a mark at the column that
/// sorts, in lines of at most `columns` columns; 0 stands for none of this.
[[nodiscard]] std::vector<TStringCore> TopLines(TopView const& view, int columns);

[[nodiscard]] std::string TopJson(TopView const& view);

/// Returns the exit status.
[[nodiscard]] int Top(TopOptions const& options);

} // namespace qvx
