#include <qvxsys/QuorvexException.h>

#include <qvxsys/TFormatStringCore.h>

#include "ErrorRecord.h"
#include "ThrowSite.h"

using qvxsys::error::NewRecord;
using TError::ErrorInfo;

namespace {

std::list<TStringCore> ListOf(TStringCore const& message)
{
    std::list<TStringCore> messages;
    if (!message.empty()) {
        messages.push_back(message);
    }
    return messages;
}

TStringCore WhatOf(std::exception const& e)
{
    return TStringCore::fromLocal8Bit(e.what());
}

} // namespace

QuorvexException::QuorvexException(FromParts, Messages&& messages, std::shared_ptr<ErrorInfo>&& info)
    : m_messages(std::make_unique<Messages>(static_cast<Messages&&>(messages))),
      m_redactedMessages(std::make_unique<Messages>()),
      m_errorInfo(info != nullptr ? static_cast<std::shared_ptr<ErrorInfo>&&>(info) : NewRecord(ErrorInfo::NoError()))
{}

QuorvexException::QuorvexException() : QuorvexException(FromParts(), Messages(), nullptr)
{}

QuorvexException::QuorvexException(ErrorInfo const& info) : QuorvexException(FromParts(), Messages(), NewRecord(info))
{}

QuorvexException::QuorvexException(std::list<TStringCore> const& messages)
    : QuorvexException(FromParts(), Messages(messages), nullptr)
{}

QuorvexException::QuorvexException(std::list<TStringCore> const& messages, ErrorInfo const& info)
    : QuorvexException(FromParts(), Messages(messages), NewRecord(info))
{}

QuorvexException::QuorvexException(std::list<TStringCore> const& messages, std::shared_ptr<ErrorInfo> info)
    : QuorvexException(FromParts(), Messages(messages), static_cast<std::shared_ptr<ErrorInfo>&&>(info))
{}

QuorvexException::QuorvexException(TStringCore const& message) : QuorvexException(FromParts(), ListOf(message), nullptr)
{}

QuorvexException::QuorvexException(TStringCore const& message, ErrorInfo const& info)
    : QuorvexException(FromParts(), ListOf(message), NewRecord(info))
{}

QuorvexException::QuorvexException(TStringCore const& message, std::shared_ptr<ErrorInfo> info)
    : QuorvexException(FromParts(), ListOf(message), static_cast<std::shared_ptr<ErrorInfo>&&>(info))
{}

QuorvexException::QuorvexException(TFormatStringCore const& message) : QuorvexException()
{
    StackMessage(message);
}

QuorvexException::QuorvexException(TFormatStringCore const& message, ErrorInfo const& info) : QuorvexException(info)
{
    StackMessage(message);
}

QuorvexException::QuorvexException(TFormatStringCore const& message, std::shared_ptr<ErrorInfo> info)
    : QuorvexException(FromParts(), Messages(), static_cast<std::shared_ptr<ErrorInfo>&&>(info))
{
    StackMessage(message);
}

QuorvexException::QuorvexException(std::exception const& e) : QuorvexException(WhatOf(e))
{}

QuorvexException::QuorvexException(std::exception const& e, ErrorInfo const& info) : QuorvexException(WhatOf(e), info)
{}

QuorvexException::QuorvexException(QuorvexException const& other)
    : m_messages(std::make_unique<Messages>(*other.m_messages)),
      m_redactedMessages(std::make_unique<Messages>(*other.m_redactedMessages)), m_errorInfo(other.m_errorInfo)
{}

QuorvexException& QuorvexException::operator=(QuorvexException const& other)
{
    if (this != &other) {
        // Both copies first: a failure leaves this object as it was.
        auto messages = std::make_unique<Messages>(*other.m_messages);
        auto redacted = std::make_unique<Messages>(*other.m_redactedMessages);
        m_messages.swap(messages);
        m_redactedMessages.swap(redacted);
        m_errorInfo = other.m_errorInfo;
    }
    return *this;
}

QuorvexException::~QuorvexException() = default;

