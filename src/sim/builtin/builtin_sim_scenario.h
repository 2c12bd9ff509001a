// The built-in simulator's world: where the user's aircraft stands or goes,
// the airports that shape the ground, and the aircraft titles the simulated
// installation knows. Read from a small JSON file:
//
//   {
//     "start_utc": "2024-06-01T12:00:00Z",    // simulator clock at flight load
//     "default_ground_ft": 0,                  // ground away from any airport
//     "airports": [                            // flat at field elevation within
//       { "icao": "EGTK", "lat": 51.8369,      // radius_nm (default 3), blending
//         "lon": -1.32, "elevation_ft": 270,   // to default_ground_ft over one
//         "radius_nm": 3 },                    // more radius
//       { "icao": "PHNL" } ],                  // named only: place and field
//                                              // elevation from the airport
//                                              // catalogue
//     "scenery": "airports/archive/stock",     // folder of <ICAO>.xml airport
//                                              // files: the stands the simulator
//                                              // knows (relative to this file)
//     "installed": [                           // titles an AI create may use;
//       "Plain Title",                         // a bare text has no model
//       { "title": "Airbus A320 Neo Asobo", "model": "A20N",
//         "static_cg_ft": 8.2, "static_pitch_deg": 0.4 } ],  // both optional
//     "user": {
//       "title": "...", "atc_model": "ATCCOM.AC_MODEL_C172.0.text",
//       "atc_id": "G-ZEPT", "model": "C172",   // model: static CG and pitch
//       "static_cg_ft": 3.1, "static_pitch_deg": 1.0,   // optional overrides
//       "lights_mask": 3,
//       "heading_deg": 10,                    // while standing with no course
//       "parked": { "lat": 51.8365, "lon": -1.3218, "heading_deg": 190 }
//       // or on a stand of the scenery, its position and heading:
//       // "parked": { "airport": "PHNL", "stand": "T2-G7" }
//       // or, instead of "parked", a timed path in seconds of flight time;
//       // a point without "alt_ft" (true altitude) is on the ground, and
//       // "back": true drives the leg to the point backwards (a pushback):
//       // "path": [ { "t_s": 0, "lat": .., "lon": .. },
//       //           { "t_s": 90, "lat": .., "lon": .., "alt_ft": 1500 } ],
//       // "loop": false                       // start over after the last point
//       // or the path in a file of its own (relative to this file):
//       // "path_file": "user_path.json"  ->  { "airports": ["PHNL", "PHOG"],
//       //     "heading_deg": 0, "loop": false, "points": [..] }
//       // whose airports join the scenario's, named only.
//     },
//     "rough": {                               // how the simulator misbehaves;
//       "seed": 7,                             // every field has a rough default,
//       "frame_jitter": 0.35,                  // "rough": false makes it polite
//       "stall_every_s": 20, "stall_ms": 450,
//       "create_delay_ms": [80, 1800],         // answers come out of order
//       "create_never_every": 25,              // 0: every create is answered
//       "reuse_object_ids": true,
//       "pressure_offset_ft": 190,             // indicated minus true altitude
//       "restart_at_s": 300,                   // flight time; absent: never
//       "restart_down_s": 3, "restart_crash": true   // crash: no QUIT record
//     }
//   }
//
// Every field has a default; a bad entry is logged and skipped, a file that
// leaves the user aircraft without a position is refused, and so is one whose
// stand or path file can't be used; a named-only airport the catalogue
// doesn't know is logged and left out.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tfx {

struct KnownTitle {
    std::string title;
    std::string model;  // type code; picks the static CG height and pitch
    std::optional<double> static_cg_ft;
    std::optional<double> static_pitch_deg;
};

struct ScenarioAirport {
    std::string icao;
    double lat_deg = 0, lon_deg = 0;
    double elevation_ft = 0;
    double radius_nm = 3;
    bool fromCatalogue = false;  // named only: place and elevation still to look up
};

struct PathPoint {
    double t_s = 0;  // seconds of flight time
    double lat_deg = 0, lon_deg = 0;
    std::optional<double> alt_ft;  // true altitude; none: on the ground
    bool backwards = false;        // the leg to this point is driven backwards
};

// A stand of an airport file of the scenery, by name.
struct StandRef {
    std::string airport, stand;
};

struct UserScenario {
    std::string title = "Cessna Skyhawk G1000 Asobo";
    std::string atc_model = "ATCCOM.AC_MODEL_C172.0.text";  // raw, as the simulator gives it
    std::string atc_id = "G-ZEPT";
    std::string model = "C172";
    std::optional<double> static_cg_ft;
    std::optional<double> static_pitch_deg;
    std::uint32_t lights_mask = 0x3;  // nav and beacon
    double heading_deg = 0;           // while standing with no course
    std::vector<PathPoint> path;      // one point: parked there
    bool loop = false;
    std::optional<StandRef> parkedStand;  // still to be placed from the scenery
    std::string pathFile;                 // still to be read
};

// The real simulator's habits that a client must live with. The defaults are
// rough; the same seed gives the same run in stepped time.
struct SimRoughness {
    std::uint64_t seed = 7;
    double frame_jitter = 0.35;  // each frame interval varies by up to this share
    double stall_every_s = 20;   // a frame is late by stall_ms this often on average; 0: never
    std::int64_t stall_ms = 450;
    std::int64_t create_delay_min_ms = 80, create_delay_max_ms = 1800;
    std::uint32_t create_never_every = 25;  // about one create in so many is never answered
    bool reuse_object_ids = true;           // a removed object's id goes to a later one
    double pressure_offset_ft = 190;        // "Indicated Altitude" minus "Plane Altitude"
    std::optional<double> restart_at_s;     // flight time at which the simulator goes
    double restart_down_s = 3;              // and comes back this much later
    bool restart_crash = true;              // gone without a QUIT record

    // Frames on the dot, creates answered after 250 ms in order, fresh ids.
    static SimRoughness polite() {
        SimRoughness r;
        r.frame_jitter = 0;
        r.stall_every_s = 0;
        r.create_delay_min_ms = r.create_delay_max_ms = 250;
        r.create_never_every = 0;
        r.reuse_object_ids = false;
        r.pressure_offset_ft = 0;
        return r;
    }
};

struct Scenario {
    std::int64_t start_utc_s = 1717243200;  // 2024-06-01 12:00:00Z
    double default_ground_ft = 0;
    std::vector<ScenarioAirport> airports;
    std::filesystem::path scenery;  // folder of airport files, for stands
    std::vector<KnownTitle> installed;
    UserScenario user;
    SimRoughness rough;
};

// Reads a scenario file; nullopt (logged) when it can't be used.
std::optional<Scenario> gf_readSimScenario(const std::filesystem::path& path);
// The same from text; source names the text in log lines, and relative
// names of files in it are taken from baseDir.
std::optional<Scenario> gf_parseSimScenario(std::string_view jsonText, std::string_view source,
                                            const std::filesystem::path& baseDir = {});

// "2024-06-01T12:00:00Z" -> seconds since the epoch; nullopt when malformed.
std::optional<std::int64_t> gf_parseUtcText(std::string_view text);

}  // namespace tfx
