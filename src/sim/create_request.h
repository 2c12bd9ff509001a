// A request for a new simulator object.
#pragma once

#include <cstdint>
#include <string>

namespace tfx {

struct CreateRequest {
    double lat = 0, lon = 0;                  // degrees
    double alt = 0;                           // feet
    double pitch = 0, bank = 0, heading = 0;  // degrees
    bool onGround = false;  // true for a static aircraft, with alt, pitch and bank 0
    std::string callsign;
    std::string title;  // livery title
    std::uint32_t hexid = 0;
};

}  // namespace tfx
