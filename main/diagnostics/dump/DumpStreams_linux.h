#pragma once
// The file made of what was found.
//
//     header, directory | copied memory | streams | ranges, copied from the process while they are written
//
// The copied memory stands before the streams that point to it, so its places are known when they are made, and the
// file is written from its beginning to its end, which pipes can take, too.

#include "DumpContents_linux.h"
#include "DumpFile_linux.h"

namespace qvxsys::dump {

class DumpStreams
{
public:
    DumpStreams(Arena& arena, DumpRequest const& request, DumpContents const& contents) noexcept;

    /// Makes all streams. The process need not stand still; what it no longer tells is left out.
    void Make() noexcept;
    /// Writes everything, ranges with the help of `process`. An errno value; 0: success; ESRCH: the process ended
    /// before all ranges were read.
    int Write(DumpFile& file, TracedProcess& process, std::uint64_t& unreadablePages) noexcept;

private:
    struct StatFields // of /proc/PID/stat
    {
        char name[16];
        std::uint64_t user, kernel, start; // in ticks
        std::int64_t nice;
    };

    RVA Here() const noexcept;
    template<class T>
    T& At(std::size_t offset) noexcept;
    template<class T>
    void Put(T const& value) noexcept;
    RVA PutString(std::string_view utf8) noexcept;
    void PutFile(MINIDUMP_STREAM_TYPE type, char const* path) noexcept;
    void Begin(MINIDUMP_STREAM_TYPE type) noexcept;
    void End() noexcept;
    MINIDUMP_LOCATION_DESCRIPTOR PlaceOf(std::size_t block) const noexcept;
    StatFields ReadStat(char const* path) const noexcept;

    void MakeSystemInfo() noexcept;
    void MakeMiscInfo() noexcept;
    void MakeThreads() noexcept;
    void MakeException() noexcept;
    void MakeModules() noexcept;
    void MakeMemoryLists() noexcept;
    void MakeMemoryInfo() noexcept;
    void MakeFiles() noexcept;
    void MakeLinker() noexcept;

    static constexpr std::uint32_t kMostStreams = 24;

    DumpRequest const& m_request;
    DumpContents const& m_contents;
    Arena& m_arena;
    ArenaBytes m_bytes; // the streams
    ArenaArray<MINIDUMP_LOCATION_DESCRIPTOR> m_contexts;
    ArenaArray<RVA> m_places; // of the blocks
    MINIDUMP_DIRECTORY m_directory[kMostStreams] = {};
    std::uint32_t m_streams = 0;
    RVA m_base = 0;                      // of the streams
    std::size_t m_rangesBase = SIZE_MAX; // where the streams tell where ranges begin
};

} // namespace qvxsys::dump
