#include "DumpFile_linux.h"

#include <cerrno>
#include <climits>
#include <cstring>

#include <sys/stat.h>

namespace qvxsys::dump {
namespace {

constexpr unsigned int kOwnerOnly = 0600;

} // namespace

DumpFile::~DumpFile()
{
    if (m_named) {
        kernel::Call(SYS_unlinkat, m_folder, kernel::Word(static_cast<char const*>(m_temporary)), 0);
    }
    if (m_file >= 0) {
        kernel::Close(m_file);
    }
    if (m_folder >= 0) {
        kernel::Close(m_folder);
    }
}

int DumpFile::OpenFolder() noexcept
{
    char const* const slash = std::strrchr(m_path, '/');
    m_name = slash == nullptr ? m_path : slash + 1;
    char folder[PATH_MAX];
    std::size_t const length = static_cast<std::size_t>(m_name - m_path);
    if (length >= sizeof folder - 1) {
        return ENAMETOOLONG;
    }
    std::memcpy(folder, m_path, length);
    std::memcpy(folder + length, ".", 2);
    m_folder = kernel::Open(folder, O_PATH | O_DIRECTORY);
    return m_folder < 0 ? -m_folder : 0;
}

/// A name that is a symbolic link is replaced where it leads to.
void DumpFile::FollowLinks() noexcept
{
    int const file = kernel::Open(m_path, O_PATH);
    if (file < 0) {
        return;
    }
    ShortPath const own = ShortPath() << "/proc/self/fd/" << static_cast<unsigned>(file);
    long const length = kernel::Call(SYS_readlinkat, AT_FDCWD, kernel::Word(static_cast<char const*>(own)),
                                     kernel::Word(m_real), sizeof m_real - 1);
    kernel::Close(file);
    if (length > 0 && m_real[0] == '/') {
        m_real[length] = 0;
        m_path = m_real;
    }
}

int DumpFile::Open(char const* path) noexcept
{
    m_path = path;
    struct stat info
    {};
    long const found = kernel::Call(SYS_newfstatat, AT_FDCWD, kernel::Word(path), kernel::Word(&info), 0);
    bool const exists = !kernel::Failed(found);
    if (!exists && found != -ENOENT) {
        return static_cast<int>(-found);
    }
    if (exists && !S_ISREG(info.st_mode)) {
        m_special = true;
        m_file = kernel::Open(path, O_WRONLY);
        return m_file < 0 ? -m_file : 0;
    }
    if (exists) { // replacing it asks for the folder's permission only, but overwriting is what this stands for
        long const writable = kernel::Call(SYS_faccessat, AT_FDCWD, kernel::Word(path), 2 /* W_OK */);
        if (kernel::Failed(writable)) {
            return static_cast<int>(-writable);
        }
    }
    if (exists) {
        FollowLinks();
    }
    if (int const error = OpenFolder(); error != 0) {
        return error;
    }
    if (*m_name == 0) {
        return *path == 0 ? ENOENT : EISDIR;
    }
    m_temporary << "." << static_cast<unsigned>(kernel::CurrentProcess()) << "-"
                << static_cast<unsigned>(kernel::CurrentThread()) << "-" << kernel::Nanoseconds() << ".dmp.tmp";
    m_file = kernel::OpenAt(m_folder, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, kOwnerOnly);
    m_nameless = m_file >= 0;
    if (m_file == -EOPNOTSUPP || m_file == -EISDIR || m_file == -ENOENT) { // not every file system has such files
        m_file = kernel::OpenAt(m_folder, m_temporary, O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, kOwnerOnly);
        m_named = m_file >= 0;
    }
    return m_file < 0 ? -m_file : 0;
}

int DumpFile::Write(void const* data, std::size_t size) noexcept
{
    char const* from = static_cast<char const*>(data);
    while (size != 0) {
        long const count = kernel::Write(m_file, from, size);
        if (count == -EINTR) {
            continue;
        }
        if (count <= 0) {
            return count == 0 ? EIO : static_cast<int>(-count);
        }
        from += count;
        size -= static_cast<std::size_t>(count);
        m_size += static_cast<std::uint64_t>(count);
    }
    return 0;
}

int DumpFile::LinkInto(char const* name) noexcept
{
    ShortPath const own = ShortPath() << "/proc/self/fd/" << static_cast<unsigned>(m_file);
    return static_cast<int>(-kernel::Call(SYS_linkat, AT_FDCWD, kernel::Word(static_cast<char const*>(own)), m_folder,
                                          kernel::Word(name), AT_SYMLINK_FOLLOW));
}

int DumpFile::Commit() noexcept
{
    if (m_special) {
        return 0;
    }
    if (m_nameless) {
        int error = LinkInto(m_name);
        if (error != EEXIST) {
            return error;
        }
        error = LinkInto(m_temporary);
        if (error != 0) {
            return error;
        }
        m_named = true;
    }
    long const result = kernel::Call(SYS_renameat, m_folder, kernel::Word(static_cast<char const*>(m_temporary)),
                                     m_folder, kernel::Word(m_name));
    if (!kernel::Failed(result)) {
        m_named = false;
    }
    return static_cast<int>(-result);
}

} // namespace qvxsys::dump
