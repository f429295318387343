#pragma once
// What TStringCore inherits from TStringStorage: how its units are stored, its size and capacity, and access to single
// units. The object holds up to 14 units itself; a longer text lives in a block that copies share until one of them is
// written to.
//
//     TStringCore text = u"four";
//     text.reserve(100);                        // a block with room for 100 units
//     text[0] = u'F';                           // non-const access detaches, that is copies a shared block
//     char16_t const last = text.view().at(3);  // reading through a view or a const reference does not

#include <atomic>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

#include <qvxsys/Platform.h>
#include <qvxsys/TextArguments.h>

/// The heap block of a long string. Allocated as one piece with TRealloc, freed with TFree.
struct TStringBlock
{
    std::int32_t references; ///< the strings that share the block; changed atomically only
    std::int32_t capacity;   ///< units in the text area, the terminator's included
    std::int32_t length;     ///< units of text

    /// The text area: `capacity` units right behind the header.
    [[nodiscard]] char16_t* Text() noexcept { return reinterpret_cast<char16_t*>(this + 1); }
};
static_assert(offsetof(TStringBlock, references) == 0 && offsetof(TStringBlock, capacity) == 4 &&
              offsetof(TStringBlock, length) == 8 && sizeof(TStringBlock) == 12);

/// Storage and units of a TStringCore. Not to be used by itself.
class QVXSYS_API TStringStorage
{
public:
    using value_type = char16_t;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using reference = char16_t&;
    using const_reference = char16_t const&;
    using iterator = char16_t*;
    using const_iterator = char16_t const*;
    using reverse_iterator = std::reverse_iterator<iterator>;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;

    /// The most units the object itself holds, and the capacity that goes with it.
    QVXSYS_API_CONSTANT static constexpr int kInlineLength = 14;
    QVXSYS_API_CONSTANT static constexpr int kInlineCapacity = 15; ///< with the terminator

    /// @name Size and storage
    /// @{
    [[nodiscard]] int length() const noexcept { return IsBlock() ? Block()->length : m_units[kFormSlot]; }
    [[nodiscard]] std::size_t size() const noexcept { return static_cast<std::size_t>(length()); }
    /// 2 x length.
    [[nodiscard]] std::size_t lengthInBytes() const noexcept { return size() * sizeof(char16_t); }
    /// A pair counts once, a lone surrogate once. Linear.
    [[nodiscard]] int lengthInCodePoints() const noexcept;
    [[nodiscard]] bool empty() const noexcept { return length() == 0; }
    [[nodiscard]] bool isEmpty() const noexcept { return length() == 0; }

    /// Of a terminated text; 0 for null. Wide text counts as the UTF-16 it stands for.
    [[nodiscard]] static int length(char16_t const* s) noexcept;
    template<qvxsys::detail::WidePointer W>
    [[nodiscard]] static int length(W const& s) noexcept
    {
        return WideLength(s);
    }
    [[nodiscard]] static std::size_t lengthInBytes(char16_t const* s) noexcept;
    template<qvxsys::detail::WidePointer W>
    [[nodiscard]] static std::size_t lengthInBytes(W const& s) noexcept
    {
        return static_cast<std::size_t>(WideLength(s)) * sizeof(char16_t);
    }
    [[nodiscard]] static int lengthInCodePoints(char16_t const* s) noexcept;
    template<qvxsys::detail::WidePointer W>
    [[nodiscard]] static int lengthInCodePoints(W const& s)
    {
        return WideLengthInCodePoints(s);
    }

    /// The units that fit without a new allocation, the terminator's included: 15 in the object, else the block's.
    [[nodiscard]] int capacity() const noexcept { return IsBlock() ? Block()->capacity : kInlineCapacity; }
    /// Room for n units; never shrinks. A shared block is detached. Throws "Negative allocation size; probable
    /// overflow" for a negative n.
    void reserve(int n);
    /// Sets the length; units behind the old length are left as they are in memory: write them. A negative n counts as
    /// 0.
    void resize(int n) { SetLength(n); }
    /// Gives back unused room. Up to 14 units return into the object unless the block is shared; a shared block is
    /// detached at the size needed.
    void squeeze();
    /// The empty string, without a block.
    void clear() noexcept
    {
        if (IsBlock()) {
            Release(Block());
        }
        BecomeEmpty();
    }
    void swap(TStringStorage& other) noexcept
    {
        char16_t units[kSlots];
        std::memcpy(units, m_units, sizeof units);
        std::memcpy(m_units, other.m_units, sizeof units);
        std::memcpy(other.m_units, units, sizeof units);
    }
    /// @}

