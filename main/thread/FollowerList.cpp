#include "FollowerList.h"

#include <memory>

#include <qvxsys/TThreadPool.h>

namespace qvxsys::task {

using AsyncTask::detail::Follower;
using AsyncTask::detail::FollowerList;

namespace {

/// User code that is being told.
struct Frame
{
    FollowerList completed; ///< what it has completed meanwhile
    FollowerList* behind;   ///< what is to be told after it
    Frame* below;
};

/// One for each thread; null pointers and empty lists at the beginning.
struct Telling
{
    FollowerList* quick = nullptr; ///< while the quick ones are told
    FollowerList* others = nullptr;
    Frame* frame = nullptr;
};

QVXSYS_TLS_INITIAL_EXEC constinit thread_local Telling t_telling;

void TellOthers(FollowerList& list) noexcept
{
    Frame frame{{}, &list, t_telling.frame};
    t_telling.frame = &frame;
    while (!list.IsEmpty()) {
        list.PopFront().OnReady();
        list.Prepend(frame.completed);
    }
    t_telling.frame = frame.below;
}

/// Followers that move on to a thread of their own. They are told in any case: by whoever destroys the last copy, if
/// the thread is not to be had.
struct MovedOn
{
    FollowerList list;

    MovedOn() noexcept = default;
    MovedOn(MovedOn const&) = delete;
    MovedOn& operator=(MovedOn const&) = delete;
    ~MovedOn() { Tell(); }
    void Tell() noexcept { TellFollowers(list); }
};

void MoveOn(FollowerList& list)
{
    auto moved = std::make_shared<MovedOn>();
    moved->list.Swap(list);
    AsyncTask::RunOnDedicatedThread([moved = std::move(moved)] { moved->Tell(); });
}

} // namespace

void TellFollowers(FollowerList& followers) noexcept
{
    FollowerList quick, others;
    bool const outermost = t_telling.quick == nullptr;
    if (outermost) {
        t_telling.quick = &quick;
        t_telling.others = &others;
    }
    while (!followers.IsEmpty()) {
        Follower& follower = followers.PopFront();
        (follower.IsQuick() ? t_telling.quick : t_telling.others)->PushBack(follower);
    }
    if (!outermost) {
        return;
    }
    while (!quick.IsEmpty()) {
        quick.PopFront().OnReady();
    }
    t_telling.quick = nullptr;
    t_telling.others = nullptr;
    if (t_telling.frame != nullptr) {
        others.Prepend(t_telling.frame->completed);
        t_telling.frame->completed.Swap(others);
    } else {
        TellOthers(others);
    }
}

bool TellBeforeBlocking() noexcept
{
    Frame* const top = t_telling.frame;
    if (top == nullptr) {
        return false;
    }
    if (!top->completed.IsEmpty()) {
        FollowerList list;
        list.Swap(top->completed);
        TellOthers(list);
        return true;
    }
    for (Frame* frame = top; frame != nullptr; frame = frame->below) {
        FollowerList& behind = *frame->behind;
        try {
            if (!behind.IsEmpty()) {
                MoveOn(behind);
            }
        } catch (...) {
            // No thread to be had: they are told on this one after all, or stay where they are.
        }
    }
    return !top->completed.IsEmpty();
}

} // namespace qvxsys::task
