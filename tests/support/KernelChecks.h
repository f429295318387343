#pragma once
// The conversion kernels of every instruction set against ICU, for tests and fuzzers. Source and destination lie right
// against inaccessible pages, so that one unit read or written outside them ends the program. What differs is thrown.

#include <algorithm>
#include <string>

#include "kernels/Kernels.h"
#include "support/GuardedMemory.h"
#include "support/IcuConvert.h"
#include "support/InstructionSets.h"

class KernelChecks
{
public:
    static constexpr std::size_t kMost = 1 << 19; ///< units in a text

    void Check(std::string_view text) const
    {
        auto const expected = icu_reference::ToUtf16(text);
        Each(text, [&](Kernels const& k, char const* src, std::size_t n) {
            Expect<char16_t>("utf8ToUtf16", n, expected, [&](auto&... to) { return k.utf8ToUtf16(src, n, to...); });
            Require(k.utf16LengthOfUtf8(src, n) == expected.text.size(), "utf16LengthOfUtf8");
            CheckPrefix(k, src, n);
        });
    }

    void Check(std::u16string_view text) const
    {
        auto const utf8 = icu_reference::ToUtf8(text);
        auto const utf32 = icu_reference::ToUtf32(text);
        auto wellFormed = icu_reference::ToUtf16(utf32.text);
        wellFormed.substitutions = utf32.substitutions;
        Each(text, [&](Kernels const& k, char16_t const* src, std::size_t n) {
            Expect<char>("utf16ToUtf8", 3 * n, utf8, [&](auto&... to) { return k.utf16ToUtf8(src, n, to...); });
            Expect<char32_t>("utf16ToUtf32", n, utf32, [&](auto&... to) { return k.utf16ToUtf32(src, n, to...); });
            Expect<char16_t>("copyWellFormed", n, wellFormed, [&](auto&... to) {
                k.copyWellFormed(src, n, to...);
                return n;
            });
            Require(k.utf8LengthOfUtf16(src, n) == utf8.text.size(), "utf8LengthOfUtf16");
            Require(k.countCodePoints(src, n) == utf32.text.size(), "countCodePoints");
            for (char16_t const unit : {u'\0', u'a', n != 0 ? text[n / 2] : u'b'}) {
                auto const count = std::count(text.begin(), text.end(), unit);
                Require(k.countUnit(src, n, unit) == static_cast<std::size_t>(count), "countUnit");
            }
        });
    }

    void Check(std::u32string_view text) const
    {
        auto const strict = icu_reference::ToUtf16(text);
        auto const raw = icu_reference::ToUtf16Raw(text);
        icu_reference::Converted<char> const utf8{icu_reference::ToUtf8Raw(text)};
        Each(text, [&](Kernels const& k, char32_t const* src, std::size_t n) {
            Expect<char16_t>("utf32ToUtf16", 2 * n, strict, [&](auto&... to) { return k.utf32ToUtf16(src, n, to...); });
            Expect<char16_t>("utf32ToUtf16Raw", 2 * n, raw,
                             [&](auto&... to) { return k.utf32ToUtf16Raw(src, n, to...); });
            Expect<char>("utf32ToUtf8Raw", 4 * n, utf8,
                         [&](char* dst, std::size_t&) { return k.utf32ToUtf8Raw(src, n, dst); });
        });
    }

private:
    using Kernels = qvxsys::text::Kernels;

    static void Require(bool condition, char const* what)
    {
        if (!condition) {
            auto const set = quorvex::cpu::CurrentInstructionSet();
            throw std::logic_error(what + std::string(" of ") + quorvex::cpu::InstructionSetName(set));
        }
    }

    /// With the text right before and right behind memory that must not be read; without any when it is empty.
    template<class Unit, class F>
    void Each(std::basic_string_view<Unit> text, F check) const
    {
        for (Unit* const src : {m_source.Begin<Unit>(), m_source.Last<Unit>(text.size())}) {
            std::copy(text.begin(), text.end(), src);
            OnEverySet([&] { check(qvxsys::text::kernels(), text.empty() ? nullptr : src, text.size()); });
        }
    }

    template<class Unit, class Convert>
    void Expect(char const* what, std::size_t room, icu_reference::Converted<Unit> const& expected,
                Convert convert) const
    {
        for (Unit* const dst : {m_target.Begin<Unit>(), m_target.Last<Unit>(room)}) {
            std::size_t substitutions = 7; // has to be added to
            std::size_t const length = convert(dst, substitutions);
            Require(expected.text == std::basic_string_view<Unit>(dst, length), what);
            Require(substitutions == expected.substitutions + 7, what);
        }
    }

    /// The prefix is what ICU reads, and ends not before what is malformed or 0 but for the last 64 bytes.
    void CheckPrefix(Kernels const& k, char const* src, std::size_t n) const
    {
        char32_t* const dst = m_target.Last<char32_t>(n);
        std::size_t consumed = n + 1;
        std::size_t const length = k.utf8PrefixToUtf32(src, n, dst, consumed);
        auto const* const bytes = reinterpret_cast<std::uint8_t const*>(src);
        std::size_t at = 0;
        std::size_t points = 0;
        std::size_t end = 0;
        for (UChar32 c = 0; at < n; end = at, ++points) {
            U8_NEXT(bytes, at, n, c);
            if (c <= 0) {
                break;
            }
            Require(points >= length || dst[points] == static_cast<char32_t>(c), "utf8PrefixToUtf32");
            Require((points + 1 == length) == (at == consumed), "utf8PrefixToUtf32: length");
        }
        Require(length <= points && (length != 0 || consumed == 0) && end - consumed <= 64, "utf8PrefixToUtf32: end");
    }

    GuardedMemory m_source{kMost * sizeof(char32_t)};
    GuardedMemory m_target{kMost * sizeof(char32_t)};
};
