// Creates leave at five a second, so in a burst the last aircraft go out
// many seconds after their first point was due. Such an aircraft is placed
// on its stream where it is due at the moment its object appears, instead of
// at a stale point. Its object then stands through the two seconds of set-up
// and flies on at its own speed, that much behind its data.
#include <cmath>

#include "traffic/clock.h"
#include "traffic/flight_motion_internal.h"
#include "traffic/geometry.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"
#include "traffic/units.h"

namespace tfx {

namespace {

double lf_between(double a, double b, double share) {
    return a + (b - a) * share;
}

// The front point becomes the point of the stream that is due at tick.
// false when the aircraft stays where it is.
bool lf_advanceStream(PointQueue& stream, std::int32_t tick) {
    if (stream.size() < 2 || stream.front().time >= tick) return false;
    while (stream.size() >= 2 && stream[1].time <= tick) stream.pop_front();
    StreamPoint& front = stream.front();
    if (stream.size() >= 2 && stream[1].same == 0 && stream[1].time > front.time) {
        const StreamPoint& next = stream[1];
        const double share =
            static_cast<double>(tick - front.time) / static_cast<double>(next.time - front.time);
        front.lat = lf_between(front.lat, next.lat, share);
        const double dLon_deg = gf_foldAngle((next.lon - front.lon) * RAD_PER_DEG) * DEG_PER_RAD;
        front.lon = std::remainder(front.lon + dLon_deg * share, 360.0);
        front.alt = lf_between(front.alt, next.alt, share);
        front.speed = lf_between(front.speed, next.speed, share);
        front.vs = lf_between(front.vs, next.vs, share);
        front.tas = lf_between(front.tas, next.tas, share);
    }
    front.time = tick;
    return true;
}

}  // namespace

void lf_placeForCreate(CreateRequest& request) {
    LiveAircraft* ac = gf_findLive(request.hexid);
    if (ac == nullptr || ac->simState != SimState::adding2sim) return;
    if (ac->flightState == FlightState::parked) return;
    if (!lf_advanceStream(ac->stream, gf_simTick())) return;
    const StreamPoint& front = ac->stream.front();
    ac->lat = front.lat;
    ac->lon = front.lon;
    ac->alt = front.alt;
    ac->vs = front.vs;
    ac->tas = front.tas;
    if (ac->stream.size() >= 2 && ac->stream[1].same == 0 &&
        !gf_samePosition(lf_pos(front), lf_pos(ac->stream[1]))) {
        ac->heading = gf_bearing(lf_pos(front), lf_pos(ac->stream[1]));
    }
    request.lat = ac->lat;
    request.lon = ac->lon;
    request.alt = ac->alt;
    request.heading = ac->heading * DEG_PER_RAD;
}

}  // namespace tfx
