// Replays a scenario of timed reports through the traffic engine, faster
// than real time: batches go in through gf_handleTrafficBatch once a second,
// the tick runs in lock-step, and a small receiver stands in for the
// simulator (it answers creates and removals, reports the ground under each
// object as the built-in simulator's airfield has it, tilted and rolling,
// and records every object's motion block per tick). The recording then
// yields the quality figures of the motion.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "airports/airport_file_io.h"
#include "airports/loaded_airport.h"
#include "app/options.h"
#include "app/run_state.h"
#include "feeds/decode_context.h"
#include "liveries/livery_index.h"
#include "liveries/reference_db.h"
#include "parking/park_airport.h"
#include "rt_scenario.h"
#include "sim/builtin/builtin_sim_terrain.h"
#include "sim/sim_ids.h"
#include "sim/sim_queues.h"
#include "sim/user_data.h"
#include "traffic/aircraft_base.h"
#include "traffic/aircraft_tables.h"
#include "traffic/clock.h"
#include "traffic/geometry.h"
#include "traffic/traffic.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"
#include "traffic/units.h"
#include "traffic/user_aircraft.h"

namespace tfx::replay {

struct Setup {
    // The airfield under everything: the park airport. Its ground is the
    // field elevation with the built-in simulator's relief.
    std::string airport = "EGTK";
    double fieldLat = 51.836944, fieldLon = -1.32, fieldElevation_ft = 270;
    // An airport file whose stands become the loaded airport's (none: empty).
    std::filesystem::path airportFile;
    double cgHeight_ft = 8;
    double staticPitch = 0.012217304763960306;
    // Played on after the last report, so that extrapolation runs out.
    int tailSeconds = 100;
    std::int32_t startTick = 100000;
    bool withParkAirport = true;
};

// The ground under a position, feet.
inline double gf_groundAt_ft(const Setup& setup, double lat, double lon) {
    return setup.fieldElevation_ft +
           bsim::gf_fieldReliefFt(setup.fieldLat, setup.fieldLon, lat, lon);
}

// The set-up for a scenario: its airport, when it names one, with the
// stands of that airport's file in airportsDir, when there is one.
inline Setup gf_setupFor(const scenario::Scenario& s, const std::filesystem::path& airportsDir) {
    Setup setup;
    if (s.airport.icao.empty()) return setup;
    setup.airport = s.airport.icao;
    setup.fieldLat = s.airport.lat;
    setup.fieldLon = s.airport.lon;
    setup.fieldElevation_ft = s.airport.elevation_ft;
    std::error_code ec;
    const auto file = airportsDir / (s.airport.icao + ".xml");
    if (std::filesystem::is_regular_file(file, ec)) setup.airportFile = file;
    return setup;
}

struct Sample {
    std::int32_t tick = 0;
    std::uint32_t hexid = 0;
    MotionBlock m;
    FlightState state = FlightState::birth;
    std::uint8_t onGround = 0;
};
// A reported position at the tick the engine means to be there.
struct Reported {
    std::int32_t tick = 0;
    std::uint32_t hexid = 0;
    double lat = 0, lon = 0, alt_ft = 0, speed_kt = 0;
    std::uint8_t inAir = 0;
};
struct Event {
    std::int32_t tick = 0;
    std::uint32_t hexid = 0;
    std::uint32_t event = 0, value = 0;
};
// The stand an aircraft drives to, as it took it over.
struct StandTarget {
    double lat = 0, lon = 0, heading = 0;  // degrees, radians
};
struct Recording {
    Setup setup;
    std::vector<Sample> samples;  // by tick, then object
    std::vector<Reported> reports;
    std::vector<Event> events;
    std::map<std::uint32_t, std::int32_t> removedAt;  // hexid: tick of the removal request
    std::map<std::uint32_t, std::string> callsigns;
    std::map<std::uint32_t, AircraftCategory> categories;
    std::map<std::uint32_t, std::vector<std::string>> states;  // the flight states passed
    std::map<std::uint32_t, StandTarget> stands;  // the last stand each aircraft went to
};

// The emitter category of a report gives the aircraft category when no
// reference database is read.
inline void lf_registerModel(const scenario::Report& r) {
    const std::uint16_t model = gf_modelIndex(r.model);
    if (r.category == "A2") bizjetModels.insert(model);
    if (r.category == "A3" || r.category == "A4") largeModels.insert(model);
    if (r.category == "A5") heavyModels.insert(model);
    if (r.category == "A6") highPerfModels.insert(model);
    if (r.category == "A7") rotorcraftModels.insert(model);
}

// A report as the decoder makes it: an altitude within the allowance of the
// field is on the ground (0), as is any at or below 0.
inline TrafficMessage lf_messageOf(const scenario::Report& r, double start_s,
                                   std::optional<double> fieldAltitude_ft = std::nullopt) {
    TrafficMessage m;
    m.hexid = r.hexid;
    m.callsign = r.callsign;
    m.regcode = r.regcode;
    m.aimo.model = gf_modelIndex(r.model);
    m.time = start_s + r.offset_s;
    StreamPoint& p = m.point;
    p.lat = r.lat;
    p.lon = r.lon;
    p.alt = r.alt_ft;
    p.vs = r.vs_fpm;
    p.track = r.track_deg;
    p.speed = r.gs_kt;
    p.tas = r.tas_kt >= 0 ? r.tas_kt : r.gs_kt;
    gf_correctAltitude(p, fieldAltitude_ft, 1013, false, 0);
    p.inAir = p.alt > 0 ? 1 : 0;
    return m;
}

// The stands of the set-up's airport file become the loaded airport's,
// through the program's own reader. The file is read from a private copy:
// the reader would fetch anything under an "archive" folder from the server.
inline void gf_loadStands(const Setup& setup) {
    namespace fs = std::filesystem;
    std::error_code ec;
    const fs::path dir =
        fs::temp_directory_path(ec) /
        fmt::format("zept_replay_{}_{}", setup.airport, static_cast<const void*>(&setup));
    fs::create_directories(dir, ec);
    const fs::path copy = dir / setup.airportFile.filename();
    fs::copy_file(setup.airportFile, copy, fs::copy_options::overwrite_existing, ec);
    auto read = gf_readAirportFile(copy);
    fs::remove_all(dir, ec);
    if (auto* file = std::get_if<AirportFile>(&read)) {
        gf_setLoadedAirport(IcaoCode(setup.airport), std::move(*file));
    } else {
        fmt::print(stderr, "{}: {}\n", setup.airportFile.string(), std::get<std::string>(read));
    }
}

// One generic livery "<model> livery" for each model the scenario flies, as
// the livery index, so that every aircraft finds a title.
inline void gf_publishScenarioLiveries(const scenario::Scenario& s) {
    std::vector<Livery> list;
    std::set<std::string> models;
    for (const auto& r : s.reports) models.insert(r.model);
    for (const std::string& model : models) {
        list.push_back(
            {model + " livery", "", gf_airlineIndex("ZZZ"), 0, gf_modelIndex(model), 0, 0});
    }
    std::sort(list.begin(), list.end(), gf_liveryLess);
    auto index = std::make_shared<LiveryIndex>();
    gf_internLadderCodes(*index);
    std::vector<std::string> clashes;
    gf_indexLiveries(list, *index, clashes);
    lf_createModelSorted(*index);
    gf_publishLiveryIndex(std::move(index));
}

// A clean engine with a running flight, as the program has it after start.
inline void gf_prepareEngine(const Setup& setup) {
    gf_clearReferenceData();
    gf_modelIndex("");
    gf_airlineIndex("");
    gf_buildOptions();
    gf_stopTraffic();
    gf_initTraffic();
    gf_clearSimBuffers();
    simTick = setup.startTick;
    trafficOpen = 1;
    SimRunState = 2;
    runChoice = std::make_shared<const RunChoice>();
    gf_storeUserData({});
    userAircraft = {};
    gf_clearParkAirport();
    gf_clearLoadedAirport();
    if (!setup.withParkAirport) return;
    std::uint32_t icao = 0;
    for (std::size_t i = 0; i < 4; ++i)
        icao = icao << 8 |
               static_cast<unsigned char>(i < setup.airport.size() ? setup.airport[i] : ' ');
    parkAirport.icao = icao;
    parkAirport.lat = setup.fieldLat;
    parkAirport.lon = setup.fieldLon;
    parkAirport.alt_ft = setup.fieldElevation_ft;
    if (!setup.airportFile.empty()) gf_loadStands(setup);
}

class Receiver {
public:
    Receiver(const Setup& setup, Recording& rec) : setup_(setup), rec_(rec) {}

