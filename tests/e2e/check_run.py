#!/usr/bin/env python3
"""Checks the outputs of one end-to-end run of ZEPT.

Usage: check_run.py PROGRAM_FOLDER CONSOLE.txt SCENARIO.csv [REPORTED.csv]

PROGRAM_FOLDER holds Log.txt and motion.csv (the built-in simulator's
recording; SimLog.txt, when there, is the log of a simulator that ran
behind the SimConnect library); CONSOLE.txt is what the program printed; SCENARIO.csv the traffic
the stand-in application played; REPORTED.csv the user positions the stand-in
application was sent. Prints the figures it checked and exits 1 when a check
fails.
"""
import csv
import math
import re
import sys

# Motion bounds, over windows of WINDOW_MS (single frames jitter by a frame).
WINDOW_MS = 1000
SPEED_MARGIN = 1.25        # a leg may be flown up to a fifth faster than reported
MAX_BANK_DEG = 40.0        # the steepest bank limit of any category
MAX_TURN_DEGPS = 12.0      # a coordinated turn at that bank, at 60 kt and up
MAX_VS_FPM = 6000.0
MAX_FRAME_JUMP_NM = 0.1    # nothing jumps between two frames
# The user aircraft taxis out a minute after the start: its reported
# position must move with it.
USER_MOVES_NM = 0.05
# Aircraft on the ground at the park airport: a taxiing one moves this far.
GROUND_MOVES_NM = 0.05
GROUND_SPEED_KT = 60.0
# The legs on the ground still turn at once at each point (their stand-in);
# until they are built, ground turn rates are shown and not judged.
GROUND_TURNS_JUDGED = False
# Landings and departures, in feet above the lowest point of the run and in
# knots: below ON_GROUND_FT an aircraft is on the ground, an approach comes
# below APPROACH_FT, a flight starts or ends above AIRBORNE_FT; a departure
# is on the ground SEEN_ON_GROUND_MS at least before it lifts off.
ON_GROUND_FT = 60.0  # a heavy's reference point stands higher than a light's
APPROACH_FT = 300.0
AIRBORNE_FT = 500.0
TAXI_KT = 40.0
SEEN_ON_GROUND_MS = 5000
CLOSING_LINES = [
    "stop requested from the console",
    "Exiting: USER CLOSED SIM",
    "Shutdown cleanup completed; posting MSG_EXIT",
]

failures = []


def check(ok, text):
    print(("ok    " if ok else "FAIL  ") + text)
    if not ok:
        failures.append(text)


def nm_between(a, b):
    dlat = (b["lat"] - a["lat"]) * 60
    dlon = (b["lon"] - a["lon"]) * 60 * math.cos(math.radians(a["lat"]))
    return math.hypot(dlat, dlon)


def read_recording(path):
    objects = {}
    with open(path, encoding="utf-8") as f:
        for row in csv.DictReader(f):
            # Positions the program sent; appearances, removals and the user
            # aircraft's own track are lines of other kinds.
            if (row.get("kind") or "set") != "set":
                continue
            objects.setdefault(int(row["object_id"]), []).append({
                "t": int(row["time_ms"]), "lat": float(row["lat_deg"]),
                "lon": float(row["lon_deg"]), "alt": float(row["alt_ft"]),
                "bank": float(row["bank_deg"]), "hdg": float(row["heading_deg"]),
                "tas": float(row["tas_kt"])})
    return objects


def fastest_report_kt(path):
    fastest = 0.0
    with open(path, encoding="utf-8") as f:
        for line in f:
            fields = line.split(",")
            if fields[0] == "T" and len(fields) > 8:
                fastest = max(fastest, float(fields[8]))
    return fastest


def figures(points):
    """Largest speed, turn rate and vertical speed over windows; bank; frame jump."""
    speed = turn = vs = bank = jump = 0.0
    j = 0
    for i, a in enumerate(points):
        bank = max(bank, abs(a["bank"]))
        if i + 1 < len(points):
            jump = max(jump, nm_between(a, points[i + 1]))
        while j < len(points) and points[j]["t"] - a["t"] < WINDOW_MS:
            j += 1
        if j == len(points):
            break
        b = points[j]
        dt_h = (b["t"] - a["t"]) / 3600000.0
        speed = max(speed, nm_between(a, b) / dt_h)
        dh = abs((b["hdg"] - a["hdg"] + 180) % 360 - 180)
        turn = max(turn, dh / (dt_h * 3600))
        vs = max(vs, abs(b["alt"] - a["alt"]) / (dt_h * 60))
    return speed, turn, vs, bank, jump


