// The current QNH in hPa, written by the weather reader, read by anyone.
#pragma once

#include <atomic>
#include <cstdint>

namespace tfx {

extern std::atomic<std::int32_t> qnh;

}  // namespace tfx
