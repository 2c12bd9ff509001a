// Matching over the generated demo installation, as a session builds it: the
// scan writes the stored catalogue, the index is built from it with the
// bundled regcode list, and real airframes are asked at every depth.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "liveries/liveries_scan.h"
#include "liveries/livery_index_fixture.h"
#include "liveries/livery_matching_ladder.h"

namespace fs = std::filesystem;
using namespace tfx;

namespace {

const fs::path INSTALLATION = fs::path(ZEPT_SOURCE_DIR) / "data" / "ai_install_small";

class InstalledLiveries : public test::LiveryCatalogue {
protected:
    void SetUp() override {
        test::LiveryCatalogue::SetUp();
        std::ifstream in(fs::path(ZEPT_SOURCE_DIR) / "data" / "AIG-regcodes.xml");
        sealRegcodes(std::string(std::istreambuf_iterator<char>(in), {}), true);
        params.MSFS_INSTALL_PATH.current = INSTALLATION / "Packages";
        gf_scanLiveries();
        gf_processScannedLiveries();
        gf_publishOptions([](Options& o) { o.RANDOM = false; });
    }
};

struct Query {
    const char* what;
    const char* airline;
    const char* model;
    bool cargo;
    const char* regcode;
    int from;  // first depth with a match; none below it
    int step;
    const char* title;
};

// Expected from the catalogue the scan makes of the installation, by the
// ladder's rules; RANDOM off takes the first title of a list.
const Query QUERIES[] = {
    {"unique registration", "BAW", "A320", false, "G-EUUT", 1, 0,
     "FSLTL A320 BAW G-EUUT créé à la main"},
    {"registration of the regcode list", "RYR", "B738", false, "EI-DAF", 1, 1,
     "AIG B738 RYR EI-DYO"},
    {"airline and type", "DLH", "A320", false, "", 2, 2, "FSLTL A320 DLH D-AIWA"},
    {"KLM has B737 and B738: the closer one", "KLM", "B739", false, "", 3, 3, "B738 KLM PH-BXW"},
    {"private aircraft with its own livery", "PVT", "C150", false, "", 2, 2,
     "AIG C150 PVT G-ZDAM Færøerne"},
    {"private aircraft, generic livery first", "PVT", "A320", false, "", 2, 4,
     "AIG A320 CSN B-6817 créé à la main"},
    {"cargo airline", "UPS", "A20N", true, "", 2, 2, "AIG A20N UPS N436UP"},
    {"freighter of an airline with no livery", "FDX", "MD11", true, "", 5, 5,
     "AIG MD11 GEC D-ALCA"},
    {"unknown type: Light, any of the category", "KLM", "ZZ99", false, "", 4, 7,
     "AIG BE58 PVT G-ZDAK"},
};

}  // namespace

TEST_F(InstalledLiveries, RealAirframesAtEveryDepth) {
    const auto index = gf_liveryIndex();
    ASSERT_GT(index->titleStore.size(), 200u);
    const RefusedTitles none;
    for (const Query& q : QUERIES) {
        const Aimo key{gf_airlineIndex(q.airline), 0, gf_modelIndex(q.model),
                       static_cast<std::uint8_t>(q.cargo ? 1 : 0), 0};
        const LadderQuery query{key, key.cargo, q.regcode, gf_modelCategory(key.model), false};
        for (int depth = 1; depth <= 7; ++depth) {
            const LadderResult r = gf_walkLadder(*index, query, {depth, false}, none);
            if (depth < q.from) {
                EXPECT_EQ(r.step, NO_STEP) << q.what << " at depth " << depth << ": " << r.title;
            } else {
                EXPECT_EQ(r.step, q.step) << q.what << " at depth " << depth;
                EXPECT_EQ(r.title, q.title) << q.what << " at depth " << depth;
            }
        }
    }
}
