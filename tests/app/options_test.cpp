#include <gtest/gtest.h>

#include <thread>

#include "app/options.h"
#include "app/parameters.h"
#include "support/temp_workdir.h"

using namespace tfx;
using tfx::test::TempWorkdir;

TEST(Options, UpdateTouchesOneFieldAndLeavesOldSnapshotsAlone) {
    TempWorkdir dir;
    gf_buildOptions();
    const OptionsPtr before = gf_options();
    params.RT_CHOISE.current = "RT App";
    params.MAX_LIVE_SEL.current = 5;  // changed but not announced
    updateOptions(params.RT_CHOISE);
    const OptionsPtr after = gf_options();
    EXPECT_DOUBLE_EQ(after->requestRadius_m, 40 * 1852.0);
    EXPECT_DOUBLE_EQ(before->requestRadius_m, 40 * 1852.0 + 10000.0);
    EXPECT_EQ(after->MAX_LIVE_SEL, 500);
    updateOptions(params.COLLAPSED);  // not in the snapshot: nothing published
    EXPECT_EQ(gf_options(), after);
}

TEST(Options, BlockIsFilledOnlyWhileSet) {
    TempWorkdir dir;
    params.BLOCK_CALLSIGN.current = "BAW12_";
    params.BLOCK_REGCODE.current = "G-EUPT";
    params.BLOCK_HEXIDDEC.current = 0x400A1B;
    gf_buildOptions();
    EXPECT_TRUE(gf_options()->blockCallsign.empty());
    params.BLOCK_AIRCRAFT.current = "BAW12_ G-EUPT 400a1b";
    updateOptions(params.BLOCK_AIRCRAFT);
    const OptionsPtr o = gf_options();
    EXPECT_EQ(o->blockCallsign, "BAW12_");
    EXPECT_EQ(o->blockHexid, 0x400A1Bu);
    EXPECT_TRUE(o->blockTrailing);
}

TEST(Options, ConcurrentPublishersLoseNoUpdate) {
    TempWorkdir dir;
    gf_buildOptions();
    constexpr int N = 5000;
    std::atomic<bool> go{false};
    auto bump = [&](auto field) {
        while (!go) std::this_thread::yield();
        for (int i = 0; i < N; ++i) gf_publishOptions([&](Options& o) { ++(o.*field); });
    };
    std::thread gui(bump, &Options::TCAS_FL);
    std::thread feed(bump, &Options::MAX_FIT);
    std::thread reader([&] {
        while (!go) std::this_thread::yield();
        for (int i = 0; i < N; ++i) {
            const OptionsPtr o = gf_options();
            ASSERT_GE(o->TCAS_FL, 180);  // never a torn or freed snapshot
        }
    });
    go = true;
    gui.join();
    feed.join();
    reader.join();
    EXPECT_EQ(gf_options()->TCAS_FL, 180 + N);
    EXPECT_EQ(gf_options()->MAX_FIT, 47 + N);
}

TEST(Options, CheckBoxToggleSavesAndPublishes) {
    TempWorkdir dir;
    gf_buildOptions();
    ASSERT_TRUE(gf_options()->AUTO_PARK);
    gf_toggleBoolOption(params.AUTO_PARK);
    EXPECT_FALSE(params.AUTO_PARK.current);
    EXPECT_FALSE(gf_options()->AUTO_PARK);
    EXPECT_NE(dir.read("parameters.xml").find("name=\"AUTO_PARK\" value=\"false\""),
              std::string::npos);
}