    // What the simulator does between two ticks.
    void afterTick() {
        const std::int32_t now = gf_simTick();
        SimCommands commands;
        gf_takeSimCommands(commands);
        for (const auto& c : commands.creates) {
            const std::uint32_t objectid = nextObject_++;
            hexOf_[objectid] = c.hexid;
            // Reported on from its creation, before the first frame moves it.
            placed_[objectid] = MotionBlock{c.lat, c.lon, 0, 0, 0, c.alt, 0, 0};
            gf_postSimMessage({objectid, c.hexid, 0, SIM_LIVE_OBJECT_ID, 0, 0});
            gf_postSimMessage(
                {objectid, 0, 0, SIM_STATIC_DATA, setup_.cgHeight_ft, setup_.staticPitch});
        }
        for (const std::uint32_t objectid : commands.removes) {
            rec_.removedAt.emplace(hexOf_[objectid], now);
            last_.erase(objectid);
            placed_.erase(objectid);
            gf_postSimMessage({objectid, 0, 0, SIM_OBJECT_REMOVED, 0, 0});
        }
        for (const auto& e : commands.clientEvents) {
            rec_.events.push_back({now, hexOf_[e.objectid], e.event, e.value});
        }
        if (gf_trySwapFrame(frame_)) {
            for (const auto& entry : frame_) {
                last_[entry.objectid] = entry.motion;
                placed_.erase(entry.objectid);
            }
            frame_.clear();
        }
        for (const auto& [objectid, m] : last_) record(now, objectid, m);
        if (now % 20 == 0) report();
    }

private:
    void record(std::int32_t now, std::uint32_t objectid, const MotionBlock& m) {
        const LiveAircraft* ac = gf_findLiveByObjectId(objectid);
        if (ac == nullptr) return;
        rec_.samples.push_back({now, ac->hexid, m, ac->flightState, ac->onGround});
        rec_.callsigns[ac->hexid] = ac->callsign;
        rec_.categories[ac->hexid] = ac->category;
        if (ac->flightState == FlightState::parking && ac->sid != 0)
            rec_.stands[ac->hexid] = {ac->standLat, ac->standLon, ac->standHeading};
        auto& states = rec_.states[ac->hexid];
        const std::string name(gf_flightStateName(ac->flightState));
        if (states.empty() || states.back() != name) states.push_back(name);
    }
    // The ground under each object below 2500 feet, and its height above it.
    void report() {
        for (const auto* objects : {&placed_, &last_}) {
            for (const auto& [objectid, m] : *objects) reportOne(objectid, m);
        }
    }
    void reportOne(std::uint32_t objectid, const MotionBlock& m) {
        const double ground = gf_groundAt_ft(setup_, m.lat, m.lon);
        const double agl = m.alt - ground;
        if (agl >= 2500) return;
        const std::uint32_t onGround = agl <= setup_.cgHeight_ft + 0.5 ? 1 : 0;
        gf_postSimMessage({objectid, onGround, 0, SIM_POSITION_REPORT, ground, std::max(0.0, agl)});
    }

