#pragma once
// Sizes and times as users write and read them.

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

#include <qvxsys/TStringCore.h>

namespace qvx {

/// "2G", "1.5GiB", "300M", "4096": bytes; K, M, G and T are powers of 1024, of either case, with "iB" behind them or
/// not. Empty when it is none, is less than one byte, or does not fit 63 bits.
[[nodiscard]] std::optional<std::uint64_t> ParseSize(std::string_view text);

/// "80%": 0.8. Empty when it is none or is not above 0 and at most 100.
[[nodiscard]] std::optional<double> ParsePercentage(std::string_view text);

/// "10s", "1.5m", "250ms", "1h", "10": seconds when there is no unit. Empty when it is none or longer than 10,000
/// hours.
[[nodiscard]] std::optional<std::chrono::milliseconds> ParseDuration(std::string_view text);

/// "1.50 GiB", "12 B"
[[nodiscard]] TStringCore SizeText(std::uint64_t bytes);

/// "0.2 s", "59.9 s", "12 min", "30 h"
[[nodiscard]] TStringCore TimeText(std::chrono::nanoseconds time);

} // namespace qvx
