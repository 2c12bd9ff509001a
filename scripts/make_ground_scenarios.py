#!/usr/bin/env python3
"""Writes traffic scenarios on an airport's real ground network, in the format
of the stand-in application and the replay tool (tools/rt_scenario.h).

  scripts/make_ground_scenarios.py                  # the bundled PHNL and BIKF scenarios
  scripts/make_ground_scenarios.py --airport PHNL --start 4/00:00 --minutes 30 \\
        [--max N] [--seed N] [--out FILE] [--testdata DIR]

The flights are the real timetable's (flights.tsv.gz) at the airport from the
start (day 0 Monday .. 6, UTC) for the given minutes: the callsign, and the
airframe, model and stand that scripts/make_airport_files.py gives the stay
on the ground (aircraft.tsv and the airport's groundnet.xml; a flight without
a stay there is left out). Every aircraft moves on the ground along the real
taxi network of the groundnet (nodes and arcs, the shortest way, runways
avoided but where they must be crossed), its corners rounded as a taxiing
aircraft rounds them, at taxi speeds that fall for turns and rise and fall
at the ends:

- an arrival comes down the last miles of a 3 degree final, touches down,
  brakes on the runway, turns off at the first exit it can make, taxis to
  its stand, stops there and goes on reporting for a few minutes;
- a departure reports at its stand for a while, is pushed back along the
  stand's push-back route, stands while its engines start, taxis to the
  holding point of its runway, waits, lines up, rolls and climbs away.

What comes out is what a feed delivers: a report every 2 to 5 seconds with
now and then a gap of 8 to 20 seconds, positions off by a few metres, ground
speed in whole knots, and on the ground altitudes that mean nothing (0, or
anything near the field elevation that a decoder takes for the ground).
Everything is drawn from seeded random streams, one per flight, so that the
same arguments always give the same file and a flight's reports do not
change when another flight is added.
"""
import argparse
import bisect
import datetime
import heapq
import math
import os
import random
import sys
import xml.etree.ElementTree as ET
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
sys.path.insert(0, HERE)
# Those scripts read their own arguments when imported: they see none.
_ARGS, sys.argv = sys.argv, sys.argv[:1]
import make_airport_files as apf  # noqa: E402  its stands, stays and timetable reading
sys.argv = _ARGS

WEEK_START = datetime.datetime(2026, 11, 23, tzinfo=datetime.timezone.utc)  # a Monday
KT = 1.9438444924406046  # knots per m/s
M_PER_DEG = 111132.95
FT_PER_NM_GLIDE = 318.0  # a 3 degree path

# Runway use, and the bundled scenarios' windows (day/hh:mm, minutes).
AIRPORTS = {
    "PHNL": {"land": "04R", "depart": "08R", "window": ("4/00:00", 25)},
    "BIKF": {"land": "02", "depart": "29", "window": ("4/15:30", 60)},
}
BUNDLED_MAX = 12

# Speeds by emitter category: approach, rotation (knots).
APPROACH_KT = {"A1": 70, "A2": 120, "A3": 135, "A5": 145}
ROTATE_KT = {"A1": 60, "A2": 115, "A3": 145, "A5": 155}

TAXI_ACCEL, TAXI_BRAKE = 0.5, 0.7  # m/s2
RUNWAY_BRAKE, TAKEOFF_ACCEL = 2.2, 2.0
ROLLOUT_BRAKE = 1.5  # m/s2 from the touchdown on
TURN_ACCEL = 1.0  # lateral m/s2 in a taxi turn
MAX_FILLET_M = 45.0


def testdata_dir(given):
    for d in ([given] if given else []) + [os.path.join(ROOT, "..", "shared", "testdata", "real"),
                                            os.path.join(ROOT, "..", "..", "shared", "testdata", "real")]:
        if d and os.path.isdir(os.path.join(d, "flightgear")):
            return d
    sys.exit("no test data: give --testdata DIR (the folder with flightgear/)")


# ---- airport data ----

