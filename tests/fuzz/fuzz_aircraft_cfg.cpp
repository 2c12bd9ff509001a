// Arbitrary bytes as an aircraft.cfg: read in whatever encoding is detected,
// then every rule of the scan applied to its lines, ordinary and IVAO
// layout. Nothing may crash, and every livery made must have a title, an
// airline and a model.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "app/text_files.h"
#include "liveries/liveries_scan_state.h"
#include "liveries/livery.h"
#include "liveries/reference_db.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string path = "/tmp/zept-fuzz-cfg-" + std::to_string(::getpid()) + ".cfg";
    static const bool seeded = [] {
        // A few codes, so that sections can get through to a record.
        for (const char* model : {"A320", "B738", "B744"}) tfx::validModels.insert(model);
        for (const char* airline : {"DLH", "BAW", "PVT", "ZZZ"}) tfx::validAirlines.insert(airline);
        tfx::modelFixes.emplace("A32N", "A320");
        return true;
    }();
    (void)seeded;
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (f == nullptr) return 0;
    std::fwrite(data, 1, size, f);
    std::fclose(f);

    const tfx::Charset cs = tfx::gf_detectCharset(path);
    std::vector<std::string> lines;
    if (cs == tfx::Charset::none_found || !tfx::gf_readTextLines(cs, path, lines)) return 0;
    tfx::scanList.clear();
    tfx::scanTitles.clear();
    tfx::scanReports.clear();
    tfx::lf_liveriesOfLines(1, lines, "/x/aircraft.cfg");
    tfx::lf_ivaoLiveriesOfLines(2, lines,
                                "/x/IVAO_MTL/SimObjects/Airplanes/IVAO_B738/aircraft.cfg");
    for (const tfx::Livery& l : tfx::scanList)
        if (l.title.empty() || l.airline == 0 || l.model == 0) __builtin_trap();
    return 0;
}
