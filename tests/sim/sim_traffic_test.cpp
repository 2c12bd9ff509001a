// The traffic tick and the simulator thread's handlers together against the
// built-in simulator: an aircraft of the feed becomes an object there, is
// flown by the tick's positions and goes again.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include <fmt/format.h>

#include "sim_traffic_fixture.h"

using namespace tfx;
using tfx::test::SimTrafficTest;

TEST_F(SimTrafficTest, AFeedAircraftBecomesAnActiveObjectFlownEachFrameAndIsRemoved) {
    deliverTrack(0x4C00D1, "BAW9", 8);
    run(60);  // the create leaves at the next 0.2 s mark and is answered
    LiveAircraft* ac = live(0x4C00D1);
    ASSERT_NE(ac, nullptr);
    const std::uint32_t oid = ac->objectid;
    ASSERT_NE(oid, 0u);
    ASSERT_TRUE(sim.object(oid));
    EXPECT_EQ(sim.object(oid)->title, "A320 livery");
    EXPECT_EQ(ac->simState, SimState::adding2sim);

    run(200);
    ASSERT_EQ(live(0x4C00D1)->simState, SimState::active) << "two seconds after its identifier";
    const std::size_t before = sim.recordedPositions(oid).size();
    run(30);
    const auto sent = sim.recordedPositions(oid);
    EXPECT_GE(sent.size(), before + 8) << "about one position per frame";
    EXPECT_GT(sent.back().lat_deg, sent[before].lat_deg) << "flying north";

    gf_queueRemoval(oid);
    run(10);
    EXPECT_FALSE(sim.object(oid));
    EXPECT_EQ(live(0x4C00D1), nullptr) << "the record dies when the object is gone";
}

TEST_F(SimTrafficTest, AFlightPlanFileGoesWithItsAircraft) {
    std::filesystem::create_directory(dir.path() / "orig_dest");
    for (int i = 0; i < 8; ++i) {
        TrafficMessage m = airborne(0x4C00D2, "BAW10", 1000.0 + 5 * i, 50.0 + 0.01 * i);
        m.orig.iata = {'L', 'H', 'R'};
        m.dest.iata = {'J', 'F', 'K'};
        deliver(m, gf_simTick() + 500 * i);
    }
    const std::uint32_t oid = runUntilActive(0x4C00D2, 400);
    ASSERT_NE(oid, 0u);
    const auto plan = dir.path() / "orig_dest" / fmt::format("{}.pln", oid);
    ASSERT_TRUE(std::filesystem::exists(plan));
    EXPECT_FALSE(sim.object(oid)->flightPlan.empty()) << "the simulator took it";

    gf_queueRemoval(oid);
    run(10);
    ASSERT_EQ(live(0x4C00D2), nullptr);
    EXPECT_FALSE(std::filesystem::exists(plan)) << "no file outlives its aircraft";
}

// The rough simulator: answers to creates come late and out of order, some
// never, and the ids of removed objects are handed out again. Every object
// must still be flown by its own aircraft, and the lost answers must hold up
// nobody else.
TEST_F(SimTrafficTest, RoughAnswersAndReusedIdsNeverMixUpTheAircraft) {
    SimRoughness rough;  // the rough defaults, with more lost answers
    rough.seed = 11;
    rough.create_never_every = 6;
    sim.setRoughness(rough);
    sim.setKnownTitles({{"A320 livery", "A320", std::nullopt, std::nullopt}});

    auto deliverAt = [&](std::uint32_t hexid, int k) {
        for (int i = 0; i < 12; ++i) {
            TrafficMessage m =
                airborne(hexid, fmt::format("ZZ{}", k), 1000.0 + 5 * i, 50.0 + 0.01 * i);
            m.point.lon = 8.0 + 0.05 * k;  // each on its own meridian
            deliver(m, gf_simTick() + 500 * i);
        }
    };
    auto checkOwnObjects = [&]() {
        int active = 0;
        for (const LiveAircraft& ac : liveAircraft) {
            if (ac.simState != SimState::active) continue;
            ++active;
            const auto object = sim.object(ac.objectid);
            if (!object) {
                ADD_FAILURE() << ac.callsign << " flies an object that is gone";
                continue;
            }
            EXPECT_EQ(object->atcId, ac.callsign) << "object " << ac.objectid;
            EXPECT_NEAR(object->lon_deg, ac.lon, 1e-3) << ac.callsign << " moves its own object";
        }
        return active;
    };

    for (int k = 0; k < 10; ++k) deliverAt(0x4C1000 + k, k);
    run(700);
    const int firstActive = checkOwnObjects();
    EXPECT_GE(firstActive, 5) << "lost answers hold up no other aircraft\n" << dir.logText();

    std::vector<std::uint32_t> removedIds;
    for (const LiveAircraft& ac : liveAircraft) {
        if (ac.simState == SimState::active && removedIds.size() < 4)
            removedIds.push_back(ac.objectid);
    }
    for (const std::uint32_t oid : removedIds) gf_queueRemoval(oid);
    run(50);
    for (int k = 10; k < 16; ++k) deliverAt(0x4C1000 + k, k);
    run(700);
    checkOwnObjects();

    bool reused = false;
    for (const LiveAircraft& ac : liveAircraft) {
        if (std::find(removedIds.begin(), removedIds.end(), ac.objectid) != removedIds.end())
            reused = reused || ac.hexid >= 0x4C1000 + 10;
    }
    EXPECT_TRUE(reused) << "an id of a removed object came back for a new aircraft";
}
