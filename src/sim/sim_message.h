// What the simulator thread reports to the traffic tick.
#pragma once

#include <cstdint>

namespace tfx {

enum SimMessageKind : std::uint32_t {
    SIM_LIVE_OBJECT_ID = 0,    // object identifier of a live aircraft assigned
    SIM_STATIC_OBJECT_ID = 1,  // object identifier of a static aircraft assigned
    SIM_OBJECT_REMOVED = 2,
    SIM_POSITION_REPORT = 3,  // a: "Ground Altitude", b: "Plane Alt Above Ground"
    SIM_STATIC_DATA = 4,      // a: "Static CG to Ground", b: "Static Pitch"
    SIM_CREATE_FAILED = 5,    // hexid: the aircraft's hexid
};

struct SimMessage {
    std::uint32_t objectid = 0;
    std::uint32_t hexid = 0;  // in a position report: the "SIM ON GROUND" value
    std::int32_t count = 0;   // ticks counted while the message waits
    std::uint32_t kind = 0;
    double a = 0;
    double b = 0;
};

}  // namespace tfx
