// The livery index and the matching ladder on realistic data.
//
// Index build: from the large generated AI installation (about 20,000
// liveries) when scripts/make_ai_install.py can make it, scanned once and
// then built again and again; otherwise from a list of that size drawn from
// the real airframes. Matching: every real airframe of FlightGear's AI
// traffic (14,809) asked once with its airline, its type as an ICAO model and
// its registration; the median of one match, and the share of the airframes
// matched at each step at every depth.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "../tools/publish_lib.h"
#include "app/options.h"
#include "app/parameters.h"
#include "liveries/liveries_scan.h"
#include "liveries/livery_index.h"
#include "liveries/livery_matching.h"
#include "liveries/livery_matching_ladder.h"
#include "liveries/reference_db.h"
#include "liveries/scanned_liveries_file.h"
#include "traffic/aircraft_base.h"

namespace fs = std::filesystem;
using namespace tfx;

namespace {

const fs::path SOURCE = ZEPT_SOURCE_DIR;
const fs::path TESTDATA = SOURCE.parent_path() / "shared" / "testdata" / "real";
constexpr std::size_t SYNTHETIC_LIVERIES = 20000;

struct Airframe {
    std::string registration, airline, model;
    bool cargo = false;
};

std::string lf_readAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void lf_writeAll(const fs::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// IATA type codes to ICAO designators: the table of the script that draws the
// bundled records from the same airframes, read from its source.
std::map<std::string, std::string> lf_iataToIcao() {
    const std::string script = lf_readAll(SOURCE / "scripts" / "make_dbase_records.py");
    const auto from = script.find("IATA_TO_ICAO = {");
    const auto to = script.find('}', from);
    std::map<std::string, std::string> table;
    const std::string body = script.substr(from, to - from);
    const std::regex pair("\"([^\"]+)\": \"([^\"]+)\"");
    for (auto it = std::sregex_iterator(body.begin(), body.end(), pair);
         it != std::sregex_iterator(); ++it)
        table[(*it)[1]] = (*it)[2];
    return table;
}

std::vector<Airframe> lf_airframes() {
    const auto toIcao = lf_iataToIcao();
    std::ifstream in(TESTDATA / "flightgear" / "aircraft.tsv");
    std::vector<Airframe> out;
    std::string line;
    std::getline(in, line);  // header
    while (std::getline(in, line)) {
        std::vector<std::string> f;
        std::size_t start = 0;
        for (std::size_t tab; (tab = line.find('\t', start)) != std::string::npos; start = tab + 1)
            f.push_back(line.substr(start, tab - start));
        f.push_back(line.substr(start));
        if (f.size() < 8) continue;
        const auto icao = toIcao.find(f[2]);
        out.push_back({f[0], f[1], icao == toIcao.end() ? f[2] : icao->second, f[7] == "cargo"});
    }
    return out;
}

// A program folder with the bundled reference data and regcode list.
struct Folder {
    fs::path previous = fs::current_path();
    fs::path path;
    Folder() {
        std::string pattern = (fs::temp_directory_path() / "zept-livery-bench-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) std::abort();
        path = pattern;
        fs::create_directories(path / "input");
        fs::create_directories(path / "output" / "info");
        lf_writeAll(path / "input" / "dbase.enc",
                    publish::gf_encryptBytes(lf_readAll(SOURCE / "data" / "dbase.xml")));
        lf_writeAll(path / "input" / "AIG-regcodes.enc",
                    publish::gf_encryptBytes(lf_readAll(SOURCE / "data" / "AIG-regcodes.xml")));
        fs::current_path(path);
        gf_clearReferenceData();
        if (!gf_readDbase()) std::abort();
    }
    ~Folder() {
        fs::current_path(previous);
        std::error_code ec;
        fs::remove_all(path, ec);
    }
};

// The large generated installation (build/ai_install_large, made when
// missing), scanned; empty when it can't be made.
std::vector<Livery> lf_scanLargeInstallation() {
    const fs::path where = SOURCE / "build" / "ai_install_large";
    const fs::path generator = SOURCE / "scripts" / "make_ai_install.py";
    if (!fs::exists(where / "Packages" / "Community")) {
        if (!fs::exists(generator)) return {};
        const std::string command = fmt::format("python3 '{}' '{}' --size large >/dev/null 2>&1",
                                                generator.string(), where.string());
        if (std::system(command.c_str()) != 0) return {};
    }
    std::vector<fs::path> packages;
    for (const auto& package : fs::directory_iterator(where / "Packages" / "Community"))
        if (package.is_directory()) packages.push_back(package.path());
    std::sort(packages.begin(), packages.end());
    packages.resize(std::min<std::size_t>(packages.size(), 10));
    if (gf_runFolderWalk(packages, false) != 0) return {};
    std::vector<Livery> list = std::move(scanList);
    std::sort(list.begin(), list.end(), gf_liveryLess);
    return list;
}

// About 20,000 liveries of the real airframes: each airframe's own livery,
// and for some a cargo, operator or generic variant.
std::vector<Livery> lf_syntheticLiveries(const std::vector<Airframe>& airframes) {
    std::vector<Livery> list;
    list.reserve(SYNTHETIC_LIVERIES);
    for (std::size_t i = 0; list.size() < SYNTHETIC_LIVERIES; ++i) {
        const Airframe& a = airframes[i % airframes.size()];
        const std::size_t round = i / airframes.size();
        Livery l{fmt::format("Bench {} {} {}{}", a.model, a.airline, a.registration,
                             round == 0 ? "" : " v2"),
                 round == 0 ? a.registration : "",
                 gf_airlineIndex(round == 0 || i % 3 != 0 ? a.airline : "ZZZ"),
                 0,
                 gf_modelIndex(a.model),
                 static_cast<std::uint8_t>(a.cargo ? 1 : 0),
                 0};
        if (round > 0 && i % 3 == 1) l.opr = gf_airlineIndex("SKW");
        list.push_back(std::move(l));
    }
    std::sort(list.begin(), list.end(), gf_liveryLess);
    return list;
}

struct Data {
    Folder folder;
    std::vector<Airframe> airframes = lf_airframes();
    std::vector<Livery> liveries;
    std::string source;
    std::shared_ptr<const LiveryIndex> index;
    std::vector<LadderQuery> queries;
    Data() {
        liveries = lf_scanLargeInstallation();
        source = liveries.empty() ? "synthetic list from the real airframes"
                                  : "large generated installation";
        if (liveries.empty()) liveries = lf_syntheticLiveries(airframes);
        gf_writeScannedLiveries(liveries, folder.path / "scanned.xml");
        index = gf_buildLiveryIndex(liveries);
        gf_publishLiveryIndex(index);
        for (const Airframe& a : airframes) {
            const Aimo key{gf_airlineIndex(a.airline), 0, gf_modelIndex(a.model),
                           static_cast<std::uint8_t>(a.cargo ? 1 : 0), 0};
            queries.push_back({key, key.cargo, a.registration, gf_modelCategory(key.model), false});
        }
    }
};

Data& lf_data() {
    static Data data;
    return data;
}

void BM_IndexBuildFromList(benchmark::State& state) {
    Data& d = lf_data();
    for (auto _ : state) benchmark::DoNotOptimize(gf_buildLiveryIndex(d.liveries));
    state.counters["liveries"] = static_cast<double>(d.liveries.size());
    state.SetLabel(d.source);
}
BENCHMARK(BM_IndexBuildFromList)->Unit(benchmark::kMillisecond);

// As a session start does it: the stored scan read back, then the build.
void BM_IndexBuildFromScannedFile(benchmark::State& state) {
    Data& d = lf_data();
    for (auto _ : state) {
        std::vector<Livery> list;
        if (!gf_readScannedLiveries(list, d.folder.path / "scanned.xml"))
            state.SkipWithError("read");
        benchmark::DoNotOptimize(gf_buildLiveryIndex(list));
    }
    state.SetLabel(d.source);
}
BENCHMARK(BM_IndexBuildFromScannedFile)->Unit(benchmark::kMillisecond);

// One ladder walk per iteration, the airframes in turn; the median of one
// match over all airframes, each timed over a few repetitions.
void BM_MatchOneAirframe(benchmark::State& state) {
    Data& d = lf_data();
    const LadderRules rules{static_cast<int>(state.range(0)), true};
    const RefusedTitles refused;
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(gf_walkLadder(*d.index, d.queries[i], rules, refused));
        if (++i == d.queries.size()) i = 0;
    }
    constexpr int REPEATS = 8;
    std::vector<double> each_ns;
    each_ns.reserve(d.queries.size());
    for (const LadderQuery& q : d.queries) {
        const auto start = std::chrono::steady_clock::now();
        for (int r = 0; r < REPEATS; ++r)
            benchmark::DoNotOptimize(gf_walkLadder(*d.index, q, rules, refused));
        each_ns.push_back(
            std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start)
                .count() /
            REPEATS);
    }
    std::sort(each_ns.begin(), each_ns.end());
    state.counters["median_ns"] = each_ns[each_ns.size() / 2];
    state.counters["p99_ns"] = each_ns[each_ns.size() * 99 / 100];
    state.counters["max_ns"] = each_ns.back();
}
BENCHMARK(BM_MatchOneAirframe)->Arg(4)->Arg(7);

// The traffic engine's entry: snapshot, index, ladder, flags and memory.
void BM_MatchLiveryEntry(benchmark::State& state) {
    Data& d = lf_data();
    std::vector<AircraftBase> aircraft(d.queries.size());
    for (std::size_t i = 0; i < aircraft.size(); ++i) {
        aircraft[i].aimo = d.queries[i].key;
        aircraft[i].regcode = std::string(d.queries[i].regcode);
        aircraft[i].category = d.queries[i].category;
        aircraft[i].hexid = static_cast<std::uint32_t>(0x400000 + i);
    }
    std::size_t i = 0;
    for (auto _ : state) {
        gf_matchLivery(aircraft[i], 3000);
        benchmark::DoNotOptimize(aircraft[i].livery);
        if (++i == aircraft.size()) i = 0;
    }
    gf_resetLiveryMemory();
}
BENCHMARK(BM_MatchLiveryEntry);

// Not timed: the share of the airframes matched at each step, per depth.
void BM_StepShares(benchmark::State& state) {
    Data& d = lf_data();
    for (auto _ : state) {
    }
    const RefusedTitles refused;
    fmt::print("\nStep shares of {} airframes ({} liveries, {}):\n", d.queries.size(),
               d.liveries.size(), d.source);
    fmt::print("depth     0      1      2      3      4      5      6      7      8   none\n");
    for (int depth = 1; depth <= 8; ++depth) {
        std::array<std::size_t, LADDER_STEPS + 1> count{};
        for (const LadderQuery& q : d.queries) {
            const LadderResult r = gf_walkLadder(*d.index, q, LadderRules{depth, false}, refused);
            ++count[r.step == NO_STEP ? LADDER_STEPS : static_cast<std::size_t>(r.step)];
        }
        std::string line = fmt::format("{:5}", depth);
        for (const std::size_t n : count)
            line += fmt::format(" {:5.1f}%", 100.0 * static_cast<double>(n) /
                                                 static_cast<double>(d.queries.size()));
        fmt::print("{}\n", line);
    }
}
BENCHMARK(BM_StepShares)->Iterations(1);

}  // namespace
