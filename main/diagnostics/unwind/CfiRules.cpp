#include "CfiRules.h"

#include <cstring>

namespace qvxsys::unwind {
namespace {

enum : std::uint64_t { kFramePointer = 6, kStackPointer = 7, kReturnAddress = 16 };

/// Reads forward and never past the end; after a failure all is 0.
class Reader
{
public:
    Reader(std::uint8_t const* at, std::uint8_t const* end) noexcept : m_at(at), m_end(end) {}

    [[nodiscard]] bool Failed() const noexcept { return m_failed; }
    [[nodiscard]] bool AtEnd() const noexcept { return m_at == m_end; }

    std::uint64_t Fixed(unsigned bytes) noexcept
    {
        std::uint64_t value = 0;
        if (std::uint8_t const* const at = Skip(bytes)) {
            std::memcpy(&value, at, bytes);
        }
        return value;
    }
    std::uint8_t Byte() noexcept { return static_cast<std::uint8_t>(Fixed(1)); }
    std::uint64_t Unsigned() noexcept { return Leb(false); }
    std::int64_t Signed() noexcept { return static_cast<std::int64_t>(Leb(true)); }
    /// A counted stretch of bytes.
    Reader Block() noexcept
    {
        std::uint64_t const size = Unsigned();
        std::uint8_t const* const at = Skip(size);
        return at != nullptr ? Reader(at, at + size) : Reader(m_end, m_end);
    }
    std::uint8_t const* Skip(std::uint64_t bytes) noexcept
    {
        if (bytes > static_cast<std::uint64_t>(m_end - m_at)) {
            m_failed = true;
            m_at = m_end;
            return nullptr;
        }
        m_at += bytes;
        return m_at - bytes;
    }

private:
    std::uint64_t Leb(bool isSigned) noexcept
    {
        std::uint64_t value = 0;
        for (unsigned shift = 0;; shift += 7) {
            std::uint8_t const byte = Byte();
            if (shift < 64) {
                value |= std::uint64_t{byte & 0x7Fu} << shift;
            }
            if ((byte & 0x80) == 0) {
                return isSigned && (byte & 0x40) != 0 && shift + 7 < 64 ? value | ~std::uint64_t{0} << (shift + 7)
                                                                        : value;
            }
        }
    }

    std::uint8_t const* m_at;
    std::uint8_t const* m_end;
    bool m_failed = false;
};

/// What an expression is worth before any register is known: a sum of one register (or the CFA) and a number, as far as
/// it is that, then perhaps one read from memory. The address is known, so what depends on it alone is a number; so the
/// rule of a PLT entry, which asks how far its instructions have come, becomes a plain one.
struct Value
{
    enum Base : std::uint8_t { Number, Cfa, Stack, Frame, Unknown } base = Unknown;
    bool read = false;
    std::uint64_t offset = 0;

