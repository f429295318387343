#pragma once
// A made-up tree of the kernel's files (/proc, /sys), for readers that take a root folder.

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "support/TemporaryFolder.h"

class FakeTree
{
public:
    /// "PATH=CONTENT|PATH=CONTENT": each content gets a line feed, unless it ends with "~", which stands for its
    /// absence.
    explicit FakeTree(std::string const& files)
    {
        std::istringstream in(files);
        for (std::string path, content; std::getline(in, path, '=') && std::getline(in, content, '|');) {
            auto const file = m_folder.Path() / path.substr(1);
            std::filesystem::create_directories(file.parent_path());
            bool const isCut = content.ends_with('~');
            std::ofstream(file, std::ios::binary) << content.substr(0, content.size() - isCut) << (isCut ? "" : "\n");
        }
    }
    std::string Root() const { return m_folder.Path().string(); }

private:
    TemporaryFolder m_folder;
};
