#pragma once
// Positions in texts that formats write and read, in units.
//
//     auto const field = QvxICU::ICUFieldPosition::createInstance(); // which field of a formatted text, and where
//     auto const position = QvxICU::ICUParsePosition::createInstance();
//     position->setIndex(3); // where parsing begins, and then has ended
//     bool const failed = position->getErrorIndex() >= 0;
//
// Ownership: createInstance() and clone() hand a position of its own over to the caller.

#include <memory>

#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>

namespace QvxICU {

/// Names a field of a formatted text and receives where it stands. For one thread at a time.
class QVXSYS_API ICUFieldPosition
{
public:
    /// For no field: -1.
    QVXSYS_API_CONSTANT static constexpr int kDontCare = -1;

    /// Of no field.
    [[nodiscard]] static std::unique_ptr<ICUFieldPosition> createInstance();
    /// For a field of ICU's numbering, which differs by format.
    [[nodiscard]] static std::unique_ptr<ICUFieldPosition> createInstance(int field);

    virtual ~ICUFieldPosition();

    [[nodiscard]] virtual std::unique_ptr<ICUFieldPosition> clone() const = 0;
    [[nodiscard]] virtual bool operator==(ICUFieldPosition const& other) const noexcept = 0;
    /// The field that is looked for.
    [[nodiscard]] virtual int getField() const noexcept = 0;
    /// The first unit of the field, and the one behind its last; both 0 when the text has no such field.
    [[nodiscard]] virtual int getBeginIndex() const noexcept = 0;
    /// Behind the field, in units.
    [[nodiscard]] virtual int getEndIndex() const noexcept = 0;
    /// Sets what getField gives.
    virtual void setField(int field) noexcept = 0;
    /// Sets what getBeginIndex gives.
    virtual void setBeginIndex(int index) noexcept = 0;
    /// Sets what getEndIndex gives.
    virtual void setEndIndex(int index) noexcept = 0;

    /// For the library's own use: the ICU position behind the wrapper.
    [[nodiscard]] virtual void* Native() noexcept = 0;

protected:
    ICUFieldPosition() = default;
    ICUFieldPosition(ICUFieldPosition const&) = default;
    ICUFieldPosition& operator=(ICUFieldPosition const&) = default;
};

/// Where parsing begins, and where it has ended or failed. For one thread at a time.
class QVXSYS_API ICUParsePosition
{
public:
    /// At the beginning of the text.
    [[nodiscard]] static std::unique_ptr<ICUParsePosition> createInstance();
    [[nodiscard]] static std::unique_ptr<ICUParsePosition> createInstance(int index);

    virtual ~ICUParsePosition();

    [[nodiscard]] virtual std::unique_ptr<ICUParsePosition> clone() const = 0;
    [[nodiscard]] virtual bool operator==(ICUParsePosition const& other) const noexcept = 0;
    /// Where parsing begins; afterwards the unit behind the last that was parsed, or still the first after a failure.
    [[nodiscard]] virtual int getIndex() const noexcept = 0;
    /// Sets what getIndex gives.
    virtual void setIndex(int index) noexcept = 0;
    /// Sets what getErrorIndex gives.
    virtual void setErrorIndex(int index) noexcept = 0;
    /// The unit that could not be parsed; -1 without an error.
    [[nodiscard]] virtual int getErrorIndex() const noexcept = 0;

    /// For the library's own use: the ICU position behind the wrapper.
    [[nodiscard]] virtual void* Native() noexcept = 0;

protected:
    ICUParsePosition() = default;
    ICUParsePosition(ICUParsePosition const&) = default;
    ICUParsePosition& operator=(ICUParsePosition const&) = default;
};

} // namespace QvxICU
