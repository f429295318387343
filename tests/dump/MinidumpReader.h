#pragma once
// Reads a minidump by the published layout, with offsets instead of the library's records. Every place that the file
// names must lie within it; a read beyond its end throws.

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

class MinidumpReader
{
public:
    struct Module
    {
        std::uint64_t base;
        std::uint32_t size;
        std::string name;
        std::string buildId;
    };
    struct Thread
    {
        std::uint64_t stack, ip, sp;
        std::uint32_t stackSize;
        std::string name;
    };
    struct Range
    {
        std::uint64_t address, size, place;
    };

    explicit MinidumpReader(std::filesystem::path const& path)
    {
        m_bytes.resize(std::filesystem::file_size(path));
        std::ifstream(path, std::ios::binary).read(m_bytes.data(), static_cast<std::streamsize>(m_bytes.size()));
        if (Text(0, 4) != "MDMP" || At<std::uint16_t>(4) != 0xA793) {
            throw std::runtime_error("no minidump");
        }
        std::uint64_t const directory = At<std::uint32_t>(12);
        for (std::uint32_t i = 0; i < At<std::uint32_t>(8); ++i) {
            std::uint64_t const entry = directory + i * 12;
            std::uint32_t const size = At<std::uint32_t>(entry + 4);
            std::uint32_t const place = At<std::uint32_t>(entry + 8);
            Check(place, size);
            if (!m_streams.emplace(At<std::uint32_t>(entry), place).second && At<std::uint32_t>(entry) != 0) {
                throw std::runtime_error("a stream twice");
            }
            m_sizes[At<std::uint32_t>(entry)] = size;
        }
        ReadThreads();
        ReadModules();
        ReadMemory();
    }

    std::map<std::uint32_t, Thread> threads; ///< by id
    std::vector<Module> modules;
    std::vector<Range> memory;

    [[nodiscard]] bool Has(std::uint32_t stream) const { return m_streams.count(stream) != 0; }
    [[nodiscard]] std::string Stream(std::uint32_t type) const { return Text(m_streams.at(type), m_sizes.at(type)); }
    template<class T>
    [[nodiscard]] T In(std::uint32_t stream, std::uint64_t offset) const
    {
        return At<T>(m_streams.at(stream) + offset);
    }

    /// The memory at an address; empty if the dump does not have all of it.
    [[nodiscard]] std::string Memory(std::uint64_t address, std::size_t size) const
    {
        for (Range const& range : memory) {
            if (address >= range.address && address - range.address + size <= range.size) {
                return Text(range.place + (address - range.address), size);
            }
        }
        return {};
    }

private:
    template<class T>
    [[nodiscard]] T At(std::uint64_t place) const
    {
        T value;
        std::string const bytes = Text(place, sizeof value);
        std::memcpy(&value, bytes.data(), sizeof value);
        return value;
    }
    void Check(std::uint64_t place, std::uint64_t size) const
    {
        if (place > m_bytes.size() || size > m_bytes.size() - place) {
            throw std::out_of_range("a place beyond the file's end");
        }
    }
    [[nodiscard]] std::string Text(std::uint64_t place, std::uint64_t size) const
    {
        Check(place, size);
        return m_bytes.substr(place, size);
    }
    [[nodiscard]] std::string String(std::uint64_t place) const // of ASCII
    {
        std::string text;
        for (std::uint32_t i = 0; i < At<std::uint32_t>(place); i += 2) {
            text += static_cast<char>(At<char16_t>(place + 4 + i));
        }
        return text;
    }

    void ReadThreads()
    {
        std::uint64_t const list = m_streams.at(3);
        for (std::uint32_t i = 0; i < At<std::uint32_t>(list); ++i) {
            std::uint64_t const at = list + 4 + i * 48;
            std::uint64_t const context = At<std::uint32_t>(at + 44);
            Thread thread{At<std::uint64_t>(at + 24),
                          At<std::uint64_t>(context + 0xF8),
                          At<std::uint64_t>(context + 0x98),
                          At<std::uint32_t>(at + 32),
                          {}};
            Check(At<std::uint32_t>(at + 36), thread.stackSize);
            Check(context, 1232);
            threads[At<std::uint32_t>(at)] = thread;
        }
        for (std::uint32_t i = 0; Has(24) && i < In<std::uint32_t>(24, 0); ++i) {
            std::uint64_t const at = m_streams.at(24) + 4 + i * 12;
            threads.at(At<std::uint32_t>(at)).name = String(At<std::uint64_t>(at + 4));
        }
    }

    void ReadModules()
    {
        std::uint64_t const list = m_streams.at(4);
        for (std::uint32_t i = 0; i < At<std::uint32_t>(list); ++i) {
            std::uint64_t const at = list + 4 + i * 108;
            Module module{At<std::uint64_t>(at), At<std::uint32_t>(at + 8), String(At<std::uint32_t>(at + 20)), {}};
            std::string const record = Text(At<std::uint32_t>(at + 80), At<std::uint32_t>(at + 76));
            for (char const byte : record.substr(record.empty() ? 0 : 4)) {
                module.buildId += "0123456789abcdef"[byte >> 4 & 15];
                module.buildId += "0123456789abcdef"[byte & 15];
            }
            modules.push_back(module);
        }
    }

    void ReadMemory()
    {
        std::uint64_t const list = m_streams.at(5);
        for (std::uint32_t i = 0; i < At<std::uint32_t>(list); ++i) {
            std::uint64_t const at = list + 4 + i * 16;
            memory.push_back({At<std::uint64_t>(at), At<std::uint32_t>(at + 8), At<std::uint32_t>(at + 12)});
        }
        if (Has(9)) {
            std::uint64_t place = In<std::uint64_t>(9, 8);
            for (std::uint64_t i = 0; i < In<std::uint64_t>(9, 0); ++i) {
                memory.push_back({In<std::uint64_t>(9, 16 + i * 16), In<std::uint64_t>(9, 24 + i * 16), place});
                place += memory.back().size;
            }
        }
        for (Range const& range : memory) {
            Check(range.place, range.size);
        }
    }

    std::string m_bytes;
    std::map<std::uint32_t, std::uint32_t> m_streams;
    std::map<std::uint32_t, std::uint32_t> m_sizes;
};