    const Setup& setup_;
    Recording& rec_;
    FrameTable frame_;
    std::map<std::uint32_t, MotionBlock> last_;
    std::map<std::uint32_t, MotionBlock> placed_;  // created, no frame yet
    std::map<std::uint32_t, std::uint32_t> hexOf_;
    std::uint32_t nextObject_ = 100;
};

// Plays the scenario and returns what the simulator received.
inline Recording gf_replay(const scenario::Scenario& s, const Setup& setup = {}) {
    gf_prepareEngine(setup);
    for (const auto& r : s.reports) lf_registerModel(r);
    gf_publishScenarioLiveries(s);
    Recording rec;
    rec.setup = setup;
    Receiver receiver(rec.setup, rec);
    const std::optional<double> field =
        setup.withParkAirport ? std::optional<double>(setup.fieldElevation_ft) : std::nullopt;
    std::size_t nextReport = 0;
    const int seconds = static_cast<int>(std::ceil(s.length_s())) + 1 + setup.tailSeconds;
    for (int second = 0; second <= seconds; ++second) {
        std::vector<TrafficMessage> batch;
        while (nextReport < s.reports.size() && s.reports[nextReport].offset_s < second + 1) {
            batch.push_back(lf_messageOf(s.reports[nextReport++], s.start_epoch_s, field));
        }
        if (!batch.empty()) {
            std::vector<TrafficMessage> stamped = batch;
            lf_stampBatch(stamped, gf_simTick(), 30);
            for (const auto& m : stamped) {
                rec.reports.push_back({m.point.time, m.hexid, m.point.lat, m.point.lon, m.point.alt,
                                       m.point.speed, m.point.inAir});
            }
            gf_handleTrafficBatch(batch, 30, true);
        }
        for (int t = 0; t < TICKS_PER_SECOND; ++t) {
            gf_trafficTick();
            receiver.afterTick();
        }
    }
    return rec;
}

// ---- quality figures ----

struct Figures {
    std::uint32_t hexid = 0;
    std::string callsign;
    AircraftCategory category = AircraftCategory::Light;
    std::size_t frames = 0;
    double maxJump_m = 0;          // between two frames
    double allowedJump_m = 0;      // by the fastest reported speed
    double maxTurnRate_degps = 0;  // in the air
    double maxBank_deg = 0;
    double bankLimit_deg = 0;
    double maxBankRate_degps = 0;
    double bankRateLimit_degps = 0;
    double maxPitchRate_degps = 0;  // every state: rotation, flare and touchdown too
    double pitchRateLimit_degps = 0;
    double maxClimb_fpm = 0;     // from the altitude per tick, in the air
    double maxDescent_fpm = 0;   // (negative)
    double maxVsJump_fpm = 0;    // change of that between two ticks
    double maxTrackError_m = 0;  // played track against the reported point at its tick
    double meanTrackError_m = 0;
    std::size_t reportsMatched = 0;
    // The constant delay of the played track behind the reports (a late
    // create, say), seconds, and the track error once it is taken out.
    double lag_s = 0;
    double maxLagFreeError_m = 0;
    double meanLagFreeError_m = 0;
};

// The sample of an aircraft at a tick, or nullptr.
inline const Sample* gf_sampleAt(const std::vector<const Sample*>& samples, std::int32_t tick) {
    const auto it = std::lower_bound(samples.begin(), samples.end(), tick,
                                     [](const Sample* s, std::int32_t t) { return s->tick < t; });
    return it == samples.end() || (*it)->tick != tick ? nullptr : *it;
}

inline double gf_errorAt_m(const std::vector<const Sample*>& samples, const Reported& r,
                           std::int32_t tick) {
    const Sample* s = gf_sampleAt(samples, tick);
    if (s == nullptr) return -1;
    return gf_distanceNm({r.lat, r.lon}, {s->m.lat, s->m.lon}) * METRES_PER_NM;
}

// The shift in ticks (played later than reported: positive) at which the
// played track comes closest to a moving report, within a minute.
inline std::int32_t gf_bestShift(const std::vector<const Sample*>& samples, const Reported& r) {
    std::int32_t best = 0;
    double bestError = -1;
    const auto probe = [&](std::int32_t shift) {
        const double e = gf_errorAt_m(samples, r, r.tick + shift);
        if (e >= 0 && (bestError < 0 || e < bestError)) {
            bestError = e;
            best = shift;
        }
    };
    for (std::int32_t shift = -6000; shift <= 6000; shift += 10) probe(shift);
    const std::int32_t coarse = best;
    for (std::int32_t shift = coarse - 10; shift <= coarse + 10; ++shift) probe(shift);
    return best;
}

// Largest jump in one tick that a speed allows, metres: a leg may be flown
// up to a fifth faster than reported while it catches up with the data.
inline double gf_allowedJump_m(double speed_kt) {
    return speed_kt / KNOTS_PER_MPS / TICKS_PER_SECOND * 1.2 + 0.05;
}

// The fastest coordinated turn at the bank limit at a speed, degrees per second.
inline double gf_turnRateLimit_degps(AircraftCategory category, double speed_kt) {
    const double bank = CATEGORY_TABLE[static_cast<std::size_t>(category)].bankLimit_deg;
    const double v_mps = std::max(speed_kt, 60.0) / KNOTS_PER_MPS;
    return 9.80665 * std::tan(bank * RAD_PER_DEG) / v_mps * DEG_PER_RAD;
}

inline std::vector<Figures> gf_figures(const Recording& rec) {
    std::map<std::uint32_t, std::vector<const Sample*>> byHex;
    for (const auto& s : rec.samples) byHex[s.hexid].push_back(&s);
    std::map<std::uint32_t, double> fastest;
    for (const auto& r : rec.reports) fastest[r.hexid] = std::max(fastest[r.hexid], r.speed_kt);
    std::vector<Figures> out;
    for (const auto& [hexid, samples] : byHex) {
        Figures f;
        f.hexid = hexid;
        f.callsign = rec.callsigns.at(hexid);
        f.category = rec.categories.at(hexid);
        const CategoryRow& row = CATEGORY_TABLE[static_cast<std::size_t>(f.category)];
        f.bankLimit_deg = row.bankLimit_deg;
        f.bankRateLimit_degps = row.bankRateLimit_degps;
        f.pitchRateLimit_degps = row.pitchRateLimit_degps;
        f.allowedJump_m = gf_allowedJump_m(fastest[hexid]);
        f.frames = samples.size();
        double prevVs = 0;
        bool havePrevVs = false;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const Sample& b = *samples[i];
            f.maxBank_deg = std::max(f.maxBank_deg, std::abs(b.m.bank) * DEG_PER_RAD);
            if (i == 0 || samples[i - 1]->tick + 1 != b.tick) {
                havePrevVs = false;
                continue;
            }
            const Sample& a = *samples[i - 1];
            const double jump_m =
                gf_distanceNm({a.m.lat, a.m.lon}, {b.m.lat, b.m.lon}) * METRES_PER_NM;
            f.maxJump_m = std::max(f.maxJump_m, jump_m);
            const bool air = a.onGround == 0 && b.onGround == 0;
            if (air) {
                const double turn = std::abs(gf_foldAngle(b.m.heading - a.m.heading));
                f.maxTurnRate_degps = std::max(f.maxTurnRate_degps, turn * DEG_PER_RAD * 100);
                f.maxBankRate_degps = std::max(f.maxBankRate_degps,
                                               std::abs(b.m.bank - a.m.bank) * DEG_PER_RAD * 100);
            }
            // Whatever the state: a rotation or a flare that pitches faster
            // than the category allows must show.
            f.maxPitchRate_degps =
                std::max(f.maxPitchRate_degps, std::abs(b.m.pitch - a.m.pitch) * DEG_PER_RAD * 100);
            if (!air) {
                // On the ground the simulator's ground height sets the altitude.
                havePrevVs = false;
                continue;
            }
            const double vs = (b.m.alt - a.m.alt) * 6000;
            f.maxClimb_fpm = std::max(f.maxClimb_fpm, vs);
            f.maxDescent_fpm = std::min(f.maxDescent_fpm, vs);
            if (havePrevVs) f.maxVsJump_fpm = std::max(f.maxVsJump_fpm, std::abs(vs - prevVs));
            prevVs = vs;
            havePrevVs = true;
        }
        double sum = 0;
        for (const auto& r : rec.reports) {
            if (r.hexid != hexid) continue;
            const auto it =
                std::lower_bound(samples.begin(), samples.end(), r.tick,
                                 [](const Sample* s, std::int32_t tick) { return s->tick < tick; });
            if (it == samples.end() || (*it)->tick != r.tick) continue;
            const double err_m =
                gf_distanceNm({r.lat, r.lon}, {(*it)->m.lat, (*it)->m.lon}) * METRES_PER_NM;
            f.maxTrackError_m = std::max(f.maxTrackError_m, err_m);
            sum += err_m;
            ++f.reportsMatched;
        }
        f.meanTrackError_m = f.reportsMatched > 0 ? sum / f.reportsMatched : 0;
        // The lag: the median best shift over the reports that move.
        std::vector<std::int32_t> shifts;
        for (const auto& r : rec.reports) {
            if (r.hexid == hexid && r.speed_kt > 30 && gf_sampleAt(samples, r.tick) != nullptr)
                shifts.push_back(gf_bestShift(samples, r));
        }
        std::int32_t lag = 0;
        if (!shifts.empty()) {
            std::nth_element(shifts.begin(), shifts.begin() + shifts.size() / 2, shifts.end());
            lag = shifts[shifts.size() / 2];
        }
        f.lag_s = lag / 100.0;
        double lagFreeSum = 0;
        std::size_t lagFreeCount = 0;
        for (const auto& r : rec.reports) {
            if (r.hexid != hexid) continue;
            const double e = gf_errorAt_m(samples, r, r.tick + lag);
            if (e < 0) continue;
            f.maxLagFreeError_m = std::max(f.maxLagFreeError_m, e);
            lagFreeSum += e;
            ++lagFreeCount;
        }
        f.meanLagFreeError_m = lagFreeCount > 0 ? lagFreeSum / lagFreeCount : 0;
        out.push_back(f);
    }
    return out;
}

