#include "Top.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <iterator>
#include <memory>
#include <thread>

#include <qvxsys/Format.h>
#include <qvxsys/ResourceObserver.h>
#include <qvxsys/TSystem.h>
#include <qvxsys/std.h>

#include "Failures.h"
#include "Output.h"
#include "Screen.h"
#include "WatchedCommand.h"

namespace qvx {
namespace {

constexpr int kWarningShare = 90; // percent of a process's limit

std::unique_ptr<ResourceObserver> Listen(unsigned short port)
{
    try {
        return std::make_unique<ResourceObserver>(port);
    } catch (std::exception const& error) {
        throw MakeFailure(Failure::CannotListen, qvxsys::Format(u"port %1: %2", port, error.what()));
    }
}

TopView Look(ResourceObserver& observer, TopOptions const& options, TopColumn sort)
{
    TopView view;
    view.port = options.port;
    for (ResourceSample const& sample : observer.GetSnapshot()) {
        view.processes.push_back({sample, CommandLineOf(sample.m_values.m_processId)});
    }
    Sort(view, sort);
    TSystem::MemoryInfo const machine = TSystem::Memory();
    view.machineTotal = machine.totalPhysical;
    view.machineUsed = machine.usedPhysical;
    return view;
}

// The table with the processes from `first` on, above the totals at the screen's end.
std::vector<Screen::Line> ScreenLines(TopView const& view, std::size_t& first, Screen const& screen)
{
    std::vector<TStringCore> const texts = TopLines(view, screen.Columns());
    std::size_t const processes = view.processes.size();
    auto const rows = static_cast<std::size_t>(std::max(screen.Rows(), 3));
    std::size_t const room = rows - 2; // heading and totals
    first = std::min(first, processes > room ? processes - room : 0);
    std::vector<Screen::Line> lines{{texts.front(), Screen::Style::Heading}};
    for (std::size_t i = first; i < std::min(processes, first + room); ++i) {
        bool const isNear = view.processes[i].sample.m_values.m_memoryLimitUsage >= kWarningShare;
        lines.push_back({texts[i + 1], isNear ? Screen::Style::Warning : Screen::Style::Plain});
    }
    lines.resize(rows - 1);
    lines.push_back({texts.back(), Screen::Style::Heading});
    return lines;
}

TopColumn Beside(TopColumn column, int step)
{
    constexpr int kCount = static_cast<int>(std::size(kTopColumnNames));
    return static_cast<TopColumn>((static_cast<int>(column) + step + kCount) % kCount);
}

int ShowLive(ResourceObserver& observer, TopOptions const& options)
{
    Screen screen;
    TopColumn sort = options.sort;
    std::size_t first = 0;
    for (;;) {
        screen.Show(ScreenLines(Look(observer, options, sort), first, screen));
        switch (int const key = screen.Wait(options.interval)) {
        case 'q':
        case 'Q':
        case Screen::Quit:
            return 0;
        case Screen::Left:
            sort = Beside(sort, -1);
            break;
        case Screen::Right:
            sort = Beside(sort, 1);
            break;
        case Screen::Up:
            first -= first != 0 ? 1 : 0;
            break;
        case Screen::Down:
            ++first;
            break;
        default:
            for (std::size_t i = 0; i < std::size(kTopColumnNames); ++i) {
                sort = key == kTopColumnNames[i][0] ? static_cast<TopColumn>(i) : sort;
            }
        }
    }
}

} // namespace

int Top(TopOptions const& options)
{
    std::unique_ptr<ResourceObserver> const observer = Listen(options.port);
    if (!options.once && !options.asJson) {
        return ShowLive(*observer, options);
    }
    // Whoever reports once per interval has done so by then, and with half an interval to spare.
    std::this_thread::sleep_for(options.interval * 3 / 2);
    TopView const view = Look(*observer, options, options.sort);
    if (options.asJson) {
        std::cout << TopJson(view);
    } else {
        for (TStringCore const& line : TopLines(view, 0)) {
            std::cout << line << '\n';
        }
    }
    return FinishOutput() ? 0 : 1;
}

} // namespace qvx
