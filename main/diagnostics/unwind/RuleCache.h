#pragma once
// The rules of the frames that were met, by address.
//
// Each entry is one 64-bit word, so reading and writing it is atomic and nobody waits for anybody: 35 bits of the
// address's hash and 29 bits of rule. The hash of a 47-bit address is a product with an odd number, a bijection; 12
// bits of it choose the set and the entry keeps the others, so an entry tells its address exactly. What does not fit in
// 29 bits (frames of 32 KiB and more, rare places of registers) is not kept.
//
// A rule is right for as long as the same code is at its address. An entry therefore has the number of its module, to
// be compared with what is there now; 0 for modules that cannot be unloaded before this library.

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "CfiRules.h"

namespace qvxsys::unwind {

class RuleCache
{
public:
    enum Kind : std::uint64_t { None, FromStack, FromFrame, Other };

    /// An entry. The fields are made for being used as they are: offsets in words, shifted by masks alone.
    struct Entry
    {
        std::uint64_t word;

        [[nodiscard]] Kind Is() const noexcept { return static_cast<Kind>(word & 3); }
        /// From the stack or frame pointer up to the canonical frame address, in bytes.
        [[nodiscard]] std::uint64_t CfaOffset() const noexcept { return word >> 4 & 0x7FF8; }
        /// Where the frame pointer is, in words below the canonical frame address; 0: in its register.
        [[nodiscard]] std::uint64_t Saved() const noexcept { return word >> 2 & 0x1F; }
        [[nodiscard]] std::uint16_t Module() const noexcept { return static_cast<std::uint16_t>(word >> 19 & 0x3FF); }
    };

    /// The entry of an address; with Is() == None when there is none. What its module's record says can be read then.
    [[nodiscard]] Entry Find(std::uintptr_t pc) const noexcept
    {
        std::uint64_t const hash = Hash(pc);
        Set const& set = m_sets[hash >> kTagBits];
        std::uint64_t const tag = hash & kTagMask;
        std::uint64_t word = set.ways[0].load(std::memory_order_acquire);
        if (word >> kTagShift != tag) {
            word = set.ways[1].load(std::memory_order_acquire);
            word = word >> kTagShift == tag ? word : 0;
        }
        return {word};
    }

    /// Keeps a rule if it can be kept.
    void Insert(std::uintptr_t pc, FrameRule const& rule, std::uint16_t module) noexcept
    {
        std::uint64_t const packed = pc >> 47 == 0 ? Pack(rule) : 0;
        if (packed == 0) {
            return;
        }
        std::uint64_t const hash = Hash(pc);
        std::uint64_t const word = packed | std::uint64_t{module} << 19 | hash << kTagShift;
        // What was first becomes second: two addresses of one set that come in turns both stay.
        Set& set = m_sets[hash >> kTagBits];
        std::uint64_t const first = set.ways[0].load(std::memory_order_acquire);
        if (first != 0 && first >> kTagShift != word >> kTagShift) {
            set.ways[1].store(first, std::memory_order_release);
        }
        set.ways[0].store(word, std::memory_order_release);
    }

    [[nodiscard]] static FrameRule Unpack(Entry entry) noexcept
    {
        FrameRule rule;
        if (entry.Is() == Other) {
            rule.kind = static_cast<FrameRule::Kind>(entry.word >> 2 & 3);
            if (rule.kind == FrameRule::Kind::Frame) {
                rule.cfaBase = FrameRule::Base::FramePointer;
                rule.cfaInMemory = true;
                rule.cfaOffset = -static_cast<std::int64_t>(entry.CfaOffset());
                rule.framePointer = FrameRule::Saved::FromFramePointer;
            }
            return rule;
        }
        rule.kind = FrameRule::Kind::Frame;
        rule.cfaBase = entry.Is() == FromStack ? FrameRule::Base::StackPointer : FrameRule::Base::FramePointer;
        rule.cfaOffset = static_cast<std::int64_t>(entry.CfaOffset());
        rule.framePointer = entry.Saved() != 0 ? FrameRule::Saved::FromCfa : FrameRule::Saved::No;
        rule.framePointerOffset = -8 * static_cast<std::int64_t>(entry.Saved());
        return rule;
    }

private:
    static constexpr unsigned kSetBits = 12;
    static constexpr unsigned kTagBits = 47 - kSetBits;
    static constexpr unsigned kTagShift = 64 - kTagBits;
    static constexpr std::uint64_t kTagMask = (std::uint64_t{1} << kTagBits) - 1;

    struct Set
    {
        std::atomic<std::uint64_t> ways[2];
    };

    static std::uint64_t Hash(std::uintptr_t pc) noexcept
    {
        return pc * 0x9E3779B97F4A7C15u & ((std::uint64_t{1} << 47) - 1);
    }

    /// A function that has aligned its stack, as compilers do that.
    static bool IsAligned(FrameRule const& rule) noexcept
    {
        return rule.kind == FrameRule::Kind::Frame && rule.cfaInMemory &&
               rule.cfaBase == FrameRule::Base::FramePointer && rule.cfaOffset <= 0 && rule.cfaOffset >= -0x7FF8 &&
               rule.cfaOffset % 8 == 0 && rule.framePointer == FrameRule::Saved::FromFramePointer &&
               rule.framePointerOffset == 0;
    }

    /// 0 when it does not fit.
    static std::uint64_t Pack(FrameRule const& rule) noexcept
    {
        if (rule.kind == FrameRule::Kind::Signal || rule.kind == FrameRule::Kind::End) {
            return Other | static_cast<std::uint64_t>(rule.kind) << 2;
        }
        if (IsAligned(rule)) {
            return Other | static_cast<std::uint64_t>(rule.kind) << 2 |
                   static_cast<std::uint64_t>(-rule.cfaOffset) << 4;
        }
        bool const saved = rule.framePointer == FrameRule::Saved::FromCfa;
        std::int64_t const at = saved ? rule.framePointerOffset : 0;
        if (rule.kind != FrameRule::Kind::Frame || rule.cfaInMemory ||
            rule.framePointer == FrameRule::Saved::FromFramePointer || rule.cfaOffset < 8 || rule.cfaOffset > 0x7FF8 ||
            rule.cfaOffset % 8 != 0 || at % 8 != 0 || at > 0 || at < std::int64_t{-31} * 8 || (saved && at > -16)) {
            return 0;
        }
        std::uint64_t const base = rule.cfaBase == FrameRule::Base::StackPointer ? FromStack : FromFrame;
        return base | static_cast<std::uint64_t>(-at / 8) << 2 | static_cast<std::uint64_t>(rule.cfaOffset) << 4;
    }

    Set m_sets[std::size_t{1} << kSetBits];
};

} // namespace qvxsys::unwind
