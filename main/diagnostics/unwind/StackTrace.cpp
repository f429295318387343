#include <qvxsys/StackTrace.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>

#include "ModuleTable.h"
#include "StackCapture.h"

namespace qvxsys::detail {
namespace {

void AppendHex(std::string& out, std::uintptr_t value, unsigned leastDigits)
{
    char digits[16];
    unsigned count = 0;
    for (; value != 0 || count < leastDigits; value >>= 4) {
        digits[15 - count++] = "0123456789abcdef"[value & 15];
    }
    out.append(digits + 16 - count, count);
}

void AppendModule(std::string& out, std::uintptr_t address, quorvex::StackModule const& module)
{
    for (char const* c = module.name; *c != 0; ++c) {
        out += static_cast<unsigned char>(*c) < 0x20 || *c == 0x7F ? '?' : *c;
    }
    out += "+0x";
    AppendHex(out, address - module.bias, 1);
    out += ' ';
    for (unsigned i = 0; i < module.buildIdLength; ++i) {
        AppendHex(out, module.buildId[i], 2);
    }
    if (module.buildIdLength == 0) {
        out += '-';
    }
}

} // namespace

void FindTraceModules(void* const* frames, std::uint16_t* modules, int count) noexcept
{
    // A stack goes back and forth between few modules. While it is captured none of them can go.
    constexpr unsigned kRecent = 4;
    std::uint16_t recent[kRecent] = {};
    unsigned next = 0;
    std::uint16_t number = 0;
    for (int i = 0; i < count; ++i) {
        // What a function calls last may return to behind its end, and that may be the end of the module.
        auto const address = reinterpret_cast<std::uintptr_t>(frames[i]) - 1;
        if (!unwind::Module(number).Has(address)) {
            auto const* const known = std::find_if(std::begin(recent), std::end(recent), [address](auto candidate) {
                return unwind::Module(candidate).Has(address);
            });
            number = known != std::end(recent) ? *known : unwind::ModuleAt(address);
            recent[next++ % kRecent] = number;
        }
        modules[i] = number;
    }
}

int CaptureTrace(void** frames, std::uint16_t* modules, int capacity, int skip) noexcept
{
    constexpr int kMost = std::numeric_limits<int>::max() - 1;
    int const count = unwind::CaptureStack(frames, capacity, std::clamp(skip, 0, kMost) + 1);
    FindTraceModules(frames, modules, count);
    return count;
}

quorvex::StackModule const* TraceModule(std::uint16_t number) noexcept
{
    return number != 0 ? &unwind::Module(number) : nullptr;
}

std::string TraceText(void* const* frames, std::uint16_t const* modules, int count)
{
    std::string out;
    for (int i = 0; i < count; ++i) {
        auto const address = reinterpret_cast<std::uintptr_t>(frames[i]);
        out += '#';
        out += std::to_string(i);
        out += " 0x";
        AppendHex(out, address, 16);
        out += ' ';
        if (quorvex::StackModule const* const module = TraceModule(modules[i])) {
            AppendModule(out, address, *module);
        } else {
            out += '?';
        }
        out += '\n';
    }
    return out;
}

} // namespace qvxsys::detail