inline std::string gf_figuresText(const std::vector<Figures>& all) {
    std::string out = fmt::format(
        "{:8} {:10} {:6} {:>9} {:>9} {:>8} {:>11} {:>13} {:>13} {:>8} {:>8} {:>9} {:>9} {:>9} "
        "{:>6} {:>9} {:>9}\n",
        "callsign", "category", "frames", "jump m", "allowed", "turn d/s", "bank d/lim",
        "bankrate/lim", "pitchrt/lim", "climb", "descent", "vs jump", "trk max m", "trk mean",
        "lag s", "-lag max", "-lag mean");
    Figures total;
    double meanSum = 0, lagFreeSum = 0;
    for (const auto& f : all) {
        out += fmt::format(
            "{:8} {:10} {:6} {:9.2f} {:9.2f} {:8.2f} {:5.1f}/{:<5.0f} {:6.2f}/{:<6.2f} "
            "{:6.2f}/{:<6.2f} {:8.0f} {:8.0f} {:9.0f} {:9.0f} {:9.0f} {:6.1f} {:9.0f} {:9.0f}\n",
            f.callsign, gf_categoryWord(f.category), f.frames, f.maxJump_m, f.allowedJump_m,
            f.maxTurnRate_degps, f.maxBank_deg, f.bankLimit_deg, f.maxBankRate_degps,
            f.bankRateLimit_degps, f.maxPitchRate_degps, f.pitchRateLimit_degps, f.maxClimb_fpm,
            f.maxDescent_fpm, f.maxVsJump_fpm, f.maxTrackError_m, f.meanTrackError_m, f.lag_s,
            f.maxLagFreeError_m, f.meanLagFreeError_m);
        total.frames += f.frames;
        total.maxJump_m = std::max(total.maxJump_m, f.maxJump_m);
        total.maxTurnRate_degps = std::max(total.maxTurnRate_degps, f.maxTurnRate_degps);
        total.maxBank_deg = std::max(total.maxBank_deg, f.maxBank_deg);
        total.maxBankRate_degps = std::max(total.maxBankRate_degps, f.maxBankRate_degps);
        total.maxPitchRate_degps = std::max(total.maxPitchRate_degps, f.maxPitchRate_degps);
        total.maxClimb_fpm = std::max(total.maxClimb_fpm, f.maxClimb_fpm);
        total.maxDescent_fpm = std::min(total.maxDescent_fpm, f.maxDescent_fpm);
        total.maxVsJump_fpm = std::max(total.maxVsJump_fpm, f.maxVsJump_fpm);
        total.maxTrackError_m = std::max(total.maxTrackError_m, f.maxTrackError_m);
        if (std::abs(f.lag_s) > std::abs(total.lag_s)) total.lag_s = f.lag_s;
        total.maxLagFreeError_m = std::max(total.maxLagFreeError_m, f.maxLagFreeError_m);
        meanSum += f.meanTrackError_m * static_cast<double>(f.reportsMatched);
        lagFreeSum += f.meanLagFreeError_m * static_cast<double>(f.reportsMatched);
        total.reportsMatched += f.reportsMatched;
    }
    const double n = static_cast<double>(total.reportsMatched);
    const double mean = total.reportsMatched > 0 ? meanSum / n : 0;
    const double lagFreeMean = total.reportsMatched > 0 ? lagFreeSum / n : 0;
    out += fmt::format(
        "{:8} {:10} {:6} {:9.2f} {:>9} {:8.2f} {:5.1f}{:6} {:6.2f}{:7} {:6.2f}{:7} {:8.0f} "
        "{:8.0f} {:9.0f} {:9.0f} {:9.0f} {:6.1f} {:9.0f} {:9.0f}\n",
        "total", "", total.frames, total.maxJump_m, "", total.maxTurnRate_degps, total.maxBank_deg,
        "", total.maxBankRate_degps, "", total.maxPitchRate_degps, "", total.maxClimb_fpm,
        total.maxDescent_fpm, total.maxVsJump_fpm, total.maxTrackError_m, mean, total.lag_s,
        total.maxLagFreeError_m, lagFreeMean);
    return out;
}

