#!/usr/bin/env python3
"""Builds the built-in simulator's scripted user flights at Honolulu (PHNL)
from real data, as path files that a simulator scenario names ("path_file").

  scripts/make_user_paths.py [TESTDATA_DIR]

Stands and the taxi network come from FlightGear's PHNL ground network
(PHNL.groundnet.xml), runway ends from runways.tsv.gz, field elevations from
the airport catalogue (data/airports/airports.xml). Two flights of an
Airbus A320:

- phnl_circuit.json: stands at gate T2-G7 for a minute, is pushed back, taxis
  along the taxiways to runway 08L, takes off, flies a left-hand circuit at
  1,500 ft, lands on 08L again, leaves the runway and taxis to gate T3-68.
- phnl_to_phog.json: from gate T1-A14 the same way out, then cruises at
  8,000 ft to Kahului (PHOG) on Maui, lands on runway 02 and stops on it.

A point without "alt_ft" is on the ground; "alt_ft" is the true altitude in
feet; "back" marks a leg driven backwards (the pushback). The simulator takes
speeds, heading, pitch and bank from the points. Output (deterministic):
data/user_paths/phnl_circuit.json, data/user_paths/phnl_to_phog.json.
"""
import gzip
import heapq
import json
import math
import os
import sys
import xml.etree.ElementTree as ET

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
TESTDATA = sys.argv[1] if len(sys.argv) > 1 else os.path.join(ROOT, "..", "shared", "testdata", "real")
FG = os.path.join(TESTDATA, "flightgear")
OUT = os.path.join(ROOT, "data", "user_paths")

EARTH_M = 6371008.8
KT = 1852.0 / 3600.0  # metres per second per knot
TAXI_KT, PUSH_KT = 15.0, 3.0
ROTATE_KT, CLIMB_KT, CRUISE_KT, APPROACH_KT = 145.0, 210.0, 280.0, 135.0
ACCEL_MPS2, BRAKE_MPS2 = 2.0, 2.2
TURN_DEG_S = 3.0  # a standard rate turn
GLIDE_DEG = 3.0
PATTERN_OFFSET_M = 3000.0  # downwind to runway centreline: two 180 degree turns of half that


def degrees(text):
    hemi, deg, minutes = text[0], text[1:].split()[0], text[1:].split()[1]
    value = float(deg) + float(minutes) / 60.0
    return -value if hemi in "SW" else value


def distance_m(a, b):
    p1, p2 = math.radians(a[0]), math.radians(b[0])
    dp, dl = p2 - p1, math.radians(b[1] - a[1])
    h = math.sin(dp / 2) ** 2 + math.cos(p1) * math.cos(p2) * math.sin(dl / 2) ** 2
    return 2 * EARTH_M * math.asin(min(1.0, math.sqrt(h)))


def bearing_deg(a, b):
    p1, p2 = math.radians(a[0]), math.radians(b[0])
    dl = math.radians(b[1] - a[1])
    y = math.sin(dl) * math.cos(p2)
    x = math.cos(p1) * math.sin(p2) - math.sin(p1) * math.cos(p2) * math.cos(dl)
    return math.degrees(math.atan2(y, x)) % 360


def moved(a, heading, metres):
    d, b = metres / EARTH_M, math.radians(heading)
    p1, l1 = math.radians(a[0]), math.radians(a[1])
    p2 = math.asin(math.sin(p1) * math.cos(d) + math.cos(p1) * math.sin(d) * math.cos(b))
    l2 = l1 + math.atan2(math.sin(b) * math.sin(d) * math.cos(p1), math.cos(d) - math.sin(p1) * math.sin(p2))
    return (math.degrees(p2), math.degrees(l2))


class GroundNet:
    def __init__(self, path):
        root = ET.parse(path).getroot()
        self.pos, self.stands, self.push_end, self.on_runway = {}, {}, {}, set()
        self.heading = {}
        for p in root.iter("Parking"):
            i = int(p.get("index"))
            self.pos[i] = (degrees(p.get("lat")), degrees(p.get("lon")))
            name = (p.get("name", "") + p.get("number", "")).strip()
            self.stands[name] = i
            self.heading[i] = float(p.get("heading")) % 360
            if p.get("pushBackRoute"):
                self.push_end[i] = int(p.get("pushBackRoute"))
        for n in root.iter("node"):
            i = int(n.get("index"))
            self.pos[i] = (degrees(n.get("lat")), degrees(n.get("lon")))
            if n.get("isOnRunway") == "1":
                self.on_runway.add(i)
        self.arcs = {}
        for a in root.iter("arc"):
            b, e = int(a.get("begin")), int(a.get("end"))
            self.arcs.setdefault(b, []).append(e)

    def route(self, start, goal):
        """Shortest node list from start to goal, passing no other stand."""
        parking = set(self.stands.values())
        best, queue, came = {start: 0.0}, [(0.0, start)], {}
        while queue:
            cost, node = heapq.heappop(queue)
            if node == goal:
                break
            if cost > best[node]:
                continue
            for nxt in sorted(self.arcs.get(node, [])):
                if nxt in parking and nxt != goal:
                    continue
                c = cost + distance_m(self.pos[node], self.pos[nxt])
                if c < best.get(nxt, math.inf):
                    best[nxt], came[nxt] = c, node
                    heapq.heappush(queue, (c, nxt))
        nodes = [goal]
        while nodes[-1] != start:
            nodes.append(came[nodes[-1]])
        return nodes[::-1]

    def nearest(self, at, runway):
        pool = self.on_runway if runway else set(self.pos) - self.on_runway - set(self.stands.values())
        return min(sorted(pool), key=lambda i: distance_m(at, self.pos[i]))


