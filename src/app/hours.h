// Text form of a day's half hours: "3", "1,2,5" or "0:47".
#pragma once

#include <bitset>
#include <optional>
#include <string>
#include <string_view>

namespace tfx {

// Bit 0 is 00:00-00:30, bit 47 is 23:30-24:00.
using HalfHours = std::bitset<48>;

// Parses a list "1,2,5" or a range "3:7"; bad input is logged (see the .cpp).
HalfHours gf_hours2bitset(std::string_view text);
// One bit or one unbroken run; nothing for an empty set or a broken one.
std::optional<std::string> gf_bitset2hours(const HalfHours& set);

}  // namespace tfx