def last_status(console):
    lines = [l for l in console.splitlines() if " | created " in l]
    if not lines:
        return None
    numbers = {}
    for key in ("received", "waiting", "created", "refused", "active", "removed"):
        m = re.search(rf"\b{key} (\d+)", lines[-1])
        numbers[key] = int(m.group(1)) if m else -1
    return numbers


def is_ground(points, speed):
    """Never left the ground: the altitude stays put and the speed is a taxi's."""
    alts = [p["alt"] for p in points]
    return max(alts) - min(alts) < 30 and speed < GROUND_SPEED_KT


def check_parking(log, console):
    m = re.search(r"The park airport is (\w{4})", log)
    check(m is not None and m.group(1) == "EGTK",
          "the user's airport became the park airport (EGTK)")
    check("Airport file read from" in log, "its airport file was read")
    plan = re.search(r"^(\d+) positions \(", log, re.M)
    check(plan is not None or "no parking positions found" in log, "a parking plan was made")
    wanted = int(plan.group(1)) if plan else 0
    parked = re.findall(r"^.{14}: (\S+)\s+parked$", log, re.M)
    # The built-in simulator leaves about one create in 25 unanswered.
    unanswered = re.findall(r"^.{14}: (\S+)\s+no answer from the simulator, given up$", log, re.M)
    check(len(parked) + len(unanswered) == wanted and all(cs.endswith("*") for cs in parked),
          f"every planned static aircraft stood on its stand ({len(parked)} of {wanted}, "
          f"{len(unanswered)} never answered)")
    check(re.search(rf"park: EGTK, {len(parked)} parked of \d+", console) is not None,
          "the status line shows the park airport and its static aircraft")
    check(re.search(r"'airports/learned/\S+/EGTK.xml' saved with", log) is not None,
          "what was learned at the airport was saved at the end")


def check_landings_and_departures(objects):
    """Arrivals come down onto the ground and slow to a taxi; departures are
    on the ground a while before they lift off. The lowest point of any
    object is taken for the field (the built-in simulator's is tilted by a few
    feet)."""
    if not objects:
        return
    field_ft = min(p["alt"] for points in objects.values() for p in points)
    def on_ground(p):
        return p["alt"] <= field_ft + ON_GROUND_FT
    landings = departures = 0
    for oid, points in sorted(objects.items()):
        top = max(p["alt"] for p in points)
        if points[0]["alt"] > field_ft + AIRBORNE_FT and \
                min(p["alt"] for p in points) < field_ft + APPROACH_FT:
            landings += 1
            check(any(on_ground(p) and p["tas"] <= TAXI_KT for p in points),
                  f"object {oid} landed: it reached the ground and slowed to a taxi")
        elif on_ground(points[0]) and top > field_ft + AIRBORNE_FT:
            departures += 1
            lift = next(p["t"] for p in points if not on_ground(p))
            check(lift - points[0]["t"] >= SEEN_ON_GROUND_MS,
                  f"object {oid} was seen on the ground for "
                  f"{(lift - points[0]['t']) / 1000:.0f} s before takeoff")
    # The run's last half minute holds no departure that taxies longer than
    # the 30 s buffer (one that takes off sooner is shown once airborne), so
    # departures are judged when there are any.
    # On a loaded machine the short window may show no landing at all; that
    # is said, not failed: each landing seen is held to the checks above.
    print(f"the run had {landings} landing(s) and {departures} departure(s) to look at")


def check_reported(path):
    with open(path, encoding="utf-8") as f:
        points = [{"lat": float(r["lat"]), "lon": float(r["lon"])} for r in csv.DictReader(f)]
    check(len(points) > 50, f"the user position was reported ({len(points)} reports)")
    if not points:
        return
    farthest = max(nm_between(points[0], p) for p in points)
    check(farthest > USER_MOVES_NM,
          f"the reported user position follows the user aircraft ({farthest:.2f} NM)")


