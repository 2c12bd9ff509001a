// How an object identifier appears in log lines: decimal with MSFS 2020
// selected, hexadecimal with MSFS 2024.
#pragma once

#include <cstdint>
#include <string>

#include <fmt/format.h>

#include "app/run_state.h"

namespace tfx {

inline std::string gf_objectIdText(std::uint32_t objectid) {
    return gf_isMSFS2020() ? fmt::format("{}", objectid) : fmt::format("{:x}", objectid);
}

}  // namespace tfx