class Flight:
    """Timed points; position, altitude (None on the ground) and time go on together."""

    def __init__(self, at, hold_s):
        self.points, self.at, self.alt, self.t, self.heading = [], at, None, 0.0, 0.0
        self.add()
        self.wait(hold_s)

    def add(self, back=False):
        """A point now; one within the same tenth of a second replaces the last."""
        p = {"t_s": round(self.t, 1), "lat": round(self.at[0], 7), "lon": round(self.at[1], 7)}
        if self.points and p["t_s"] <= self.points[-1]["t_s"]:
            self.points.pop()
        if self.alt is not None:
            p["alt_ft"] = round(self.alt)
        if back:
            p["back"] = True
        self.points.append(p)

    def wait(self, seconds):
        self.t += seconds
        self.add()

    def ground_to(self, to, kt, back=False):
        metres = distance_m(self.at, to)
        if metres < 1:
            return
        self.heading = (bearing_deg(self.at, to) + (180 if back else 0)) % 360
        self.at, self.alt = to, None
        self.t += metres / (kt * KT)
        self.add(back)

    def taxi(self, net, nodes, kt=TAXI_KT):
        for n in nodes:
            self.ground_to(net.pos[n], kt)

    def roll(self, heading, from_kt, to_kt, step_s=4.0):
        """Straight along the runway, speeding up or braking evenly."""
        accel = ACCEL_MPS2 if to_kt > from_kt else -BRAKE_MPS2
        v, v_end = from_kt * KT, to_kt * KT
        duration = (v_end - v) / accel
        steps = max(1, math.ceil(duration / step_s))
        for k in range(1, steps + 1):
            dt = duration / steps
            metres = v * dt + 0.5 * accel * dt * dt
            v += accel * dt
            self.at, self.t, self.heading = moved(self.at, heading, metres), self.t + dt, heading
            self.add()

    def fly(self, heading, metres, kt, to_alt, step_s=10.0):
        """Straight and level or climbing/descending evenly to to_alt."""
        steps = max(1, math.ceil(metres / (kt * KT) / step_s))
        start_alt = self.alt
        for k in range(1, steps + 1):
            self.at = moved(self.at, heading, metres / steps)
            self.t += metres / steps / (kt * KT)
            self.alt = start_alt + (to_alt - start_alt) * k / steps
            self.heading = heading
            self.add()

    def turn(self, to_heading, left, kt, radius_m=None, step_s=5.0):
        """A level turn: standard rate, or at the given radius."""
        change = (self.heading - to_heading) % 360 if left else (to_heading - self.heading) % 360
        radius = radius_m or kt * KT / math.radians(TURN_DEG_S)
        rate = math.degrees(kt * KT / radius)  # degrees a second
        steps = max(1, math.ceil(change / rate / step_s))
        for k in range(1, steps + 1):
            chord_heading = self.heading + (-1 if left else 1) * change / steps / 2
            chord = 2 * radius * math.sin(math.radians(change / steps / 2))
            self.at = moved(self.at, chord_heading, chord)
            self.heading = (self.heading + (-1 if left else 1) * change / steps) % 360
            self.t += change / steps / rate
            self.add()

    def fly_to(self, to, kt, to_alt, step_s=10.0):
        """Turns the short way towards a fix and flies to it."""
        target = bearing_deg(self.at, to)
        self.turn(target, (self.heading - target) % 360 < 180, kt)
        self.fly(bearing_deg(self.at, to), distance_m(self.at, to), kt, to_alt, step_s)


def read_runways(*icaos):
    ends = {}
    with gzip.open(os.path.join(FG, "runways.tsv.gz"), "rt", encoding="utf-8") as f:
        next(f)
        for line in f:
            icao, e1, la1, lo1, e2, la2, lo2, _w = line.rstrip("\n").split("\t")
            if icao in icaos:
                a, b = (float(la1), float(lo1)), (float(la2), float(lo2))
                ends[(icao, e1)] = (a, b)
                ends[(icao, e2)] = (b, a)
    return ends


def field_elevations(*icaos):
    root = ET.parse(os.path.join(ROOT, "data", "airports", "airports.xml")).getroot()
    return {ap.get("c"): float(ap.get("a")) for ap in root.iter("ap") if ap.get("c") in icaos}


