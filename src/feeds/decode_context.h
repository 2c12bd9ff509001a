// The records both feed roads decode: a flat view of one raw traffic record,
// what the road gives the decoder with each batch, and the parked record.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "app/options.h"
#include "traffic/aircraft.h"
#include "traffic/geometry.h"

namespace tfx {

// One raw record; the texts are views into the line or the JSON value.
struct TrafficRecord {
    double timestamp = 0;  // seconds since the epoch, UTC
    std::uint32_t hexid = 0;
    double lat = 0, lon = 0;  // degrees
    double altitude = 0;      // feet
    double vs = 0;            // feet per minute
    double track = 0;         // degrees
    double gs = 0;            // knots
    double trueheading = -1;  // degrees; used only with source "adsb_icao"
    double roll = 0;          // degrees, positive to the left
    double TAS = 0;           // knots; -1 when the feed has none
    std::string_view callsign, model, regcode, from, to, source, category, airline, squawk;
};

// What a road hands the decoder with each batch; a copy, so one batch works
// with one set of values throughout.
struct DecodeContext {
    double lat = 0, lon = 0, cosLat = 1;  // centre of the range test
    std::optional<double> fieldAltitude;  // feet, of the park airport
    std::optional<LatLon> parkAirport;    // where ground records may be
    double parkCosLat = 1;
    std::int32_t qnh = 1013;  // hPa
    OptionsPtr options;
    bool rtDirect = false;        // which road: the altitude correction differs
    double userAltOffset_ft = 0;  // user's "Plane Altitude" minus "Indicated Altitude"
    std::uint8_t collectSeen = 0;
    std::uint8_t dropSquawk0000 = 0;
    std::uint8_t collectEarly = 0;
};

struct SeenEntry {
    std::string callsign;
    std::uint32_t hexid = 0;
};

struct DecodeResult {
    std::optional<TrafficMessage> message;
    std::optional<SeenEntry> seen;
    // Set once the record is in range or beyond, so that the reader's
    // last-heard time moves even for aircraft that are dropped.
    std::optional<std::int64_t> roundedTimestamp;
};

// One aircraft standing at a stand.
struct ParkedMessage {
    Aimo aimo;
    AirportRef orig, dest;
    std::uint8_t altNamesLooked = 0;
    std::string callsign;
    std::string flightA, flightB;
    std::string regcode;
    double lat = 0, lon = 0;
    std::uint32_t hexid = 0;
    std::int32_t hh = -1;  // half hour of the day, 0 .. 47
    std::string stand;
};

struct ParkedRecord {
    std::uint32_t hexid = 0;
    double lat = 0, lon = 0;
    double timestamp = 0;
    std::string_view callsign, model, regcode, stand;
};

// What the parked decoder needs beyond the record.
struct ParkedContext {
    OptionsPtr options;
    std::string userStand;     // the user's stand, or empty
    std::string nearestStand;  // the stand closest to the user aircraft, or empty
};

// Throws std::runtime_error for malformed numbers or codes.
DecodeResult gf_decodeTraffic(const TrafficRecord& record, const DecodeContext& context);
std::optional<ParkedMessage> gf_decodeParked(const ParkedRecord& record,
                                             const ParkedContext& context);

// A stand name without the airport in front: "YSSY_I61" is "I61". Names
// without such a prefix stay as they are.
std::string_view gf_plainStandName(std::string_view stand);

bool gf_isAircraftMessage(std::string_view model, std::string_view category);
// Empty when the text is not usable as a callsign.
std::string gf_cleanCallsign(std::string_view text);
// "null", and texts of 1, 2 or more than 12 characters, read as no regcode.
std::string_view gf_usableRegcode(std::string_view text);
// A route end: zero for empty or "null"; throws for anything but three
// letters or digits.
AirportRef gf_iataRef(std::string_view text);

// Only an altitude above 0 changes; the result is 0 on the ground.
void gf_correctAltitude(StreamPoint& point, std::optional<double> fieldAltitude_ft,
                        std::int32_t qnh_hPa, bool rtDirect, double userAltOffset_ft);

// Whether the blocked aircraft of the snapshot is this one; what a match
// learns is published as a new snapshot.
bool gf_isBlocked(const TrafficMessage& message, const Options& block);

}  // namespace tfx
