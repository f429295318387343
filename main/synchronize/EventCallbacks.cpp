#include "EventCallbacks.h"

#include <algorithm>
#include <utility>

#include "Parking.h"

namespace qvxsys::sync {

namespace {
QVXSYS_TLS_INITIAL_EXEC thread_local constinit DeferredWakes* t_deferred = nullptr;
}

DeferredWakes::DeferredWakes() noexcept : m_outer(std::exchange(t_deferred, this))
{}

DeferredWakes::~DeferredWakes()
{
    t_deferred = m_outer;
    for (unsigned int i = 0; i < m_count; ++i) {
        SystemParking::WakeAll(m_addresses[i]);
    }
}

void DeferredWakes::WakeAll(void const* address) noexcept
{
    if (t_deferred == nullptr || t_deferred->m_count == kMost) {
        SystemParking::WakeAll(address);
    } else {
        t_deferred->m_addresses[t_deferred->m_count++] = address;
    }
}

} // namespace qvxsys::sync

namespace qvxsys::detail {

namespace {
QVXSYS_TLS_INITIAL_EXEC thread_local constinit KeepRemoved* t_kept = nullptr;
}

KeepRemoved::KeepRemoved() noexcept : m_outer(std::exchange(t_kept, this))
{}

KeepRemoved::~KeepRemoved()
{
    t_kept = m_outer;
}

void KeepRemoved::Hand(EventCallbacks::Garbage& garbage) noexcept
{
    if (t_kept != nullptr) {
        t_kept->m_garbage.splice(t_kept->m_garbage.end(), garbage);
    }
}

EventCallbacks::Entries::iterator EventCallbacks::Find(void* key)
{
    if (m_index != nullptr) {
        auto const found = m_index->find(key);
        return found != m_index->end() ? found->second : m_entries.end();
    }
    return std::ranges::find_if(m_entries, [key](Entry const& entry) { return entry.key == key && !entry.removed; });
}

void EventCallbacks::Put(void* key, std::function<void()>&& call, Garbage& garbage)
{
    Entries node;
    node.push_back({key, std::move(call), m_nextNumber, false});
    auto const entry = node.begin();
    auto const replaced = Find(key);
    if (m_index == nullptr && m_live >= kIndexFrom) {
        auto index = std::make_unique<Index>();
        for (auto i = m_entries.begin(); i != m_entries.end(); ++i) {
            if (!i->removed) {
                index->emplace(i->key, i);
            }
        }
        m_index = std::move(index);
    }
    if (m_index != nullptr) {
        m_index->insert_or_assign(key, entry);
    }
    // Nothing throws from here on.
    m_entries.splice(m_entries.end(), node);
    ++m_nextNumber;
    ++m_live;
    if (replaced != m_entries.end()) {
        Discard(replaced, garbage);
    }
}

void EventCallbacks::Remove(void* key, Garbage& garbage)
{
    auto const entry = Find(key);
    if (entry == m_entries.end()) {
        return;
    }
    if (m_index != nullptr) {
        m_index->erase(key);
    }
    Discard(entry, garbage);
    if (m_live == 0) {
        m_index.reset();
    }
}

void EventCallbacks::Discard(Entries::iterator entry, Garbage& garbage)
{
    --m_live;
    if (m_runs != 0) {
        entry->removed = true;
        m_anyRemoved = true;
    } else {
        garbage.splice(garbage.end(), m_entries, entry);
    }
}

void EventCallbacks::Run(Garbage& garbage)
{
    struct Running
    {
        Running(EventCallbacks& callbacks, Garbage& removed) : of(callbacks), bin(removed) { ++of.m_runs; }
        Running(Running const&) = delete;
        Running& operator=(Running const&) = delete;
        ~Running()
        {
            if (--of.m_runs == 0 && std::exchange(of.m_anyRemoved, false)) {
                for (auto i = of.m_entries.begin(); i != of.m_entries.end();) {
                    auto const entry = i++;
                    if (entry->removed) {
                        bin.splice(bin.end(), of.m_entries, entry);
                    }
                }
            }
        }
        EventCallbacks& of;
        Garbage& bin;
    };
    Running const running(*this, garbage);
    std::uint64_t const end = m_nextNumber;
    for (auto entry = m_entries.begin(); entry != m_entries.end() && entry->number < end; ++entry) {
        if (!entry->removed) {
            entry->call();
        }
    }
}

} // namespace qvxsys::detail
