#pragma once
// Waiting for several futures at once, by another future.
//
//     auto [text, count] = AsyncTask::WhenAll(std::move(a), std::move(b)).Get();   // each one ready
//     int const n = count.Get();
//
//     std::vector<AsyncTask::Future<int>> tasks = ...;
//     AsyncTask::AnyOf<std::vector<AsyncTask::Future<int>>> first = AsyncTask::WhenAny(std::move(tasks)).Get();
//     Use(first.futures[first.index].Get());
//
// The result holds the futures that were given, so each keeps its value or its exception: WhenAll and WhenAny do not
// fail themselves. Cancelling the result cancels all Futures in it (not SharedFutures). With no futures, WhenAll is
// ready at once, and WhenAny too, with the index kNone. Futures without a state throw an InvalidFutureException.
//
// A group of SharedFutures is kept by those that are not ready: WhenAny again and again with one that stays pending for
// long takes memory each time until that one is ready.
//
// Who waits for WhenAll runs those that have not started one after the other; who waits for WhenAny, one of them, if he
// may, or sleeps until another is ready. With deferred futures among them, the group is deferred as well: waiting for
// WhenAny then runs the first deferred one, unless another is ready.

#include <atomic>
#include <concepts>
#include <memory>
#include <tuple>
#include <utility>
#include <vector>

#include <qvxsys/Future.h>
#include <qvxsys/FutureState.h>
#include <qvxsys/Platform.h>

namespace AsyncTask {

/// What WhenAny comes to: the futures, and the index of one that is ready (the first to be so).
template<class Futures>
struct AnyOf
{
    /// No future was given.
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    Futures futures;           ///< the futures that were given
    std::size_t index = kNone; ///< which of them is ready
};

namespace detail {

class GroupCore;

/// Follows one member of a group.
class QVXSYS_API GroupMember final : public Follower
{
public:
    GroupMember() noexcept = default;
    void OnReady() noexcept override;
    [[nodiscard]] bool IsQuick() const noexcept override;

private:
    friend class GroupCore;
    std::shared_ptr<GroupCore> m_group; ///< until it is told
    std::size_t m_index = 0;
};

/// Counts members that are ready. Once `needed` are, MembersReady is called.
class QVXSYS_API GroupCore
{
public:
    struct Member
    {
        StatePtr state;
        bool owned;
    };

    GroupCore(std::vector<Member> members, std::size_t needed);
    GroupCore(GroupCore const&) = delete;
    GroupCore& operator=(GroupCore const&) = delete;

    /// Begins to follow; `self` is what keeps the group.
    void Follow(std::shared_ptr<GroupCore> const& self) noexcept;
    /// The member that was ready first; the number of members when there is none.
    [[nodiscard]] std::size_t First() const noexcept { return m_first.load(std::memory_order_acquire); }

protected:
    virtual ~GroupCore();
    virtual void MembersReady() noexcept = 0;
    /// One to wait for, or to help with.
    [[nodiscard]] StatePtr PendingMember() const;
    [[nodiscard]] bool EnoughReady() const;
    void AddWatchedMembers(std::vector<StatePtr>& states) const;
    void AddOwned(std::vector<StatePtr>& inputs) const;
    /// If no member has been told to be, one that is ready is the first.
    void FindFirst() noexcept;
    [[nodiscard]] std::size_t Count() const noexcept { return m_members.size(); }

private:
    friend class GroupMember;
    void MemberReady(std::size_t index) noexcept;
    [[nodiscard]] bool NeedsAll() const noexcept { return m_needed == m_members.size(); }
    static bool CanHelp(StatePtr state);
    static bool IsChoice(TaskState const& state) noexcept;

    std::vector<Member> m_members;
    std::unique_ptr<GroupMember[]> m_followers;
    std::size_t const m_needed;
    std::atomic<std::size_t> m_missing;
    std::atomic<std::size_t> m_first;
    bool const m_lazy;
};

template<class Result>
class GroupState final : public ValueState<Result>, public GroupCore
{
public:
    template<class Make>
    GroupState(std::vector<Member> members, std::size_t needed, Launch launch, Make&& make)
        : ValueState<Result>(launch), GroupCore(std::move(members), needed), m_result(std::forward<Make>(make)())
    {
        if (launch == Launch::Deferred) {
            this->SetDeferred();
        }
    }

