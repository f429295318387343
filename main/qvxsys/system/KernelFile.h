#pragma once
// A file of the kernel's, read without allocating. (KernelFile_linux.cpp)

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "KeepErrno.h"
#include "KernelText.h"

namespace qvxsys::system {

/// Open for reading; errno is as it was once the object is gone.
class KernelFile
{
public:
    /// One that cannot be opened reads as empty.
    explicit KernelFile(char const* path) noexcept;
    ~KernelFile();
    KernelFile(KernelFile const&) = delete;
    KernelFile& operator=(KernelFile const&) = delete;

    /// How many bytes have come; 0 at the end and after a failure.
    std::size_t Read(char* to, std::size_t size) noexcept;
    /// Of a folder: the bytes of its next entries (dirent64); 0 as above.
    std::size_t ReadEntries(std::span<char> to) noexcept;
    /// For LineReader.
    [[nodiscard]] auto Reader() noexcept
    {
        return [this](char* to, std::size_t size) { return Read(to, size); };
    }

private:
    qvxsys::platform::KeepErrno m_keep;
    int m_descriptor;
};

/// The file's beginning, in one read: enough for the files of a line.
std::string_view ReadBeginning(char const* path, std::span<char> buffer) noexcept;
/// The first word of a file of one line; nothing when the line has no end.
std::optional<std::uint64_t> ReadNumber(char const* path) noexcept;

} // namespace qvxsys::system
