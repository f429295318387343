#pragma once
// A progress bar on the last line of the terminal that stderr is.

#include <atomic>
#include <chrono>
#include <cstdint>

namespace qvx {

class Progress
{
public:
    /// A bar that is not shown does nothing. `columns` is the width of the terminal.
    Progress(bool shown, int columns) : m_shown(shown), m_columns(columns) {}
    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;
    ~Progress() { Erase(); }

    [[nodiscard]] bool IsShown() const { return m_shown; }
    void SetTotal(std::uint64_t bytes) { m_total = bytes; }
    /// Counts what is done; from any thread.
    void Add(std::uint64_t bytes) { m_done.fetch_add(bytes, std::memory_order_relaxed); }
    /// Draws the bar again when the last time is long enough ago.
    void Refresh();
    /// Leaves an empty line for other output; the next Refresh may draw the bar again.
    void Erase();

private:
    void Draw();

    bool m_shown;
    bool m_drawn = false;
    int m_columns;
    std::atomic<std::uint64_t> m_done = 0;
    std::uint64_t m_total = 0;
    std::chrono::steady_clock::time_point m_next = std::chrono::steady_clock::now() + kInterval;

    static constexpr std::chrono::milliseconds kInterval{100};
};

} // namespace qvx