    [[nodiscard]] StatePtr PendingInput() const override { return PendingMember(); }
    [[nodiscard]] bool HasInputs() const override { return EnoughReady(); }
    void AddWatched(std::vector<StatePtr>& states) const override { AddWatchedMembers(states); }
    void AddOwnInputs(std::vector<StatePtr>& inputs) const override { AddOwned(inputs); }

private:
    void MembersReady() noexcept override
    {
        if (Work()) {
            this->Complete();
        }
    }
    bool Work() noexcept override
    {
        FindFirst();
        return this->StoreResult([this]() -> Result {
            if constexpr (requires { m_result.index; }) {
                m_result.index = First() < Count() ? First() : Result::kNone;
            }
            return std::move(m_result);
        });
    }

    Result m_result;
};

template<class T>
GroupCore::Member MemberOf(Future<T> const& future)
{
    return {future.PeekState(), true};
}
template<class T>
GroupCore::Member MemberOf(SharedFuture<T> const& future)
{
    return {future.PeekState(), false};
}

template<class Result, class Make>
Future<Result> MakeGroup(std::vector<GroupCore::Member> members, std::size_t needed, Make&& make)
{
    bool lazy = false;
    for (GroupCore::Member const& member : members) {
        lazy = lazy || member.state->IsLazy();
    }
    Launch const launch = lazy ? Launch::Deferred : Launch::OnCaller;
    auto const state = MakeState<GroupState<Result>>(std::move(members), needed, launch, std::forward<Make>(make));
    if (!lazy) {
        state->Follow(state);
    }
    return Future<Result>(state);
}

template<class Futures>
std::vector<GroupCore::Member> MembersOf(Futures const& futures)
{
    std::vector<GroupCore::Member> members;
    members.reserve(futures.size());
    for (auto const& future : futures) {
        members.push_back(MemberOf(future));
    }
    return members;
}

template<class F>
concept AnyFuture = requires(F const& future)
{
    MemberOf(future);
};

} // namespace detail

/// Ready when all are.
template<detail::AnyFuture F>
[[nodiscard]] Future<std::vector<F>> WhenAll(std::vector<F> futures)
{
    std::size_t const count = futures.size();
    return detail::MakeGroup<std::vector<F>>(detail::MembersOf(futures), count, [&] { return std::move(futures); });
}
template<detail::AnyFuture... F>
[[nodiscard]] Future<std::tuple<F...>> WhenAll(F... futures)
{
    std::vector<detail::GroupCore::Member> members{detail::MemberOf(futures)...};
    return detail::MakeGroup<std::tuple<F...>>(std::move(members), sizeof...(F),
                                               [&] { return std::tuple<F...>(std::move(futures)...); });
}

/// Ready when one is.
template<detail::AnyFuture F>
[[nodiscard]] Future<AnyOf<std::vector<F>>> WhenAny(std::vector<F> futures)
{
    using Result = AnyOf<std::vector<F>>;
    std::size_t const needed = futures.empty() ? 0 : 1;
    return detail::MakeGroup<Result>(detail::MembersOf(futures), needed, [&] { return Result{std::move(futures)}; });
}
template<detail::AnyFuture First, detail::AnyFuture... F>
[[nodiscard]] Future<AnyOf<std::tuple<First, F...>>> WhenAny(First first, F... futures)
{
    using Result = AnyOf<std::tuple<First, F...>>;
    std::vector<detail::GroupCore::Member> members{detail::MemberOf(first), detail::MemberOf(futures)...};
    return detail::MakeGroup<Result>(std::move(members), 1, [&] {
        return Result{std::tuple<First, F...>(std::move(first), std::move(futures)...)};
    });
}

/// The values of all, in order; the first exception, in that order, if there is one.
template<class T>
requires(!std::is_void_v<T> && !std::is_reference_v<T>)
    [[nodiscard]] Future<std::vector<T>> WhenAllValues(std::vector<Future<T>> futures)
{
    return WhenAll(std::move(futures)).Then([](std::vector<Future<T>> ready) {
        std::vector<T> values;
        values.reserve(ready.size());
        for (Future<T>& future : ready) {
            values.push_back(future.Get());
        }
        return values;
    });
}

} // namespace AsyncTask