class Airport:
    def __init__(self, icao, fg):
        self.icao = icao
        cat = apf.read_catalogue()
        self.lat, self.lon, self.elev = cat[icao]
        self.cos = math.cos(math.radians(self.lat))
        root = ET.parse(os.path.join(fg, f"{icao}.groundnet.xml")).getroot()
        self.pos, self.on_runway, self.parking = {}, set(), []
        for n in root.iter("node"):
            i = int(n.get("index"))
            self.pos[i] = self.xy(apf.degrees(n.get("lat")), apf.degrees(n.get("lon")))
            if n.get("isOnRunway") == "1":
                self.on_runway.add(i)
        for p in root.iter("Parking"):
            i = int(p.get("index"))
            self.pos[i] = self.xy(apf.degrees(p.get("lat")), apf.degrees(p.get("lon")))
            route = p.get("pushBackRoute")
            self.parking.append({"index": i, "push": int(route) if route else None})
        self.arcs, self.push_arcs = {}, {}
        for a in root.iter("arc"):
            b, e = int(a.get("begin")), int(a.get("end"))
            if b not in self.pos or e not in self.pos:
                continue
            self.arcs.setdefault(b, []).append(e)
            if a.get("isPushBackRoute") == "1":
                self.push_arcs.setdefault(b, []).append(e)
        self.runways = {}
        with apf.gzip.open(os.path.join(fg, "runways.tsv.gz"), "rt", encoding="utf-8") as f:
            for row in apf.csv.DictReader(f, delimiter="\t"):
                if row["icao"] != icao:
                    continue
                a = self.xy(float(row["lat1"]), float(row["lon1"]))
                b = self.xy(float(row["lat2"]), float(row["lon2"]))
                self.runways[row["end1"]] = (a, b)
                self.runways[row["end2"]] = (b, a)

    def xy(self, lat, lon):
        return ((lon - self.lon) * M_PER_DEG * self.cos, (lat - self.lat) * M_PER_DEG)

    def latlon(self, p):
        return self.lat + p[1] / M_PER_DEG, self.lon + p[0] / (M_PER_DEG * self.cos)

    def runway_nodes(self, designator):
        """On-runway nodes of the runway, by distance from its threshold."""
        (ax, ay), (bx, by) = self.runways[designator]
        length = math.hypot(bx - ax, by - ay)
        ux, uy = (bx - ax) / length, (by - ay) / length
        out = []
        for i in self.on_runway:
            x, y = self.pos[i][0] - ax, self.pos[i][1] - ay
            along, cross = x * ux + y * uy, -x * uy + y * ux
            if abs(cross) < 40 and -100 < along < length + 100:
                out.append((along, i))
        return sorted(out), (ux, uy), length

    def route(self, start, goal, push_only=False):
        """The shortest way from node to node; runway nodes cost triple."""
        arcs = self.push_arcs if push_only else self.arcs
        best, prev = {start: 0.0}, {}
        queue = [(0.0, start)]
        while queue:
            d, n = heapq.heappop(queue)
            if n == goal:
                break
            if d > best.get(n, math.inf):
                continue
            for m in arcs.get(n, []):
                step = dist(self.pos[n], self.pos[m])
                if m in self.on_runway and m != goal:
                    step *= 3
                if d + step < best.get(m, math.inf):
                    best[m], prev[m] = d + step, n
                    heapq.heappush(queue, (d + step, m))
        if goal not in best:
            return None
        path = [goal]
        while path[-1] != start:
            path.append(prev[path[-1]])
        return path[::-1]


def dist(a, b):
    return math.hypot(b[0] - a[0], b[1] - a[1])


# ---- motion along a path ----

def rounded(points, max_r=MAX_FILLET_M):
    """The polyline with its corners rounded by circular arcs; each point
    carries the radius of the turn it lies in (inf on straights)."""
    pts = [points[0]]
    for p in points[1:]:
        if dist(pts[-1], p) > 0.5:
            pts.append(p)
    out = [(pts[0], math.inf)]
    for i in range(1, len(pts) - 1):
        a, b, c = pts[i - 1], pts[i], pts[i + 1]
        h1 = math.atan2(b[0] - a[0], b[1] - a[1])
        h2 = math.atan2(c[0] - b[0], c[1] - b[1])
        turn = (h2 - h1 + math.pi) % (2 * math.pi) - math.pi  # right turns positive
        if abs(turn) < math.radians(2):
            out.append((b, math.inf))
            continue
        t = min(max_r * math.tan(abs(turn) / 2), 0.45 * dist(a, b), 0.45 * dist(b, c))
        r = t / math.tan(abs(turn) / 2)
        p1 = (b[0] - t * math.sin(h1), b[1] - t * math.cos(h1))
        side = 1 if turn > 0 else -1  # the centre lies to that side of the way
        cx, cy = p1[0] + side * r * math.cos(h1), p1[1] - side * r * math.sin(h1)
        a0 = math.atan2(p1[0] - cx, p1[1] - cy)
        steps = max(2, int(abs(turn) * r / 2))
        for k in range(steps + 1):
            ang = a0 + turn * k / steps
            out.append(((cx + r * math.sin(ang), cy + r * math.cos(ang)), r))
    out.append((pts[-1], math.inf))
    return out


