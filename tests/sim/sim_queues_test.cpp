#include <gtest/gtest.h>

#include <random>
#include <unordered_map>

#include "sim/sim_ids.h"
#include "sim/sim_queues.h"

using namespace tfx;

namespace {

MotionBlock at(double lat) {
    MotionBlock m;
    m.lat = lat;
    return m;
}

}  // namespace

TEST(FrameTable, BehavesLikeAMapUnderRandomInsertsAndErases) {
    FrameTable table;
    table.reserve(8);
    std::unordered_map<std::uint32_t, double> reference;
    std::mt19937 random(7);
    for (int step = 0; step < 20000; ++step) {
        // Few keys, so that probe chains collide and wrap.
        const std::uint32_t key = 1 + random() % 300;
        if (random() % 3 == 0) {
            EXPECT_EQ(table.erase(key), reference.erase(key) == 1);
        } else {
            const double lat = random() % 1000;
            table.put(key, at(lat));
            reference[key] = lat;
        }
        if (step % 1000 == 0) {
            ASSERT_EQ(table.size(), reference.size());
            for (const auto& [k, lat] : reference) {
                ASSERT_NE(table.find(k), nullptr) << k;
                EXPECT_EQ(table.find(k)->lat, lat);
            }
        }
    }
    std::size_t seen = 0;
    for (const auto& entry : table) seen += reference.count(entry.objectid);
    EXPECT_EQ(seen, reference.size());
    table.put(0, at(1));  // never an object
    EXPECT_EQ(table.find(0), nullptr);
    table.clear();
    EXPECT_TRUE(table.empty());
    EXPECT_EQ(table.find(5), nullptr);
}

TEST(SimQueues, PositionsReachTheSimulatorOnceAndNeverAfterARemoval) {
    gf_clearSimBuffers();
    gf_framePut(11, at(1));
    gf_framePut(12, at(2));
    gf_publishFrame();
    EXPECT_EQ(gf_tickFrameSize(), 0u);
    gf_framePut(11, at(3));  // a newer position overwrites the one still pending
    gf_publishFrame();
    gf_queueRemoval(12);

    FrameTable sending;
    ASSERT_TRUE(gf_trySwapFrame(sending));
    EXPECT_EQ(sending.size(), 1u);
    EXPECT_EQ(sending.find(11)->lat, 3);
    sending.clear();
    EXPECT_FALSE(gf_trySwapFrame(sending));
    EXPECT_TRUE(sending.empty());

    gf_framePut(13, at(4));
    gf_clearFrameTables();
    gf_publishFrame();
    EXPECT_EQ(gf_pendingFrameSize(), 0u);
    EXPECT_EQ(gf_peekSimCommands().removes, std::vector<std::uint32_t>{12});
    gf_clearSimBuffers();
}

TEST(SimQueues, TheFlushTakesEverythingAndHandsEmptyBuffersBack) {
    gf_clearSimBuffers();
    gf_setLights(5, {.nav = true,
                     .beacon = false,
                     .landing = true,
                     .taxi = false,
                     .strobes = true,
                     .logo = false,
                     .cabin = true});
    CreateRequest create;
    create.callsign = "A";
    create.hexid = 0x400001;
    gf_queueCreate(create);
    gf_requestSimData(REQUEST_STATIC_DATA, 5);
    gf_setReverseThrust(5, true, 1);
    gf_postSimMessage({5, 0x400001, 0, SIM_LIVE_OBJECT_ID, 0, 0});

    SimCommands taken;
    gf_takeSimCommands(taken);
    const std::vector<std::uint32_t> lightOrder = {207, 206, 210, 208, 209, 212, 211};
    ASSERT_EQ(taken.clientEvents.size(), 7u);
    for (std::size_t i = 0; i < 7; ++i) {
        EXPECT_EQ(taken.clientEvents[i].event, lightOrder[i]);
        EXPECT_EQ(taken.clientEvents[i].value, i % 2 == 0 ? 1u : 0u);
    }
    EXPECT_EQ(taken.creates.size(), 1u);
    EXPECT_EQ(taken.requests.size(), 1u);
    EXPECT_EQ(taken.thrusts.size(), 1u);
    EXPECT_TRUE(gf_peekSimCommands().empty());

    std::vector<SimMessage> reports;
    gf_takeSimMessages(reports);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].hexid, 0x400001u);
    gf_takeSimMessages(reports);
    EXPECT_TRUE(reports.empty());
}

TEST(SimQueues, CommandsAfterTheSimulatorThreadEndedAreDroppedUntilTheNextSetUp) {
    gf_clearSimBuffers();
    EXPECT_FALSE(gf_simBuffersTornDown());
    gf_sendEvent(5, EVENT_NAV_LIGHTS_SET, 1);
    gf_tearDownSimBuffers();
    EXPECT_TRUE(gf_simBuffersTornDown());
    EXPECT_TRUE(gf_peekSimCommands().empty()) << "what waited goes with the thread";

    const auto issueEveryCommand = [] {
        gf_sendEvent(5, EVENT_NAV_LIGHTS_SET, 1);
        gf_startEngines(5);
        gf_stopEngines(5);
        gf_setLights(5, {true, true, true, true, true, true, true});
        gf_setNavLight(5, true);
        gf_setCabinLight(5, false);
        gf_setReverseThrust(5, true, 0);
        CreateRequest create;
        create.hexid = 0x400002;
        gf_queueCreate(create);
        gf_queueRemoval(6);
        gf_queueFlightPlan({5, "5.pln", "plan", "label"});
        gf_requestSimData(REQUEST_STATIC_DATA, 5);
    };
    gf_framePut(6, at(1));
    gf_publishFrame();
    issueEveryCommand();
    EXPECT_TRUE(gf_peekSimCommands().empty());
    EXPECT_EQ(gf_pendingFrameSize(), 0u) << "a removal still takes the position away";
    // A flush in between finds nothing to carry out.
    SimCommands taken;
    gf_takeSimCommands(taken);
    EXPECT_TRUE(taken.empty());

    // The next session's set-up opens them again.
    gf_clearSimBuffers();
    EXPECT_FALSE(gf_simBuffersTornDown());
    issueEveryCommand();
    gf_takeSimCommands(taken);
    EXPECT_EQ(taken.clientEvents.size(), 12u);
    EXPECT_EQ(taken.creates.size(), 1u);
    EXPECT_EQ(taken.removes, std::vector<std::uint32_t>{6});
    EXPECT_EQ(taken.requests.size(), 1u);
    EXPECT_EQ(taken.thrusts.size(), 1u);
    EXPECT_EQ(taken.flightPlans.size(), 1u);
    gf_clearSimBuffers();
}
