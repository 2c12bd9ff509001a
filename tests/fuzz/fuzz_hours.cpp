// Arbitrary text as half hours: no crash, and every set that prints as a run
// must parse back to itself.
#include <cstdint>
#include <string_view>

#include "app/hours.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const tfx::HalfHours set = tfx::gf_hours2bitset(text);
    if (const auto printed = tfx::gf_bitset2hours(set)) {
        if (tfx::gf_hours2bitset(*printed) != set) __builtin_trap();
    }
    return 0;
}