def main():
    if len(sys.argv) not in (4, 5):
        sys.exit(__doc__)
    folder, console_path, scenario_path = sys.argv[1:4]
    console = open(console_path, encoding="utf-8", errors="replace").read()
    log = open(f"{folder}/Log.txt", encoding="utf-8", errors="replace").read()

    status = last_status(console)
    check(status is not None, "status lines were printed")
    if status is None:
        return 1
    print(f"      last status: {status}")
    check(status["received"] > 0, "traffic was received")
    check(status["created"] >= 5, "at least 5 aircraft were created")
    check(status["refused"] == 0, "no create was refused")
    check(status["removed"] == status["created"] and status["active"] == 0,
          "every created aircraft was removed after its reports stopped")

    objects = read_recording(f"{folder}/motion.csv")
    check(len(objects) == status["created"], "the simulator saw exactly the created objects "
          f"({len(objects)} objects)")
    end_ms = max((p[-1]["t"] for p in objects.values()), default=0)
    speed_limit = fastest_report_kt(scenario_path) * SPEED_MARGIN
    print(f"      {'object':>6} {'frames':>6} {'from s':>7} {'to s':>7} {'kt max':>7} "
          f"{'turn/s':>6} {'vs fpm':>7} {'bank':>5} {'jump nm':>8}")
    for oid, points in sorted(objects.items()):
        speed, turn, vs, bank, jump = figures(points)
        print(f"      {oid:>6} {len(points):>6} {points[0]['t'] / 1000:>7.1f} "
              f"{points[-1]['t'] / 1000:>7.1f} {speed:>7.0f} {turn:>6.1f} {vs:>7.0f} "
              f"{bank:>5.1f} {jump:>8.4f}")
        ground = is_ground(points, speed)
        check(len(points) > 100, f"object {oid} was moved for a while")
        check(speed <= speed_limit, f"object {oid} no faster than {speed_limit:.0f} kt")
        if not ground or GROUND_TURNS_JUDGED:
            check(turn <= MAX_TURN_DEGPS and bank <= MAX_BANK_DEG,
                  f"object {oid} turns within limits")
        else:
            print(f"note  object {oid} on the ground turns up to {turn:.0f} deg/s "
                  "(the ground legs turn at once)")
        check(vs <= MAX_VS_FPM, f"object {oid} climbs and descends within {MAX_VS_FPM:.0f} fpm")
        check(jump <= MAX_FRAME_JUMP_NM, f"object {oid} never jumps")
        moved = nm_between(points[0], points[-1])
        if ground:
            check(moved > GROUND_MOVES_NM, f"object {oid} taxied somewhere ({moved:.2f} NM)")
        else:
            check(moved > 0.5, f"object {oid} went somewhere ({moved:.1f} NM)")
    if objects:
        last_ms = max(p[-1]["t"] for p in objects.values())
        check(last_ms <= end_ms, "no position after the end")

    if len(sys.argv) == 5:
        check_reported(sys.argv[4])
    check_landings_and_departures(objects)
    check_parking(log, console)

    check("Traffic exception" not in log, "no traffic exception in the log")
    # Every title comes from the installed catalogue: none of the made-up
    # "<model> livery" kind, and the matching leaves its summary and report.
    matched = re.findall(r" =\d= (.+)$", log, re.M)
    check(len(matched) >= status["created"], f"every created aircraft was matched ({len(matched)})")
    made_up = [t for t in matched if re.fullmatch(r"[A-Z0-9]{2,4} livery", t)]
    check(not made_up, f"no made-up title was asked for {made_up[:3]}")
    check("live traffic livery matching summary" in log, "the log has the matching summary")
    try:
        gaps = open(f"{folder}/output/info/LiveryGaps.txt", encoding="utf-8").read()
    except OSError:
        gaps = ""
    check(gaps.startswith("Livery gaps"), "the livery-gap report was written")
    for line in CLOSING_LINES:
        check(line in log, f"the log has the closing line \"{line}\"")
    check(log.rfind(CLOSING_LINES[-1]) > log.rfind(CLOSING_LINES[1]),
          "the closing lines come in order")
    try:
        sim_log = open(f"{folder}/SimLog.txt", encoding="utf-8", errors="replace").read()
    except OSError:
        sim_log = log
    check("Recorded positions written to motion.csv" in sim_log, "the recording was completed")

    if failures:
        print(f"{len(failures)} check(s) failed")
        return 1
    print("all checks passed")
    return 0


if __name__ == "__main__":
    sys.exit(main())