QuorvexException* QuorvexException::Clone() const
{
    return new QuorvexException(*this);
}

void QuorvexException::Throw() const
{
    throw QuorvexException(*this);
}

TStringCore QuorvexException::GetConcatenatedMessages() const
{
    TStringCore all;
    for (TStringCore const& message : *m_messages) {
        all.append(message);
        if (message.empty() || message.back() != u'\n') {
            all.append(u'\n');
        }
    }
    return all;
}

TStringCore QuorvexException::GetMessagesFront() const
{
    return m_messages->empty() ? TStringCore() : m_messages->front();
}

TStringCore QuorvexException::CollateMessagesForLog() const
{
    // Not the virtual function: what the base logs is the base's.
    return QuorvexException::GetConcatenatedMessages();
}

std::vector<TStringCore> QuorvexException::GetMessagesVector() const
{
    return {m_messages->begin(), m_messages->end()};
}

void QuorvexException::StackMessage(TStringCore const& message)
{
    if (!message.empty()) {
        m_messages->push_back(message);
    }
}

void QuorvexException::StackMessage(TFormatStringCore const& message)
{
    TStringCore const text = message.result();
    if (!text.empty()) {
        m_messages->push_back(text);
        m_redactedMessages->push_back(text);
    }
}

void QuorvexException::StackMessageFront(TStringCore const& message)
{
    if (!message.empty()) {
        m_messages->push_front(message);
    }
}

void QuorvexException::StackMessageFront(TFormatStringCore const& message)
{
    TStringCore const text = message.result();
    if (!text.empty()) {
        m_messages->push_front(text);
        m_redactedMessages->push_front(text);
    }
}

void QuorvexException::SetMessage(TStringCore const& message)
{
    // The message may be one of those that are cleared.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    TStringCore const text = message;
    m_messages->clear();
    m_redactedMessages->clear();
    StackMessage(text);
}

void QuorvexException::SetMessage(TFormatStringCore const& message)
{
    m_messages->clear();
    m_redactedMessages->clear();
    StackMessage(message);
}

void QuorvexException::ClearMessages() noexcept
{
    m_messages->clear();
}

void QuorvexException::ToString(std::exception const& e, TStringCore& out)
{
    out = WhatOf(e);
}

QuorvexOutOfMemoryException::QuorvexOutOfMemoryException(ErrorInfo const& info)
    : QuorvexException(std::list<TStringCore>(), info)
{
    StackMessage(u"Out of memory");
}

QuorvexOutOfMemoryException::QuorvexOutOfMemoryException(TStringCore const& message, ErrorInfo const& info)
    : QuorvexException(message, info)
{}

QuorvexOutOfMemoryException::QuorvexOutOfMemoryException(std::list<TStringCore> const& messages, ErrorInfo const& info)
    : QuorvexException(messages, info)
{}

QuorvexOutOfMemoryException::~QuorvexOutOfMemoryException() = default;

QuorvexException* QuorvexOutOfMemoryException::Clone() const
{
    return new QuorvexOutOfMemoryException(qvxsys::error::ThrowSite(0x2A6E0D79));
}

void QuorvexOutOfMemoryException::Throw() const
{
    throw QuorvexOutOfMemoryException(*this);
}

QuorvexUserErrorException::QuorvexUserErrorException(TFormatStringCore const& message, ErrorInfo const& info)
    : QuorvexException(message, info)
{}

QuorvexUserErrorException::QuorvexUserErrorException(TStringCore const& message, ErrorInfo const& info)
    : QuorvexException(message, info)
{}

QuorvexUserErrorException::~QuorvexUserErrorException() = default;

void StackExceptionAndRethrow(TStringCore const& message)
{
    try {
        throw;
    } catch (QuorvexException& e) {
        e.StackMessage(message);
        throw;
    }
}

void StackExceptionAndRethrow(TFormatStringCore const& message)
{
    try {
        throw;
    } catch (QuorvexException& e) {
        e.StackMessage(message);
        throw;
    }
}
