// The livery-gap report, output/info/LiveryGaps.txt: for every airline and
// model of the feed, how far down the matching ladder its aircraft went and
// with which title, the pairs whose own livery would help most first. It
// answers the user's question why an aircraft wears a wrong or generic
// livery, or none.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "traffic/aircraft.h"

namespace tfx {

// A live aircraft's match (step -1 and an empty title: none). The last
// match of an aircraft stands.
void gf_noteGapMatch(const AircraftBase& ac, int step, std::string_view title);
// The report's lines as they would be written now.
std::vector<std::string> gf_liveryGapLines();
// Writes the report beside its place and swaps it in; false (logged) on failure.
bool gf_writeLiveryGapReport();
// Once a second: with interval_s above 0, the report is written every
// interval_s seconds while the traffic runs.
void gf_liveryGapsEverySecond(std::int32_t interval_s);
// A new traffic: nothing seen yet.
void gf_clearGapReport();

}  // namespace tfx