def profile(points, v0, v1, vmax, accel, brake):
    """Times and speeds along the rounded path from v0 to v1 (m/s). vmax,
    accel and brake are functions of the distance along the path: the
    fastest speed there (turns may allow less), and the acceleration and
    braking in m/s2."""
    pts = rounded(points)
    s = [0.0]
    for i in range(1, len(pts)):
        s.append(s[-1] + dist(pts[i - 1][0], pts[i][0]))
    v = [min(vmax(s[i]), math.sqrt(TURN_ACCEL * r)) for i, (_, r) in enumerate(pts)]
    v[0], v[-1] = min(v[0], v0), min(v[-1], v1)
    for i in range(1, len(v)):
        v[i] = min(v[i], math.sqrt(v[i - 1] ** 2 + 2 * accel(s[i]) * (s[i] - s[i - 1])))
    for i in range(len(v) - 2, -1, -1):
        v[i] = min(v[i], math.sqrt(v[i + 1] ** 2 + 2 * brake(s[i]) * (s[i + 1] - s[i])))
    t = [0.0]
    for i in range(1, len(v)):
        t.append(t[-1] + (s[i] - s[i - 1]) / max((v[i] + v[i - 1]) / 2, 0.3))
    return [(t[i], pts[i][0], v[i]) for i in range(len(pts))]


def const(x):
    return lambda _s: x


class Track:
    """Where an aircraft is over time: stretches of standing and moving."""

    def __init__(self, start_s):
        self.t0 = start_s
        self.parts = []  # (t_from, t_to, kind, data)
        self.t = start_s
        self.heading = 0.0

    def stand(self, at, seconds, heading):
        self.parts.append((self.t, self.t + seconds, "stand", (at, heading)))
        self.t += seconds
        self.heading = heading

    def move(self, samples, backwards=False, airborne=None):
        t0 = self.t
        times = [t0 + t for t, _, _ in samples]
        self.parts.append((t0, times[-1], "move", (times, samples, backwards, airborne)))
        self.t = times[-1]
        a, b = samples[-2][1], samples[-1][1]
        self.heading = math.atan2(b[0] - a[0], b[1] - a[1]) + (math.pi if backwards else 0)

    def state(self, t):
        """(position, speed m/s, track radians, height ft or None) at t."""
        for t_from, t_to, kind, data in self.parts:
            if t > t_to:
                continue
            if kind == "stand":
                return data[0], 0.0, data[1], None
            times, samples, backwards, airborne = data
            i = max(1, bisect.bisect_left(times, t))
            i = min(i, len(times) - 1)
            ta, tb = times[i - 1], times[i]
            f = 0 if tb <= ta else min(1, max(0, (t - ta) / (tb - ta)))
            (_, pa, va), (_, pb, vb) = samples[i - 1], samples[i]
            p = (pa[0] + f * (pb[0] - pa[0]), pa[1] + f * (pb[1] - pa[1]))
            track = math.atan2(pb[0] - pa[0], pb[1] - pa[1])
            height = airborne(p, t) if airborne else None
            return p, va + f * (vb - va), track, height
        return None

    @property
    def end(self):
        return self.t


# ---- flights ----

def approach(ap, rwy, track, speed_kt, miles):
    """A straight-in final from miles out down to the touchdown point."""
    (ax, ay), (bx, by) = ap.runways[rwy]
    length = dist((ax, ay), (bx, by))
    ux, uy = (bx - ax) / length, (by - ay) / length
    touchdown = (ax + 400 * ux, ay + 400 * uy)
    start = (touchdown[0] - miles * 1852 * ux, touchdown[1] - miles * 1852 * uy)
    v = speed_kt / KT
    samples = [(0.0, start, v), (miles * 1852 / v, touchdown, v)]

    def height(p, _t):
        return max(0.0, dist(p, touchdown) / 1852 * FT_PER_NM_GLIDE)
    track.move(samples, airborne=height)
    return touchdown, (ux, uy), length


