#pragma once
// The shared states of futures with their values: of promises, of work, of continuations. Not for direct use: see
// Future.h.

#include <functional>
#include <memory>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

#include <qvxsys/TaskState.h>

namespace AsyncTask {

template<class T>
class Future;
template<class T>
class SharedFuture;

} // namespace AsyncTask

namespace AsyncTask::detail {

struct Nothing
{};

/// How a result is kept: references as pointers, nothing as nothing.
template<class T>
using Kept =
    std::conditional_t<std::is_void_v<T>, Nothing,
                       std::conditional_t<std::is_reference_v<T>, std::add_pointer_t<T>, std::remove_const_t<T>>>;

template<class T>
class ValueState : public TaskState
{
public:
    explicit ValueState(Launch launch = Launch::OnCaller) noexcept : TaskState(launch) {}
    ~ValueState() override
    {
        if (m_hasValue) {
            std::destroy_at(&m_value);
        }
    }

    /// Under a claim.
    template<class... Arguments>
    void Emplace(Arguments&&... arguments)
    {
        if constexpr (std::is_reference_v<T>) {
            static_assert((std::is_convertible_v<Arguments&&, T> && ...), "the reference would be to a temporary");
            std::construct_at(&m_value, std::addressof(arguments)...);
        } else {
            std::construct_at(&m_value, std::forward<Arguments>(arguments)...);
        }
        m_hasValue = true;
    }
    /// Stores what `make` returns or throws; false if another was first to claim.
    template<class Make>
    bool StoreResult(Make&& make) noexcept
    {
        bool claimed = false;
        try {
            if constexpr (std::is_void_v<T>) {
                std::forward<Make>(make)();
                claimed = TryClaim();
                m_hasValue = m_hasValue || claimed;
            } else {
                decltype(auto) result = std::forward<Make>(make)();
                claimed = TryClaim();
                if (claimed) {
                    Emplace(std::forward<decltype(result)>(result));
                }
            }
        } catch (...) {
            claimed = claimed || TryClaim();
            if (claimed) {
                SetException(std::current_exception());
            }
        }
        return claimed;
    }

    bool StoreError(std::exception_ptr exception) noexcept
    {
        bool const claimed = TryClaim();
        if (claimed) {
            SetException(std::move(exception));
        }
        return claimed;
    }

    /// When ready and not failed. The result is moved out.
    T Take()
    {
        if constexpr (std::is_reference_v<T>) {
            return static_cast<T>(*m_value);
        } else if constexpr (!std::is_void_v<T>) {
            return std::move(m_value);
        }
    }
    std::add_lvalue_reference_t<std::add_const_t<T>> Peek() const
    {
        if constexpr (std::is_reference_v<T>) {
            return *m_value;
        } else if constexpr (!std::is_void_v<T>) {
            return m_value;
        }
    }

private:
    union {
        Kept<T> m_value;
    };
    bool m_hasValue = false;
};

/// What Run starts.
template<class R, class F, class... Arguments>
class WorkState final : public ValueState<R>
{
public:
    template<class G, class... A>
    explicit WorkState(Launch launch, G&& function, A&&... arguments)
        : ValueState<R>(launch), m_work(std::in_place, std::forward<G>(function), std::forward<A>(arguments)...)
    {
        this->SetDeferred();
    }

private:
    bool Work() noexcept override
    {
        return this->StoreResult([this]() -> R {
            // What the work holds goes before the future is ready.
            auto work = std::move(*m_work);
            m_work.reset();
            return std::apply([](auto&&... parts) -> R { return std::invoke(std::move(parts)...); }, std::move(work));
        });
    }

    void DropWork() noexcept override { m_work.reset(); }

    std::optional<std::tuple<F, Arguments...>> m_work;
};

/// How a continuation wants its input.
enum class Wants { Value, Future, Error };

template<class T, bool Shared>
struct InputOf
{
    using Value = std::conditional_t<Shared && !std::is_void_v<T>, std::add_lvalue_reference_t<std::add_const_t<T>>, T>;
    using Whole = std::conditional_t<Shared, SharedFuture<T>, Future<T>>;
};

template<class F, class Value>
inline constexpr bool kTakes = std::is_invocable_v<F, Value>;
template<class F>
inline constexpr bool kTakes<F, void> = std::is_invocable_v<F>;
template<class F, class Value>
struct ResultWith : std::invoke_result<F, Value>
{};
template<class F>
struct ResultWith<F, void> : std::invoke_result<F>
{};

/// Asked in this order, so that a generic lambda is asked for the value only.
template<class T, class F, bool Shared>
constexpr Wants WhatItWants()
{
    if constexpr (kTakes<F, typename InputOf<T, Shared>::Value>) {
        return Wants::Value;
    } else if constexpr (std::is_invocable_v<F, typename InputOf<T, Shared>::Whole>) {
        return Wants::Future;
    } else {
        return Wants::Error;
    }
}
template<class T, class F, bool Shared>
inline constexpr Wants kWants = WhatItWants<T, F, Shared>();

template<class T, class F, bool Shared, Wants = kWants<T, F, Shared>>
struct ResultOf : ResultWith<F, typename InputOf<T, Shared>::Value>
{};
template<class T, class F, bool Shared>
struct ResultOf<T, F, Shared, Wants::Future> : std::invoke_result<F, typename InputOf<T, Shared>::Whole>
{};
template<class T, class F, bool Shared>
struct ResultOf<T, F, Shared, Wants::Error>
{
    static_assert(std::is_invocable_v<F, std::exception_ptr>,
                  "a continuation takes the value, the ready future, or a std::exception_ptr");
    using type = T;
};

/// What Then returns.
template<class T, class F, bool Shared>
class ThenState final : public ValueState<typename ResultOf<T, F, Shared>::type>, public Follower
{
    using R = typename ResultOf<T, F, Shared>::type;
    using Whole = typename InputOf<T, Shared>::Whole;
    static constexpr Wants kHow = kWants<T, F, Shared>;

public:
    template<class G>
    ThenState(Launch launch, std::shared_ptr<ValueState<T>> input, G&& function)
        : ValueState<R>(launch), m_function(std::in_place, std::forward<G>(function))
    {
        m_input.Set(std::move(input));
        this->SetDeferred();
    }

