#include "traffic/user_aircraft.h"

#include <array>
#include <atomic>
#include <cmath>

namespace tfx {

UserData userAircraft;

namespace {

std::atomic<std::shared_ptr<const UserData>> shared{std::make_shared<const UserData>()};

// Copies that were published before. One that nobody holds any more is
// written anew, so that the once-a-second takeover does not allocate.
std::array<std::shared_ptr<UserData>, 3> spares;

std::shared_ptr<UserData> lf_freeCopy() {
    for (auto& spare : spares) {
        if (!spare) spare = std::make_shared<UserData>();
        if (spare.use_count() == 1) return spare;
    }
    return std::make_shared<UserData>();  // all still held by readers
}

}  // namespace

void gf_takeOverUserAircraft() {
    userAircraft = gf_userData();
    std::shared_ptr<UserData> copy = lf_freeCopy();
    *copy = userAircraft;
    shared.store(std::move(copy));
}

std::shared_ptr<const UserData> gf_userAircraftShared() {
    return shared.load();
}

bool gf_userPositionUnknown() {
    return std::fabs(userAircraft.lat) <= 0.0001 && std::fabs(userAircraft.lon) <= 0.0001;
}

}  // namespace tfx
