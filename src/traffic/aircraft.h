// The aircraft records of the traffic engine: what a feed message says, what
// every aircraft shares, a static (parked) aircraft and a live one. Plain
// structures; all behaviour lives in free functions.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "liveries/aircraft_category.h"
#include "traffic/ground_curve.h"
#include "traffic/stream_point.h"

namespace tfx {

// What the aircraft is doing. The numbers are the ones in log lines.
enum class FlightState : std::uint32_t {
    pushing_back = 0,
    pushed_back = 1,
    taxi = 2,
    takeoff_roll = 3,
    takeoff = 4,
    flying = 5,
    landing = 6,
    landing_roll = 7,
    parking = 8,
    parked = 9,
    birth = 10,
};
inline constexpr std::size_t FLIGHT_STATE_COUNT = 11;

// How far the simulator's object is.
enum class SimState : std::uint32_t {
    buffer = 0,           // no object; messages are buffered until the spawn
    adding2sim = 1,       // create request queued or under way
    active = 2,           // object exists; position sent every frame
    liveryrespawn = 3,    // object asked to go; the record will be recreated
    removingfromsim = 4,  // object asked to go; the record dies when it is gone
};
inline constexpr std::size_t SIM_STATE_COUNT = 5;

// What an aircraft is, as indices of the reference tables; compared field by field.
struct Aimo {
    std::uint16_t airline = 0;
    std::uint16_t operator_ = 0;  // a second airline index
    std::uint16_t model = 0;
    std::uint8_t cargo = 0;
    std::uint8_t locked = 0;  // taken from a regcode record; not looked up again
    bool operator==(const Aimo&) const = default;
};
static_assert(sizeof(Aimo) == 8);

// Origin or destination of a flight; all zero when unknown.
struct AirportRef {
    std::uint32_t icao = 0;
    std::array<char, 3> iata{};  // letters, or zeros
    bool known() const { return icao != 0 || iata[0] != 0; }
    bool operator==(const AirportRef&) const = default;
};
static_assert(sizeof(AirportRef) == 8);

// One decoded record of a feed.
struct TrafficMessage {
    Aimo aimo;
    AirportRef orig, dest;
    std::uint8_t altNamesLooked = 0;
    std::string callsign;
    std::string flightA, flightB;
    std::string regcode;
    StreamPoint point;  // time stamped when the batch is handed in
    double time = 0;    // the feed's time stamp, seconds
    std::uint32_t hexid = 0;
};

// What every aircraft has, live or static.
struct AircraftBase {
    Aimo aimo;
    AirportRef orig, dest;
    std::uint8_t altNamesLooked = 0;
    std::string callsign;  // may end in "_" (ghost) or "*" (static)
    std::string flightA, flightB;
    std::string regcode;
    double halfSpan = 0;         // NM
    double clearance = 0;        // NM, radius of all clearance checks
    double standSearchNear = 0;  // NM
    double standSearchFar = 0;   // NM
    double cgHeight = 0;         // feet above ground when parked
    double staticPitch = 0;      // radians when parked
    double rotationPitch = 0;    // radians
    double climbPitch = 0;       // radians
    double turnRate = 0;         // radians per tick
    double turnRateNow = 0;      // radians per tick
    double maxClimbStep = 0;     // feet per tick
    double pushbackSpeed = 0;    // knots
    std::uint32_t hexid = 0;     // 10000 or less: a static aircraft
    AircraftCategory category = AircraftCategory::Light;
    std::string_view livery;  // title owned by the livery catalogue; empty until matched
    std::int32_t flareTicks = 0;
    std::int32_t derotationTicks = 0;
    std::int32_t rotationTicks = 0;
    std::int32_t climbPitchTicks = 0;
    std::uint8_t fsltlLivery = 0;
    std::uint8_t tcasOnly = 0;
};

// A record that stands at a stand, and the first part of every live record.
struct StaticAircraft : AircraftBase {
    std::uint32_t objectid = 0;  // from the simulator; 0 = none yet
    double standLat = 0, standLon = 0, standHeading = 0;
    std::uint64_t arrivalSlot = 0;  // week slot
    std::uint32_t rtHexid = 0;
    std::int32_t sid = 0;  // stand number, 0 = none
    SimState simState = SimState::buffer;
    std::uint32_t throttleIndex = 5;  // 5 = none commanded yet
    std::uint32_t flapsIndex = 4;     // 4 = none commanded yet
    std::uint8_t standCargo = 0;
    std::uint8_t standIsGate = 0;
    std::uint32_t fromAirportFile = 0;
    std::uint8_t removeOnArrival = 0;
    std::uint8_t eraseNow = 0;
    std::uint8_t dropQueued = 0;
    std::uint8_t stays = 0;
};

struct LiveAircraft : StaticAircraft {
    // The block sent to the simulator every frame; keep together and in order.
    double lat = 0, lon = 0, pitch = 0, bank = 0, heading = 0, alt = 0, vs = 0, tas = 0;
    PointQueue stream;
    double lastMessageTime = 0;  // feed seconds
    double parkedCheckLat = 0, parkedCheckLon = 0;
    std::uint64_t lastMoved = 0;  // wall clock, 100 ns units
    std::int32_t extensions = 0;  // 0 real, > 0 extrapolating, -1 finished
    FlightState flightState = FlightState::birth;
    std::int32_t stateTick = 0;
    std::uint8_t atStandSeen = 0;
    std::uint8_t onGround = 0;
    std::uint8_t hasFlightPlan = 0;
    std::uint8_t spawnHeld = 0;
    std::uint8_t takeoffGap = 0;
    double stepLat = 0, stepLon = 0;
    double stepPitch = 0, stepBank = 0, stepHeading = 0, stepAlt = 0;
    double nextVs = 0, nextTas = 0;
    GroundCurve curve;
    double curveProgress = 0, curveStep = 0;
    double turnAngle = 0;  // degrees
    double legLat = 0, legLon = 0;
    std::uint32_t legStepIndex = 0;
    std::uint32_t legEase = 0;
    std::vector<double> legSteps;
    double standTestLat = 0, standTestLon = 0;
    std::uint8_t standTestHit = 0;
    double refLat = 0, refLon = 0;
    std::uint8_t refValid = 0;
    double leaveLat = 0, leaveLon = 0;
    std::uint8_t leaveValid = 0, leaveCount = 0;
    std::int32_t maxAdvance = 900, maxDelay = 900;
    std::int32_t counter = 1;
    std::int32_t distanceGrowCount = 0;
    std::uint32_t holdSinceTick = 0;
    FlightState prevState = FlightState::birth, prevPrevState = FlightState::birth;
    double targetHeading = 0;
    double agl = 2500.0;  // feet, until the simulator reports it
    double aglByAlt = 0;
    double touchdownHeading = 0;
    double standRefDistance = 0, standLastDistance = 0;
    double inPlaceAngle = 0;
    double respawnHeading = 0;
    std::uint8_t respawning = 0;
    double groundAltitude = 0;
    std::uint8_t groundAltitudeValid = 0;
    std::uint32_t flarePhase = 0;
    std::uint32_t leaveMode = 0;
    std::uint8_t holding = 0;
    std::uint8_t towed = 0;
    std::uint8_t goAround = 0;
    std::uint8_t highSet = 0;
    std::uint8_t lowSet = 0;
    std::uint8_t derotating = 0;
    std::uint8_t leaving = 0;
    std::uint8_t turningOnSpot = 0;
};

}  // namespace tfx
