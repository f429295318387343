// Positions of fields and of parsing.

#include <qvxsys/ICUPosition.h>

#include <memory>

#include "IcuBridge.h"

namespace QvxICU44 {

class ICUFieldPosition44Impl final : public QvxICU::ICUFieldPosition
{
public:
    explicit ICUFieldPosition44Impl(icu::FieldPosition const& position) : m_position(position) {}

    [[nodiscard]] std::unique_ptr<ICUFieldPosition> clone() const override
    {
        return std::make_unique<ICUFieldPosition44Impl>(m_position);
    }
    [[nodiscard]] bool operator==(ICUFieldPosition const& other) const noexcept override
    {
        return getField() == other.getField() && getBeginIndex() == other.getBeginIndex() &&
               getEndIndex() == other.getEndIndex();
    }
    [[nodiscard]] int getField() const noexcept override { return m_position.getField(); }
    [[nodiscard]] int getBeginIndex() const noexcept override { return m_position.getBeginIndex(); }
    [[nodiscard]] int getEndIndex() const noexcept override { return m_position.getEndIndex(); }
    void setField(int field) noexcept override { m_position.setField(field); }
    void setBeginIndex(int index) noexcept override { m_position.setBeginIndex(index); }
    void setEndIndex(int index) noexcept override { m_position.setEndIndex(index); }
    [[nodiscard]] void* Native() noexcept override { return &m_position; }

private:
    icu::FieldPosition m_position;
};

class ICUParsePosition44Impl final : public QvxICU::ICUParsePosition
{
public:
    explicit ICUParsePosition44Impl(icu::ParsePosition const& position) : m_position(position) {}

    [[nodiscard]] std::unique_ptr<ICUParsePosition> clone() const override
    {
        return std::make_unique<ICUParsePosition44Impl>(m_position);
    }
    [[nodiscard]] bool operator==(ICUParsePosition const& other) const noexcept override
    {
        return getIndex() == other.getIndex() && getErrorIndex() == other.getErrorIndex();
    }
    [[nodiscard]] int getIndex() const noexcept override { return m_position.getIndex(); }
    void setIndex(int index) noexcept override { m_position.setIndex(index); }
    void setErrorIndex(int index) noexcept override { m_position.setErrorIndex(index); }
    [[nodiscard]] int getErrorIndex() const noexcept override { return m_position.getErrorIndex(); }
    [[nodiscard]] void* Native() noexcept override { return &m_position; }

private:
    icu::ParsePosition m_position;
};

} // namespace QvxICU44

namespace QvxICU {

using QvxICU44::ICUFieldPosition44Impl;
using QvxICU44::ICUParsePosition44Impl;

ICUFieldPosition::~ICUFieldPosition() = default;
ICUParsePosition::~ICUParsePosition() = default;

std::unique_ptr<ICUFieldPosition> ICUFieldPosition::createInstance()
{
    return std::make_unique<ICUFieldPosition44Impl>(icu::FieldPosition());
}

std::unique_ptr<ICUFieldPosition> ICUFieldPosition::createInstance(int field)
{
    return std::make_unique<ICUFieldPosition44Impl>(icu::FieldPosition(field));
}

std::unique_ptr<ICUParsePosition> ICUParsePosition::createInstance()
{
    return std::make_unique<ICUParsePosition44Impl>(icu::ParsePosition());
}

std::unique_ptr<ICUParsePosition> ICUParsePosition::createInstance(int index)
{
    return std::make_unique<ICUParsePosition44Impl>(icu::ParsePosition(index));
}

} // namespace QvxICU
