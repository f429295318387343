#pragma once
// What was found out about something, in groups, as a page for people and as JSON for scripts.

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <qvxsys/TStringCore.h>

namespace qvx {

/// One thing that was found out, for scripts and for people.
struct Fact
{
    std::string key;
    nlohmann::ordered_json value;
    TStringCore label;
    TStringCore text;
    std::string from; ///< the file or function that says so; can be empty
};

struct FactGroup
{
    std::string key;
    TStringCore title;
    std::vector<Fact> facts;
};

/// The groups' titles and their facts in columns, with an empty line between groups.
[[nodiscard]] std::vector<TStringCore> FactLines(std::vector<FactGroup> const& groups);

/// An object with an object for each group, or an array if its facts have no keys; a fact that comes from a file or
/// function K has that as "KFrom".
[[nodiscard]] nlohmann::ordered_json FactsJson(std::vector<FactGroup> const& groups);

} // namespace qvx