    /// @name Element access
    /// An index i with 0 <= i <= length is valid; at the length stands the terminating 0. Members on a non-const string
    /// detach.
    /// @{
    /// Throws "TStringCore::at(int): argument out of range."
    [[nodiscard]] char16_t at(int i) const
    {
        if (static_cast<unsigned>(i) > static_cast<unsigned>(length())) {
            ThrowOutOfRange("TStringCore::at(int): argument out of range.");
        }
        return constData()[i];
    }
    /// Throws "TStringCore::operator[int] argument out of range."
    [[nodiscard]] char16_t& operator[](int i)
    {
        if (static_cast<unsigned>(i) > static_cast<unsigned>(length())) {
            ThrowOutOfRange("TStringCore::operator[int] argument out of range.");
        }
        return data()[i];
    }
    /// Throws "TStringCore::operator[int] const argument out of range."
    [[nodiscard]] char16_t operator[](int i) const
    {
        if (static_cast<unsigned>(i) > static_cast<unsigned>(length())) {
            ThrowOutOfRange("TStringCore::operator[int] const argument out of range.");
        }
        return constData()[i];
    }
    /// Throws "TStringCore::operator[size_type] argument out of range."
    [[nodiscard]] char16_t& operator[](std::size_t i)
    {
        if (i > size()) {
            ThrowOutOfRange("TStringCore::operator[size_type] argument out of range.");
        }
        return data()[i];
    }
    /// Throws "TStringCore::operator[size_type] const argument out of range."
    [[nodiscard]] char16_t operator[](std::size_t i) const
    {
        if (i > size()) {
            ThrowOutOfRange("TStringCore::operator[size_type] const argument out of range.");
        }
        return constData()[i];
    }
    /// Other integer types work as size_t does, and a negative value is out of range.
    template<qvxsys::detail::OtherIndex I>
    [[nodiscard]] char16_t& operator[](I i)
    {
        return (*this)[IndexOf(i)];
    }
    template<qvxsys::detail::OtherIndex I>
    [[nodiscard]] char16_t operator[](I i) const
    {
        return (*this)[IndexOf(i)];
    }

    /// The first and the last unit; of an empty string the terminator.
    [[nodiscard]] char16_t front() const noexcept { return constData()[0]; }
    [[nodiscard]] char16_t& front() { return data()[0]; }
    [[nodiscard]] char16_t back() const noexcept { return constData()[LastIndex()]; }
    [[nodiscard]] char16_t& back() { return data()[LastIndex()]; }

    [[nodiscard]] char16_t const* data() const noexcept QVXSYS_LIFETIME_BOUND { return constData(); }
    [[nodiscard]] char16_t const* constData() const noexcept QVXSYS_LIFETIME_BOUND
    {
        return IsBlock() ? Block()->Text() : m_units;
    }
    /// Detaches. The terminator may be read, not changed.
    [[nodiscard]] char16_t* data() QVXSYS_LIFETIME_BOUND
    {
        if (!IsBlock()) {
            return m_units;
        }
        if (IsShared(Block())) {
            Detach(Block()->capacity);
        }
        return Block()->Text();
    }

    [[nodiscard]] iterator begin() QVXSYS_LIFETIME_BOUND { return data(); }
    [[nodiscard]] iterator end() QVXSYS_LIFETIME_BOUND { return data() + length(); }
    [[nodiscard]] const_iterator begin() const noexcept QVXSYS_LIFETIME_BOUND { return constData(); }
    [[nodiscard]] const_iterator end() const noexcept QVXSYS_LIFETIME_BOUND { return constData() + length(); }
    [[nodiscard]] const_iterator cbegin() const noexcept QVXSYS_LIFETIME_BOUND { return begin(); }
    [[nodiscard]] const_iterator cend() const noexcept QVXSYS_LIFETIME_BOUND { return end(); }
    [[nodiscard]] reverse_iterator rbegin() { return reverse_iterator(end()); }
    [[nodiscard]] reverse_iterator rend() { return reverse_iterator(begin()); }
    [[nodiscard]] const_reverse_iterator rbegin() const noexcept { return const_reverse_iterator(end()); }
    [[nodiscard]] const_reverse_iterator rend() const noexcept { return const_reverse_iterator(begin()); }
    [[nodiscard]] const_reverse_iterator crbegin() const noexcept { return rbegin(); }
    [[nodiscard]] const_reverse_iterator crend() const noexcept { return rend(); }
    /// @}

protected:
    TStringStorage() noexcept { BecomeEmpty(); }
    TStringStorage(TStringStorage const& other) noexcept
    {
        if (other.IsBlock()) {
            References(other.Block()).fetch_add(1, std::memory_order_relaxed);
        }
        std::memcpy(m_units, other.m_units, sizeof m_units);
    }
    TStringStorage(TStringStorage&& other) noexcept
    {
        std::memcpy(m_units, other.m_units, sizeof m_units);
        other.BecomeEmpty();
    }
    TStringStorage& operator=(TStringStorage const& other) noexcept
    {
        if (!IsBlock() && !other.IsBlock()) {
            std::memmove(m_units, other.m_units, sizeof m_units);
        } else {
            AssignShared(other);
        }
        return *this;
    }
    TStringStorage& operator=(TStringStorage&& other) noexcept
    {
        if (this != &other) {
            AssignMoved(other);
        }
        return *this;
    }
    ~TStringStorage()
    {
        if (IsBlock()) {
            Release(Block());
        }
    }

