#pragma once
// What the locks, semaphores and events consist of: words in memory that change by single atomic steps. The system is
// asked only to put a thread to sleep until a word has changed and to wake it. Not for direct use: see TLocks.h,
// TSemaphore.h and TEvent.h.
//
// Two properties hold for every word here, and what is built on them relies on both:
// - One atomic step both publishes the new state and tells whether anybody sleeps. Afterwards only the word's address
//   is used (to wake), never its memory, so the object may be destroyed by whoever saw the new state first.
// - Waking is by address, so a thread may be woken for nothing. Every sleeper looks at the word again.

#include <atomic>
#include <cstdint>

#include <qvxsys/Platform.h>

namespace qvxsys::detail {

/// The half of a 64-bit word that threads sleep on.
enum class WordHalf { Low, High };

inline void const* HalfAddress(std::atomic<std::uint64_t> const& word, WordHalf half) noexcept
{
    return reinterpret_cast<char const*>(&word) + (half == WordHalf::Low ? 0 : 4);
}

/// A lock that is not re-entrant: free, held, or held with (perhaps) sleepers.
class LockWord
{
public:
    static constexpr std::uint32_t kFree = 0;
    static constexpr std::uint32_t kHeld = 1;
    static constexpr std::uint32_t kContended = 2;

    [[nodiscard]] bool TryAcquire() noexcept
    {
        std::uint32_t free = kFree;
        return m_word.compare_exchange_strong(free, kHeld, std::memory_order_acquire, std::memory_order_relaxed);
    }
    /// Takes the lock, or marks it so that its release wakes a sleeper. True: taken.
    [[nodiscard]] bool AcquireContended() noexcept
    {
        return m_word.exchange(kContended, std::memory_order_acquire) == kFree;
    }
    [[nodiscard]] bool IsFree() const noexcept { return m_word.load(std::memory_order_relaxed) == kFree; }
    /// True: one sleeper must be woken.
    [[nodiscard]] bool Release() noexcept { return m_word.exchange(kFree, std::memory_order_release) == kContended; }
    [[nodiscard]] void const* Address() const noexcept { return &m_word; }

private:
    std::atomic<std::uint32_t> m_word = kFree;
};

/// Free units in the low half, sleepers in the high half.
class SemaphoreWord
{
public:
    static constexpr std::uint64_t kMaximum = 0x7FFFFFFF;
    static constexpr std::uint64_t kSleeper = std::uint64_t(1) << 32;

    enum class Released { Quietly, WakeOne, AtMaximum };

    explicit SemaphoreWord(std::uint32_t units) noexcept : m_word(units) {}

    [[nodiscard]] bool TryAcquire() noexcept { return Take(0); }
    [[nodiscard]] Released Release() noexcept
    {
        std::uint64_t seen = m_word.load(std::memory_order_relaxed);
        do {
            if (Units(seen) == kMaximum) {
                return Released::AtMaximum;
            }
        } while (!m_word.compare_exchange_weak(seen, seen + 1, std::memory_order_acq_rel, std::memory_order_relaxed));
        return seen >= kSleeper ? Released::WakeOne : Released::Quietly;
    }
    /// Counts the caller among the sleepers. It must end that with TakeAsSleeper (true) or Leave.
    void Announce() noexcept { m_word.fetch_add(kSleeper, std::memory_order_relaxed); }
    [[nodiscard]] bool TakeAsSleeper() noexcept { return Take(kSleeper); }
    void Leave() noexcept { m_word.fetch_sub(kSleeper, std::memory_order_relaxed); }
    /// Sleep while this half is 0.
    [[nodiscard]] void const* Address() const noexcept { return HalfAddress(m_word, WordHalf::Low); }

private:
    static std::uint64_t Units(std::uint64_t word) noexcept { return word & 0xFFFFFFFF; }
    bool Take(std::uint64_t also) noexcept
    {
        std::uint64_t seen = m_word.load(std::memory_order_relaxed);
        do {
            if (Units(seen) == 0) {
                return false;
            }
        } while (
            !m_word.compare_exchange_weak(seen, seen - 1 - also, std::memory_order_acquire, std::memory_order_relaxed));
        return true;
    }