def arrival(ap, cfg, flight, rng):
    rwy = cfg["land"]
    track = Track(flight["time"] - 150 - rng.uniform(0, 60))
    vapp = APPROACH_KT.get(flight["cat"], 135)
    miles = (flight["time"] - track.t0) * vapp / 3600
    touchdown, (ux, uy), length = approach(ap, rwy, track, vapp, miles)
    nodes, _, _ = ap.runway_nodes(rwy)
    v_exit = 15 / KT
    need = ((vapp / KT) ** 2 - v_exit ** 2) / (2 * RUNWAY_BRAKE)
    exits = [(a, i) for a, i in nodes if a >= 400 + need and any(
        m not in ap.on_runway for m in ap.arcs.get(i, []))]
    exits = exits or [n for n in nodes if n[0] > 400]
    stand_node = ap.parking[flight["stand"]]["index"]
    for along, node in exits:
        path = ap.route(node, stand_node)
        if path:
            break
    else:
        return None
    stop = stop_short(ap, flight, rng)
    points = [touchdown] + [ap.pos[n] for n in path[:-1]] + [stop]
    taxi = rng.uniform(15, 19) / KT
    runway_m = along - 400
    v0 = vapp / KT

    def vmax(s):  # braking from the touchdown on, then taxiing
        return max(taxi, math.sqrt(max(v0 ** 2 - 2 * ROLLOUT_BRAKE * s, 0))) if s < runway_m else taxi
    samples = profile(points, v0, 0, vmax, const(TAXI_ACCEL),
                      lambda s: RUNWAY_BRAKE if s < runway_m else TAXI_BRAKE)
    track.move(samples)
    track.stand(stop, rng.uniform(120, 240), math.radians(flight["heading"]))
    return track


def stop_short(ap, flight, rng):
    """Where the aircraft stops: on its stand's axis a few metres either
    side of the stand point (the transponder's antenna is not the stand's
    reference point), a little off to one side."""
    stand = ap.pos[ap.parking[flight["stand"]]["index"]]
    h = math.radians(flight["heading"])
    along, cross = rng.uniform(-6, 2), rng.uniform(-1.5, 1.5)
    return (stand[0] + along * math.sin(h) + cross * math.cos(h),
            stand[1] + along * math.cos(h) - cross * math.sin(h))


def departure(ap, cfg, flight, rng):
    rwy = cfg["depart"]
    stand = ap.parking[flight["stand"]]
    at = stop_short(ap, flight, rng)
    track = Track(flight["time"] - rng.uniform(60, 180))
    track.stand(at, flight["time"] - track.t0, math.radians(flight["heading"]))
    start = stand["index"]
    if stand["push"] is not None:
        push = ap.route(stand["index"], stand["push"], push_only=True)
        if push and len(push) > 1:
            pts = [at] + [ap.pos[n] for n in push[1:]]
            track.move(profile(pts, 0, 0, const(3 / KT), const(0.3), const(0.3)), backwards=True)
            track.stand(pts[-1], rng.uniform(60, 120), track.heading)
            start = push[-1]
    nodes, (ux, uy), length = ap.runway_nodes(rwy)
    for along, entry in nodes:
        path = ap.route(start, entry)
        if path and len(path) >= 2:
            break
    else:
        return None
    here = track.state(track.end)[0]
    hold = path[-2]
    pts = [here] + [ap.pos[n] for n in path[1:-1]]
    if len(pts) >= 2:
        track.move(profile(pts, 0, 0, const(rng.uniform(15, 19) / KT), const(TAXI_ACCEL),
                           const(TAXI_BRAKE)))
        track.stand(pts[-1], rng.uniform(20, 60), track.heading)
    vr = ROTATE_KT.get(flight["cat"], 145) / KT
    roll_start = ap.pos[entry]
    lift = vr ** 2 / (2 * TAKEOFF_ACCEL)
    lift_off = (roll_start[0] + (lift + 60) * ux, roll_start[1] + (lift + 60) * uy)
    pts = [ap.pos[hold], roll_start, lift_off]
    on_runway = dist(pts[0], pts[1])
    samples = profile(pts, 0, vr, lambda s: vr if s >= on_runway else 8 / KT,
                      lambda s: TAKEOFF_ACCEL if s >= on_runway else 0.8, const(TAXI_BRAKE))
    track.move(samples)
    # Off the ground: climbing straight out at 2000 ft a minute, speeding up.
    v2 = vr * 1.1
    climb = []
    t, p = 0.0, lift_off
    for _ in range(int(150 / 5)):
        climb.append((t, p, min(v2 + t * 0.5, 250 / KT)))
        step = climb[-1][2] * 5
        p = (p[0] + step * ux, p[1] + step * uy)
        t += 5
    t_lift = track.end
    track.move(climb, airborne=lambda _p, t_: max(1.0, (t_ - t_lift) * 2000 / 60))
    return track


