#pragma once
// What is in files and folders; and an empty folder of its own, removed with all in it at the end.

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

inline std::string ReadWhole(std::filesystem::path const& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// How many there are in a folder.
inline std::size_t Entries(std::filesystem::path const& folder)
{
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::random_device random;
        do {
            m_path = std::filesystem::temp_directory_path() / ("qvx-test-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(m_path));
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::filesystem::path const& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};
