// The running process's identifier, for names that must differ per process.
#pragma once

#include <cstdint>

namespace tfx {

std::uint64_t pf_processId();

}  // namespace tfx
