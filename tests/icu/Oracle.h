#pragma once
// ICU's C functions as the oracle of the flat layer: SAME(ubrk_next, words) calls t_ubrk_next and ubrk_next and expects
// the same result, status and output. The arguments are written once; what differs in type converts itself.

#include <algorithm>
#include <cstdint>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>
#include <qvxsys/IcuFunctions.h>
#include <unicode/parseerr.h>
#include <unicode/umachine.h>

/// The arguments, and what a call leaves in them.
class IcuOracle : public testing::Test
{
protected:
    struct Status
    {
        QvxICU::ICUErrorCode own{};
        UErrorCode theirs{};
        bool used = false;
        operator QvxICU::ICUErrorCode*() { return used = true, &own; }
        operator UErrorCode*() { return used = true, &theirs; }
        int Code() const { return static_cast<int>(own) + theirs; } // the other one is 0
    };
    struct Capacity
    {
        std::int32_t value = 0;
        bool used = false;
        operator std::int32_t() { return used = true, value; }
    };
    struct Parsed
    {
        QvxICU::ICUParseError own;
        UParseError theirs;
        operator QvxICU::ICUParseError*() { return &own; }
        operator UParseError*() { return &theirs; }
    };
    struct Flag
    {
        bool own = false;
        UBool theirs = 0;
        operator bool*() { return &own; }
        operator UBool*() { return &theirs; }
    };
    struct Point
    {
        char32_t own = 0;
        UChar32 theirs = 0;
        operator char32_t*() { return &own; }
        operator UChar32*() { return &theirs; }
    };
    /// A value of any enumeration.
    struct As
    {
        int value;
        template<class Enum>
        requires std::is_enum_v<Enum>
        operator Enum() const { return static_cast<Enum>(value); }
    };

    static constexpr std::size_t kRoom = 256;
    Status status;
    Capacity capacity;
    Parsed parsed;
    Flag flag;
    Point point;
    Point last;
    char16_t units[kRoom];
    char bytes[kRoom];
    std::uint8_t octets[kRoom];
    std::int32_t one = 0;
    std::int32_t two = 0;

    void Prepare(bool ours, int code, std::size_t room)
    {
        status.own = static_cast<QvxICU::ICUErrorCode>(ours ? code : 0);
        status.theirs = static_cast<UErrorCode>(ours ? 0 : code);
        capacity.value = static_cast<std::int32_t>(room);
        parsed.own.line = parsed.own.offset = parsed.theirs.line = parsed.theirs.offset = 0;
        flag = {};
        point = last = {};
        std::fill_n(units, kRoom, u'\uEEEE');
        std::fill_n(bytes, kRoom, '~');
        std::fill_n(octets, kRoom, std::uint8_t{0x7E});
        one = two = -77;
    }

    template<class T>
    static std::string Shown(T value)
    {
        if constexpr (std::is_same_v<std::remove_cv_t<std::remove_pointer_t<T>>, char> && std::is_pointer_v<T>) {
            return value != nullptr ? value : "null";
        } else if constexpr (std::is_same_v<std::remove_cv_t<std::remove_pointer_t<T>>, char16_t> &&
                             std::is_pointer_v<T>) {
            std::string text = "null";
            for (char16_t const* unit = value; unit != nullptr && *unit != 0 && *unit != u'\uEEEE'; ++unit) {
                text += ' ' + std::to_string(*unit);
            }
            return text;
        } else if constexpr (std::is_pointer_v<T>) {
            return value != nullptr ? "object" : "null";
        } else if constexpr (std::is_floating_point_v<T>) {
            return std::to_string(value);
        } else {
            return std::to_string(static_cast<std::int64_t>(
                static_cast<std::make_signed_t<std::conditional_t<std::is_same_v<T, bool>, std::int8_t, T>>>(value)));
        }
    }

    template<class Call>
    std::string Outcome(Call call)
    {
        std::string result = "nothing";
        if constexpr (std::is_void_v<decltype(call())>) {
            call();
        } else {
            result = Shown(call());
        }
        result +=
            ", status " + std::to_string(status.Code()) + ", units" + Shown(static_cast<char16_t*>(units)) + ", bytes ";
        result.append(bytes, kRoom).append(reinterpret_cast<char const*>(octets), kRoom);
        return result + std::to_string(one) + ' ' + std::to_string(two) + ' ' +
               std::to_string(flag.own ? 1 : flag.theirs) + ' ' +
               std::to_string(static_cast<UChar32>(point.own + last.own) + point.theirs + last.theirs) + ' ' +
               std::to_string(parsed.own.line + parsed.theirs.line) + ' ' +
               std::to_string(parsed.own.offset + parsed.theirs.offset);
    }

    template<class Ours, class Theirs>
    void Compare(char const* what, Ours ours, Theirs theirs)
    {
        status.used = capacity.used = false;
        auto const once = [&](int code, std::size_t room) {
            Prepare(false, code, room);
            std::string const expected = Outcome(theirs);
            Prepare(true, code, room);
            EXPECT_EQ(Outcome(ours), expected) << what << " with status " << code << " and room for " << room;
        };
        once(0, kRoom - 8);
        if (capacity.used) {
            once(0, 3);
            once(0, 0);
        }
        if (status.used) {
            once(U_MEMORY_ALLOCATION_ERROR, kRoom - 8);
        }
    }

    /// An object of the layer's and one of ICU's own, opened by the same call.
    template<class Own, class Theirs, auto CloseOwn, auto CloseTheirs>
    class Twin
    {
    public:
        template<class OpenOwn, class OpenTheirs>
        Twin(IcuOracle& test, char const* what, OpenOwn openOwn, OpenTheirs openTheirs)
        {
            test.Prepare(true, 0, kRoom - 8);
            m_theirs = openTheirs();
            m_own = openOwn();
            EXPECT_EQ(static_cast<int>(test.status.own), static_cast<int>(test.status.theirs)) << what;
            EXPECT_EQ(m_own != nullptr, m_theirs != nullptr) << what;
        }
        Twin(Twin const&) = delete;
        Twin& operator=(Twin const&) = delete;
        ~Twin()
        {
            CloseOwn(m_own);
            CloseTheirs(m_theirs);
        }
        operator Own*() const { return m_own; }
        operator Theirs*() const { return m_theirs; }
        explicit operator bool() const { return m_own != nullptr; }

    private:
        Own* m_own;
        Theirs* m_theirs;
    };
};

#define SAME(NAME, ...)                                                                                                \
    Compare(                                                                                                           \
        #NAME, [&] { return QvxICU::t_##NAME(__VA_ARGS__); }, [&] { return ::NAME(__VA_ARGS__); })
#define TWIN(OBJECT, OWN, THEIRS, CLOSE, OPEN, ...)                                                                    \
    Twin<QvxICU::OWN, ::THEIRS, QvxICU::t_##CLOSE, &::CLOSE> const OBJECT(                                             \
        *this, #OPEN, [&] { return QvxICU::t_##OPEN(__VA_ARGS__); }, [&] { return ::OPEN(__VA_ARGS__); })

/// Locales of many scripts, some unknown, some with keywords.
inline char const* const kLocales[] = {"",
                                       "en_US",
                                       "de@collation=phonebook",
                                       "sv",
                                       "tr",
                                       "lt",
                                       "el",
                                       "ar_EG",
                                       "hi_IN",
                                       "th_TH_TH",
                                       "ja_JP@calendar=japanese",
                                       "zh_Hant_TW",
                                       "sr_Latn",
                                       "fr-CA-u-co-trad",
                                       "nn_NO",
                                       "xx_YY",
                                       "en_US_POSIX",
                                       "not a locale"};