    std::atomic<std::uint64_t> m_word;
};

/// The counts of a shared lock: writers, holding and waiting, in the low half, whose top bit says that one of them
/// writes; readers in the high half. Steps that only a writer takes are guarded by the owner's mutex.
class SharedLockWord
{
public:
    static constexpr std::uint64_t kWriter = 1;
    static constexpr std::uint64_t kWriting = std::uint64_t(1) << 31;
    static constexpr std::uint64_t kReader = std::uint64_t(1) << 32;

    [[nodiscard]] static std::uint64_t Readers(std::uint64_t word) noexcept { return word >> 32; }
    [[nodiscard]] static std::uint64_t Writers(std::uint64_t word) noexcept { return word & (kWriting - 1); }
    [[nodiscard]] std::uint64_t Load() const noexcept { return m_word.load(std::memory_order_relaxed); }
    [[nodiscard]] bool IsIdle() const noexcept { return Load() == 0; }

    /// Returns the word before. With kWriting in it, the reader must leave again: it may not read yet.
    std::uint64_t EnterAsReader() noexcept { return m_word.fetch_add(kReader, std::memory_order_acquire); }
    /// True: readers have left and a writer waits for that: one must be woken. While one writes, nobody need be.
    [[nodiscard]] bool LeaveAsReader() noexcept
    {
        std::uint64_t const after = m_word.fetch_sub(kReader, std::memory_order_release) - kReader;
        return after - 1 < kWriting - 1;
    }
    /// Neither waits nor leaves anything behind when it fails.
    [[nodiscard]] bool TryEnterAsReader(std::uint64_t most) noexcept
    {
        std::uint64_t seen = Load();
        while ((seen & kWriting) == 0 && Readers(seen) < most) {
            if (m_word.compare_exchange_weak(seen, seen + kReader, std::memory_order_acquire,
                                             std::memory_order_relaxed)) {
                return true;
            }
        }
        return false;
    }
    void EnterAsWriter() noexcept { m_word.fetch_add(kWriter, std::memory_order_relaxed); }
    /// Writes from now on if there are no readers.
    [[nodiscard]] bool TryWriting(std::uint64_t also = 0) noexcept
    {
        std::uint64_t seen = Load();
        while (Readers(seen) == 0) {
            if (m_word.compare_exchange_weak(seen, (seen | kWriting) + also, std::memory_order_acquire,
                                             std::memory_order_relaxed)) {
                return true;
            }
        }
        return false;
    }
    /// True: more writers are there; one must be woken.
    [[nodiscard]] bool LeaveAsWriter(bool writing) noexcept
    {
        std::uint64_t const what = kWriter | (writing ? kWriting : 0);
        return Writers(m_word.fetch_sub(what, std::memory_order_release) - what) != 0;
    }
    /// A writer sleeps while this half is still the number of readers that it saw.
    [[nodiscard]] void const* Address() const noexcept { return HalfAddress(m_word, WordHalf::High); }

private:
    std::atomic<std::uint64_t> m_word = 0;
};

/// A manual-reset or auto-reset event; its owner uses the operations of one kind only. From the lowest bit:
///
///      bit 0       set
///      bit 1       somebody registered callbacks: signalling must run them
///      bit 2       the destructor waits for signallers
///      bits 3-31   changes with every signal that sleepers must learn of
///      bits 32-43  sleepers (manual: 1 when there may be any)
///      bits 44-55  auto: grants, sleepers that a signal has released and that have not left yet
///      bits 56-63  signallers that still run callbacks
///
/// Sleepers are told by the change count (manual) or a grant (auto), not by the set bit, so that a signal releases
/// those who sleep at that moment even if the event is reset before they run, and that each of two quick signals to an
/// auto-reset event releases one.
class EventWord
{
public:
    static constexpr std::uint64_t kSet = 1;
    static constexpr std::uint64_t kCallbacks = 2;
    static constexpr std::uint64_t kDying = 4;
    static constexpr std::uint32_t kChange = 8;
    static constexpr std::uint64_t kSleeper = std::uint64_t(1) << 32;
    static constexpr std::uint64_t kGrant = std::uint64_t(1) << 44;
    static constexpr std::uint64_t kSignaller = std::uint64_t(1) << 56;
    static constexpr std::uint64_t kMostSleepers = 0xFFF;
    static constexpr std::uint64_t kMostSignallers = 0xFF;

