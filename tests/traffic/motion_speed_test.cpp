// No aircraft moves faster than its speed allows: not in a burst of spawns
// whose creates leave at five a second, and not behind reports of speeds no
// aircraft of its category can fly.
#include <cmath>
#include <vector>

#include "traffic/motion_limits.h"
#include "traffic_fixture.h"

using namespace tfx;
using tfx::test::TrafficTest;

namespace {

constexpr double METRES_PER_DEG = 111120.0;
constexpr double TRACK_KT = 250;
constexpr int POINT_EVERY_TICKS = 500;
constexpr double LAT_PER_POINT = TRACK_KT * 5 / 3600 / 60;

// Close enough over a few metres, and cheap for thousands of aircraft a tick.
double lf_flatDistance_m(double lat1, double lon1, double lat2, double lon2, double cosLat = 0) {
    if (cosLat == 0) cosLat = std::cos(lat1 * 0.017453292519943295);
    return std::hypot((lat2 - lat1) * METRES_PER_DEG, (lon2 - lon1) * METRES_PER_DEG * cosLat);
}

double lf_dueLat(std::int32_t ticksSinceStart) {
    return 50.0 + LAT_PER_POINT * ticksSinceStart / POINT_EVERY_TICKS;
}

struct BurstFigures {
    double maxStep_m = 0;
    double maxStartError_m = 0;  // created position against where the track is due
    int active = 0;
};

// What the simulator does between ticks: every create gets an object, and
// the aircraft appears where the request places it.
void lf_answerCreates(std::uint32_t& nextObject, std::int32_t sinceStart, BurstFigures& f) {
    SimCommands commands;
    gf_takeSimCommands(commands);
    for (const auto& c : commands.creates) {
        gf_postSimMessage({nextObject++, c.hexid, 0, SIM_LIVE_OBJECT_ID, 0, 0});
        f.maxStartError_m = std::max(f.maxStartError_m,
                                     lf_flatDistance_m(lf_dueLat(sinceStart), c.lon, c.lat, c.lon));
    }
}

// n aircraft, all due at once, flying north at 250 kt on tracks of their
// own, with reports every 5 seconds for as long as their creates take.
BurstFigures lf_burst(int n) {
    const std::int32_t start = gf_simTick();
    const int points = n / 5 / 5 + 12;
    for (int i = 0; i < n; ++i) {
        const auto hexid = static_cast<std::uint32_t>(0x600000 + i);
        for (int k = 0; k < points; ++k) {
            TrafficMessage m;
            m.hexid = hexid;
            m.callsign = "B" + std::to_string(i);
            m.time = 1000.0 + 5 * k;
            m.aimo.model = gf_modelIndex("A320");
            m.point.lat = 50.0 + LAT_PER_POINT * k;
            m.point.lon = 4.0 + 0.01 * i;
            m.point.alt = 5000;
            m.point.speed = TRACK_KT;
            m.point.tas = TRACK_KT;
            m.point.inAir = 1;
            m.point.time = start + POINT_EVERY_TICKS * k;
            lf_handleTrafficMessage(m);
        }
    }
    std::vector<double> lastLat(n, 0), lastLon(n, 0);
    std::vector<char> seen(n, 0);
    BurstFigures f;
    std::uint32_t nextObject = 100;
    const double cosLat = std::cos(50.5 * 0.017453292519943295);
    const std::int32_t end = start + (n / 5 + 8) * 100;
    while (gf_simTick() < end) {
        gf_trafficTick();
        lf_answerCreates(nextObject, gf_simTick() - 1 - start, f);
        for (const auto& ac : liveAircraft) {
            if (ac.simState != SimState::active) continue;
            const std::size_t i = ac.hexid - 0x600000;
            if (seen[i] != 0) {
                f.maxStep_m = std::max(
                    f.maxStep_m, lf_flatDistance_m(lastLat[i], lastLon[i], ac.lat, ac.lon, cosLat));
            } else {
                seen[i] = 1;
                ++f.active;
            }
            lastLat[i] = ac.lat;
            lastLon[i] = ac.lon;
        }
    }
    return f;
}

}  // namespace

TEST_F(TrafficTest, ABurstOfSpawnsNeverMovesFasterThanItsSpeed) {
    setOptions([](Options& o) { o.MAX_LIVE_SEL = 500; });  // no limit
    // A fifth faster than reported while catching up, at most.
    const double allowed_m = TRACK_KT / 1.9438444924406046 / 100 * CATCH_UP_FACTOR + 0.05;
    for (const int n : {100, 500, 2000}) {
        SCOPED_TRACE(n);
        gf_stopTraffic();
        gf_clearSimBuffers();
        const BurstFigures f = lf_burst(n);
        EXPECT_EQ(f.active, n);
        EXPECT_LE(f.maxStep_m, allowed_m);
        // The last ones created appear where they are due, not where they
        // were due when they passed the gate.
        EXPECT_LE(f.maxStartError_m, 5.0);
    }
}

TEST_F(TrafficTest, ReportsBeyondTheCategoryAreFollowedOnlyAtItsLimits) {
    // 99,999 kt and 100,000 ft/min, consistently: plausible to every check
    // of the stream, impossible for a Large aircraft.
    constexpr double ABSURD_KT = 99999;
    for (int k = 0; k < 12; ++k) {
        TrafficMessage m = airborne(0x4C0801, "FAST1", 1000.0 + 5 * k,
                                    20.0 + ABSURD_KT * 5 / 3600 / 60 * k, 5000 + 100000.0 / 12 * k);
        m.point.speed = ABSURD_KT;
        m.point.tas = ABSURD_KT;
        m.point.vs = 100000;
        deliver(m, gf_simTick() + POINT_EVERY_TICKS * k);
    }
    tick();
    makeActive(0x4C0801, 81);
    const MotionLimits& limits = gf_motionLimits(live(0x4C0801)->category);
    const double maxStep_m = limits.maxSpeed_kt / 1.9438444924406046 / 100 + 0.05;
    const double maxClimb_ft = limits.maxClimb_fpm / 6000 + 1e-9;
    double maxStep = 0, maxClimb = 0, maxVs = 0;
    double lat = live(0x4C0801)->lat, lon = live(0x4C0801)->lon, alt = live(0x4C0801)->alt;
    for (int t = 0; t < 3000 && live(0x4C0801) != nullptr; ++t) {
        tick();
        const LiveAircraft* ac = live(0x4C0801);
        if (ac == nullptr || ac->simState != SimState::active) break;
        maxStep = std::max(maxStep, lf_flatDistance_m(lat, lon, ac->lat, ac->lon));
        maxClimb = std::max(maxClimb, ac->alt - alt);
        maxVs = std::max(maxVs, ac->vs);
        lat = ac->lat;
        lon = ac->lon;
        alt = ac->alt;
    }
    EXPECT_GT(maxStep, 0.5 * maxStep_m);  // it did fly, at its limit
    EXPECT_LE(maxStep, maxStep_m);
    EXPECT_LE(maxClimb, maxClimb_ft);
    EXPECT_LE(maxVs, limits.maxClimb_fpm);
}
