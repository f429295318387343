#pragma once
// A made-up tree of the kernel's files (/proc, /sys), for readers that take a root folder.

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/TemporaryFolder.h"

/// Paths as on the machine, and contents.
using FakeFiles = std::vector<std::pair<std::string_view, std::string_view>>;

class FakeTree
{
public:
    explicit FakeTree(FakeFiles const& files)
    {
        for (auto const& [path, content] : files) {
            auto const file = m_folder.Path() / path.substr(1);
            std::filesystem::create_directories(file.parent_path());
            std::ofstream(file, std::ios::binary) << content;
        }
    }
    std::string Root() const { return m_folder.Path().string(); }

private:
    TemporaryFolder m_folder;
};
