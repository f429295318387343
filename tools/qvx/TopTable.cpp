// The table of `qvx top`, and its JSON.

#include "Top.h"

#include <algorithm>
#include <tuple>

#include <nlohmann/json.hpp>

#include <qvxsys/CodePointView.h>
#include <qvxsys/Format.h>

#include "DisplayText.h"
#include "Output.h"
#include "TextTable.h"
#include "Units.h"

namespace qvx {
namespace {

constexpr int kBarCells = 10;

TStringCore Percent(unsigned int percent, bool withBar)
{
    TStringCore number = qvxsys::Format(u"%1%%", percent);
    if (!withBar) {
        return number;
    }
    int const filled = static_cast<int>(std::min(percent, 100u)) * kBarCells / 100;
    return qvxsys::Format(u"%1 [%2%3]", TStringCore(u' ', 4 - number.length()) + number, TStringCore(u'#', filled),
                          TStringCore(u'.', kBarCells - filled));
}

// As much of it as the terminal has columns for.
TStringCore Cut(TStringCore const& line, int columns)
{
    if (columns == 0 || DisplayWidth(line) <= columns) {
        return line;
    }
    TStringCore cut;
    int width = 0;
    for (char32_t const c : TStringView(line).codePoints()) {
        width += DisplayWidth(TStringCore().append32(c));
        if (width > columns) {
            break;
        }
        cut.append32(c);
    }
    return cut;
}

struct Totals
{
    unsigned int cpu = 0;
    std::uint64_t memory = 0;
};

Totals TotalsOf(TopView const& view)
{
    Totals totals;
    for (TopProcess const& process : view.processes) {
        totals.cpu += process.sample.m_values.m_cpuUsage;
        totals.memory += process.sample.m_values.m_memory;
    }
    return totals;
}

} // namespace

void Sort(TopView& view, TopColumn column)
{
    view.sort = column;
    auto const key = [column](TopProcess const& process) {
        ResourceValues const& values = process.sample.m_values;
        std::uint64_t const keys[] = {0, values.m_cpuUsage, values.m_memory, values.m_memoryLimitUsage,
                                      static_cast<std::uint64_t>(process.sample.m_age.count())};
        return std::tuple(~keys[static_cast<std::size_t>(column)], std::uint32_t{values.m_processId});
    };
    std::ranges::sort(view.processes, {}, key);
}

std::vector<TStringCore> TopLines(TopView const& view, int columns)
{
    bool const withBars = columns != 0;
    std::vector<TableRow> rows{{u"PID", u"CPU", u"MEMORY", u"SHARE", u"AGE", u"COMMAND"}};
    if (withBars) {
        rows.front()[static_cast<std::size_t>(view.sort)].prepend(u"\u2193");
    }
    for (TopProcess const& process : view.processes) {
        ResourceValues const& values = process.sample.m_values;
        TStringCore const command = TStringCore::fromStdString(process.command);
        rows.push_back({TStringCore::number(std::uint32_t{values.m_processId}), Percent(values.m_cpuUsage, withBars),
                        SizeText(values.m_memory), Percent(values.m_memoryLimitUsage, withBars),
                        TimeText(process.sample.m_age), Printable(command, false)});
    }
    std::vector<TStringCore> lines = AlignedLines(rows, "rrrrrl");
    Totals const totals = TotalsOf(view);
    lines.push_back({});
    lines.push_back(qvxsys::Format(u"total %1 on port %2: CPU %3%%, memory %4; machine: memory %5 of %6",
                                   view.processes.size(), view.port, std::min(totals.cpu, 100u),
                                   SizeText(totals.memory), SizeText(view.machineUsed), SizeText(view.machineTotal)));
    std::ranges::transform(lines, lines.begin(), [columns](TStringCore const& line) { return Cut(line, columns); });
    return lines;
}

std::string TopJson(TopView const& view)
{
    using Json = nlohmann::ordered_json;
    Json json{{"port", view.port}, {"processes", Json::array()}};
    for (TopProcess const& process : view.processes) {
        ResourceValues const& values = process.sample.m_values;
        json["processes"].push_back({{"pid", std::uint32_t{values.m_processId}},
                                     {"command", TStringCore::fromStdString(process.command).toStdString()},
                                     {"cpu", values.m_cpuUsage},
                                     {"memory", std::uint64_t{values.m_memory}},
                                     {"share", values.m_memoryLimitUsage},
                                     {"ageSeconds", std::chrono::duration<double>(process.sample.m_age).count()},
                                     {"received", process.sample.m_received}});
    }
    Totals const totals = TotalsOf(view);
    json["total"] = {
        {"processes", view.processes.size()}, {"cpu", std::min(totals.cpu, 100u)}, {"memory", totals.memory}};
    json["machine"] = {{"memoryTotal", view.machineTotal}, {"memoryUsed", view.machineUsed}};
    return JsonText(json);
}

} // namespace qvx
