// Arbitrary bytes as the user's park airports file: read, written back and
// read again. Nothing may crash, only catalogue airports may be listed, and
// the written file must read back as the same list.
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "airports/airport_catalogue.h"
#include "parking/park_airport_list.h"

namespace fs = std::filesystem;

namespace {

std::vector<std::string> lf_entries() {
    std::vector<std::string> out;
    for (const tfx::ParkAirport& a : tfx::parkAirportList)
        out.push_back(std::string(a.code.text()) + "," + a.reservedStand);
    std::sort(out.begin(), out.end());
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fs::path folder = [] {
        const fs::path f =
            fs::temp_directory_path() / ("zept-fuzz-park-" + std::to_string(::getpid()));
        fs::create_directories(f / "airports");
        fs::current_path(f);
        for (const char* code : {"EGLL", "EGTK", "EHAM", "PHNL"}) {
            tfx::Airport a;
            a.icao = tfx::IcaoCode(code);
            tfx::airportTable.push_back(a);
        }
        std::sort(tfx::airportTable.begin(), tfx::airportTable.end(),
                  [](const tfx::Airport& x, const tfx::Airport& y) { return x.icao < y.icao; });
        return f;
    }();
    std::ofstream(tfx::MY_PARK_AIRPORTS_TXT, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    tfx::gf_readMyParkAirportsFile();
    for (const tfx::ParkAirport& a : tfx::parkAirportList)
        if (!tfx::gf_airportKnown(a.code)) __builtin_trap();
    const std::vector<std::string> first = lf_entries();
    tfx::gf_writeMyParkAirportsFile();
    tfx::gf_readMyParkAirportsFile();
    if (lf_entries() != first) __builtin_trap();
    return 0;
}
