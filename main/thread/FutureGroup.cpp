#include <qvxsys/FutureGroup.h>

#include <algorithm>
#include <utility>

namespace AsyncTask::detail {

void GroupMember::OnReady() noexcept
{
    std::shared_ptr<GroupCore> const group = std::move(m_group);
    group->MemberReady(m_index);
}

bool GroupMember::IsQuick() const noexcept
{
    return true;
}

GroupCore::GroupCore(std::vector<Member> members, std::size_t needed)
    : m_members(std::move(members)), m_needed(needed), m_missing(needed), m_first(m_members.size()),
      m_lazy(std::any_of(m_members.begin(), m_members.end(), [](Member const& m) { return m.state->IsLazy(); }))
{
    if (!m_lazy) {
        m_followers = std::make_unique<GroupMember[]>(m_members.size());
    }
}

GroupCore::~GroupCore() = default;

void GroupCore::Follow(std::shared_ptr<GroupCore> const& self) noexcept
{
    if (m_needed == 0) {
        MembersReady();
        return;
    }
    for (std::size_t i = 0; i < m_members.size(); ++i) {
        GroupMember& follower = m_followers[i];
        follower.m_index = i;
        follower.m_group = self;
        if (!m_members[i].state->AddFollower(follower)) {
            follower.OnReady();
        }
    }
}

void GroupCore::MemberReady(std::size_t index) noexcept
{
    std::size_t none = m_members.size();
    m_first.compare_exchange_strong(none, index, std::memory_order_acq_rel);
    if (m_missing.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        MembersReady();
    }
}

void GroupCore::FindFirst() noexcept
{
    for (std::size_t i = 0; i < m_members.size() && First() == m_members.size(); ++i) {
        if (m_members[i].state->IsReady()) {
            m_first.store(i, std::memory_order_release);
        }
    }
}

namespace {

/// Whether a waiter on this thread can do something for the state.
bool CanHelp(StatePtr state)
{
    constexpr int kFarEnough = 1000;
    for (int i = 0; i < kFarEnough; ++i) {
        StatePtr input = state->PendingInput();
        if (input == nullptr) {
            return state->IsDeferred() && state->MayRunHere();
        }
        state = std::move(input);
    }
    return false;
}

} // namespace

StatePtr GroupCore::PendingMember() const
{
    bool const all = m_needed == m_members.size();
    StatePtr found;
    for (Member const& member : m_members) {
        bool const ready = member.state->IsReady();
        if (!all && ready) {
            return nullptr;
        }
        if (!ready && found == nullptr && (all || CanHelp(member.state))) {
            found = member.state;
        }
    }
    return found;
}

void GroupCore::AddOwned(std::vector<StatePtr>& inputs) const
{
    for (Member const& member : m_members) {
        if (member.owned) {
            inputs.push_back(member.state);
        }
    }
}

} // namespace AsyncTask::detail