    [[nodiscard]] bool IsNumber() const noexcept { return base == Number && !read; }
};

Value Binary(std::uint8_t operation, Value const& a, Value const& b) noexcept
{
    if (operation == 0x22 && !a.read && !b.read && (a.base == Value::Number || b.base == Value::Number)) { // plus
        return {a.base == Value::Number ? b.base : a.base, false, a.offset + b.offset};
    }
    if (!a.IsNumber() || !b.IsNumber()) {
        return {};
    }
    switch (operation) {
    case 0x1A:
        return {Value::Number, false, a.offset & b.offset};
    case 0x24:
        return {Value::Number, false, b.offset < 64 ? a.offset << b.offset : 0};
    case 0x2A:
        return {Value::Number, false, static_cast<std::int64_t>(a.offset) >= static_cast<std::int64_t>(b.offset)};
    default:
        return {};
    }
}

Value Register(std::uint64_t number, std::uint64_t offset, std::uint64_t pc) noexcept
{
    switch (number) {
    case kFramePointer:
        return {Value::Frame, false, offset};
    case kStackPointer:
        return {Value::Stack, false, offset};
    case kReturnAddress:
        return {Value::Number, false, pc + offset};
    default:
        return {Value::Unknown, false, offset};
    }
}

Value Evaluate(Reader code, std::uint64_t pc, bool startsWithCfa) noexcept
{
    constexpr unsigned kDepth = 8;
    Value stack[kDepth];
    unsigned depth = 0;
    if (startsWithCfa) {
        stack[depth++] = {Value::Cfa, false, 0};
    }
    while (!code.AtEnd()) {
        std::uint8_t const op = code.Byte();
        if (op == 0x06 && depth > 0 && !stack[depth - 1].read && stack[depth - 1].base != Value::Number) { // deref
            stack[depth - 1].read = true;
        } else if (op == 0x23 && depth > 0 && !stack[depth - 1].read) { // plus_uconst
            stack[depth - 1].offset += code.Unsigned();
        } else if ((op == 0x22 || op == 0x1A || op == 0x24 || op == 0x2A) && depth > 1) {
            --depth;
            stack[depth - 1] = Binary(op, stack[depth - 1], stack[depth]);
        } else if (depth == kDepth) {
            return {};
        } else if (op >= 0x30 && op <= 0x4F) { // lit
            stack[depth++] = {Value::Number, false, std::uint64_t{op} - 0x30};
        } else if (op >= 0x70 && op <= 0x8F) { // breg
            auto const offset = static_cast<std::uint64_t>(code.Signed());
            stack[depth++] = Register(op - 0x70u, offset, pc);
        } else if (op == 0x08) { // const1u
            stack[depth++] = {Value::Number, false, code.Byte()};
        } else {
            return {};
        }
    }
    return depth > 0 && !code.Failed() ? stack[depth - 1] : Value{};
}

/// Where a register of the caller's is.
struct Place
{
    enum Kind : std::uint8_t { Same, At, Undefined, Elsewhere } kind = Same;
    Value value; // At: its address
};

struct Row
{
    Value cfa;
    Place framePointer;
    Place returnAddress;
    Place stackPointer;
};

struct Common
{
    std::uint64_t codeFactor = 1;
    std::int64_t dataFactor = 1;
    std::uint8_t pointerEncoding = 0; // DW_EH_PE_absptr
    bool hasAugmentation = false;
    bool isSignal = false;
};

unsigned PointerSize(std::uint8_t encoding) noexcept
{
    switch (encoding & 0x0F) {
    case 0x00:
    case 0x04:
    case 0x0C:
        return 8;
    case 0x02:
    case 0x0A:
        return 2;
    case 0x03:
    case 0x0B:
        return 4;
    default:
        return 0; // of variable length: no linker writes it here
    }
}

bool ReadAugmentation(Reader& in, std::uint8_t const* letters, Common& common) noexcept
{
    Reader data = in.Block();
    common.hasAugmentation = true;
    for (++letters; *letters != 0; ++letters) {
        std::uint8_t encoding;
        switch (*letters) {
        case 'R':
            common.pointerEncoding = data.Byte();
            break;
        case 'L':
            data.Byte();
            break;
        case 'P':
            encoding = data.Byte();
            if (PointerSize(encoding) == 0 || (encoding & 0x70) == 0x50) { // 0x50: aligned
                return false;
            }
            data.Skip(PointerSize(encoding));
            break;
        case 'S':
            common.isSignal = true;
            break;
        case 'B':
            break;
        default:
            return false;
        }
    }
    return !data.Failed() && PointerSize(common.pointerEncoding) != 0;
}

/// Leaves `in` at the first instruction.
bool ReadCommon(Reader& in, Common& common) noexcept
{
    in.Fixed(4); // the entry's own id
    std::uint8_t const version = in.Byte();
    if (version != 1 && version != 3) {
        return false;
    }
    std::uint8_t const* const letters = in.Skip(0);
    while (in.Byte() != 0) {
    }
    common.codeFactor = in.Unsigned();
    common.dataFactor = in.Signed();
    std::uint64_t const returnColumn = version == 1 ? in.Byte() : in.Unsigned();
    if (in.Failed() || returnColumn != kReturnAddress) {
        return false;
    }
    return *letters == 0 || (*letters == 'z' && ReadAugmentation(in, letters, common) && !in.Failed());
}

/// Carries out call frame instructions up to an address.
class Machine
{
public:
    Machine(Common const& common, std::uint64_t function, std::uint64_t pc) noexcept
        : m_common(common), m_at(function), m_pc(pc)
    {}

