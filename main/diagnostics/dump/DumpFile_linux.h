#pragma once
// The file that a dump goes to: there when it is complete, and not before. Errors are errno values, 0 is success.

#include <climits>
#include <cstddef>
#include <cstdint>

#include "Arena_linux.h"

namespace qvxsys::dump {

class DumpFile
{
public:
    DumpFile() noexcept = default;
    DumpFile(DumpFile const&) = delete;
    DumpFile& operator=(DumpFile const&) = delete;
    /// Leaves nothing of a file that was not committed.
    ~DumpFile();

    /// `path` must stay as it is until the end.
    int Open(char const* path) noexcept;
    int Write(void const* data, std::size_t size) noexcept;
    /// Gives the file its name.
    int Commit() noexcept;

    [[nodiscard]] std::uint64_t Size() const noexcept { return m_size; }

private:
    void FollowLinks() noexcept;
    int OpenFolder() noexcept;
    int LinkInto(char const* name) noexcept;

    char const* m_path = nullptr;
    char const* m_name = nullptr; // behind the last slash
    int m_folder = -1;
    int m_file = -1;
    std::uint64_t m_size = 0;
    bool m_special = false;  // no regular file: written to as it is
    bool m_nameless = false; // has no name yet, so that nothing can be left of it
    bool m_named = false;    // stands under m_temporary
    ShortPath m_temporary;
    char m_real[PATH_MAX] = {};
};

} // namespace qvxsys::dump
