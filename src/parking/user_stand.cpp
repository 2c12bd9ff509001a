#include "parking/user_stand.h"

#include <cmath>
#include <mutex>

#include "sim/sim_client.h"
#include "traffic/units.h"

namespace tfx {

namespace {

constexpr double SAME_PLACE_NM2 = 9e-6;                  // 0.003 NM
constexpr double AT_STAND_NM2 = 0.00011662133983924917;  // 20 m

std::mutex positionsLock;  // held for the copy or the swap of the pointer
std::shared_ptr<const StandPositions> positions = std::make_shared<const StandPositions>();

double lf_flatSquared(LatLon a, double lat, double lon, double cosLat) {
    const double dlat = (a.lat - lat) * 60;
    const double dlon = (a.lon - lon) * cosLat * 60;
    return dlat * dlat + dlon * dlon;
}

// What this thread found last, and for which list and place.
struct KeptAnswer {
    std::shared_ptr<const StandPositions> list;
    LatLon at;
    std::optional<std::string> stand;
};

}  // namespace

void gf_publishStandPositions(const std::vector<Stand>& stands) {
    auto list = std::make_shared<StandPositions>();
    list->reserve(stands.size());
    for (const Stand& s : stands) list->push_back({s.id, s.latitude, s.longitude});
    std::shared_ptr<const StandPositions> published = std::move(list);
    std::lock_guard lock(positionsLock);
    positions.swap(published);
}

std::shared_ptr<const StandPositions> gf_standPositions() {
    std::lock_guard lock(positionsLock);
    return positions;
}

std::optional<std::string> gf_closestStandToUser(LatLon position) {
    if (userOnGround.load() != 1) return std::nullopt;
    const std::shared_ptr<const StandPositions> list = gf_standPositions();
    if (list->empty()) return std::nullopt;
    thread_local KeptAnswer kept;
    const double cosLat = std::cos(position.lat * RAD_PER_DEG);
    if (kept.list == list &&
        lf_flatSquared(position, kept.at.lat, kept.at.lon, cosLat) <= SAME_PLACE_NM2)
        return kept.stand;
    std::optional<std::string> found;
    double best = AT_STAND_NM2;
    for (const StandPosition& s : *list) {
        const double d = lf_flatSquared(position, s.lat, s.lon, cosLat);
        if (d <= best && (!found || d < best)) {
            best = d;
            found = s.id;
        }
    }
    kept = {list, position, found};
    return found;
}

}  // namespace tfx
