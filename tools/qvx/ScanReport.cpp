#include "ScanReport.h"

#include <algorithm>
#include <array>
#include <ostream>

#include <nlohmann/json.hpp>

#include <qvxsys/TStringCore.h>

#include "DisplayText.h"

namespace qvx {
namespace {

using Json = nlohmann::ordered_json;

// ---- the table

constexpr std::size_t kColumns = 7;
constexpr std::size_t kLeftAligned = 2; // the first columns, which are text
using Row = std::array<TStringCore, kColumns>;

TStringCore Number(std::uint64_t value)
{
    return TStringCore::fromStdString(std::to_string(value));
}

Row MakeRow(TStringCore const& name, std::string const& encoding, Counts const& counts)
{
    return {name,
            TStringCore::fromStdString(encoding),
            Number(counts.bytes),
            Number(counts.units),
            Number(counts.codePoints),
            Number(counts.lines),
            Number(counts.malformed)};
}

TStringCore Line(Row const& row, std::array<int, kColumns> const& widths)
{
    TStringCore line;
    for (std::size_t i = 0; i < kColumns; ++i) {
        TStringCore const padding(u' ', widths[i] - DisplayWidth(row[i]));
        line.append(i == 0 ? u"" : u"  ");
        line.append(i < kLeftAligned ? row[i] + padding : padding + row[i]);
    }
    return line.append(u'\n');
}

// ---- JSON

void SetPath(Json& entry, std::filesystem::path const& path)
{
    entry["path"] = NameText(path).toStdString();
    if (std::string const raw = RawName(path); !raw.empty()) {
        entry["pathBytes"] = raw;
    }
}

void SetCounts(Json& entry, Counts const& counts)
{
    entry["bytes"] = counts.bytes;
    entry["units"] = counts.units;
    entry["codePoints"] = counts.codePoints;
    entry["lines"] = counts.lines;
    entry["malformed"] = counts.malformed;
}

} // namespace

void PrintTable(ScanResult const& result, std::ostream& out)
{
    std::vector<Row> rows{{u"name", u"encoding", u"bytes", u"units", u"code points", u"lines", u"malformed"}};
    rows.reserve(result.files.size() + 2);
    for (ScannedFile const& file : result.files) {
        rows.push_back(MakeRow(DisplayName(file.path), file.encoding, file.counts));
    }
    rows.push_back(MakeRow(u"total", "", result.total));
    std::array<int, kColumns> widths{};
    for (Row const& row : rows) {
        for (std::size_t i = 0; i < kColumns; ++i) {
            widths[i] = std::max(widths[i], DisplayWidth(row[i]));
        }
    }
    for (Row const& row : rows) {
        out << Line(row, widths).toStdString();
    }
}

void PrintJson(ScanResult const& result, std::ostream& out)
{
    Json json{{"files", Json::array()}, {"errors", Json::array()}, {"total", Json::object()}};
    for (ScannedFile const& file : result.files) {
        Json& entry = json["files"].emplace_back();
        SetPath(entry, file.path);
        entry["encoding"] = file.encoding;
        SetCounts(entry, file.counts);
    }
    for (ScanError const& error : result.errors) {
        Json& entry = json["errors"].emplace_back();
        SetPath(entry, error.path);
        entry["reason"] = error.reason;
    }
    json["total"]["files"] = result.files.size();
    SetCounts(json["total"], result.total);
    out << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void PrintError(ScanError const& error, std::ostream& out)
{
    out << (u"qvx: " + DisplayName(error.path) + ": ").append(error.reason.c_str()).append(u'\n').toStdString();
}

} // namespace qvx
