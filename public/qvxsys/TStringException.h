#pragma once
// TStringCore::Exception: what the text functions throw.
//
//     try {
//         text.at(1000);
//     } catch (TStringCore::Exception const& e) {
//         std::cerr << e.toStdString() << '\n';            // "TStringCore::at(int): argument out of range."
//     }

#include <qvxsys/TStringCore.h>

/// What the text functions throw: a string whose text is the message. It belongs to no other exception family; catch it
/// as this class.
class QVXSYS_API TStringCore::Exception : public TStringCore
{
public:
    /// With a message.
    Exception(char16_t const* message) : TStringCore(message) {}
    Exception(wchar_t const* message) : TStringCore(message) {}
    Exception(TStringCore const& message) noexcept : TStringCore(message) {}
    Exception(TStringCore&& message) noexcept : TStringCore(static_cast<TStringCore&&>(message)) {}
    Exception(Exception const&) noexcept = default;
    Exception(Exception&&) noexcept = default;
    Exception& operator=(Exception const&) = default;
    Exception& operator=(Exception&&) noexcept = default;
    ~Exception();

    /// A copy on the heap, which the caller deletes.
    [[nodiscard]] Exception* Clone() const;
    /// Throws a copy of this object.
    [[noreturn]] void Throw() const;
    /// Both are the message.
    [[nodiscard]] TStringCore CollateMessagesForLog() const;
    /// The message.
    [[nodiscard]] TStringCore GetConcatenatedMessages() const;
};
