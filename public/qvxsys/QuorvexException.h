#pragma once
// QuorvexException: the base of the library's exceptions. It carries a stack of messages, a second, redacted stack, and
// an ErrorInfo that all copies share.
//
//     void Load(TStringCore const& name)
//     {
//         try {
//             Parse(name);
//         } catch (...) {
//             StackExceptionAndRethrow(TFormatStringCore(u"while loading \"%1\"").arg(name));
//         }
//     }
//
//     try {
//         Load(u"settings");
//     } catch (QuorvexException const& e) {
//         std::cerr << e.CollateMessagesForLog().toStdString();      // innermost message first, one a line
//     }
//
// Messages are for people. A plain text goes to the first stack only, since it may hold what must not leave the
// machine; the result of a formatter goes to both. To keep an exception for later, Clone() it, and Throw() the clone:
// both keep the dynamic class where that class says so. This is not a std::exception.
//
// A text argument is a TStringCore or anything it is made of; a format is a TFormatStringCore. A literal is a text.
// One object must not be used from two threads when either changes it; copies are independent but for the ErrorInfo.

#include <concepts>
#include <exception>
#include <initializer_list>
#include <list>
#include <memory>
#include <vector>

#include <qvxsys/Platform.h>
#include <qvxsys/TError.h>
#include <qvxsys/TStringCore.h>

class TFormatStringCore;

namespace qvxsys::detail {

/// Text that a message can be made of, besides strings.
template<class T>
concept MessageText = TextArgument<T> && !TCType::Character<T> && !std::same_as<T, TStringCore>;

} // namespace qvxsys::detail

/// The base of the library's exceptions: a stack of messages, and the error's record.
class QVXSYS_API QuorvexException
{
public:
    /// @name Construction
    /// Without an ErrorInfo the error is ErrorInfo::NoError(). An ErrorInfo is copied, a shared pointer is shared (a
    /// null one counts as NoError()). An empty message is left out; a format is stacked as StackMessage does. The
    /// redacted stack starts empty but for formats and copies.
    /// @{
    QuorvexException();
    QuorvexException(TError::ErrorInfo const& info);
    QuorvexException(std::list<TStringCore> const& messages);
    QuorvexException(std::list<TStringCore> const& messages, TError::ErrorInfo const& info);
    QuorvexException(std::list<TStringCore> const& messages, std::shared_ptr<TError::ErrorInfo> info);
    QuorvexException(std::initializer_list<TStringCore> messages, TError::ErrorInfo const& info)
        : QuorvexException(std::list<TStringCore>(messages), info)
    {}
    QuorvexException(std::initializer_list<TStringCore> messages, std::shared_ptr<TError::ErrorInfo> info)
        : QuorvexException(std::list<TStringCore>(messages), static_cast<std::shared_ptr<TError::ErrorInfo>&&>(info))
    {}
    QuorvexException(TStringCore const& message);
    QuorvexException(TStringCore const& message, TError::ErrorInfo const& info);
    QuorvexException(TStringCore const& message, std::shared_ptr<TError::ErrorInfo> info);
    /// Throw what TFormatStringCore::result() throws.
    QuorvexException(TFormatStringCore const& message);
    QuorvexException(TFormatStringCore const& message, TError::ErrorInfo const& info);
    QuorvexException(TFormatStringCore const& message, std::shared_ptr<TError::ErrorInfo> info);
    /// With what() from the local 8-bit encoding.
    QuorvexException(std::exception const& e);
    QuorvexException(std::exception const& e, TError::ErrorInfo const& info);
    template<qvxsys::detail::MessageText P>
    QuorvexException(P const& message) : QuorvexException(TStringCore(message))
    {}
    template<qvxsys::detail::MessageText P>
    QuorvexException(P const& message, TError::ErrorInfo const& info) : QuorvexException(TStringCore(message), info)
    {}
    template<qvxsys::detail::MessageText P>
    QuorvexException(P const& message, std::shared_ptr<TError::ErrorInfo> info)
        : QuorvexException(TStringCore(message), static_cast<std::shared_ptr<TError::ErrorInfo>&&>(info))
    {}
    /// Copies both stacks and shares the ErrorInfo.
    QuorvexException(QuorvexException const& other);
    QuorvexException& operator=(QuorvexException const& other);
    /// @}

    virtual ~QuorvexException();
    /// A new copy of the same class, which the caller deletes.
    [[nodiscard]] virtual QuorvexException* Clone() const;
    /// Throws a copy of this object as an object of its class.
    [[noreturn]] virtual void Throw() const;
    /// All messages from front to back, each ended by a line feed unless it ends with one. "" for an empty stack.
    [[nodiscard]] virtual TStringCore GetConcatenatedMessages() const;
    /// The first message, "" for an empty stack.
    [[nodiscard]] virtual TStringCore GetMessagesFront() const;
    /// The text for logs: here GetConcatenatedMessages().
    [[nodiscard]] virtual TStringCore CollateMessagesForLog() const;