def depart(net, runway, stand, elev):
    """Stand, pushback, taxi to the runway, line up, take off to 400 ft."""
    threshold, far_end = runway
    heading = bearing_deg(threshold, far_end)
    s = net.stands[stand]
    f = Flight(net.pos[s], 60)
    f.heading = f.start_heading = net.heading[s]
    pushed = net.route(s, net.push_end[s])
    for n in pushed[1:]:
        f.ground_to(net.pos[n], PUSH_KT, back=True)
    f.wait(30)  # engines start, the tug goes
    entry = net.nearest(threshold, runway=True)
    f.taxi(net, net.route(pushed[-1], entry)[1:])
    f.ground_to(moved(threshold, heading, 60), 8)
    f.wait(20)
    f.roll(heading, 0, ROTATE_KT)
    f.alt = elev
    f.fly(heading, 1200, 160, elev + 400, step_s=5)
    return f, heading


def final_fix(runway, elev, pattern_alt):
    """Where a 3 degree slope from the pattern altitude meets the runway 300 m in."""
    threshold, far_end = runway
    heading = bearing_deg(threshold, far_end)
    final_m = (pattern_alt - elev) / math.tan(math.radians(GLIDE_DEG)) * 0.3048
    return moved(threshold, heading + 180, final_m - 300), heading


def land(f, runway, elev, pattern_alt):
    """Along a left-hand downwind: abeam the final fix a 180 degree turn onto
    the extended centreline, the final on a 3 degree slope, the roll-out."""
    fix, heading = final_fix(runway, elev, pattern_alt)
    f.fly_to(moved(fix, heading - 90, PATTERN_OFFSET_M), 180, pattern_alt)
    f.turn(heading, left=True, kt=APPROACH_KT + 15, radius_m=PATTERN_OFFSET_M / 2)
    aim = moved(runway[0], heading, 300)
    f.fly(bearing_deg(f.at, aim), distance_m(f.at, aim), APPROACH_KT, elev + 20, step_s=5)
    f.alt = None
    f.roll(heading, APPROACH_KT, 20)
    return heading


def circuit(net, ends, elev):
    f, heading = depart(net, ends[("PHNL", "08L")], "T2-G7", elev)
    pattern = elev + 1500
    f.fly(heading, 3000, 180, pattern)
    f.turn((heading + 180) % 360, left=True, kt=180, radius_m=PATTERN_OFFSET_M / 2)
    land(f, ends[("PHNL", "08L")], elev, pattern)
    exit_node = net.nearest(f.at, runway=True)
    f.ground_to(net.pos[exit_node], 12)
    f.taxi(net, net.route(exit_node, net.stands["T3-68"])[1:], kt=12)
    f.wait(60)
    return f


def to_kahului(net, ends, elev_hnl, elev_ogg):
    f, heading = depart(net, ends[("PHNL", "08L")], "T1-A14", elev_hnl)
    runway = ends[("PHOG", "02")]
    f.fly(heading, 9000, CLIMB_KT, elev_hnl + 3000)
    # Cruise to the start of a left-hand downwind for runway 02, abeam its
    # far end, descending to the pattern on the way.
    fix, rw_heading = final_fix(runway, elev_ogg, elev_ogg + 2000)
    entry = moved(runway[1], rw_heading - 90, PATTERN_OFFSET_M)
    total = distance_m(f.at, entry)
    top_of_climb = moved(f.at, bearing_deg(f.at, entry), total * 0.3)
    f.fly_to(top_of_climb, CLIMB_KT, 8000)
    top_of_descent = moved(f.at, bearing_deg(f.at, entry), total * 0.5)
    f.fly_to(top_of_descent, CRUISE_KT, 8000, step_s=20)
    f.fly_to(entry, 220, elev_ogg + 2000)
    land(f, runway, elev_ogg, elev_ogg + 2000)
    f.wait(60)
    return f


def write(name, flight, airports, note):
    os.makedirs(OUT, exist_ok=True)
    path = os.path.join(OUT, name)
    body = {"note": note, "airports": airports, "heading_deg": flight.start_heading, "loop": False}
    with open(path, "w", encoding="utf-8", newline="\n") as out:
        out.write("{\n")
        for key in ("note", "airports", "heading_deg", "loop"):
            out.write(f'  "{key}": {json.dumps(body[key])},\n')
        out.write('  "points": [\n')
        out.write(",\n".join("    " + json.dumps(p) for p in flight.points))
        out.write("\n  ]\n}\n")
    air = [p for p in flight.points if "alt_ft" in p]
    print(f"{name}: {len(flight.points)} points, {flight.t / 60:.1f} min, "
          f"airborne from {air[0]['t_s']:.0f} s to {air[-1]['t_s']:.0f} s")


def main():
    net = GroundNet(os.path.join(FG, "PHNL.groundnet.xml"))
    ends = read_runways("PHNL", "PHOG")
    elev = field_elevations("PHNL", "PHOG")
    write("phnl_circuit.json", circuit(net, ends, elev["PHNL"]), ["PHNL"],
          "PHNL gate T2-G7, pushback, taxi to 08L, left-hand circuit, landing 08L, taxi to T3-68")
    write("phnl_to_phog.json", to_kahului(net, ends, elev["PHNL"], elev["PHOG"]), ["PHNL", "PHOG"],
          "PHNL gate T1-A14, pushback, taxi to 08L, cruise at 8000 ft to Kahului, landing 02")


if __name__ == "__main__":
    main()
