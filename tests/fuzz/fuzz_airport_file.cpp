// The airport file reader on arbitrary bytes: a scan folder's file and the
// learned file beside it, each read as the program reads them.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "airports/airport_file_io.h"

namespace fs = std::filesystem;

namespace {

const fs::path& lf_folder() {
    static const fs::path folder = [] {
        std::string pattern = (fs::temp_directory_path() / "zept-fuzz-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) std::abort();
        fs::current_path(pattern);
        fs::create_directories("airports/my_simaddon");
        fs::create_directories("airports/learned/simaddon");
        return fs::path(pattern);
    }();
    return folder;
}

const char* const BASE =
    R"(<root><meta><info name="copyright" value="c"/><info name="sim" value="1"/></meta>)"
    R"(<parameters><parameter name="altitude" value="1"/><parameter name="publisher" value="simaddon"/></parameters>)"
    R"(<parkpositions><parkpos id="A" typestr="GATE_SMALL" latitude="1" longitude="1" radius="20"/></parkpositions></root>)";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    lf_folder();
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    // The first byte chooses whether the input is the airport file or its learned file.
    const bool learned = size > 0 && (data[0] & 1) != 0;
    std::ofstream("airports/my_simaddon/FUZZ.xml", std::ios::binary | std::ios::trunc)
        << (learned ? std::string(BASE) : bytes);
    std::error_code ec;
    fs::remove("airports/learned/simaddon/FUZZ.xml", ec);
    if (learned) std::ofstream("airports/learned/simaddon/FUZZ.xml", std::ios::binary) << bytes;
    const auto result = tfx::gf_readAirportFile("airports/my_simaddon/FUZZ.xml");
    if (const auto* file = std::get_if<tfx::AirportFile>(&result)) {
        for (const auto& stand : file->stands)
            for (std::uint32_t other : stand.overlaps)
                if (other == 0 || other > file->stands.size()) std::abort();
    }
    return 0;
}
