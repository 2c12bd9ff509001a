// Fixed numbers handed to the simulator: client events and the kinds of data
// request the simulator thread serves.
#pragma once

#include <cstdint>

namespace tfx {

// Client events, mapped to the simulator's events of the same name.
enum SimEvent : std::uint32_t {
    EVENT_BEACON_LIGHTS_SET = 206,
    EVENT_NAV_LIGHTS_SET = 207,
    EVENT_TAXI_LIGHTS_SET = 208,
    EVENT_STROBES_SET = 209,
    EVENT_LANDING_LIGHTS_SET = 210,
    EVENT_CABIN_LIGHTS_SET = 211,
    EVENT_LOGO_LIGHTS_SET = 212,
    EVENT_ALL_LIGHTS_TOGGLE = 213,
    EVENT_FREEZE_LATITUDE_LONGITUDE_SET = 214,
    EVENT_FREEZE_ALTITUDE_SET = 215,
    EVENT_FREEZE_ATTITUDE_SET = 216,
    EVENT_FLAPS_SET = 217,
    EVENT_SPOILERS_SET = 218,
    EVENT_GEAR_SET = 219,
    EVENT_ENGINE_AUTO_START = 220,
    EVENT_ENGINE_AUTO_SHUTDOWN = 221,
    EVENT_THROTTLE_SET = 222,
};

// Kinds of data request queued for the simulator thread.
enum SimRequestKind : std::uint32_t {
    REQUEST_AIRCRAFT_IN_RANGE = 0,  // position reports of all objects
    REQUEST_USER_TITLE_MODEL = 1,
    REQUEST_USER_ON_GROUND = 2,
    REQUEST_USER_POSITION = 3,
    REQUEST_STATIC_DATA = 4,  // "Static CG to Ground", "Static Pitch" of one object
};

}  // namespace tfx
