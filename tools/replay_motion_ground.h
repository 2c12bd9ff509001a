// Quality figures of the motion on the ground, from a replay's recording:
// what users notice first. The height above the simulator's ground, turning
// on the spot, sliding sideways, turns too tight for the speed, speed that
// jumps at the ends of legs, frames that jump further than the speed allows,
// where an aircraft ends on its stand, and how far the played track strays
// from the reported points.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "replay_motion_lib.h"

namespace tfx::replay {

struct GroundFigures {
    std::uint32_t hexid = 0;
    std::string callsign;
    AircraftCategory category = AircraftCategory::Light;
    std::size_t frames = 0;  // on the ground
    // Height of the reference point above where the ground puts it, metres:
    // the most above (floating) and the most below (sinking).
    double maxFloat_m = 0, maxSink_m = 0;
    // The largest heading change in one stretch below 1 kt, degrees.
    double pivot_deg = 0;
    // Movement direction against the heading while moving at 2 kt or more.
    double maxSlide_deg = 0;
    double slideShare = 0;  // share of those frames sliding by more than 5 degrees
    // Turns while moving at 1 kt or more: the fastest yaw and the tightest radius.
    double maxYaw_degps = 0;
    double minRadius_m = std::numeric_limits<double>::infinity();
    // Change of ground speed, knots per second, over half-second means:
    // taxiing and parking, and on the takeoff or landing roll.
    double taxiAccel_ktps = 0, taxiDecel_ktps = 0;
    double rollAccel_ktps = 0, rollDecel_ktps = 0;
    // The largest frame jump over what the reported speed nearby allows.
    double jumpRatio = 0;
    // Where the aircraft ended at its stand (none: NaN).
    double standDistance_m = std::numeric_limits<double>::quiet_NaN();
    double standHeading_deg = std::numeric_limits<double>::quiet_NaN();
    // Reported ground points against the played track: the nearest point of
    // the track within a minute (path), and where the aircraft was at the
    // point's time (time).
    double pathMax_m = 0, pathMean_m = 0;
    double timeMax_m = 0, timeMean_m = 0;
    std::size_t groundReports = 0;
};

// Half-width of the windows over which speed and turn are measured, ticks.
inline constexpr std::int32_t GROUND_WINDOW = 25;
// Stretches this slow count as standing, knots.
inline constexpr double PIVOT_BELOW_KT = 1;
inline constexpr double SLIDE_FROM_KT = 2;
inline constexpr double SLIDE_NOTICED_DEG = 5;
// A jump is measured against at least this speed: the slow drives of the
// engine's own (onto a stand, a push) may move where the data stand still.
inline constexpr double JUMP_FLOOR_KT = 5;

namespace detail {

struct Local {
    double east = 0, north = 0;  // metres from the field
};

inline Local lf_local(const Setup& setup, double lat, double lon) {
    constexpr double M_PER_DEG = 111132.95;
    return {std::remainder(lon - setup.fieldLon, 360.0) * M_PER_DEG *
                std::cos(setup.fieldLat * RAD_PER_DEG),
            (lat - setup.fieldLat) * M_PER_DEG};
}

inline double lf_metres(const Local& a, const Local& b) {
    return std::hypot(a.east - b.east, a.north - b.north);
}

inline bool lf_isRoll(FlightState s) {
    return s == FlightState::takeoff_roll || s == FlightState::landing_roll ||
           s == FlightState::takeoff;
}

// The samples of one aircraft on consecutive ticks around i, or false.
inline bool lf_window(const std::vector<const Sample*>& v, std::size_t i, std::int32_t w) {
    return i >= static_cast<std::size_t>(w) && i + static_cast<std::size_t>(w) < v.size() &&
           v[i + w]->tick - v[i - w]->tick == 2 * w;
}

inline void lf_heightAndStand(const Recording& rec, const std::vector<const Sample*>& v,
                              GroundFigures& f) {
    const double cg = rec.setup.cgHeight_ft;
    const Sample* atStand = nullptr;
    bool wasParking = false;
    for (const Sample* s : v) {
        if (s->onGround != 0 && s->state != FlightState::takeoff) {
            ++f.frames;
            const double h_m =
                (s->m.alt - cg - gf_groundAt_ft(rec.setup, s->m.lat, s->m.lon)) / 3.280839895;
            f.maxFloat_m = std::max(f.maxFloat_m, h_m);
            f.maxSink_m = std::min(f.maxSink_m, h_m);
        }
        if (s->state == FlightState::parking) {
            atStand = s;
            wasParking = true;
        } else if (wasParking && s->state == FlightState::parked) {
            atStand = s;
            wasParking = false;
        } else {
            wasParking = false;
        }
    }
    const auto stand = rec.stands.find(f.hexid);
    if (atStand == nullptr || stand == rec.stands.end()) return;
    f.standDistance_m =
        gf_distanceNm({atStand->m.lat, atStand->m.lon}, {stand->second.lat, stand->second.lon}) *
        METRES_PER_NM;
    f.standHeading_deg =
        std::abs(gf_foldAngle(gf_normalizeHeading(stand->second.heading) - atStand->m.heading)) *
        DEG_PER_RAD;
}

inline void lf_motion(const Recording& rec, const std::vector<const Sample*>& v, GroundFigures& f) {
    const std::int32_t w = GROUND_WINDOW;
    const double span_s = 2.0 * w / TICKS_PER_SECOND;
    std::vector<double> speed_kt(v.size(), std::numeric_limits<double>::quiet_NaN());
    for (std::size_t i = 0; i < v.size(); ++i) {
        if (!lf_window(v, i, w)) continue;
        const Local a = lf_local(rec.setup, v[i - w]->m.lat, v[i - w]->m.lon);
        const Local b = lf_local(rec.setup, v[i + w]->m.lat, v[i + w]->m.lon);
        speed_kt[i] = lf_metres(a, b) / span_s * KNOTS_PER_MPS;
    }
    double pivot = 0;
    std::size_t moving = 0, sliding = 0;
    for (std::size_t i = 1; i < v.size(); ++i) {
        const Sample& s = *v[i];
        const bool ground = s.onGround != 0 && s.state != FlightState::takeoff;
        if (!ground || std::isnan(speed_kt[i])) {
            pivot = 0;
            continue;
        }
        const double gs = speed_kt[i];
        if (gs < PIVOT_BELOW_KT && v[i - 1]->tick + 1 == s.tick) {
            pivot += std::abs(gf_foldAngle(s.m.heading - v[i - 1]->m.heading)) * DEG_PER_RAD;
            f.pivot_deg = std::max(f.pivot_deg, pivot);
        } else {
            pivot = 0;
        }
        const Local a = lf_local(rec.setup, v[i - w]->m.lat, v[i - w]->m.lon);
        const Local b = lf_local(rec.setup, v[i + w]->m.lat, v[i + w]->m.lon);
        if (gs >= SLIDE_FROM_KT) {
            const double dir = std::atan2(b.east - a.east, b.north - a.north);
            double slide = std::abs(gf_foldAngle(gf_normalizeHeading(dir) - s.m.heading));
            if (s.state == FlightState::pushing_back) slide = PI - slide;
            f.maxSlide_deg = std::max(f.maxSlide_deg, slide * DEG_PER_RAD);
            ++moving;
            if (slide * DEG_PER_RAD > SLIDE_NOTICED_DEG) ++sliding;
        }
        if (gs >= PIVOT_BELOW_KT) {
            const double yaw =
                std::abs(gf_foldAngle(v[i + w]->m.heading - v[i - w]->m.heading)) / span_s;
            f.maxYaw_degps = std::max(f.maxYaw_degps, yaw * DEG_PER_RAD);
            if (yaw * DEG_PER_RAD > 0.5)
                f.minRadius_m = std::min(f.minRadius_m, gs / KNOTS_PER_MPS / yaw);
        }
        if (i >= static_cast<std::size_t>(w) && i + w < v.size() && !std::isnan(speed_kt[i - w]) &&
            !std::isnan(speed_kt[i + w]) && v[i + w]->tick - v[i - w]->tick == 2 * w) {
            const double dv = (speed_kt[i + w] - speed_kt[i - w]) / span_s;
            const bool roll = lf_isRoll(s.state);
            double& up = roll ? f.rollAccel_ktps : f.taxiAccel_ktps;
            double& down = roll ? f.rollDecel_ktps : f.taxiDecel_ktps;
            up = std::max(up, dv);
            down = std::max(down, -dv);
        }
    }
    f.slideShare = moving > 0 ? static_cast<double>(sliding) / static_cast<double>(moving) : 0;
}

// The fastest speed reported within 20 s of each report's tick, as a step function.
inline void lf_jumps(const Recording& rec, const std::vector<const Sample*>& v,
                     const std::vector<const Reported*>& reports, GroundFigures& f) {
    std::size_t lo = 0;
    for (std::size_t i = 1; i < v.size(); ++i) {
        const Sample& a = *v[i - 1];
        const Sample& b = *v[i];
        if (a.tick + 1 != b.tick || b.onGround == 0 || b.state == FlightState::takeoff) continue;
        while (lo < reports.size() && reports[lo]->tick < b.tick - 2000) ++lo;
        double fastest = JUMP_FLOOR_KT;
        for (std::size_t r = lo; r < reports.size() && reports[r]->tick <= b.tick + 2000; ++r)
            fastest = std::max(fastest, reports[r]->speed_kt);
        const double jump =
            lf_metres(lf_local(rec.setup, a.m.lat, a.m.lon), lf_local(rec.setup, b.m.lat, b.m.lon));
        f.jumpRatio = std::max(f.jumpRatio, jump / gf_allowedJump_m(fastest));
    }
}

inline void lf_trackDistance(const Recording& rec, const std::vector<const Sample*>& v,
                             const std::vector<const Reported*>& reports, GroundFigures& f) {
    if (v.empty()) return;
    double pathSum = 0, timeSum = 0;
    std::size_t lo = 0;
    for (const Reported* r : reports) {
        if (r->inAir != 0 || r->tick < v.front()->tick || r->tick > v.back()->tick) continue;
        const Local at = lf_local(rec.setup, r->lat, r->lon);
        while (lo < v.size() && v[lo]->tick < r->tick - 6000) ++lo;
        double nearest = std::numeric_limits<double>::infinity();
        for (std::size_t i = lo; i < v.size() && v[i]->tick <= r->tick + 6000; ++i)
            nearest =
                std::min(nearest, lf_metres(at, lf_local(rec.setup, v[i]->m.lat, v[i]->m.lon)));
        const Sample* then = gf_sampleAt(v, r->tick);
        if (then == nullptr || !std::isfinite(nearest)) continue;
        const double late = lf_metres(at, lf_local(rec.setup, then->m.lat, then->m.lon));
        f.pathMax_m = std::max(f.pathMax_m, nearest);
        f.timeMax_m = std::max(f.timeMax_m, late);
        pathSum += nearest;
        timeSum += late;
        ++f.groundReports;
    }
    if (f.groundReports > 0) {
        f.pathMean_m = pathSum / static_cast<double>(f.groundReports);
        f.timeMean_m = timeSum / static_cast<double>(f.groundReports);
    }
}

}  // namespace detail

// The figures of every aircraft that was on the ground.
inline std::vector<GroundFigures> gf_groundFigures(const Recording& rec) {
    std::map<std::uint32_t, std::vector<const Sample*>> byHex;
    for (const auto& s : rec.samples) byHex[s.hexid].push_back(&s);
    std::map<std::uint32_t, std::vector<const Reported*>> reportsOf;
    for (const auto& r : rec.reports) reportsOf[r.hexid].push_back(&r);
    std::vector<GroundFigures> out;
    for (const auto& [hexid, v] : byHex) {
        GroundFigures f;
        f.hexid = hexid;
        f.callsign = rec.callsigns.at(hexid);
        f.category = rec.categories.at(hexid);
        detail::lf_heightAndStand(rec, v, f);
        if (f.frames == 0) continue;
        const auto& reports = reportsOf[hexid];
        detail::lf_motion(rec, v, f);
        detail::lf_jumps(rec, v, reports, f);
        detail::lf_trackDistance(rec, v, reports, f);
        out.push_back(f);
    }
    return out;
}

inline std::string gf_groundFiguresText(const std::vector<GroundFigures>& all) {
    const auto row = [](const GroundFigures& f, std::string_view name, std::string_view cat) {
        const std::string radius =
            std::isfinite(f.minRadius_m) ? fmt::format("{:.0f}", f.minRadius_m) : "-";
        const std::string stand =
            std::isnan(f.standDistance_m)
                ? std::string("-")
                : fmt::format("{:.2f}/{:.1f}", f.standDistance_m, f.standHeading_deg);
        return fmt::format(
            "{:8} {:10} {:7} {:5.2f}/{:<6.2f} {:6.1f} {:6.1f}/{:<5.3f} {:6.1f} {:5} "
            "{:5.1f}/{:<5.1f} {:5.1f}/{:<5.1f} {:6.2f} {:>11} {:6.1f}/{:<5.1f} {:6.0f}/{:<5.0f}\n",
            name, cat, f.frames, f.maxFloat_m, f.maxSink_m, f.pivot_deg, f.maxSlide_deg,
            f.slideShare, f.maxYaw_degps, radius, f.taxiAccel_ktps, f.taxiDecel_ktps,
            f.rollAccel_ktps, f.rollDecel_ktps, f.jumpRatio, stand, f.pathMax_m, f.pathMean_m,
            f.timeMax_m, f.timeMean_m);
    };
    std::string out = fmt::format(
        "{:8} {:10} {:>7} {:>12} {:>6} {:>12} {:>6} {:>5} {:>11} {:>11} {:>6} {:>11} {:>12} "
        "{:>12}\n",
        "callsign", "category", "gnd frm", "float/sink m", "pivot", "slide/share", "yaw/s", "min R",
        "taxi acc/dec", "roll acc/dec", "jump/x", "stand m/deg", "path max/mean", "time max/mean");
    GroundFigures total;
    double pathSum = 0, timeSum = 0;
    double slideFrames = 0;
    for (const auto& f : all) {
        out += row(f, f.callsign, gf_categoryWord(f.category));
        total.frames += f.frames;
        total.maxFloat_m = std::max(total.maxFloat_m, f.maxFloat_m);
        total.maxSink_m = std::min(total.maxSink_m, f.maxSink_m);
        total.pivot_deg = std::max(total.pivot_deg, f.pivot_deg);
        total.maxSlide_deg = std::max(total.maxSlide_deg, f.maxSlide_deg);
        slideFrames += f.slideShare * static_cast<double>(f.frames);
        total.maxYaw_degps = std::max(total.maxYaw_degps, f.maxYaw_degps);
        total.minRadius_m = std::min(total.minRadius_m, f.minRadius_m);
        total.taxiAccel_ktps = std::max(total.taxiAccel_ktps, f.taxiAccel_ktps);
        total.taxiDecel_ktps = std::max(total.taxiDecel_ktps, f.taxiDecel_ktps);
        total.rollAccel_ktps = std::max(total.rollAccel_ktps, f.rollAccel_ktps);
        total.rollDecel_ktps = std::max(total.rollDecel_ktps, f.rollDecel_ktps);
        total.jumpRatio = std::max(total.jumpRatio, f.jumpRatio);
        if (!std::isnan(f.standDistance_m) &&
            (std::isnan(total.standDistance_m) || f.standDistance_m > total.standDistance_m))
            total.standDistance_m = f.standDistance_m;
        if (!std::isnan(f.standHeading_deg) &&
            (std::isnan(total.standHeading_deg) || f.standHeading_deg > total.standHeading_deg))
            total.standHeading_deg = f.standHeading_deg;
        total.pathMax_m = std::max(total.pathMax_m, f.pathMax_m);
        total.timeMax_m = std::max(total.timeMax_m, f.timeMax_m);
        pathSum += f.pathMean_m * static_cast<double>(f.groundReports);
        timeSum += f.timeMean_m * static_cast<double>(f.groundReports);
        total.groundReports += f.groundReports;
    }
    const double n = static_cast<double>(total.groundReports);
    total.pathMean_m = n > 0 ? pathSum / n : 0;
    total.timeMean_m = n > 0 ? timeSum / n : 0;
    total.slideShare = total.frames > 0 ? slideFrames / static_cast<double>(total.frames) : 0;
    out += row(total, "total", "");
    return out;
}

}  // namespace tfx::replay
