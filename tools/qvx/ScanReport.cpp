#include "ScanReport.h"

#include <ostream>

#include <nlohmann/json.hpp>

#include <qvxsys/Format.h>
#include <qvxsys/std.h>

#include "DisplayText.h"
#include "Failures.h"
#include "Host.h"
#include "Output.h"
#include "TextTable.h"

namespace qvx {
namespace {

using Json = nlohmann::ordered_json;

using FoundBy = TTextDecoder::FoundBy;

char const* FoundByName(FoundBy foundBy)
{
    switch (foundBy) {
    case FoundBy::Given:
        return "given";
    case FoundBy::ByteOrderMark:
        return "bom";
    case FoundBy::Utf8:
        return "utf-8";
    default:
        return "detected";
    }
}

// A guess with how sure it is, an unsure one with a question mark.
TStringCore FoundByText(TTextDecoder::Detection const& detection)
{
    if (detection.foundBy != FoundBy::Statistics) {
        return TStringCore::fromStdString(FoundByName(detection.foundBy));
    }
    return qvxsys::Format(u"detected %1%%%2", detection.confidence, detection.IsUncertain() ? u"?" : u"");
}

TableRow MakeRow(TStringCore const& name, std::string const& encoding, TStringCore const& foundBy, Counts const& counts)
{
    TableRow row{name, TStringCore::fromStdString(encoding), foundBy};
    for (std::uint64_t const count : {counts.bytes, counts.units, counts.codePoints, counts.lines, counts.malformed}) {
        row.push_back(TStringCore::number(count));
    }
    return row;
}

void AddMatches(TableRow& row, std::uint64_t matches, std::uint64_t lines)
{
    row.push_back(TStringCore::number(matches));
    row.push_back(TStringCore::number(lines));
}

void SetPath(Json& entry, std::filesystem::path const& path)
{
    entry["path"] = NameText(path).toStdString();
    if (std::string const raw = RawName(path); !raw.empty()) {
        entry["pathBytes"] = raw;
    }
}

void SetDigest(Json& entry, std::string const& hashName, std::string const& digest)
{
    if (!digest.empty()) {
        entry[hashName] = digest;
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

void SetMatches(Json& entry, FindResult const& found)
{
    entry["matches"] = found.matches;
    entry["matchingLines"] = found.lines;
    Json& first = entry["first"] = Json::array();
    for (Match const& match : found.kept) {
        first.push_back({{"line", match.line},
                         {"column", match.column},
                         {"before", match.before.toStdString()},
                         {"match", match.text.toStdString()},
                         {"behind", match.behind.toStdString()}});
    }
}

void SetError(Json& entry, QuorvexException const& error)
{
    std::vector<TStringCore> const messages = error.GetMessagesVector();
    entry["reason"] = error.GetMessagesFront().toStdString();
    entry["context"] = Json::array();
    for (std::size_t i = 1; i < messages.size(); ++i) {
        entry["context"].push_back(messages[i].toStdString());
    }
    entry["code"] = error.GetErrorCode();
    entry["name"] = error.GetErrorName().toStdString();
    if (std::list<std::string> const trace = TraceOf(error); !trace.empty()) {
        entry["trace"] = trace;
    }
}

} // namespace

void PrintTable(ScanResult const& result, bool withMatches, std::ostream& out)
{
    std::vector<TableRow> rows{
        {u"name", u"encoding", u"found by", u"bytes", u"units", u"code points", u"lines", u"malformed"}};
    rows.reserve(result.files.size() + 2);
    if (withMatches) {
        rows.front().push_back(u"matches");
        rows.front().push_back(u"in lines");
    }
    for (ScannedFile const& file : result.files) {
        if (!withMatches || file.found.matches != 0) {
            rows.push_back(MakeRow(DisplayName(file.path), file.encoding, FoundByText(file.detection), file.counts));
            if (withMatches) {
                AddMatches(rows.back(), file.found.matches, file.found.lines);
            }
        }
    }
    rows.push_back(MakeRow(u"total", "", u"", result.total));
    if (withMatches) {
        AddMatches(rows.back(), result.matches, result.matchingLines);
    }
    for (TStringCore const& line : AlignedLines(rows, "lllr")) {
        out << line << '\n';
    }
}

void PrintJson(ScanResult const& result, bool withMatches, std::string const& hashName, std::ostream& out)
{
    Json json{{"files", Json::array()}, {"errors", Json::array()}, {"total", Json::object()}};
    for (ScannedFile const& file : result.files) {
        Json& entry = json["files"].emplace_back();
        SetPath(entry, file.path);
        SetDigest(entry, hashName, file.digest);
        entry["encoding"] = file.encoding;
        entry["encodingFoundBy"] = FoundByName(file.detection.foundBy);
        if (file.detection.foundBy == FoundBy::Statistics) {
            entry["encodingConfidence"] = file.detection.confidence;
            entry["encodingIsUncertain"] = file.detection.IsUncertain();
        }
        SetCounts(entry, file.counts);
        if (withMatches) {
            SetMatches(entry, file.found);
        }
    }
    for (ScanError const& error : result.errors) {
        Json& entry = json["errors"].emplace_back();
        SetPath(entry, error.path);
        SetDigest(entry, hashName, error.digest);
        SetError(entry, error.error);
    }
    if (result.stopped) {
        json["interrupted"] = true;
    }
    json["total"]["files"] = result.files.size();
    SetCounts(json["total"], result.total);
    if (withMatches) {
        json["total"]["matches"] = result.matches;
        json["total"]["matchingLines"] = result.matchingLines;
    }
    out << JsonText(json);
}

void PrintDigest(ScannedFile const& file, std::ostream& out)
{
    std::string const path = host::PathBytes(file.path);
    std::string name;
    for (char const c : path) {
        switch (c) {
        case '\\':
            name += "\\\\";
            break;
        case '\n':
            name += "\\n";
            break;
        case '\r':
            name += "\\r";
            break;
        default:
            name += c;
        }
    }
    bool const isEscaped = name.size() != path.size();
    out << (isEscaped ? "\\" : "") << file.digest << "  " << name << '\n';
}

void PrintMatches(ScannedFile const& file, bool highlight, std::ostream& out)
{
    if (file.found.matches == 0) {
        return;
    }
    TStringCore const name = DisplayName(file.path);
    for (Match const& match : file.found.kept) {
        TStringCore const text = highlight ? u"\x1B[1;31m" + Printable(match.text) + u"\x1B[0m" : Printable(match.text);
        TStringCore before = Printable(match.before);
        TStringCore behind = Printable(match.behind);
        before.prepend(match.cutBefore ? u"\u2026" : u"");
        behind.append(match.cutBehind ? u"\u2026" : u"");
        out << qvxsys::Format(u"%1:%2:%3: %4%5%6\n", name, match.line, match.column, before, text, behind);
    }
    if (file.found.matches > file.found.kept.size()) {
        out << qvxsys::Format(u"%1: %2 more\n", name, file.found.matches - file.found.kept.size());
    }
}

void PrintRecord(ScannedFile const& file, TFormatStringCore& format, std::ostream& out)
{
    Counts const& counts = file.counts;
    format.clearParms();
    format.args(DisplayName(file.path), TStringCore::fromStdString(file.encoding), counts.bytes, counts.units,
                counts.codePoints, counts.lines, counts.malformed, file.found.matches, file.found.lines,
                FoundByText(file.detection));
    out << format.result() << '\n';
}

void PrintMatchRecord(std::filesystem::path const& path, Match const& match, TFormatStringCore& format,
                      std::ostream& out)
{
    format.clearParms();
    format.args(DisplayName(path), match.line, match.column, Printable(match.before + match.text + match.behind),
                Printable(match.text));
    out << format.result() << '\n';
}

void PrintError(ScanError const& error, std::ostream& out)
{
    std::filesystem::path path = error.path;
    out << qvxsys::Format(u"qvx: %1: %2\n", DisplayName(path.make_preferred()), Describe(error.error));
    for (std::string const& line : TraceOf(error.error)) {
        out << "    " << line << '\n';
    }
}

} // namespace qvx
