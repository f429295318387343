// The command line of `qvx locale`.

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include <qvxsys/Format.h>
#include <qvxsys/ICUCalendar.h>
#include <qvxsys/std.h>

#include "Arguments.h"
#include "DisplayText.h"
#include "LocaleFacts.h"
#include "Output.h"
#include "TextTable.h"

using QvxICU::ICULocale;

namespace qvx {
namespace {

using Json = nlohmann::ordered_json;

constexpr char const* kNotes =
    "A NAME is one of ICU's (sv, de_CH, th_TH@calendar=gregorian) or a tag of BCP 47 (zh-Hant-TW). Without one the\n"
    "user's locale is shown. Where there are no data of a locale, those of its parent are used, which \"data of\" "
    "tells.\n"
    "\n"
    "Patterns: what the locale makes of a skeleton, the fields that a program wants to show (j is the hour). Order: "
    "words\n"
    "as the locale sorts them, and below as they compare unit by unit.\n"
    "\n"
    "Exit status: 0, 1 if a locale's language is not known, 2 if the command line is wrong.";

struct LocaleCommand
{
    std::vector<std::string> names;
    std::string at;
    std::string timeZone;
    bool lists = false;
    bool asJson = false;
};

int List(bool asJson)
{
    int count = 0;
    Json json = Json::array();
    std::vector<TableRow> rows{{u"name", u"English", u"own name"}};
    for (auto const& locale : ICULocale::getAvailableLocales(count)) {
        TStringCore const english = locale->getDisplayName(ICULocale::getEnglish());
        TStringCore const own = locale->getDisplayName(*locale);
        json.push_back({{"name", locale->getName()}, {"english", english.toStdString()}, {"own", own.toStdString()}});
        rows.push_back({TStringCore::fromStdString(locale->getName()), english, Printable(own)});
    }
    if (asJson) {
        std::cout << JsonText(json);
    } else {
        for (TStringCore const& line : AlignedLines(rows, "l")) {
            std::cout << line << '\n';
        }
    }
    return FinishOutput() ? 0 : 1;
}

// The moment and the time zone, or a complaint.
TStringCore ReadOptions(LocaleCommand const& command, LocaleOptions& options)
{
    options.timeZone = TStringCore::fromStdString(Unguarded(command.timeZone));
    if (command.timeZone.empty()) {
        options.timeZone = QvxICU::ICUCalendar::getDefaultTimeZone();
    } else if (!IsKnownTimeZone(options.timeZone)) {
        return u"unknown time zone: " + options.timeZone;
    }
    options.moment = QvxICU::ICUCalendar::getNow();
    TStringCore const at = TStringCore::fromStdString(Unguarded(command.at));
    bool const isMoment = command.at.empty() || ReadMoment(at, options.timeZone, options.moment);
    return isMoment ? TStringCore() : u"no time like 2024-07-04T13:05:09: " + at;
}

int Show(LocaleCommand const& command, LocaleOptions const& options)
{
    std::vector<std::unique_ptr<ICULocale>> locales;
    for (std::string const& name : command.names) {
        locales.push_back(ICULocale::createFromName(Unguarded(name).c_str()));
    }
    if (locales.empty()) {
        locales.push_back(ICULocale::createInstance());
    }
    Json json = Json::array();
    bool allKnown = true;
    for (std::size_t i = 0; i < locales.size(); ++i) {
        bool const isKnown = IsKnown(*locales[i]);
        allKnown = allKnown && isKnown;
        if (!isKnown) {
            TStringCore const name = TStringCore::fromStdString(Unguarded(command.names[i]));
            locales[i] = DataLocale(*locales[i]);
            std::cout.flush();
            std::cerr << qvxsys::Format(u"qvx: unknown locale: %1; shown is %2\n", Printable(name),
                                        TStringCore::fromStdString(locales[i]->getName()));
        }
        std::vector<FactGroup> const groups = LocaleFacts(*locales[i], options);
        if (command.asJson) {
            Json entry{{"name", locales[i]->getName()}, {"known", isKnown}};
            entry.update(FactsJson(groups));
            json.push_back(std::move(entry));
            continue;
        }
        std::cout << (i == 0 ? "" : "\n\n");
        for (TStringCore const& line : FactLines(groups)) {
            std::cout << line << '\n';
        }
    }
    if (command.asJson) {
        std::cout << JsonText(json);
    }
    return FinishOutput() && allKnown ? 0 : 1;
}

int Run(LocaleCommand const& command)
{
    if (command.lists) {
        return List(command.asJson);
    }
    LocaleOptions options;
    if (TStringCore const complaint = ReadOptions(command, options); !complaint.empty()) {
        std::cerr << qvxsys::Format(u"qvx: %1\n", Printable(complaint));
        return 2;
    }
    return Show(command, options);
}

} // namespace

Command AddLocale(CLI::App& app)
{
    auto const command = std::make_shared<LocaleCommand>();
    CLI::App* const locale = app.add_subcommand("locale", "Show how locales write dates, numbers and words");
    CLI::Option* const names = locale->add_option("NAME", command->names, "Locales")->type_name("");
    locale->add_flag("--list", command->lists, "List the locales that there are data of")->excludes(names);
    locale->add_option("--at", command->at, "The local time to show instead of now: 2024-07-04T13:05:09")
        ->type_name("TIME");
    locale->add_option("--time-zone", command->timeZone, "The time zone to show it in instead of the user's")
        ->type_name("NAME");
    locale->add_flag("--json", command->asJson, "Print JSON instead of pages");
    locale->footer(kNotes);
    return {locale, [command] { return Run(*command); }};
}

} // namespace qvx
