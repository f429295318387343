#pragma once
// How exceptions come by the ErrorInfo they share.

#include <memory>

#include <qvxsys/TError.h>

namespace qvxsys::error {

/// A new copy of `info`, for an exception that is being made. With an origin hook set it remembers where.
[[nodiscard]] std::shared_ptr<TError::ErrorInfo> NewRecord(TError::ErrorInfo const& info);

/// A new copy of the ErrorInfo of an exception, with its origin if it has one.
[[nodiscard]] std::shared_ptr<TError::ErrorInfo> CopyRecord(TError::ErrorInfo const& info);

} // namespace qvxsys::error
