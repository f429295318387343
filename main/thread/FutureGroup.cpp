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

/// Groups that only this one keeps alive are destroyed here, one by one, instead of each within the destructor of the
/// one above it.
GroupCore::~GroupCore()
{
    QVXSYS_TLS_INITIAL_EXEC static constinit thread_local std::vector<Member>* t_doomed = nullptr;
    if (t_doomed != nullptr) {
        t_doomed->insert(t_doomed->end(), std::make_move_iterator(m_members.begin()),
                         std::make_move_iterator(m_members.end()));
        return;
    }
    std::vector<Member> doomed = std::move(m_members);
    t_doomed = &doomed;
    while (!doomed.empty()) {
        StatePtr state = std::move(doomed.back().state);
        doomed.pop_back();
        ReleaseChain(std::move(state));
    }
    t_doomed = nullptr;
}

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

/// Chains are followed so far to find out whether they can be helped with, and groups in groups so deep.
constexpr int kFarEnough = 1000;
constexpr int kDeepEnough = 30;
QVXSYS_TLS_INITIAL_EXEC constinit thread_local int t_depth = 0;

/// Counts the groups in groups, which call each other.
struct DepthScope
{
    DepthScope() noexcept { ++t_depth; }
    DepthScope(DepthScope const&) = delete;
    DepthScope& operator=(DepthScope const&) = delete;
    ~DepthScope() { --t_depth; }
    [[nodiscard]] static bool IsDeepEnough() noexcept { return t_depth > kDeepEnough; }
};

} // namespace

/// Whether the state is a group of which some members are enough.
bool GroupCore::IsChoice(TaskState const& state) noexcept
{
    auto const* const group = dynamic_cast<GroupCore const*>(&state);
    return group != nullptr && !group->NeedsAll();
}

/// Whether a waiter on this thread can do something for the state.
bool GroupCore::CanHelp(StatePtr state)
{
    DepthScope const depth;
    for (int i = 0; i < kFarEnough && !DepthScope::IsDeepEnough(); ++i) {
        StatePtr input = state->PendingInput();
        if (input == nullptr) {
            return state->IsDeferred() && state->MayRunHere() && state->HasInputs();
        }
        if (IsChoice(*state)) {
            return true; // it has asked this of its members
        }
        state = std::move(input);
    }
    return false;
}

StatePtr GroupCore::PendingMember() const
{
    bool const all = NeedsAll();
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

bool GroupCore::EnoughReady() const
{
    auto const isReady = [](Member const& member) { return member.state->IsReady(); };
    return NeedsAll() || m_needed == 0 || std::any_of(m_members.begin(), m_members.end(), isReady);
}

/// Where some of the members are enough, a waiter who cannot help with any of them now perhaps can with what one of
/// them comes to need, or when what one needs is ready. A group that is deferred does not follow its members itself.
void GroupCore::AddWatchedMembers(std::vector<StatePtr>& states) const
{
    DepthScope const depth;
    if (NeedsAll() || DepthScope::IsDeepEnough()) {
        return;
    }
    for (Member const& member : m_members) {
        StatePtr state = member.state;
        for (int i = 0; i < kFarEnough && state != nullptr && !state->IsReady(); ++i) {
            if (m_lazy || i > 0 || state->GetChangingInput() != nullptr) {
                states.push_back(state);
            }
            state->AddWatched(states);
            state = IsChoice(*state) ? nullptr : state->PendingInput();
        }
    }
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
