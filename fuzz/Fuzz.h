#pragma once
// What the fuzz targets share. Each is one source, which defines Fuzz().

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

/// One run. What is wrong ends the program, by Require() or by an exception.
void Fuzz(std::uint8_t const* data, std::size_t size);

extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Fuzz(data, size);
    return 0;
}

inline void Require(bool holds, std::string const& what = {})
{
    if (!holds) {
        std::cerr << what << std::endl;
        std::abort();
    }
}

inline std::string_view Bytes(std::uint8_t const* data, std::size_t size)
{
    return {reinterpret_cast<char const*>(data), size};
}

/// In a heap block of its exact size, so that reading past its end is found.
template<class Unit>
std::unique_ptr<Unit[]> Exact(void const* data, std::size_t units)
{
    std::unique_ptr<Unit[]> copy(new Unit[units]);
    if (units != 0) {
        std::memcpy(copy.get(), data, units * sizeof(Unit));
    }
    return copy;
}

/// The units that lie in the bytes.
template<class Unit>
std::basic_string<Unit> Units(std::uint8_t const* data, std::size_t size)
{
    std::basic_string<Unit> units(size / sizeof(Unit), Unit{});
    std::copy_n(data, units.size() * sizeof(Unit), reinterpret_cast<std::uint8_t*>(units.data()));
    return units;
}
