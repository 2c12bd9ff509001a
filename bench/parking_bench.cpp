// The parking plan: the first plan at an airport and an adjustment half an
// hour later, at PHNL with the converted file (all its opt entries) and at a
// synthetic airport of 400 stands with 20,000 opt entries. Default settings
// (auto park, random). The plan runs on the main thread between two ticks;
// aims: first plan under 5 ms, adjustment under 2 ms.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "airports/airport_file_io.h"
#include "airports/loaded_airport.h"
#include "app/options.h"
#include "app/parameters.h"
#include "liveries/reference_db.h"
#include "parking/park_airport.h"
#include "parking/parking_plan.h"
#include "parking/parking_planner.h"
#include "parking/parking_state.h"
#include "traffic/clock.h"
#include "traffic/traffic_tables.h"

namespace fs = std::filesystem;
using namespace tfx;

namespace {

std::string lf_source(const std::string& relative) {
    std::ifstream in(fs::path(ZEPT_SOURCE_DIR) / relative, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

AirportFile lf_phnl() {
    std::string pattern = (fs::temp_directory_path() / "zept-parking-bench-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    const fs::path file = fs::path(pattern) / "PHNL.xml";
    std::ofstream(file, std::ios::binary) << lf_source("data/airports/archive/stock/PHNL.xml");
    auto read = gf_readAirportFile(file);
    std::error_code ec;
    fs::remove_all(pattern, ec);
    if (!std::holds_alternative<AirportFile>(read)) std::abort();
    return std::get<AirportFile>(std::move(read));
}

// 400 stands 60 m apart in rows, each with 50 stays of a day or two, of
// 3,000 aircraft of 12 airlines and 8 models.
AirportFile lf_synthetic() {
    std::mt19937 random(400);
    AirportFile file;
    const char* airlines[] = {"UAL", "DAL", "AAL", "HAL", "SWA", "ASA",
                              "JAL", "ANA", "KAL", "QFA", "ACA", "WJA"};
    const char* models[] = {"A320", "A321", "A332", "B738", "B739", "B77W", "B789", "B712"};
    for (int i = 0; i < 400; ++i) {
        Stand stand;
        stand.id = "S" + std::to_string(i + 1);
        stand.latitude = 21.3 + (i / 20) * 0.00055;
        stand.longitude = -157.9 + (i % 20) * 0.00058;
        stand.radius = 30.0 / 1852;
        stand.type = 10;
        for (int k = 0; k < 50; ++k) {
            StandOption o;
            const int aircraft = static_cast<int>(random() % 3000);
            o.reg = "N" + std::to_string(aircraft);
            o.key.airline = gf_airlineIndex(airlines[aircraft % 12]);
            o.key.model = gf_modelIndex(models[aircraft % 8]);
            o.cs1 = std::string(airlines[aircraft % 12]) + std::to_string(random() % 2000);
            o.cs2 = std::string(airlines[aircraft % 12]) + std::to_string(random() % 2000);
            o.day = 1 + random() % 7;
            const unsigned from = random() % 48, length = 1 + random() % 12;
            for (unsigned h = from; h < std::min(48u, from + length); ++h) o.hours |= 1ull << h;
            o.number = static_cast<std::uint32_t>(k + 1);
            o.source = 1;
            stand.options.push_back(std::move(o));
        }
        file.stands.push_back(std::move(stand));
    }
    gf_numberStandsAndOverlaps(file.stands);
    return file;
}

void lf_load(AirportFile file) {
    gf_clearStands();
    staticAircraft.clear();
    gf_buildOptions();
    gf_setLoadedAirport(IcaoCode("PHNL"), std::move(file));
    parking.standNumbers.clear();
    for (const Stand& s : gf_parkStands())
        parking.standNumbers.emplace(s.id, static_cast<std::int32_t>(s.number));
    weekNow = gf_weekSlot(3, 20);
}

// The first plan, created and active: what an adjustment finds.
void lf_standItsAircraft() {
    lf_firstParking();
    std::uint32_t hexid = 1;
    for (const StaticPlan& p : parking.plan) {
        StaticAircraft ac;
        ac.hexid = hexid++;
        ac.objectid = 1000 + ac.hexid;
        ac.aimo = p.aimo;
        ac.regcode = p.reg;
        ac.flightA = p.cs1;
        ac.flightB = p.cs2;
        ac.callsign = (p.useFirst != 0 ? p.cs1 : p.cs2) + "*";
        ac.sid = p.sid;
        ac.fromAirportFile = p.fromAirportFile;
        ac.arrivalSlot = gf_slotBefore(weekNow, p.offset);
        ac.simState = SimState::active;
        staticAircraft.push_back(std::move(ac));
    }
    parking.plan.clear();
}

void lf_firstPlan(benchmark::State& state, const AirportFile& file) {
    lf_load(file);
    for (auto _ : state) {
        lf_reviveOptions();
        lf_firstParking();
        benchmark::DoNotOptimize(parking.plan.data());
    }
    state.counters["planned"] = static_cast<double>(parking.plan.size());
    state.counters["wanted"] = parking.wantedParked;
}

void lf_adjustment(benchmark::State& state, const AirportFile& file) {
    lf_load(file);
    lf_standItsAircraft();
    const std::vector<StaticAircraft> standing = staticAircraft;
    weekNow = gf_weekSlot(3, 21);  // half an hour later
    std::size_t changes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        staticAircraft = standing;
        removals.clear();
        state.ResumeTiming();
        lf_parkingAdjustments(false);
        changes = removals.size() + parking.plan.size();
    }
    state.counters["changes"] = static_cast<double>(changes);
}

void BM_FirstPlanPHNL(benchmark::State& state) {
    static const AirportFile file = lf_phnl();
    lf_firstPlan(state, file);
}
void BM_AdjustmentPHNL(benchmark::State& state) {
    static const AirportFile file = lf_phnl();
    lf_adjustment(state, file);
}
void BM_FirstPlan400Stands(benchmark::State& state) {
    static const AirportFile file = lf_synthetic();
    lf_firstPlan(state, file);
}
void BM_Adjustment400Stands(benchmark::State& state) {
    static const AirportFile file = lf_synthetic();
    lf_adjustment(state, file);
}

}  // namespace

BENCHMARK(BM_FirstPlanPHNL)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AdjustmentPHNL)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FirstPlan400Stands)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Adjustment400Stands)->Unit(benchmark::kMicrosecond);
