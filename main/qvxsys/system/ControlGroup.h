#pragma once
// The control groups that the process lives in, innermost first. (ControlGroup_linux.cpp)

#include <cstdint>
#include <optional>
#include <string_view>

#include "KernelText.h"

namespace qvxsys::system {

enum class Controller {
    Memory,
    Processors,
};

/// Where the groups of one controller are mounted, and which group's folder it is that is mounted there.
struct ControlGroupMount
{
    bool found = false;
    PathText folder;
    PathText root;
};

/// Where the kernel keeps its groups: version 1 has a tree for each controller, version 2 one for all. A machine can
/// have both, each controller being in one of them.
struct ControlGroupMounts
{
    ControlGroupMount memory;
    ControlGroupMount processors;
    ControlGroupMount unified;

    /// Takes a line of /proc/self/mountinfo.
    void Take(std::string_view line) noexcept;
};

/// Of a line of /proc/self/cgroup ("7:cpu,cpuacct:/jobs/1", "0::/app"): the group's path if it is that of the
/// controller; `unified` says of which version. Nothing for a line of another one.
std::optional<std::string_view> ParseGroupLine(std::string_view line, Controller controller, bool& unified) noexcept;

/// The folder of a group with this path as it is to be found under the mount: the path without what is mounted. A path
/// that does not lie in it (the process was put into a namespace of its own, or sees a foreign tree) gives the mount's
/// folder itself.
PathText GroupFolder(ControlGroupMount const& mount, std::string_view path) noexcept;

/// Walks from the process's group upwards:
///
///     for (ControlGroupWalk group(root, Controller::Memory); !group.AtEnd(); group.Up()) {
///         std::optional<std::uint64_t> const limit = ReadNumber(group.File("memory.max"));
class ControlGroupWalk
{
public:
    /// `mounts` are those under `root`.
    ControlGroupWalk(char const* root, ControlGroupMounts const& mounts, Controller controller) noexcept;

    [[nodiscard]] bool AtEnd() const noexcept { return m_atEnd; }
    /// Whether the group is of version 2.
    [[nodiscard]] bool IsUnified() const noexcept { return m_unified; }
    /// Whether it is the last one that can be seen.
    [[nodiscard]] bool IsOutermost() const noexcept { return m_length <= m_topLength; }
    void Up() noexcept;
    /// The path of one of the group's files, good until the next call.
    [[nodiscard]] char const* File(std::string_view name) noexcept;

private:
    bool m_atEnd = true;
    bool m_unified = false;
    std::size_t m_topLength = 0;
    std::size_t m_length = 0;
    PathText m_path;
};

/// The mounts under `root`; those of the machine ("") are looked up once and kept.
ControlGroupMounts FindControlGroups(char const* root) noexcept;
ControlGroupMounts const& MachineControlGroups() noexcept;

} // namespace qvxsys::system
