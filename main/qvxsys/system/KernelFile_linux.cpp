#include "KernelFile.h"

#include <cerrno>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace qvxsys::system {

KernelFile::KernelFile(char const* path) noexcept : m_descriptor(::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY))
{}

KernelFile::~KernelFile()
{
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

std::size_t KernelFile::Read(char* to, std::size_t size) noexcept
{
    for (;;) {
        ssize_t const length = ::read(m_descriptor, to, size);
        if (length >= 0 || errno != EINTR) {
            return length > 0 ? static_cast<std::size_t>(length) : 0;
        }
    }
}

std::size_t KernelFile::ReadEntries(std::span<char> to) noexcept
{
    ssize_t const length = ::getdents64(m_descriptor, to.data(), to.size());
    return length > 0 ? static_cast<std::size_t>(length) : 0;
}

std::string_view ReadBeginning(char const* path, std::span<char> buffer) noexcept
{
    return {buffer.data(), KernelFile(path).Read(buffer.data(), buffer.size())};
}

std::optional<std::uint64_t> ReadNumber(char const* path) noexcept
{
    char buffer[64];
    std::string_view text = ReadBeginning(path, buffer);
    return text.find('\n') != std::string_view::npos ? ParseNumber(TakeWord(text)) : std::nullopt;
}

} // namespace qvxsys::system
