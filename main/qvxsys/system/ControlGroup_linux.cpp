#include "ControlGroup.h"

#include "KernelFile.h"

namespace qvxsys::system {
namespace {

constexpr std::string_view kControllerNames[] = {"memory", "cpu"};

bool HasItem(std::string_view list, std::string_view item) noexcept
{
    while (!list.empty()) {
        if (TakeUntil(list, ',') == item) {
            return true;
        }
    }
    return false;
}

// Blanks, line feeds and back slashes stand as \ and three octal digits in mountinfo.
void AppendUnescaped(PathText& path, std::string_view text) noexcept
{
    auto const isOctal = [](char c) { return c >= '0' && c <= '7'; };
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '\\' && text.size() - i > 3 && isOctal(text[i + 1]) && isOctal(text[i + 2]) && isOctal(text[i + 3])) {
            c = static_cast<char>((text[i + 1] - '0') << 6 | (text[i + 2] - '0') << 3 | (text[i + 3] - '0'));
            i += 3;
        }
        path.Append({&c, 1});
    }
}

// The first mount found stays, unless it is that of a part of the tree, perhaps a foreign one, and there is one of the
// whole.
void TakeMount(ControlGroupMount& mount, std::string_view root, std::string_view folder) noexcept
{
    if (!mount.found || (mount.root.View() != "/" && root == "/")) {
        mount.found = true;
        mount.root.Cut(0);
        mount.folder.Cut(0);
        AppendUnescaped(mount.root, root);
        AppendUnescaped(mount.folder, folder);
    }
}

} // namespace

void ControlGroupMounts::Take(std::string_view line) noexcept
{
    // "36 35 98:0 /root /folder rw,noatime master:1 - cgroup cgroup rw,memory", with any number of optional fields.
    std::size_t const separator = line.find(" - ");
    if (separator == std::string_view::npos) {
        return;
    }
    std::string_view tail = line.substr(separator + 3);
    std::string_view head = line.substr(0, separator);
    std::string_view const type = TakeWord(tail);
    if (type != "cgroup" && type != "cgroup2") {
        return;
    }
    TakeWord(tail);
    std::string_view const options = TakeWord(tail);
    for (int i = 0; i < 3; ++i) {
        TakeWord(head);
    }
    std::string_view const root = TakeWord(head);
    std::string_view const folder = TakeWord(head);
    if (type == "cgroup2") {
        TakeMount(unified, root, folder);
        return;
    }
    if (HasItem(options, kControllerNames[0])) {
        TakeMount(memory, root, folder);
    }
    if (HasItem(options, kControllerNames[1])) {
        TakeMount(processors, root, folder);
    }
}

std::optional<std::string_view> ParseGroupLine(std::string_view line, Controller controller, bool& unified) noexcept
{
    std::string_view const hierarchy = TakeUntil(line, ':');
    std::string_view const controllers = TakeUntil(line, ':');
    bool const isUnified = hierarchy == "0" && controllers.empty();
    if (line.empty() || (!isUnified && !HasItem(controllers, kControllerNames[static_cast<int>(controller)]))) {
        return std::nullopt;
    }
    unified = isUnified;
    return line;
}

PathText GroupFolder(ControlGroupMount const& mount, std::string_view path) noexcept
{
    std::string_view const root = mount.root.View() == "/" ? std::string_view() : mount.root.View();
    PathText folder = mount.folder;
    bool const within = path.starts_with(root) && (path.size() == root.size() || path[root.size()] == '/');
    if (within && path.find("/..") == std::string_view::npos) {
        path.remove_prefix(root.size());
        folder.Append(path == "/" ? std::string_view() : path);
    }
    return folder;
}

ControlGroupWalk::ControlGroupWalk(char const* root, ControlGroupMounts const& mounts, Controller controller) noexcept
{
    KernelFile file(PathText(root).Append("/proc/self/cgroup").Terminated());
    LineReader lines(file.Reader());
    ControlGroupMount const& own = controller == Controller::Memory ? mounts.memory : mounts.processors;
    PathText folder;
    std::size_t top = 0;
    while (std::optional<std::string_view> const line = lines.Next()) {
        bool unified = false;
        std::optional<std::string_view> const path = ParseGroupLine(*line, controller, unified);
        ControlGroupMount const& mount = unified ? mounts.unified : own;
        // A controller is in version 2 unless version 1 has it.
        if (path && mount.found && (m_atEnd || !unified)) {
            m_atEnd = false;
            m_unified = unified;
            folder = GroupFolder(mount, *path);
            top = mount.folder.View().size();
        }
    }
    m_path.Append(root).Append(folder.View());
    m_length = m_path.View().size();
    m_topLength = m_length - folder.View().size() + top;
    m_atEnd = m_atEnd || folder.View().empty() || m_length == 0;
}

void ControlGroupWalk::Up() noexcept
{
    m_path.Cut(m_length);
    std::size_t const slash = m_path.View().rfind('/');
    if (IsOutermost() || slash == std::string_view::npos) {
        m_atEnd = true;
        return;
    }
    m_length = slash < m_topLength ? m_topLength : slash;
}

char const* ControlGroupWalk::File(std::string_view name) noexcept
{
    m_path.Cut(m_length);
    m_path.Append("/").Append(name);
    return m_path.Terminated();
}

ControlGroupMounts FindControlGroups(char const* root) noexcept
{
    ControlGroupMounts mounts;
    KernelFile file(PathText(root).Append("/proc/self/mountinfo").Terminated());
    LineReader lines(file.Reader());
    while (std::optional<std::string_view> const line = lines.Next()) {
        mounts.Take(*line);
    }
    return mounts;
}

ControlGroupMounts const& MachineControlGroups() noexcept
{
    static ControlGroupMounts const mounts = FindControlGroups("");
    return mounts;
}

} // namespace qvxsys::system