# ---- reports ----

def reports_of(ap, flight, track, rng, t_first, t_last):
    out = []
    t = max(track.t0, t_first) + rng.uniform(0, 3)
    last_track = math.degrees(track.state(t)[2]) % 360 if track.state(t) else 0
    while t <= min(track.end, t_last):
        st = track.state(t)
        if st is None:
            break
        p, v, trk, height = st
        noise = (rng.gauss(0, 2.5), rng.gauss(0, 2.5)) if height is None else (0, 0)
        lat, lon = ap.latlon((p[0] + noise[0], p[1] + noise[1]))
        gs = round(max(0.0, v * KT + (rng.uniform(-0.6, 0.6) if v > 1 else 0)))
        if v * KT >= 1:
            last_track = (math.degrees(trk) + rng.gauss(0, 1.0)) % 360
        if height is not None:
            alt, vs = ap.elev + height, (2000 if flight["kind"] == "D" else -round(v * KT * 5.3))
        else:
            alt, vs = ground_altitude(ap, v * KT, rng), 0
        out.append({"t": t, "lat": lat, "lon": lon, "alt": alt, "vs": vs, "track": last_track,
                    "gs": gs, "tas": round(v * KT) if height is not None else -1})
        t += rng.uniform(8, 20) if rng.random() < 0.05 else rng.uniform(2, 5)
    return out


def ground_altitude(ap, speed_kt, rng):
    """What a feed gives on the ground: 0, or a height near the field that
    the decoder's allowance takes for the ground (it shrinks with speed)."""
    if rng.random() < 0.4:
        return 0
    allowance = 0 if speed_kt > 120 else 90 if speed_kt <= 43 else (120 - speed_kt) / 77 * 45 + 45
    return round(ap.elev + rng.uniform(-40, max(0, allowance - 15)))


# ---- the timetable ----

def emitter(model, heavy, large, bizjet):
    return "A5" if model in heavy else "A3" if model in large else "A2" if model in bizjet else "A1"


def categories():
    root = ET.parse(os.path.join(ROOT, "data", "dbase.xml")).getroot()

    def types(tag):
        return {t.strip() for e in root.iter(tag) for t in e.get("types", "").split(",")}
    return types("hvy"), types("lar"), types("bzj")


def flights_at(icao, start_min, minutes):
    """The movements in the window with the airframe and stand of their stay."""
    stands, _, _ = apf.build(icao, apf.wingspans(), apf.read_pools())
    arrivals, departures = apf.read_movements(icao)
    heavy, large, bizjet = categories()
    out, left_out = [], 0

    def inside(m):
        return (m - start_min) % apf.WEEK_MIN < minutes

    def stay_of(cs, minute, arriving):
        for k, s in enumerate(stands):
            for stay in s.get("stays", []):
                cs_in, cs_out = stay["cs"].split(":")
                if arriving and cs_in == cs and stay["on"] == (minute + apf.TAXI_IN_MIN) % apf.WEEK_MIN:
                    return k, stay
                if not arriving and cs_out == cs and (stay["on"] + stay["length"]) % apf.WEEK_MIN == minute:
                    return k, stay
        return None

    for kind, table in (("A", arrivals), ("D", departures)):
        for pool in sorted(table):
            for minute, cs in sorted(table[pool]):
                if not inside(minute):
                    continue
                found = stay_of(cs, minute, kind == "A")
                if found is None:
                    left_out += 1
                    continue
                k, stay = found
                out.append({"kind": kind, "cs": cs, "reg": stay["reg"], "model": stay["type"],
                            "airline": stay["airl"], "stand": k, "heading": stands[k]["heading"],
                            "time": ((minute - start_min) % apf.WEEK_MIN) * 60.0,
                            "cat": emitter(stay["type"], heavy, large, bizjet)})
    out.sort(key=lambda f: (f["time"], f["cs"]))
    return out, left_out