    QVXSYS_API_CONSTANT static constexpr int kSlots = 16;
    QVXSYS_API_CONSTANT static constexpr int kFormSlot = 15;

    // The form: slot 15 is the inline length, or negative (as a signed 16-bit value) when the first slots hold a block.
    // Blocks have a capacity of 16 or more, so 16 units can be read in either form (TextComparison.h).
    [[nodiscard]] bool IsBlock() const noexcept { return static_cast<std::int16_t>(m_units[kFormSlot]) < 0; }
    [[nodiscard]] TStringBlock* Block() const noexcept
    {
        TStringBlock* block;
        std::memcpy(&block, m_units, sizeof(void*));
        return block;
    }
    void SetBlock(TStringBlock* block) noexcept
    {
        std::memcpy(m_units, &block, sizeof(void*));
        m_units[kFormSlot] = static_cast<char16_t>(-1);
    }
    void BecomeEmpty() noexcept { std::memset(m_units, 0, sizeof m_units); }
    void SetInlineLength(int n) noexcept
    {
        m_units[kFormSlot] = static_cast<char16_t>(n);
        m_units[n] = 0;
    }

    static std::atomic_ref<std::int32_t> References(TStringBlock* block) noexcept
    {
        return std::atomic_ref<std::int32_t>(block->references);
    }
    /// Acquire: what other owners read before they let go happens before we write.
    [[nodiscard]] static bool IsShared(TStringBlock* block) noexcept
    {
        return References(block).load(std::memory_order_acquire) > 1;
    }
    static void Release(TStringBlock* block) noexcept
    {
        // A sole owner needs no decrement: nobody else can be taking a reference.
        if (!IsShared(block) || References(block).fetch_sub(1, std::memory_order_acq_rel) == 1) {
            FreeBlock(block);
        }
    }

    /// n <= 14 units by at most two possibly overlapping moves.
    static void CopyShort(char16_t* to, char16_t const* from, unsigned n) noexcept
    {
        // Where the source is an array the compiler knows but the length is not, it would warn of the branches for
        // lengths the array does not have: keep it from looking.
        if (!__builtin_constant_p(n)) {
            __asm__("" : "+r"(from));
        }
        if (n >= 8) {
            CopyEnds<16>(to, from, n);
        } else if (n >= 4) {
            CopyEnds<8>(to, from, n);
        } else if (n >= 2) {
            CopyEnds<4>(to, from, n);
        } else if (n == 1) {
            *to = *from;
        }
    }
    template<std::size_t Bytes>
    static void CopyEnds(char16_t* to, char16_t const* from, unsigned n) noexcept
    {
        struct Chunk
        {
            unsigned char bytes[Bytes];
        } first, last;
        std::size_t const offset = n - Bytes / sizeof(char16_t);
        std::memcpy(&first, from, Bytes);
        std::memcpy(&last, from + offset, Bytes);
        std::memcpy(to, &first, Bytes);
        std::memcpy(to + offset, &last, Bytes);
    }

    template<class I>
    static std::size_t IndexOf(I i) noexcept
    {
        // A negative index becomes one that no string reaches.
        return static_cast<std::size_t>(i);
    }
    [[nodiscard]] int LastIndex() const noexcept { return length() > 0 ? length() - 1 : 0; }

    static void FreeBlock(TStringBlock* block) noexcept;
    [[noreturn]] static void ThrowOutOfRange(char const* message);
    static int WideLength(wchar_t const* s) noexcept;
    static int WideLengthInCodePoints(wchar_t const* s);

    static int GrownCapacity(int n) noexcept;
    static int AddLengths(int a, int b);
    static TStringBlock* Reallocate(TStringBlock* block, int capacity);
    static TStringBlock* NewBlock(int n);
    void Detach(int capacity);
    void MoveToBlock(int capacity);
    void SetCapacity(int target);
    char16_t* SetLength(int n);
    void StoreLength(int n) noexcept;
    char16_t* Grow(int by);

    void AssignShared(TStringStorage const& other) noexcept;
    void AssignMoved(TStringStorage& other) noexcept;

    /// True when p points into the text or at its terminator.
    [[nodiscard]] bool inSelf(char16_t const* p) const noexcept;

    alignas(8) char16_t m_units[kSlots];
};
