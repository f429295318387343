#include "ResourceReporterManager.h"

#include <algorithm>

#include <qvxsys/LogicException.h>

namespace qvxsys::monitor {

namespace {

constexpr char const* kFile = "qvxsys/main/monitor/ResourceReporterManager";
constexpr int kUnknownLine = 47;

} // namespace

ResourceReporterManager& ResourceReporterManager::Get()
{
    static auto* const s_manager = new ResourceReporterManager;
    return *s_manager;
}

void ResourceReporterManager::Add(ResourceReporter* reporter)
{
    TLockScope const lock(m_mutex);
    m_reporters.push_back(reporter);
}

void ResourceReporterManager::Remove(ResourceReporter const* reporter)
{
    TLockScope const lock(m_mutex);
    auto const el = std::find(m_reporters.begin(), m_reporters.end(), reporter);
    if (el == m_reporters.end()) {
        ThrowLogicException(kFile, kUnknownLine, "el != mng.m_reporters.end()");
        return;
    }
    if (static_cast<std::size_t>(el - m_reporters.begin()) < m_next) {
        --m_next;
    }
    m_reporters.erase(el);
}

void ResourceReporterManager::NotifyAll(unsigned int seconds)
{
    TLockScope const lock(m_mutex);
    for (m_next = 0; m_next < m_reporters.size();) {
        m_reporters[m_next++]->Report(seconds);
    }
    m_next = 0;
}

} // namespace qvxsys::monitor

using qvxsys::monitor::ResourceReporterManager;

ResourceReporter::ResourceReporter()
{
    ResourceReporterManager::Get().Add(this);
}

ResourceReporter::ResourceReporter(ResourceReporter const&)
{}

ResourceReporter& ResourceReporter::operator=(ResourceReporter const&) noexcept
{
    return *this;
}

ResourceReporter::~ResourceReporter()
{
    ResourceReporterManager::Get().Remove(this);
}