    /// Begins to follow the input; without this, the state is deferred.
    static void Follow(std::shared_ptr<ThenState> const& state)
    {
        if (StatePtr const input = state->m_input.Get()) {
            state->m_self = state;
            if (!input->AddFollower(*state)) {
                state->m_self.reset();
                Start(state);
            }
        }
    }

    [[nodiscard]] StatePtr PendingInput() const override { return m_input.Pending(); }
    void AddOwnInputs(std::vector<StatePtr>& inputs) const override
    {
        if constexpr (!Shared) {
            if (StatePtr input = m_input.Get()) {
                inputs.push_back(std::move(input));
            }
        }
    }
    [[nodiscard]] StatePtr TakeInput() noexcept override { return m_input.Take(); }
    [[nodiscard]] bool IsQuick() const noexcept override { return this->GetLaunch() != Launch::OnCaller; }
    void OnReady() noexcept override
    {
        std::shared_ptr<ThenState> const self = std::move(m_self);
        try {
            Start(self);
        } catch (...) {
            this->Fail(std::current_exception());
        }
    }

private:
    bool Work() noexcept override
    {
        StatePtr const held = m_input.Take();
        auto& input = static_cast<ValueState<T>&>(*held);
        if (input.HasException() ? kHow == Wants::Value : kHow == Wants::Error) {
            return PassOn(input);
        }
        return this->StoreResult([&]() -> R {
            F function = std::move(*m_function);
            m_function.reset();
            if constexpr (kHow == Wants::Error) {
                return static_cast<R>(std::invoke(std::move(function), input.RawException()));
            } else if constexpr (kHow == Wants::Future) {
                return std::invoke(std::move(function), Whole(std::static_pointer_cast<ValueState<T>>(held)));
            } else if constexpr (std::is_void_v<T>) {
                return std::invoke(std::move(function));
            } else if constexpr (Shared) {
                return std::invoke(std::move(function), input.Peek());
            } else {
                return std::invoke(std::move(function), input.Take());
            }
        });
    }
    void DropWork() noexcept override
    {
        m_function.reset();
        ReleaseChain(m_input.Take());
    }
    /// The exception that the function does not want, or the value.
    bool PassOn(ValueState<T>& input) noexcept
    {
        m_function.reset();
        if constexpr (kHow == Wants::Error) {
            return this->StoreResult([&input]() -> R {
                if constexpr (!Shared || std::is_void_v<T>) {
                    return input.Take();
                } else {
                    return static_cast<R>(input.Peek());
                }
            });
        } else {
            return this->StoreError(input.RawException());
        }
    }

    InputSlot m_input;
    std::optional<F> m_function;
    std::shared_ptr<ThenState> m_self; ///< while it follows
};

/// The future in a future. Follows the outer one, then the inner one.
template<class T>
class FlatState final : public ValueState<T>, public Follower
{
public:
    explicit FlatState(StatePtr outer) { m_input.Set(std::move(outer)); }

    static void Follow(std::shared_ptr<FlatState> const& state)
    {
        state->m_self = state;
        StatePtr const outer = state->m_input.Get();
        if (!outer->AddFollower(*state)) {
            state->OnReady();
        }
    }

    [[nodiscard]] StatePtr PendingInput() const override { return m_input.Pending(); }
    [[nodiscard]] ChangingInput const* GetChangingInput() const noexcept override { return &m_input; }
    void AddOwnInputs(std::vector<StatePtr>& inputs) const override
    {
        if (StatePtr input = m_input.Get()) {
            inputs.push_back(std::move(input));
        }
    }
    [[nodiscard]] bool IsQuick() const noexcept override { return false; } // may run an inner one that is deferred
    void OnReady() noexcept override
    {
        std::shared_ptr<FlatState> const self = m_self;
        StatePtr const ready = m_input.Take();
        if (ready->HasException()) {
            Finish(this->StoreError(ready->RawException()));
        } else if (m_inside) {
            Finish(this->StoreResult([&ready]() -> T { return static_cast<ValueState<T>&>(*ready).Take(); }));
        } else if (StatePtr const inner = static_cast<ValueState<Future<T>>&>(*ready).Take().ReleaseState()) {
            m_inside = true;
            Enter(inner);
        } else {
            Finish(this->StoreResult([]() -> T { ThrowInvalidFuture(); }));
        }
    }

private:
    void Enter(StatePtr const& inner) noexcept
    {
        m_input.Set(inner);
        if (this->IsCancelled()) {
            try {
                inner->Cancel();
            } catch (...) {
                // It is cancelled; there is nobody here for what its on-cancel function has thrown.
            }
        }
        if (inner->IsLazy()) {
            RunLazy(inner);
        }
        if (!inner->AddFollower(*this)) {
            OnReady();
        }
    }
    void Finish(bool claimed) noexcept
    {
        m_self.reset();
        if (claimed) {
            this->Complete();
        }
    }

    ChangingInput m_input;
    std::shared_ptr<FlatState> m_self; ///< until it is complete
    bool m_inside = false;
};

} // namespace AsyncTask::detail