// The recording as text: "F" lines per object and tick, "R" lines per reported point.
inline std::string gf_recordingText(const Recording& rec) {
    std::string out =
        "# "
        "F,tick,hexid,callsign,lat,lon,alt_ft,heading_deg,pitch_deg,bank_deg,vs_fpm,tas_kt,state\n"
        "# R,tick,hexid,callsign,lat,lon,alt_ft,speed_kt\n";
    for (const auto& s : rec.samples) {
        out +=
            fmt::format("F,{},{},{},{:.7f},{:.7f},{:.1f},{:.2f},{:.2f},{:.2f},{:.0f},{:.0f},{}\n",
                        s.tick, s.hexid, rec.callsigns.at(s.hexid), s.m.lat, s.m.lon, s.m.alt,
                        s.m.heading * DEG_PER_RAD, s.m.pitch * DEG_PER_RAD, s.m.bank * DEG_PER_RAD,
                        s.m.vs, s.m.tas, gf_flightStateName(s.state));
    }
    for (const auto& r : rec.reports) {
        const auto cs = rec.callsigns.find(r.hexid);
        out += fmt::format("R,{},{},{},{:.7f},{:.7f},{:.1f},{:.0f}\n", r.tick, r.hexid,
                           cs == rec.callsigns.end() ? "" : cs->second, r.lat, r.lon, r.alt_ft,
                           r.speed_kt);
    }
    return out;
}

}  // namespace tfx::replay