    bool Run(Reader code) noexcept
    {
        while (!code.AtEnd() && m_at <= m_pc) {
            if (!Step(code) || code.Failed()) {
                return false;
            }
        }
        return true;
    }
    /// What is so far is what DW_CFA_restore goes back to.
    void EndInitial() noexcept { m_initial = row; }

    Row row;

private:
    bool Step(Reader& code) noexcept;
    bool Simple(std::uint8_t op, Reader& code) noexcept;
    bool Cfa(std::uint8_t op, Reader& code) noexcept;

    void Advance(std::uint64_t units) noexcept
    {
        // An address before this one would be an overflow: nothing more is to be done then.
        std::uint64_t const by = units * m_common.codeFactor;
        m_at = m_at + by < m_at ? ~std::uint64_t{0} : m_at + by;
    }
    Place* Find(Row& in, std::uint64_t number) noexcept
    {
        return number == kFramePointer    ? &in.framePointer
               : number == kReturnAddress ? &in.returnAddress
               : number == kStackPointer  ? &in.stackPointer
                                          : nullptr;
    }
    bool Set(std::uint64_t number, Place::Kind kind, Value const& value = {}) noexcept
    {
        if (Place* const place = Find(row, number)) {
            *place = {kind, value};
        }
        return true;
    }
    bool SetOffset(std::uint64_t number, std::int64_t factored) noexcept
    {
        return Set(number, Place::At, {Value::Cfa, false, Scaled(factored)});
    }
    [[nodiscard]] std::uint64_t Scaled(std::int64_t factored) const noexcept
    {
        return static_cast<std::uint64_t>(factored) * static_cast<std::uint64_t>(m_common.dataFactor);
    }
    bool Restore(std::uint64_t number) noexcept
    {
        if (Place* const place = Find(row, number)) {
            *place = *Find(m_initial, number);
        }
        return true;
    }