    [[nodiscard]] bool IsSet() const noexcept { return (Load() & kSet) != 0; }
    [[nodiscard]] std::uint64_t Load() const noexcept { return m_word.load(std::memory_order_acquire); }
    void Clear() noexcept { m_word.fetch_and(~kSet); }

    /// Sets when that is all there is to do: nobody sleeps and no callbacks are registered. False: nothing was changed.
    template<bool AutoReset>
    [[nodiscard]] bool SetQuietly() noexcept
    {
        std::uint64_t seen = m_word.load(std::memory_order_relaxed);
        while ((seen & kCallbacks) == 0 && !MustWake<AutoReset>(seen)) {
            if (m_word.compare_exchange_weak(seen, AfterSet<AutoReset>(seen))) {
                return true;
            }
        }
        return false;
    }
    template<bool AutoReset>
    [[nodiscard]] static bool MustWake(std::uint64_t before) noexcept
    {
        return AutoReset ? Sleepers(before) > Grants(before) : Sleepers(before) != 0;
    }
    /// Auto: takes the signal if there is one.
    [[nodiscard]] bool TryTake() noexcept
    {
        std::uint64_t seen = m_word.load(std::memory_order_relaxed);
        while ((seen & kSet) != 0) {
            if (m_word.compare_exchange_weak(seen, seen & ~kSet, std::memory_order_acquire,
                                             std::memory_order_relaxed)) {
                return true;
            }
        }
        return false;
    }

    /// One attempt at `seen` -> `next`; on failure `seen` is what the word holds.
    bool Change(std::uint64_t& seen, std::uint64_t next) noexcept { return m_word.compare_exchange_weak(seen, next); }
    void Mark(std::uint64_t flag) noexcept { m_word.fetch_or(flag); }
    void Unmark(std::uint64_t flag) noexcept { m_word.fetch_and(~flag); }
    /// A signaller has run its callbacks. True: the destructor sleeps on the high half.
    [[nodiscard]] bool LeaveSignallers() noexcept { return (m_word.fetch_sub(kSignaller) & kDying) != 0; }

    [[nodiscard]] static std::uint64_t Sleepers(std::uint64_t word) noexcept { return word >> 32 & kMostSleepers; }
    [[nodiscard]] static std::uint64_t Grants(std::uint64_t word) noexcept { return word >> 44 & kMostSleepers; }
    [[nodiscard]] static std::uint64_t Signallers(std::uint64_t word) noexcept { return word >> 56; }
    [[nodiscard]] static std::uint32_t Changes(std::uint64_t word) noexcept
    {
        return static_cast<std::uint32_t>(word) / kChange;
    }
    [[nodiscard]] void const* Address(WordHalf half = WordHalf::Low) const noexcept
    {
        return HalfAddress(m_word, half);
    }

    /// The word after a signal. Its sleepers are released: by the change count, or one by a grant.
    template<bool AutoReset>
    [[nodiscard]] static std::uint64_t AfterSet(std::uint64_t seen) noexcept
    {
        if constexpr (AutoReset) {
            return MustWake<true>(seen) ? WithChange(seen) + kGrant : seen | kSet;
        } else {
            std::uint64_t const rest = seen & ~(kMostSleepers * kSleeper);
            return ((seen & kSet) != 0 ? rest : WithChange(rest)) | kSet;
        }
    }

private:
    /// The change count wraps within the low half.
    static std::uint64_t WithChange(std::uint64_t word) noexcept
    {
        return (word & 0xFFFFFFFF'00000000) | static_cast<std::uint32_t>(static_cast<std::uint32_t>(word) + kChange);
    }

    std::atomic<std::uint64_t> m_word = 0;
};

static_assert(sizeof(LockWord) == 4 && sizeof(SemaphoreWord) == 8);
static_assert(sizeof(SharedLockWord) == 8 && sizeof(EventWord) == 8);

} // namespace qvxsys::detail
