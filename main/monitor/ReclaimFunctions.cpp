#include "ReclaimFunctions.h"

#include <utility>

#include <qvxsys/LogicException.h>

#include "MonitorTexts.h"

namespace qvxsys::monitor {

namespace {

constexpr char const* kFile = "qvxsys/main/monitor/ReclaimFunctions";
constexpr int kEmptyLine = 28;
constexpr int kTakenLine = 30;
constexpr int kUnknownLine = 36;

} // namespace

ReclaimFunctions::ReclaimFunctions(TStringCore name) : m_name(std::move(name))
{}

// NOLINTNEXTLINE(performance-unnecessary-value-param): it is moved from
void ReclaimFunctions::Add(TStringCore const& name, std::function<void()> func)
{
    if (!func) {
        ThrowLogicException(kFile, kEmptyLine, "func");
    }
    TLockScope const lock(m_mutex);
    if (!m_functions.try_emplace(name, std::move(func)).second) {
        ThrowLogicException(kFile, kTakenLine, "m_functions.insert(make_pair(name, func)).second");
    }
}

void ReclaimFunctions::Remove(TStringCore const& name)
{
    TLockScope const lock(m_mutex);
    if (m_functions.erase(name) == 0) {
        ThrowLogicException(kFile, kUnknownLine, "m_functions.erase(name) > 0");
    }
}

std::size_t ReclaimFunctions::Reclaim(std::function<void(TStringCore const&)> const& logFunc)
{
    TLockScope const lock(m_mutex);
    std::size_t const registered = m_functions.size();
    logFunc(texts::Reclaiming(m_name, registered));
    // By name, with a copy in hand: a function may take away any of them, itself too.
    for (auto next = m_functions.begin(); next != m_functions.end();) {
        auto const [name, function] = *next;
        logFunc(texts::CallingFunction(name));
        function();
        next = m_functions.upper_bound(name);
    }
    return registered;
}

} // namespace qvxsys::monitor
