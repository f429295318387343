#include "WatchReport.h"

#include <algorithm>
#include <vector>

#include <qvxsys/Format.h>

#include "Units.h"

namespace qvx {
namespace {

using Rule = ResourceDecision::Rule;

constexpr std::size_t kPeersShown = 5;

std::uint64_t OrderBy(Rule rule, ResourceValues const& values) noexcept
{
    switch (rule) {
    case Rule::SustainedCpu:
        return values.m_cpuUsage;
    case Rule::MachineMemory:
        return values.m_memoryLimitUsage;
    case Rule::ProcessMemory:
        break;
    }
    return values.m_memory;
}

// The heaviest first.
TStringCore Peers(ResourceDecision const& decision, unsigned short port)
{
    std::vector<ResourceValues> peers;
    for (ResourceSample const& sample : decision.m_peers) {
        peers.push_back(sample.m_values);
    }
    if (peers.empty()) {
        return qvxsys::Format(u"No other process reports on port %1.", port);
    }
    std::ranges::sort(peers, [&](ResourceValues const& a, ResourceValues const& b) {
        return OrderBy(decision.m_rule, a) > OrderBy(decision.m_rule, b);
    });
    std::vector<TStringCore> texts;
    for (std::size_t i = 0; i < std::min(peers.size(), kPeersShown); ++i) {
        unsigned int const pid = peers[i].m_processId;
        unsigned int const share = peers[i].m_memoryLimitUsage;
        unsigned int const cpu = peers[i].m_cpuUsage;
        texts.push_back(
            qvxsys::Format(u"%1 (%2, %3%% of its limit, %4%% CPU)", pid, SizeText(peers[i].m_memory), share, cpu));
    }
    if (peers.size() > kPeersShown) {
        texts.push_back(qvxsys::Format(u"%1 more", peers.size() - kPeersShown));
    }
    return qvxsys::Format(u"Others that report on port %1: %2.", port, TStringCore::join(texts, u", "));
}

TStringCore EndText(CommandEnd const& end)
{
    return end.signal != 0 ? qvxsys::Format(u"signal %1", end.signal) : qvxsys::Format(u"exit status %1", end.status);
}

} // namespace

TStringCore Measured(ResourceDecision const& decision, WatchOptions const& options)
{
    TStringCore text;
    ResourceValues const& own = decision.m_own;
    unsigned int const share = own.m_memoryLimitUsage;
    unsigned int const cpu = own.m_cpuUsage;
    switch (decision.m_rule) {
    case Rule::ProcessMemory:
        text = qvxsys::Format(u"with all it has started it used %1, more than the %2 of --max-memory. ",
                              SizeText(own.m_memory), SizeText(decision.m_perProcessLimit));
        break;
    case Rule::MachineMemory:
        text = qvxsys::Format(u"%1 of the machine's memory were in use, more than the %2 of --all-memory, and it used "
                              u"the largest share of its own limit, %3%% (%4). ",
                              SizeText(decision.m_machineMemory), SizeText(decision.m_allProcessesLimit), share,
                              SizeText(own.m_memory));
        break;
    case Rule::SustainedCpu:
        text =
            qvxsys::Format(u"the watched processes used %1%% of the CPU, more than the %2%% of --max-cpu, for %3, and "
                           u"it used the most, %4%%. ",
                           decision.m_cpuTotal, decision.m_maxCpu, TimeText(decision.m_cpuHighFor), cpu);
        break;
    }
    return text.append(Peers(decision, options.port));
}

TStringCore Tried(ResourceDecision const& decision, WatchAttempts const& attempts, WatchOptions const& options)
{
    TStringCore text = options.onLimit.empty() ? u"There was no --on-limit to try" : u"--on-limit was not run";
    if (attempts.ranHelper) {
        TStringCore const how = attempts.helperEnd ? EndText(*attempts.helperEnd)
                                                   : qvxsys::Format(u"ended after %1", TimeText(options.grace));
        text = qvxsys::Format(u"--on-limit (%1) freed %2", how, SizeText(decision.m_bytesFreed));
    }
    text.append(qvxsys::Format(u"; asked to end: %1", attempts.asked));
    if (attempts.killed != 0) {
        text.append(qvxsys::Format(u", killed after %1: %2", TimeText(options.grace), attempts.killed));
    }
    if (attempts.left != 0) {
        return text.append(qvxsys::Format(u", not to be ended: %1.", attempts.left));
    }
    return text.append(qvxsys::Format(u"; gone after %1.", TimeText(attempts.ending)));
}

} // namespace qvx
