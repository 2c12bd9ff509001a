// Writes a scenario for the stand-in RealTraffic application: believable
// traffic around an airport, with type designators, airlines and
// registrations taken from the reference database's source file.
//
//   rt_scenario_gen [--airport EGTK|EGLL] [--minutes N] [--seed N]
//                   [--dbase data/dbase.xml] [--out FILE]
//
// Arrivals on final down to the runway and off it, departures from the
// apron up to cruise, taxiing aircraft, overflights at cruise, one aircraft
// in a hold and parked aircraft; a few without callsign or registration. One report per aircraft
// every one to two seconds.
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iostream>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "rt_scenario.h"

namespace {

using tfx::scenario::Report;
using tfx::scenario::Scenario;

struct Airport {
    std::string icao, iata;
    double lat, lon, elev_ft, runway_deg;
};

const std::vector<Airport> AIRPORTS = {
    {"EGTK", "OXF", 51.8369, -1.3200, 270, 187},
    {"EGLL", "LHR", 51.4700, -0.4543, 83, 270},
};

struct Airframe {
    std::string regcode, airline, model;
};

struct State {
    double lat, lon, alt_ft, vs_fpm, track_deg, gs_kt;
};

// Where an aircraft is t seconds into the scenario.
using Path = std::function<State(double t)>;

struct Flight {
    Airframe frame;
    std::string callsign, from, to, category;
    std::uint32_t hexid;
    Path path;
};

constexpr double DEG = std::numbers::pi / 180;

void lf_move(double& lat, double& lon, double bearing_deg, double dist_nm) {
    lat += dist_nm * std::cos(bearing_deg * DEG) / 60;
    lon += dist_nm * std::sin(bearing_deg * DEG) / (60 * std::cos(lat * DEG));
}

std::vector<Airframe> lf_airframes(const std::string& path) {
    pugi::xml_document doc;
    std::vector<Airframe> out;
    if (!doc.load_file(path.c_str())) return out;
    for (auto d : doc.select_nodes("//d")) {
        const auto n = d.node();
        Airframe a{n.attribute("r").value(), n.attribute("a").value(), n.attribute("m").value()};
        if (!a.regcode.empty() && a.airline.size() == 3 && !a.model.empty()) out.push_back(a);
    }
    return out;
}

std::vector<std::string> lf_lightTypes(const std::string& path) {
    pugi::xml_document doc;
    std::vector<std::string> out;
    if (!doc.load_file(path.c_str())) return out;
    for (auto a : doc.select_nodes("//aircraft[@types]")) {
        const std::string types = a.node().attribute("types").value();
        if (types.find("C172") == std::string::npos) continue;
        for (auto t : tfx::scenario::lf_split(types)) out.emplace_back(t);
    }
    return out;
}

// Final approach from dist0 out: 3 degree glide path, touchdown, roll-out and
// a taxi off to the apron.
Path lf_arrival(const Airport& ap, double dist0_nm) {
    return [=](double t) {
        const double approach_kt = 140;
        const double tFinal = dist0_nm / approach_kt * 3600;
        double lat = ap.lat, lon = ap.lon;
        const double inbound = ap.runway_deg;
        if (t < tFinal) {
            const double dist = dist0_nm - approach_kt * t / 3600;
            lf_move(lat, lon, inbound + 180, dist);
            return State{lat, lon, ap.elev_ft + dist * 318, -740, inbound, approach_kt};
        }
        const double tr = t - tFinal;
        if (tr < 40) {  // roll-out from 130 to 20 knots
            const double gs = 130 - 110 * tr / 40;
            const double dist = (130 + gs) / 2 * tr / 3600;
            lf_move(lat, lon, inbound, dist);
            return State{lat, lon, 0, 0, inbound, gs};
        }
        lf_move(lat, lon, inbound, 75.0 * 40 / 3600);
        const double taxi = std::min(15 * (tr - 40) / 3600, 0.6);
        lf_move(lat, lon, inbound + 90, taxi);
        return State{lat, lon, 0, 0, std::fmod(inbound + 90, 360), taxi < 0.6 ? 15.0 : 0.0};
    };
}

// Taxi out, take-off roll, climb to cruise on the runway heading.
Path lf_departure(const Airport& ap, double taxi_s) {
    return [=](double t) {
        double lat = ap.lat, lon = ap.lon;
        const double rwy = ap.runway_deg;
        lf_move(lat, lon, rwy + 180, 1.0);  // the runway's start
        if (t < taxi_s) {
            const double left = 15 * (taxi_s - t) / 3600;
            lf_move(lat, lon, rwy - 90, left);
            return State{lat, lon, 0, 0, std::fmod(rwy + 90, 360), 15};
        }
        const double tr = t - taxi_s;
        if (tr < 35) {  // take-off roll to 150 knots
            const double gs = 150 * tr / 35;
            lf_move(lat, lon, rwy, gs / 2 * tr / 3600);
            return State{lat, lon, 0, 0, rwy, gs};
        }
        lf_move(lat, lon, rwy, 75.0 * 35 / 3600);
        const double tc = tr - 35;
        const double gs = std::min(160 + tc * 1.2, 450.0);
        lf_move(lat, lon, rwy, (160 + gs) / 2 * tc / 3600);
        const double alt = std::min(ap.elev_ft + 2500 * tc / 60, 35000.0);
        return State{lat, lon, alt, alt < 35000 ? 2500.0 : 0.0, rwy, gs};
    };
}

// A loop round the apron at walking pace of an aircraft.
Path lf_taxi(const Airport& ap, double phase_s) {
    return [=](double t) {
        const double side_nm = 0.4, speed_kt = 14;
        const double lap_s = 4 * side_nm / speed_kt * 3600;
        const double u = std::fmod(t + phase_s, lap_s) / lap_s * 4;
        const int leg = static_cast<int>(u);
        double lat = ap.lat, lon = ap.lon;
        lf_move(lat, lon, ap.runway_deg + 90, 0.5);
        for (int i = 0; i < leg; ++i) lf_move(lat, lon, ap.runway_deg + 90 * i, side_nm);
        const double track = std::fmod(ap.runway_deg + 90 * leg, 360);
        lf_move(lat, lon, track, (u - leg) * side_nm);
        return State{lat, lon, 0, 0, track, speed_kt};
    };
}

// Straight across the area at cruise.
Path lf_overflight(const Airport& ap, double track_deg, double offset_nm, double fl) {
    return [=](double t) {
        double lat = ap.lat, lon = ap.lon;
        lf_move(lat, lon, track_deg + 90, offset_nm);
        lf_move(lat, lon, track_deg + 180, 30);
        lf_move(lat, lon, track_deg, 460 * t / 3600);
        return State{lat, lon, fl * 100, 0, track_deg, 460};
    };
}

// A racetrack hold near the airport: one-minute legs joined by rate-one
// turns (3 degrees a second), so that the traffic also turns.
Path lf_hold(const Airport& ap, double inbound_deg, double fl) {
    return [=](double t) {
        constexpr double speed_kt = 220, leg_s = 60, turn_s = 60;
        constexpr double radius_nm = speed_kt / 3600 * turn_s / std::numbers::pi;
        double lat = ap.lat, lon = ap.lon;
        lf_move(lat, lon, inbound_deg + 180, 8);  // the fix
        const double u = std::fmod(t, 2 * (leg_s + turn_s));
        const double leg_nm = speed_kt * leg_s / 3600;
        // Inbound leg to the fix, right turn, outbound leg, right turn.
        double track = inbound_deg;
        if (u < leg_s) {
            lf_move(lat, lon, inbound_deg + 180, leg_nm * (1 - u / leg_s));
        } else if (u < leg_s + turn_s) {
            const double a = 180 * (u - leg_s) / turn_s;  // degrees turned
            lf_move(lat, lon, inbound_deg + 90, radius_nm);
            lf_move(lat, lon, inbound_deg + 90 + 180 + a, radius_nm);
            track = inbound_deg + a;
        } else if (u < 2 * leg_s + turn_s) {
            lf_move(lat, lon, inbound_deg + 90, 2 * radius_nm);
            lf_move(lat, lon, inbound_deg + 180, leg_nm * (u - leg_s - turn_s) / leg_s);
            track = inbound_deg + 180;
        } else {
            const double a = 180 * (u - 2 * leg_s - turn_s) / turn_s;
            lf_move(lat, lon, inbound_deg + 180, leg_nm);
            lf_move(lat, lon, inbound_deg + 90, radius_nm);
            lf_move(lat, lon, inbound_deg + 90 + a, radius_nm);
            track = inbound_deg + 180 + a;
        }
        return State{lat, lon, fl * 100, 0, std::fmod(track + 360, 360), speed_kt};
    };
}

}  // namespace

