// The history at the start of a session: its pieces are handed in by the
// feed's reader thread and taken up by the tick alone, in order, whatever
// their delay.
#include <atomic>
#include <cmath>
#include <numbers>
#include <thread>

#include "../../tools/rt_app_standin_lib.h"
#include "feeds/rtapp/reader_state.h"
#include "feeds/rtapp/rtapp_lines.h"
#include "traffic_fixture.h"

using namespace tfx;
using tfx::test::TrafficTest;

TEST_F(TrafficTest, HistoryWaitsForTheTickAndIsTakenInOrder) {
    trafficOpen = 0;  // the start sequence: no tick runs yet
    std::vector<TrafficMessage> piece0 = {airborne(0x4C0701, "SAS1", 100, 50.00),
                                          airborne(0x4C0702, "SAS2", 100, 51.00)};
    std::vector<TrafficMessage> piece1 = {airborne(0x4C0701, "SAS1", 106, 50.01)};
    gf_handleTrafficBatch(piece0, 0, true);
    gf_handleTrafficBatch(piece1, 6, true);
    EXPECT_TRUE(piece0.empty());
    EXPECT_TRUE(liveAircraft.empty());  // the reader's thread never touches the tables

    trafficOpen = 1;
    tick();
    ASSERT_NE(live(0x4C0701), nullptr);
    ASSERT_NE(live(0x4C0702), nullptr);
    // The older piece came first, so the newer report joined the stream.
    ASSERT_EQ(live(0x4C0701)->stream.size(), 2u);
    EXPECT_EQ(live(0x4C0701)->stream[1].time, START_TICK + 600);
}

TEST_F(TrafficTest, TheSixthPieceOfTheApplicationsHistoryIsKept) {
    setOptions([](Options& o) {
        o.RANGE = 40;
        o.range_nm = 40;
        o.rangeSquared_nm2 = 1600;
    });
    TrafficReaderState state;
    gf_resetReaderState(state);
    state.position.lat = 51.8369;
    state.position.lon = -1.32;
    state.position.cosLat = std::cos(51.8369 * std::numbers::pi / 180);
    trafficOpen = 0;
    // Six pieces of one aircraft's history, six seconds apart: the sixth
    // is played 30 seconds ahead, like a live cycle, but it is history.
    for (int piece = 0; piece < 6; ++piece) {
        scenario::Report r;
        r.hexid = 4000001;
        r.lat = 51.85 + 0.005 * piece;
        r.lon = -1.32;
        r.alt_ft = 6000;
        r.gs_kt = 150;
        r.track_deg = 0;
        r.callsign = "EZY12AB";
        r.model = "A320";
        r.tas_kt = 160;
        gf_processRTAppLine(state, standin::gf_trafficLine("RTBUF", r, 1732320000.0 + 6 * piece));
        gf_processRTAppLine(state, "RTBUF_SEP");
    }
    gf_processRTAppLine(state, "RTBUF_EOT");
    trafficOpen = 1;
    tick();
    const LiveAircraft* ac = live(4000001);
    ASSERT_NE(ac, nullptr);
    ASSERT_EQ(ac->stream.size(), 6u);
    EXPECT_EQ(ac->stream.back().time, START_TICK + 3000);
}

TEST_F(TrafficTest, HistoryFromAnotherThreadWhileTheTickRuns) {
    // A history that outlasts the start-up wait: the reader hands in pieces
    // while the main thread ticks over the tables (the race checker's case).
    std::atomic<bool> done{false};
    std::thread reader([&] {
        for (std::uint32_t piece = 0; piece < 200; ++piece) {
            std::vector<TrafficMessage> batch;
            for (std::uint32_t i = 0; i < 20; ++i) {
                const std::uint32_t hexid = 0x500000 + piece * 20 + i;
                batch.push_back(airborne(hexid, "H" + std::to_string(hexid), 100, 50.0 + i * 0.01));
            }
            // Far enough ahead that none is due (and erased) before the end.
            gf_handleTrafficBatch(batch, 6000, true);
            std::this_thread::yield();
        }
        done = true;
    });
    while (!done.load()) tick();
    reader.join();
    tick(50);  // whatever is still queued, at a hundred reports a tick
    EXPECT_EQ(liveAircraft.size(), 4000u);
}
