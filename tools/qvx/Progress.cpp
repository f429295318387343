#include "Progress.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string>

namespace qvx {
namespace {

// "312.5 MB"
std::string Size(std::uint64_t bytes)
{
    char const* const names[] = {"B", "kB", "MB", "GB", "TB", "PB", "EB"};
    std::size_t i = 0;
    auto value = static_cast<double>(bytes);
    for (; value >= 1000 && i + 1 < std::size(names); ++i) {
        value /= 1000;
    }
    char text[32];
    int const length = std::snprintf(text, sizeof text, "%.*f %s", i == 0 ? 0 : 1, value, names[i]);
    return {text, static_cast<std::size_t>(std::max(length, 0))};
}

} // namespace

void Progress::Refresh()
{
    if (m_shown && std::chrono::steady_clock::now() >= m_next) {
        Draw();
        m_next = std::chrono::steady_clock::now() + kInterval;
    }
}

void Progress::Erase()
{
    if (m_drawn) {
        // Spaces, since not every terminal knows escape sequences. The last column stays free: writing there may wrap.
        std::fprintf(stderr, "\r%*s\r", std::max(m_columns - 1, 0), "");
        std::fflush(stderr);
        m_drawn = false;
    }
}

void Progress::Draw()
{
    // A file may have grown since its size was taken.
    std::uint64_t const done = m_done.load(std::memory_order_relaxed);
    std::uint64_t const total = std::max(m_total, done);
    double const part = total == 0 ? 1 : static_cast<double>(done) / static_cast<double>(total);
    std::string const numbers = std::to_string(static_cast<int>(part * 100)) + "%  " + Size(done) + " / " + Size(total);
    int const room = std::min(m_columns - 4 - static_cast<int>(numbers.size()), 40);
    std::string line;
    if (room > 0) {
        auto const filled = static_cast<std::size_t>(part * room);
        line.append(1, '[').append(filled, '#').append(static_cast<std::size_t>(room) - filled, '.').append("] ");
    }
    line += numbers;
    line.resize(static_cast<std::size_t>(std::max(m_columns - 1, 0)), ' ');
    std::fprintf(stderr, "\r%s", line.c_str());
    std::fflush(stderr);
    m_drawn = true;
}

} // namespace qvx
