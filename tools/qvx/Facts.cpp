#include "Facts.h"

#include "DisplayText.h"
#include "TextTable.h"

namespace qvx {

std::vector<TStringCore> FactLines(std::vector<FactGroup> const& groups)
{
    std::vector<TStringCore> lines;
    for (FactGroup const& group : groups) {
        if (!lines.empty()) {
            lines.emplace_back();
        }
        lines.push_back(group.title);
        std::vector<TableRow> rows;
        for (Fact const& fact : group.facts) {
            rows.push_back({u"  " + fact.label, fact.text, Printable(TStringCore::fromStdString(fact.from))});
        }
        for (TStringCore& line : AlignedLines(rows, "l")) {
            lines.push_back(line.trimRight());
        }
    }
    return lines;
}

nlohmann::ordered_json FactsJson(std::vector<FactGroup> const& groups)
{
    auto json = nlohmann::ordered_json::object();
    for (FactGroup const& group : groups) {
        nlohmann::ordered_json& entry = json[group.key];
        for (Fact const& fact : group.facts) {
            if (fact.key.empty()) {
                entry.push_back(fact.value);
                continue;
            }
            entry[fact.key] = fact.value;
            if (!fact.from.empty()) {
                entry[fact.key + "From"] = fact.from;
            }
        }
    }
    return json;
}

} // namespace qvx