int main(int argc, char** argv) {
    std::string airport = "EGTK", dbase = "data/dbase.xml", out;
    double minutes = 4;
    unsigned seed = 7;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (i + 1 >= argc) break;
        if (arg == "--airport")
            airport = argv[++i];
        else if (arg == "--minutes")
            minutes = std::atof(argv[++i]);
        else if (arg == "--seed")
            seed = static_cast<unsigned>(std::atoi(argv[++i]));
        else if (arg == "--dbase")
            dbase = argv[++i];
        else if (arg == "--out")
            out = argv[++i];
    }
    const Airport* ap = nullptr;
    for (const auto& a : AIRPORTS)
        if (a.icao == airport) ap = &a;
    const auto frames = lf_airframes(dbase);
    const auto light = lf_lightTypes(dbase);
    if (!ap || frames.empty() || light.empty() || minutes <= 0) {
        fmt::print(stderr,
                   "usage: rt_scenario_gen [--airport EGTK|EGLL] [--minutes N] [--seed N] "
                   "[--dbase data/dbase.xml] [--out FILE]\n");
        return 2;
    }
    std::mt19937 rng(seed);
    auto pick = [&](std::size_t n) {
        return std::uniform_int_distribution<std::size_t>(0, n - 1)(rng);
    };
    const std::vector<std::string> others = {"AMS", "CDG", "DUB", "EDI", "FRA",
                                             "MAD", "ZRH", "JFK", "DXB"};
    std::uint32_t nextHex = 0x400000 + static_cast<std::uint32_t>(pick(0x1000)) * 16;

    std::vector<Flight> flights;
    auto airliner = [&](Path path, std::string from, std::string to) {
        Flight f;
        f.frame = frames[pick(frames.size())];
        f.callsign = fmt::format("{}{}", f.frame.airline, 100 + pick(900));
        f.from = std::move(from), f.to = std::move(to), f.category = "A3";
        f.hexid = nextHex++;
        f.path = std::move(path);
        flights.push_back(std::move(f));
    };
    auto lightAc = [&](Path path) {
        Flight f;
        f.frame = {fmt::format("G-{}{}{}{}", char('A' + pick(26)), char('A' + pick(26)),
                               char('A' + pick(26)), char('A' + pick(26))),
                   "", light[pick(light.size())]};
        f.callsign = f.frame.regcode.substr(0, 1) + f.frame.regcode.substr(2);
        f.category = "A1";
        f.hexid = nextHex++;
        f.path = std::move(path);
        flights.push_back(std::move(f));
    };
    for (int i = 0; i < 3; ++i)
        airliner(lf_arrival(*ap, 6 + 4.5 * i), others[pick(others.size())], ap->iata);
    for (int i = 0; i < 2; ++i)
        airliner(lf_departure(*ap, 30 + 70 * i), ap->iata, others[pick(others.size())]);
    airliner(lf_taxi(*ap, 0), ap->iata, others[pick(others.size())]);
    lightAc(lf_taxi(*ap, 150));
    lightAc(lf_arrival(*ap, 4));
    for (int i = 0; i < 3; ++i)
        airliner(lf_overflight(*ap, 60.0 + 100 * i, -8 + 8 * i, 350 + 20 * i), "", "");
    // Some of the feed's aircraft come without a callsign or a registration.
    flights[1].callsign.clear();
    flights[4].frame.regcode.clear();
    flights[8].callsign.clear();

    Scenario s;
    s.start_epoch_s = 1732320000;
    const double length_s = minutes * 60;
    for (const auto& f : flights) {
        std::uniform_real_distribution<double> gap(1.0, 2.0);
        for (double t = gap(rng) - 1; t <= length_s; t += gap(rng)) {
            const State st = f.path(t);
            Report r;
            r.offset_s = std::round(t * 10) / 10;
            r.hexid = f.hexid;
            r.lat = st.lat, r.lon = st.lon, r.alt_ft = st.alt_ft, r.vs_fpm = st.vs_fpm;
            r.track_deg = std::fmod(st.track_deg + 360, 360), r.gs_kt = st.gs_kt;
            r.callsign = f.callsign, r.model = f.frame.model, r.regcode = f.frame.regcode;
            r.from = f.from, r.to = f.to, r.airline = f.frame.airline, r.category = f.category;
            r.tas_kt = st.alt_ft > 0 ? st.gs_kt : -1;
            s.reports.push_back(std::move(r));
        }
    }
    std::stable_sort(s.reports.begin(), s.reports.end(),
                     [](const Report& a, const Report& b) { return a.offset_s < b.offset_s; });
    for (int i = 0; i < 8; ++i) {
        const auto& fr = frames[pick(frames.size())];
        tfx::scenario::Parked p;
        p.hexid = nextHex++;
        p.lat = ap->lat, p.lon = ap->lon;
        lf_move(p.lat, p.lon, ap->runway_deg - 90, 0.35);
        lf_move(p.lat, p.lon, ap->runway_deg, -0.3 + 0.08 * i);
        p.callsign = i % 3 == 2 ? "" : fmt::format("{}{}", fr.airline, 200 + pick(700));
        p.model = fr.model, p.regcode = fr.regcode, p.stand = fmt::format("{}", 10 + i);
        s.parked.push_back(std::move(p));
    }

    // One aircraft in a hold, drawn from a random stream of its own, so that
    // the rest of a scenario stays as it was for the same seed.
    {
        std::mt19937 holdRng(seed + 1);
        const auto& fr =
            frames[std::uniform_int_distribution<std::size_t>(0, frames.size() - 1)(holdRng)];
        const Path path = lf_hold(*ap, ap->runway_deg, 80);
        std::uniform_real_distribution<double> gap(1.0, 2.0);
        const std::string callsign = fmt::format("{}{}", fr.airline, 900 + holdRng() % 100);
        for (double t = gap(holdRng) - 1; t <= length_s; t += gap(holdRng)) {
            const State st = path(t);
            Report r;
            r.offset_s = std::round(t * 10) / 10;
            r.hexid = nextHex;
            r.lat = st.lat, r.lon = st.lon, r.alt_ft = st.alt_ft, r.vs_fpm = st.vs_fpm;
            r.track_deg = st.track_deg, r.gs_kt = st.gs_kt, r.tas_kt = st.gs_kt;
            r.callsign = callsign, r.model = fr.model, r.regcode = fr.regcode;
            r.from = others[holdRng() % others.size()], r.to = ap->iata;
            r.airline = fr.airline, r.category = "A3";
            s.reports.push_back(std::move(r));
        }
        ++nextHex;
        std::stable_sort(s.reports.begin(), s.reports.end(),
                         [](const Report& a, const Report& b) { return a.offset_s < b.offset_s; });
    }

    const std::string text = tfx::scenario::gf_scenarioText(s);
    if (out.empty()) {
        std::cout << text;
    } else {
        std::ofstream file(out, std::ios::binary);
        file << text;
        if (!file) {
            fmt::print(stderr, "cannot write {}\n", out);
            return 1;
        }
    }
    fmt::print(stderr, "{} flights, {} reports, {} parked, {:.0f} s at {}\n", flights.size() + 1,
               s.reports.size(), s.parked.size(), length_s, ap->icao);
    return 0;
}
