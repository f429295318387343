#include <qvxsys/TStackWalker.h>

#include <atomic>
#include <utility>

#include <qvxsys/Symbols.h>
#include <qvxsys/TSystem.h>

#include "ErrorPlatform.h"

namespace {

StackWalkerConfig& Settings() noexcept
{
    static StackWalkerConfig settings;
    return settings;
}

bool Exchange(std::uint8_t& setting, bool value) noexcept
{
    return std::atomic_ref(setting).exchange(value ? 1 : 0) != 0;
}

std::uint8_t Load(std::uint8_t& setting) noexcept
{
    return std::atomic_ref(setting).load();
}

StackWalkerConfig CurrentSettings() noexcept
{
    StackWalkerConfig& now = Settings();
    StackWalkerConfig copy;
    copy.active = Load(now.active);
    copy.includeThreadInfo = Load(now.includeThreadInfo);
    copy.includeSystemMemoryAddresses = Load(now.includeSystemMemoryAddresses);
    copy.includeFileLineNumber = Load(now.includeFileLineNumber);
    copy.includeFileName = Load(now.includeFileName);
    return copy;
}

} // namespace

TStackWalker::TStackWalker() = default;
TStackWalker::TStackWalker(TStackWalker const&) = default;
TStackWalker::TStackWalker(TStackWalker&&) noexcept = default;
TStackWalker& TStackWalker::operator=(TStackWalker const&) = default;
TStackWalker& TStackWalker::operator=(TStackWalker&&) noexcept = default;
TStackWalker::~TStackWalker() = default;

bool TStackWalker::InitSym(bool active) noexcept
{
    return Exchange(Settings().active, active);
}

bool TStackWalker::IsActive() noexcept
{
    return Load(Settings().active) != 0;
}

void TStackWalker::IncludeThreadInfo(bool include) noexcept
{
    Exchange(Settings().includeThreadInfo, include);
}

void TStackWalker::IncludeSystemMemoryAddresses(bool include) noexcept
{
    Exchange(Settings().includeSystemMemoryAddresses, include);
}

void TStackWalker::IncludeFileLineNumber(bool include) noexcept
{
    Exchange(Settings().includeFileLineNumber, include);
}

void TStackWalker::IncludeFileName(bool include) noexcept
{
    Exchange(Settings().includeFileName, include);
}

bool TStackWalker::GenerateCallstack() noexcept
{
    if (!IsActive()) {
        return false;
    }
    try {
        m_collected = GenerateCallstackImpl(CurrentSettings());
    } catch (...) {
        return false;
    }
    return !m_collected.empty();
}

std::list<std::string> const& TStackWalker::GetCollected() const noexcept
{
    return m_collected;
}

std::list<std::string> TStackWalker::GenerateCallstackImpl(StackWalkerConfig const& config)
{
    void* frames[StackWalkerConfig::numberOfStackWalks];
    int const count = qvxsys::error::platform::CaptureTrace(frames, StackWalkerConfig::numberOfStackWalks, 0);
    if (count <= 0) {
        return {};
    }
    return quorvex::symbols::Format({frames, static_cast<std::size_t>(count)}, config, TSystem::ThreadID());
}
