// The user's aircraft as the simulator reports it: one block, stored by the
// simulator thread under its lock and copied by anyone.
#pragma once

#include <cstdint>

namespace tfx {

struct UserData {
    double lat = 0, lon = 0;         // degrees
    double pitch = 0, bank = 0;      // radians
    double vs = 0;                   // feet per minute
    double heading = 0;              // radians, true
    double alt = 0;                  // feet, never below 0
    double indicatedAlt = 0;         // feet
    double agl = 0;                  // feet above ground
    double groundSpeed = 0;          // knots
    std::int64_t zuluTime = 0;       // seconds of the day
    std::int64_t zuluDayOfYear = 0;  // 1 is the first of January
    std::int64_t zuluYear = 0;
    std::int64_t lightStates = 0;  // mask
    double track = 0;              // degrees, GPS ground true track
};

// A copy of the block as it stands.
UserData gf_userData();
// The simulator thread's store of a new position reply.
void gf_storeUserData(const UserData& data);
// Queues a position request and returns the copy that stands now.
UserData gf_requestUserData();

}  // namespace tfx