def week_minute(text):
    day, clock = text.split("/")
    h, m = clock.split(":")
    return int(day) * 1440 + int(h) * 60 + int(m)


def scenario(icao, start, minutes, most, seed, testdata):
    apf.FG = os.path.join(testdata, "flightgear")
    cfg = AIRPORTS[icao]
    ap = Airport(icao, apf.FG)
    start_min = week_minute(start)
    flights, left_out = flights_at(icao, start_min, minutes)
    flights = flights[:most] if most else flights
    lines, reports, hexids, used = [], [], set(), 0
    for f in flights:
        rng = random.Random(f"{seed}:{icao}:{f['kind']}:{f['cs']}:{f['time']}")
        make = arrival if f["kind"] == "A" else departure
        track = make(ap, cfg, f, rng)
        if track is None:
            left_out += 1
            continue
        hexid = 0xA00000 | (zlib.crc32(f["reg"].encode()) & 0xFFFFF)
        while hexid in hexids:
            hexid += 1
        hexids.add(hexid)
        used += 1
        other = "LAX" if f["kind"] == "A" else "SFO"
        here = {"PHNL": "HNL", "BIKF": "KEF"}.get(icao, icao)
        frm, to = (other, here) if f["kind"] == "A" else (here, other)
        for r in reports_of(ap, f, track, rng, -math.inf, math.inf):
            reports.append((r["t"], hexid, r, f, frm, to))
    t0 = min(r[0] for r in reports)
    reports.sort(key=lambda r: (round(r[0] - t0, 1), r[1]))
    epoch = WEEK_START.timestamp() + start_min * 60 + t0
    lines.append("# T,offset_s,hexid,lat,lon,alt_ft,vs_fpm,track_deg,gs_kt,callsign,model,regcode,"
                 "from,to,airline,category,tas_kt")
    lines.append(f"# {icao} from {start} for {minutes:g} min: {used} flights on the real ground "
                 f"network; made by scripts/make_ground_scenarios.py")
    lines.append(f"start,{epoch:.0f}")
    lines.append(f"airport,{icao},{ap.lat:.6f},{ap.lon:.6f},{ap.elev}")
    for t, hexid, r, f, frm, to in reports:
        lines.append(f"T,{t - t0:.1f},{hexid},{r['lat']:.6f},{r['lon']:.6f},{r['alt']:.0f},{r['vs']:.0f},"
                     f"{r['track']:.1f},{r['gs']:.0f},{f['cs']},{f['model']},{f['reg']},{frm},{to},"
                     f"{f['airline']},{f['cat']},{r['tas']:.0f}")
    return "\n".join(lines) + "\n", used, left_out, len(reports)


def write(path, text):
    tmp = path + ".tmp"
    with open(tmp, "w", encoding="utf-8", newline="\n") as f:
        f.write(text)
    os.replace(tmp, path)


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("--airport", choices=sorted(AIRPORTS))
    ap.add_argument("--start", help="day/hh:mm of the week, UTC, day 0 Monday")
    ap.add_argument("--minutes", type=float)
    ap.add_argument("--max", type=int, default=0, help="at most this many flights (0: all)")
    ap.add_argument("--seed", type=int, default=7)
    ap.add_argument("--out")
    ap.add_argument("--testdata")
    args = ap.parse_args()
    testdata = testdata_dir(args.testdata)
    jobs = []
    if args.airport:
        start, minutes = AIRPORTS[args.airport]["window"]
        jobs.append((args.airport, args.start or start, args.minutes or minutes, args.max,
                     args.out or f"rt_scenario_{args.airport.lower()}.csv"))
    else:
        for icao, cfg in AIRPORTS.items():
            start, minutes = cfg["window"]
            jobs.append((icao, start, minutes, BUNDLED_MAX,
                         os.path.join(ROOT, "data", f"rt_scenario_{icao.lower()}.csv")))
    for icao, start, minutes, most, out in jobs:
        text, count, left_out, n = scenario(icao, start, minutes, most, args.seed, testdata)
        write(out, text)
        print(f"{icao}: {count} flights ({left_out} left out), {n} reports -> {out}")


if __name__ == "__main__":
    main()