    static constexpr unsigned kDepth = 8; // compilers use one
    Common const& m_common;
    std::uint64_t m_at;
    std::uint64_t const m_pc;
    Row m_initial;
    Row m_remembered[kDepth];
    unsigned m_depth = 0;
};

bool Machine::Step(Reader& code) noexcept
{
    std::uint8_t const op = code.Byte();
    switch (op >> 6) {
    case 1:
        Advance(op & 0x3F);
        return true;
    case 2:
        return SetOffset(op & 0x3F, static_cast<std::int64_t>(code.Unsigned()));
    case 3:
        return Restore(op & 0x3F);
    default:
        return (op >= 0x0C && op <= 0x0F) || op == 0x12 || op == 0x13 ? Cfa(op, code) : Simple(op, code);
    }
}

bool Machine::Simple(std::uint8_t op, Reader& code) noexcept
{
    std::uint64_t number = 0;
    switch (op) {
    case 0x00:
        return true; // nop
    case 0x02:
        Advance(code.Fixed(1));
        return true;
    case 0x03:
        Advance(code.Fixed(2));
        return true;
    case 0x04:
        Advance(code.Fixed(4));
        return true;
    case 0x05:
        number = code.Unsigned();
        return SetOffset(number, static_cast<std::int64_t>(code.Unsigned()));
    case 0x06:
        return Restore(code.Unsigned());
    case 0x07:
        return Set(code.Unsigned(), Place::Undefined);
    case 0x08:
        return Set(code.Unsigned(), Place::Same);
    case 0x09:
        number = code.Unsigned();
        code.Unsigned();
        return Set(number, Place::Elsewhere); // in a register
    case 0x0A:
        if (m_depth == kDepth) {
            return false;
        }
        m_remembered[m_depth++] = row;
        return true;
    case 0x0B:
        if (m_depth == 0) {
            return false;
        }
        row = m_remembered[--m_depth];
        return true;
    case 0x10: { // expression
        number = code.Unsigned();
        return Set(number, Place::At, Evaluate(code.Block(), m_pc, true));
    }
    case 0x11:
        number = code.Unsigned();
        return SetOffset(number, code.Signed());
    case 0x14:
    case 0x15:
        number = code.Unsigned();
        code.Unsigned();
        return Set(number, Place::Elsewhere); // val_offset
    case 0x16:
        number = code.Unsigned();
        code.Block();
        return Set(number, Place::Elsewhere); // val_expression
    case 0x2E:
        code.Unsigned();
        return true; // GNU_args_size
    case 0x2F:
        number = code.Unsigned();
        return SetOffset(number, static_cast<std::int64_t>(0 - code.Unsigned()));
    default:
        return false;
    }
}

bool Machine::Cfa(std::uint8_t op, Reader& code) noexcept
{
    std::uint64_t number;
    switch (op) {
    case 0x0C: // def_cfa
        number = code.Unsigned();
        row.cfa = Register(number, code.Unsigned(), m_pc);
        break;
    case 0x0D: { // def_cfa_register
        Value const before = row.cfa;
        number = code.Unsigned();
        row.cfa = before.read ? Value{} : Register(number, before.offset, m_pc);
        break;
    }
    case 0x0E:
        row.cfa.offset = code.Unsigned();
        break;
    case 0x12: // def_cfa_sf
        number = code.Unsigned();
        row.cfa = Register(number, Scaled(code.Signed()), m_pc);
        break;
    case 0x13:
        row.cfa.offset = Scaled(code.Signed());
        break;
    default:
        row.cfa = Evaluate(code.Block(), m_pc, false);
        break; // def_cfa_expression
    }
    return true;
}

bool Is(Value const& value, Value::Base base, std::uint64_t offset, bool read) noexcept
{
    return value.base == base && value.offset == offset && value.read == read;
}

/// The registers that the kernel saved lie in the ucontext_t that the stack pointer points to.
bool IsSignalFrame(Row const& row) noexcept
{
    return Is(row.cfa, Value::Stack, SignalFrame::kStackPointer, true) && row.returnAddress.kind == Place::At &&
           Is(row.returnAddress.value, Value::Stack, SignalFrame::kInstruction, false) &&
           row.framePointer.kind == Place::At &&
           Is(row.framePointer.value, Value::Stack, SignalFrame::kFramePointer, false);
}

FrameRule RuleOf(Row const& row, bool isSignal) noexcept
{
    FrameRule rule;
    if (isSignal) {
        rule.kind = IsSignalFrame(row) ? FrameRule::Kind::Signal : FrameRule::Kind::Unsupported;
        return rule;
    }
    if (row.returnAddress.kind == Place::Undefined) {
        rule.kind = FrameRule::Kind::End;
        return rule;
    }
    bool const framed = (row.cfa.base == Value::Stack || row.cfa.base == Value::Frame) &&
                        row.stackPointer.kind == Place::Same && row.returnAddress.kind == Place::At &&
                        Is(row.returnAddress.value, Value::Cfa, static_cast<std::uint64_t>(-8), false);
    Value const& saved = row.framePointer.value;
    if (!framed || row.framePointer.kind == Place::Elsewhere) {
        return rule;
    }
    if (row.framePointer.kind == Place::At) {
        if (saved.read || (saved.base != Value::Cfa && saved.base != Value::Frame)) {
            return rule;
        }
        rule.framePointer = saved.base == Value::Cfa ? FrameRule::Saved::FromCfa : FrameRule::Saved::FromFramePointer;
        rule.framePointerOffset = static_cast<std::int64_t>(saved.offset);
    }
    rule.kind = FrameRule::Kind::Frame;
    rule.cfaBase = row.cfa.base == Value::Stack ? FrameRule::Base::StackPointer : FrameRule::Base::FramePointer;
    rule.cfaInMemory = row.cfa.read;
    rule.cfaOffset = static_cast<std::int64_t>(row.cfa.offset);
    return rule;
}

} // namespace

FrameRule ReadRule(CfiEntry const& entry, std::uint64_t pc) noexcept
{
    Reader commonCode(entry.common, entry.commonEnd);
    Common common;
    if (!ReadCommon(commonCode, common)) {
        return {};
    }
    Reader ownCode(entry.own, entry.ownEnd);
    ownCode.Skip(4 + 2 * PointerSize(common.pointerEncoding)); // the distance to the common entry; begin and length
    if (common.hasAugmentation) {
        ownCode.Block();
    }
    Machine machine(common, entry.function, pc);
    if (ownCode.Failed() || !machine.Run(commonCode)) {
        return {};
    }
    machine.EndInitial();
    return machine.Run(ownCode) ? RuleOf(machine.row, common.isSignal) : FrameRule{};
}

} // namespace qvxsys::unwind
