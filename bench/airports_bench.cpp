// The airport catalogue and airport files: reading the sealed catalogue of
// every airport, looking a code up, and reading and writing the converted
// PHNL file and one of 5,000 opt entries. Aims: catalogue under 50 ms, an
// airport file under 20 ms each way.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "../tools/publish_lib.h"
#include "airports/airport_catalogue.h"
#include "airports/airport_file_io.h"

namespace fs = std::filesystem;
using namespace tfx;

namespace {

std::string lf_source(const std::string& relative) {
    std::ifstream in(fs::path(ZEPT_SOURCE_DIR) / relative, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Removes the benchmark's folder when the program ends.
struct RemoveAtExit {
    fs::path path;
    ~RemoveAtExit() {
        std::error_code ec;
        fs::current_path(fs::temp_directory_path(), ec);
        fs::remove_all(path, ec);
    }
};

// A program folder of its own for the whole run, left as the working folder.
const fs::path& lf_folder() {
    static const fs::path folder = [] {
        std::string pattern = (fs::temp_directory_path() / "zept-bench-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) std::abort();
        fs::current_path(pattern);
        fs::create_directories("input");
        fs::create_directories("airports/my_simaddon");
        const std::string sealed =
            publish::gf_encryptBytes(lf_source("data/airports/airports.xml"));
        std::ofstream("input/airports.enc", std::ios::binary)
            .write(sealed.data(), static_cast<std::streamsize>(sealed.size()));
        std::ofstream("airports/my_simaddon/PHNL.xml", std::ios::binary)
            << lf_source("data/airports/archive/stock/PHNL.xml");
        static const RemoveAtExit cleanup{pattern};
        return fs::path(pattern);
    }();
    return folder;
}

AirportFile lf_read(const fs::path& path) {
    auto result = gf_readAirportFile(path);
    if (!std::holds_alternative<AirportFile>(result)) std::abort();
    return std::get<AirportFile>(std::move(result));
}

// The PHNL stands with their options repeated on the other stands until
// there are 5,000, written as an airport file with every stand's geometry.
const fs::path& lf_bigFile() {
    static const fs::path path = [] {
        lf_folder();
        AirportFile phnl = lf_read("airports/my_simaddon/PHNL.xml");
        std::vector<StandOption> pool;
        for (const Stand& s : phnl.stands)
            pool.insert(pool.end(), s.options.begin(), s.options.end());
        std::size_t count = 0, next = 0;
        for (Stand& s : phnl.stands) s.options.clear();
        while (count < 5000) {
            Stand& s = phnl.stands[next++ % phnl.stands.size()];
            StandOption o = pool[count % pool.size()];
            o.number = static_cast<std::uint32_t>(s.options.size() + 1);
            s.options.push_back(o);
            ++count;
        }
        ApfRecord r;
        r.code = IcaoCode("PHNL");
        r.airport_name = "Honolulu Intl";
        r.publisher = "simaddon";
        r.altitude = 13;
        r.handmade = true;
        r.stands = std::move(phnl.stands);
        // A handmade file holds geometry and options; the reader takes it as
        // an airport file all the same.
        if (!gf_writeApf(r, "airports/my_simaddon/BIG5.xml", APF_KIND_LEARNED, 2020)) std::abort();
        return fs::path("airports/my_simaddon/BIG5.xml");
    }();
    return path;
}

void BM_ReadCatalogue(benchmark::State& state) {
    lf_folder();
    for (auto _ : state) {
        gf_clearAirportTable();
        const auto result = gf_readAirportsXml();
        if (!std::holds_alternative<std::size_t>(result)) state.SkipWithError("read failed");
    }
    state.counters["airports"] = static_cast<double>(airportTable.size());
}
BENCHMARK(BM_ReadCatalogue)->Unit(benchmark::kMillisecond);

void BM_AirportByCode(benchmark::State& state) {
    lf_folder();
    if (airportTable.empty()) gf_readAirportsXml();
    std::vector<IcaoCode> codes;
    for (std::size_t i = 0; i < airportTable.size(); i += 97) codes.push_back(airportTable[i].icao);
    codes.push_back(IcaoCode("ZZZZ"));
    std::size_t i = 0, found = 0;
    for (auto _ : state) {
        found += gf_airportByCode(codes[i++ % codes.size()]) != nullptr;
        benchmark::DoNotOptimize(found);
    }
}
BENCHMARK(BM_AirportByCode);

void BM_ReadAirportFile(benchmark::State& state, const fs::path& (*file)()) {
    const fs::path path = file();
    std::size_t options = 0;
    for (auto _ : state) {
        const AirportFile f = lf_read(path);
        options = 0;
        for (const Stand& s : f.stands) options += s.options.size();
    }
    state.counters["opt_entries"] = static_cast<double>(options);
}

void BM_WriteAirportFile(benchmark::State& state, const fs::path& (*file)()) {
    const fs::path path = file();
    ApfRecord r;
    r.code = IcaoCode("PHNL");
    r.airport_name = "Honolulu Intl";
    r.publisher = "simaddon";
    r.handmade = true;
    r.stands = lf_read(path).stands;
    for (auto _ : state) {
        if (!gf_writeApf(r, "airports/out/PHNL.xml", APF_KIND_LEARNED, 2020))
            state.SkipWithError("write failed");
    }
}

const fs::path& lf_phnl() {
    static const fs::path path = (lf_folder(), fs::path("airports/my_simaddon/PHNL.xml"));
    return path;
}

BENCHMARK_CAPTURE(BM_ReadAirportFile, PHNL, lf_phnl)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_WriteAirportFile, PHNL, lf_phnl)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ReadAirportFile, opt5000, lf_bigFile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_WriteAirportFile, opt5000, lf_bigFile)->Unit(benchmark::kMillisecond);

}  // namespace
