#include "Doctor.h"

#include <cstdint>
#include <filesystem>
#include <utility>

#include <qvxsys/FileSystemPath.h>
#include <qvxsys/Format.h>
#include <qvxsys/Processor.h>
#include <qvxsys/QvxICU.h>
#include <qvxsys/Symbols.h>
#include <qvxsys/TPathCore.h>
#include <qvxsys/TSystem.h>
#include <qvxsys/Version.h>

#include "DisplayText.h"
#include "Loopback.h"
#include "Output.h"
#include "Units.h"

namespace qvx {
namespace {

using Json = nlohmann::ordered_json;
using quorvex::symbols::LoadedModule;
using quorvex::symbols::SymbolSource;

TStringCore TextOf(std::string const& text)
{
    return Printable(TStringCore::fromStdString(text));
}

Fact TextFact(std::string key, TStringCore const& label, std::string const& text)
{
    return {std::move(key), text, label, TStringCore::fromStdString(text), {}};
}

Fact CountFact(std::string key, TStringCore const& label, std::uint64_t count)
{
    return {std::move(key), count, label, TStringCore::number(count), {}};
}

Fact SizeFact(std::string key, TStringCore const& label, std::uint64_t bytes, std::string const& from)
{
    return {std::move(key), bytes, label, SizeText(bytes), from};
}

FactGroup Library()
{
    auto const set = quorvex::cpu::InstructionSetName(quorvex::cpu::CurrentInstructionSet());
    return {"library",
            u"Library",
            {TextFact("version", u"version", qvxsys::LoadedVersionText()),
             TextFact("icu", u"ICU", QvxICU::installedVersion()),
             TextFact("unicode", u"Unicode", QvxICU::unicodeVersion()),
             TextFact("instructions", u"instructions", set)}};
}

FactGroup Program()
{
    auto const pathFact = [](char const* key, char16_t const* label, TPathCore const& path) {
        std::filesystem::path const native = qvxsys::ToFileSystem(path);
        return Fact{key, NameText(native).toStdString(), label, DisplayName(native), {}};
    };
    // A text of the library's own; a function's address could be that of a stub in the program.
    void const* const inLibrary = quorvex::cpu::InstructionSetName(quorvex::cpu::InstructionSet::Portable);
    return {"program",
            u"Program",
            {CountFact("pid", u"process id", TSystem::ProcessID()),
             pathFact("executable", u"executable", TSystem::ExecutableFilename()),
             pathFact("library", u"library", TSystem::ModuleFilename(inLibrary))}};
}

FactGroup Encodings()
{
    return {"encodings",
            u"Encodings",
            {TextFact("local", u"8-bit text", TSystem::Local8BitEncoding()),
             TextFact("converter", u"conversions of strings", QvxICU::t_ucnv_getDefaultName())}};
}

FactGroup Processors()
{
    TSystem::ProcessorInfo const info = TSystem::Processors();
    TSystem::ThrottlingInfo const throttling = TSystem::Throttling();
    std::string const quotaFrom = TSystem::Sources().processorQuota;
    FactGroup group{"processors",
                    u"Processors",
                    {CountFact("usable", u"usable", info.usable), CountFact("host", u"of the machine", info.host),
                     CountFact("allowed", u"allowed (affinity)", info.allowed)}};
    TStringCore const quota = info.quota != 0 ? TStringCore::number(info.quota) : TStringCore(u"none");
    group.facts.push_back({"quota", info.quota, u"quota (control group)", quota, quotaFrom});
    bool const isKnown = throttling.known != 0;
    TStringCore const held = isKnown ? qvxsys::Format(u"%1 of %2", throttling.capped, throttling.known)
                                     : TStringCore(u"unknown: the system does not tell");
    group.facts.push_back({"throttled", isKnown ? Json(throttling.capped) : Json(), u"held back", held, {}});
    group.facts.push_back(CountFact("thermalEvents", u"slowed down by heat", throttling.events));
    return group;
}

FactGroup Memory()
{
    TSystem::MemoryInfo const memory = TSystem::Memory();
    TSystem::MemoryInfo const host = TSystem::HostMemory();
    TSystem::FigureSources const sources = TSystem::Sources();
    return {"memory",
            u"Memory",
            {SizeFact("total", u"total", memory.totalPhysical, sources.totalMemory),
             SizeFact("available", u"available", memory.availablePhysical, sources.availableMemory),
             SizeFact("hostTotal", u"total of the machine", host.totalPhysical, sources.hostMemory),
             SizeFact("hostAvailable", u"available on the machine", host.availablePhysical, sources.hostMemory),
             SizeFact("pageSize", u"page", memory.pageSize, "")}};
}

std::pair<char const*, char16_t const*> NamesOf(SymbolSource source)
{
    switch (source) {
    case SymbolSource::None:
        break;
    case SymbolSource::DynamicSymbols:
        return {"exports", u"exported functions"};
    case SymbolSource::SymbolTable:
        return {"functions", u"functions"};
    case SymbolSource::LineInformation:
        return {"lines", u"functions and lines"};
    }
    return {"none", u"none"};
}

FactGroup Modules()
{
    FactGroup group{"modules", u"Modules and what their functions are named by", {}};
    for (LoadedModule const& module : quorvex::symbols::LoadedModules()) {
        auto const [key, text] = NamesOf(module.source);
        Json value{{"path", module.path}, {"symbols", key}};
        if (!module.buildId.empty()) {
            value["buildId"] = module.buildId;
        }
        if (!module.debugFile.empty()) {
            value["debugFile"] = module.debugFile;
        }
        group.facts.push_back({"", value, TextOf(module.path), text, module.debugFile});
    }
    return group;
}

FactGroup Exchange(std::vector<TStringCore>& complaints)
{
    LoopbackCheck const check = CheckLoopback();
    FactGroup group{"exchange", u"Exchange on the loopback interface", {CountFact("sent", u"datagrams", check.sent)}};
    char const* const keys[] = {"first", "second"};
    for (std::size_t i = 0; i < check.listeners.size(); ++i) {
        auto const [once, more] = check.listeners[i];
        group.facts.push_back({keys[i],
                               {{"once", once}, {"repeated", more}},
                               qvxsys::Format(u"listener %1", i + 1),
                               qvxsys::Format(u"%1 once, %2 repeated", once, more),
                               {}});
    }
    if (!check.error.empty()) {
        complaints.push_back(u"the loopback exchange cannot be used: " + check.error);
    } else if (!check.IsGood()) {
        complaints.push_back(u"not every listener gets each datagram of the loopback exchange once");
    }
    return group;
}

} // namespace

Diagnosis Diagnose(DoctorOptions const& options)
{
    Diagnosis diagnosis;
    diagnosis.groups = {Library(), Program(), Encodings(), Processors(), Memory()};
    if (options.checksExchange) {
        diagnosis.groups.push_back(Exchange(diagnosis.complaints));
    }
    diagnosis.groups.push_back(Modules());
    return diagnosis;
}

std::vector<TStringCore> DiagnosisLines(Diagnosis const& diagnosis)
{
    std::vector<TStringCore> lines = FactLines(diagnosis.groups);
    for (TStringCore const& complaint : diagnosis.complaints) {
        lines.push_back(u"\nWrong: " + complaint);
    }
    return lines;
}

std::string DiagnosisJson(Diagnosis const& diagnosis)
{
    Json json = FactsJson(diagnosis.groups);
    json["complaints"] = Json::array();
    for (TStringCore const& complaint : diagnosis.complaints) {
        json["complaints"].push_back(complaint.toStdString());
    }
    return JsonText(json);
}

} // namespace qvx
