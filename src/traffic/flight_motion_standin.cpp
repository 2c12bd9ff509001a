// STAND-IN for the position stream and flight motion. It flies straight legs
// from point to point at the stream's times, and nothing more: no re-timing,
// no extrapolation, no checks by state, no takeoff, landing or ground work.
// The real bodies replace this file.
#include <algorithm>

#include "traffic/clock.h"
#include "traffic/flight_motion.h"
#include "traffic/geometry.h"
#include "traffic/removal.h"

namespace tfx {

namespace {
constexpr std::size_t MAX_STREAM_POINTS = 200;
constexpr std::int32_t SHORTEST_LEG_TICKS = 25;
}  // namespace

void decodeExisting(LiveAircraft& ac, StreamPoint& p) {
    if (ac.stream.size() > MAX_STREAM_POINTS) {
        removeAircraftFromSim(ac);
        return;
    }
    if (!ac.stream.empty()) {
        const StreamPoint& last = ac.stream.back();
        if (p.time <= last.time) p.time = last.time + 1;
        p.same = gf_samePosition({p.lat, p.lon}, {last.lat, last.lon}) ? 1 : 0;
    }
    ac.stream.push_back(p);
}

void nextPosMain(LiveAircraft& ac) {
    if (ac.stream.size() < 2) {
        removeAircraftFromSim(ac);
        return;
    }
    const StreamPoint& next = ac.stream[1];
    const double dt = std::max(SHORTEST_LEG_TICKS, next.time - gf_simTick());
    if (next.same) {
        ac.stepLat = ac.stepLon = ac.stepAlt = 0;
    } else {
        ac.heading = gf_bearing({ac.lat, ac.lon}, {next.lat, next.lon});
        ac.stepLat = (next.lat - ac.lat) / dt;
        ac.stepLon = (next.lon - ac.lon) / dt;
        ac.stepAlt = (next.alt - ac.alt) / dt;
    }
    ac.nextVs = next.vs;
    ac.nextTas = next.tas;
    ac.stream.pop_front();
}

void lf_stepAircraft(LiveAircraft& ac) {
    ac.lat += ac.stepLat;
    ac.lon += ac.stepLon;
    ac.alt += ac.stepAlt;
}

}  // namespace tfx