    /// The error, valid as long as the exception.
    [[nodiscard]] QuorvexError const& GetError() const noexcept QVXSYS_LIFETIME_BOUND { return m_errorInfo->error; }
    /// The error's code.
    [[nodiscard]] unsigned int GetErrorCode() const noexcept { return m_errorInfo->error.GetCode(); }
    /// The name of the error's code.
    [[nodiscard]] TStringCore const& GetErrorName() const noexcept QVXSYS_LIFETIME_BOUND
    {
        return m_errorInfo->error.GetCodeName();
    }
    /// Where the error came from.
    [[nodiscard]] TError::ErrorSource const& GetErrorSource() const noexcept QVXSYS_LIFETIME_BOUND
    {
        return m_errorInfo->source;
    }
    /// The error's record, valid as long as the exception.
    [[nodiscard]] TError::ErrorInfo const& GetErrorInfo() const noexcept QVXSYS_LIFETIME_BOUND { return *m_errorInfo; }

    /// The message stack, front first.
    [[nodiscard]] std::vector<TStringCore> GetMessagesVector() const;
    /// The messages that may be shown to strangers.
    [[nodiscard]] std::list<TStringCore> const& GetRedactedMessages() const noexcept QVXSYS_LIFETIME_BOUND
    {
        return *m_redactedMessages;
    }

    /// @name The message stack
    /// Empty messages are left out. Plain text never touches the redacted stack, except that SetMessage empties it. The
    /// forms with a format throw what TFormatStringCore::result() throws.
    /// @{
    /// At the end.
    void StackMessage(TStringCore const& message);
    void StackMessage(TFormatStringCore const& message);
    /// At the front.
    void StackMessageFront(TStringCore const& message);
    void StackMessageFront(TFormatStringCore const& message);
    /// Instead of all messages of both stacks.
    void SetMessage(TStringCore const& message);
    void SetMessage(TFormatStringCore const& message);
    /// Empties the message stack; the redacted one keeps its messages.
    void ClearMessages() noexcept;
    template<qvxsys::detail::MessageText P>
    void StackMessage(P const& message)
    {
        StackMessage(TStringCore(message));
    }
    template<qvxsys::detail::MessageText P>
    void StackMessageFront(P const& message)
    {
        StackMessageFront(TStringCore(message));
    }
    template<qvxsys::detail::MessageText P>
    void SetMessage(P const& message)
    {
        SetMessage(TStringCore(message));
    }
    /// @}

    /// Sets `out` to what() from the local 8-bit encoding.
    static void ToString(std::exception const& e, TStringCore& out);

private:
    using Messages = std::list<TStringCore>;

    // Keeps this constructor out of what users' arguments can choose.
    struct FromParts
    {};
    QuorvexException(FromParts, Messages&& messages, std::shared_ptr<TError::ErrorInfo>&& info);

    // None of the three is ever null.
    std::unique_ptr<Messages> m_messages;
    std::unique_ptr<Messages> m_redactedMessages;
    std::shared_ptr<TError::ErrorInfo> m_errorInfo;
};
static_assert(sizeof(QuorvexException) == 40);

/// Memory has run out. A clone needs nothing of the original: it has the message "Out of memory", the code 0x2A6E0D79
/// and source 4, whatever was cloned.
class QVXSYS_API QuorvexOutOfMemoryException : public QuorvexException
{
public:
    /// With the message "Out of memory".
    QuorvexOutOfMemoryException(TError::ErrorInfo const& info);
    QuorvexOutOfMemoryException(TStringCore const& message, TError::ErrorInfo const& info);
    QuorvexOutOfMemoryException(std::list<TStringCore> const& messages, TError::ErrorInfo const& info);
    QuorvexOutOfMemoryException(std::initializer_list<TStringCore> messages, TError::ErrorInfo const& info)
        : QuorvexOutOfMemoryException(std::list<TStringCore>(messages), info)
    {}
    QuorvexOutOfMemoryException(QuorvexOutOfMemoryException const&) = default;
    QuorvexOutOfMemoryException& operator=(QuorvexOutOfMemoryException const&) = default;
    ~QuorvexOutOfMemoryException() override;
    [[nodiscard]] QuorvexException* Clone() const override;
    [[noreturn]] void Throw() const override;
};

/// An error that is the user's to put right. Clones and rethrown copies are plain QuorvexExceptions.
class QVXSYS_API QuorvexUserErrorException : public QuorvexException
{
public:
    /// With a message. Throws what TFormatStringCore::result() throws.
    QuorvexUserErrorException(TFormatStringCore const& message, TError::ErrorInfo const& info);
    /// With a message.
    QuorvexUserErrorException(TStringCore const& message, TError::ErrorInfo const& info);
    template<qvxsys::detail::MessageText P>
    QuorvexUserErrorException(P const& message, TError::ErrorInfo const& info)
        : QuorvexUserErrorException(TStringCore(message), info)
    {}
    QuorvexUserErrorException(QuorvexUserErrorException const&) = default;
    QuorvexUserErrorException& operator=(QuorvexUserErrorException const&) = default;
    ~QuorvexUserErrorException() override;
};

/// To be called in a catch handler: stacks the message onto the exception in flight when that is a QuorvexException,
/// and rethrows it, the same object. Any other exception is rethrown as it is. With no exception in flight the program
/// ends (std::terminate), as for a bare `throw;`.
/// A format that cannot be formatted throws its own error instead.
[[noreturn]] QVXSYS_API void StackExceptionAndRethrow(TStringCore const& message);
[[noreturn]] QVXSYS_API void StackExceptionAndRethrow(TFormatStringCore const& message);
template<qvxsys::detail::MessageText P>
[[noreturn]] void StackExceptionAndRethrow(P const& message)
{
    StackExceptionAndRethrow(TStringCore(message));
}
