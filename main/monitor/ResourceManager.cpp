#include <qvxsys/ResourceManager.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <thread>
#include <utility>

#include <qvxsys/LogicException.h>
#include <qvxsys/TSystem.h>

#include "LogicAssert.h"
#include "ResourceManagerImpl.h"

using qvxsys::monitor::ResourceManagerImpl;

namespace {

constexpr char const* kFile = "qvxsys/main/monitor/ResourceManager";
constexpr int kLogFuncLine = 64;
constexpr int kTerminateFuncLine = 65;
constexpr int kAddCpuLine = 107;
constexpr int kRemoveCpuLine = 113;
constexpr int kAddMemoryLine = 119;
constexpr int kRemoveMemoryLine = 125;
constexpr int kRegisterChildLine = 131;
constexpr int kUnregisterChildLine = 137;
constexpr int kUsageLine = 143;

/// The manager, or null, when a hook has returned from the check.
ResourceManagerImpl* Started(std::atomic<ResourceManagerImpl*> const& singleton, int line)
{
    ResourceManagerImpl* const manager = singleton.load();
    if (manager == nullptr) {
        ThrowLogicException(kFile, line, "s_singleton");
    }
    return manager;
}

} // namespace

constinit std::atomic<ResourceManagerImpl*> ResourceManager::s_singleton = nullptr;

void ResourceManager::Start(unsigned short port, CpuConfig const& cpuConfig, MemoryConfig const& memoryConfig,
                            GeneralConfig const& generalConfig)
{
    Start(port, cpuConfig, memoryConfig, generalConfig, Options());
}

void ResourceManager::Start(unsigned short port, CpuConfig const& cpuConfig, MemoryConfig const& memoryConfig,
                            GeneralConfig const& generalConfig, Options const& options)
{
    if (generalConfig.m_logFunc == nullptr) {
        ThrowLogicException(kFile, kLogFuncLine, "generalConfig.m_logFunc != nullptr");
    }
    if (generalConfig.m_terminateFunc == nullptr) {
        ThrowLogicException(kFile, kTerminateFuncLine, "generalConfig.m_terminateFunc != nullptr");
    }
    if (s_singleton.load() != nullptr) {
        return;
    }
    auto manager = std::make_unique<ResourceManagerImpl>(cpuConfig, memoryConfig, generalConfig, options);
    // There before the worker runs: the host's functions may use it. They may also stop it at once.
    s_singleton.store(manager.get());
    try {
        manager->Start(port);
    } catch (...) {
        s_singleton.store(nullptr);
        throw;
    }
    static_cast<void>(manager.release());
}

void ResourceManager::Start(unsigned short port, unsigned int maxCpu, std::chrono::seconds sustainedPeriod,
                            bool useAverage, bool cpuTerminateFlag, unsigned long long perProcessLimit,
                            unsigned long long allProcessesLimit, bool includeSwap, bool memoryTerminateFlag,
                            std::chrono::seconds checkInterval, std::chrono::seconds startDelay,
                            unsigned int infoLogEvery, LogFunc logFunc, TerminateFunc terminateFunc,
                            void (*listenerTerminateHandler)())
{
    Start(port, CpuConfig{maxCpu, sustainedPeriod, useAverage, cpuTerminateFlag},
          MemoryConfig{perProcessLimit, allProcessesLimit, includeSwap, memoryTerminateFlag},
          GeneralConfig{checkInterval, startDelay, infoLogEvery, std::move(logFunc), std::move(terminateFunc),
                        listenerTerminateHandler});
}

void ResourceManager::Stop()
{
    ResourceManagerImpl* const manager = s_singleton.load();
    // One of the host's functions may ask for it while another thread is stopping and waits for that function.
    if (manager == nullptr || !manager->ClaimStop()) {
        return;
    }
    if (manager->IsOnOwnThread()) {
        // This thread is one of those to be waited for: another one does that.
        std::thread stopping([manager] {
            manager->AwaitStart();
            delete manager;
        });
        s_singleton.store(nullptr);
        stopping.detach();
        return;
    }
    delete manager;
    s_singleton.store(nullptr);
}

void ResourceManager::AddReclaimCpuFunction(TStringCore const& name, std::function<void()> func)
{
    if (auto* const manager = Started(s_singleton, kAddCpuLine)) {
        manager->CpuFunctions().Add(name, std::move(func));
    }
}

void ResourceManager::RemoveReclaimCpuFunction(TStringCore const& name)
{
    if (auto* const manager = Started(s_singleton, kRemoveCpuLine)) {
        manager->CpuFunctions().Remove(name);
    }
}

void ResourceManager::AddReclaimMemoryFunction(TStringCore const& name, std::function<void()> func)
{
    if (auto* const manager = Started(s_singleton, kAddMemoryLine)) {
        manager->MemoryFunctions().Add(name, std::move(func));
    }
}

void ResourceManager::RemoveReclaimMemoryFunction(TStringCore const& name)
{
    if (auto* const manager = Started(s_singleton, kRemoveMemoryLine)) {
        manager->MemoryFunctions().Remove(name);
    }
}

void ResourceManager::RegisterChildProcessId(unsigned int pid)
{
    if (auto* const manager = Started(s_singleton, kRegisterChildLine)) {
        manager->Children().Add(pid);
    }
}

void ResourceManager::UnregisterChildProcessId(unsigned int pid)
{
    if (auto* const manager = Started(s_singleton, kUnregisterChildLine)) {
        manager->Children().Remove(pid);
    }
}

std::pair<std::uint8_t, std::uint64_t> ResourceManager::GetCpuAndMemoryUsage()
{
    auto* const manager = Started(s_singleton, kUsageLine);
    auto const own = manager != nullptr ? manager->Info().Find(TSystem::ProcessID()) : std::nullopt;
    return own ? std::pair(std::uint8_t{own->m_cpuUsage}, std::uint64_t{own->m_memory})
               : std::pair(std::uint8_t{0}, std::uint64_t{0});
}

std::vector<ResourceSample> ResourceManager::GetSnapshot()
{
    QVX_LOGIC_ASSERT(s_singleton);
    ResourceManagerImpl* const manager = s_singleton.load();
    return manager != nullptr ? manager->GetSnapshot() : std::vector<ResourceSample>();
}

std::uint64_t ResourceManager::AdjustMemoryLimit(unsigned int minGB, unsigned int fixedGB, double fraction,
                                                 bool useAvailable)
{
    if (fixedGB != 0) {
        return std::uint64_t{fixedGB} << 30;
    }
    TSystem::MemoryInfo const memory = TSystem::Memory();
    double const bytes = static_cast<double>(useAvailable ? memory.availableCombined : memory.totalPhysical) * fraction;
    // What no number of bytes is (negative, none at all, too many) becomes the nearest that is one.
    std::uint64_t const part = !(bytes > 0)      ? 0
                               : bytes >= 0x1p64 ? std::numeric_limits<std::uint64_t>::max()
                                                 : static_cast<std::uint64_t>(bytes);
    return std::max(std::uint64_t{minGB} << 30, part);
}
