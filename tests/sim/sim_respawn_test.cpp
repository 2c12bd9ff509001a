// A respawn end to end: a flying aircraft whose route or registration
// changes is sent away, the simulator removes its object, and it comes back
// as a new object where the old one was, flown by the tick's positions.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include <fmt/format.h>

#include "liveries/reference_db.h"
#include "sim_traffic_fixture.h"

using namespace tfx;
using tfx::test::SimTrafficTest;

namespace {

AirportRef iata(const char* code) {
    AirportRef ref;
    std::copy(code, code + 3, ref.iata.begin());
    return ref;
}

class SimRespawnTest : public SimTrafficTest {
protected:
    // Eight reports 5 s apart flying north-east, each with the route and
    // regcode.
    void deliverFlight(std::uint32_t hexid, const char* callsign, const char* model,
                       const char* orig, const char* dest, const char* regcode) {
        for (int i = 0; i < 8; ++i) {
            TrafficMessage m =
                airborne(hexid, callsign, 1000.0 + 5 * i, 50.0 + 0.01 * i, 5000, model);
            m.point.lon = 8.0 + 0.01 * i;
            m.point.track = 33;
            m.orig = iata(orig);
            m.dest = iata(dest);
            m.regcode = regcode;
            deliver(m, gf_simTick() + 500 * i);
        }
    }

    // The aircraft's object is removed in the simulator and a new one takes
    // its place; checks what must hold for every respawn and returns the new
    // object identifier.
    std::uint32_t expectRespawned(std::uint32_t hexid, std::uint32_t oldOid) {
        const RecordedPosition lastOld = sim.recordedPositions(oldOid).back();
        const std::uint32_t newOid = runUntilActive(hexid, 600);
        EXPECT_NE(newOid, 0u) << dir.logText();
        if (newOid == 0) return 0;
        EXPECT_NE(newOid, oldOid);
        EXPECT_FALSE(sim.object(oldOid)) << "the old object is gone";
        EXPECT_EQ(sim.aiObjectIds(), std::vector<std::uint32_t>{newOid}) << "and no other is left";
        EXPECT_EQ(loggedCount(fmt::format("SimConnect call to remove ac with objectid {}", oldOid)),
                  1u);

        // It came back where the old one was, facing the same way.
        const auto created = sim.object(newOid);
        EXPECT_TRUE(created && created->released && created->freezeLatLon);
        const auto first = sim.recordedPositions(newOid);
        EXPECT_FALSE(first.empty()) << "an active object is flown";
        if (!first.empty()) {
            EXPECT_NEAR(first.front().lat_deg, lastOld.lat_deg, 0.001);
            EXPECT_NEAR(first.front().lon_deg, lastOld.lon_deg, 0.001);
            EXPECT_NEAR(first.front().heading_deg, lastOld.heading_deg, 1.0);
            EXPECT_GT(lastOld.heading_deg, 10.0) << "a course the respawn could lose";
        }

        // From now on every frame goes to the new object, none to the old.
        const std::size_t oldSent = sim.recordedPositions(oldOid).size();
        const std::size_t before = first.size();
        run(30);
        EXPECT_EQ(sim.recordedPositions(oldOid).size(), oldSent);
        const auto sent = sim.recordedPositions(newOid);
        EXPECT_GE(sent.size(), before + 8);
        EXPECT_GT(sent.back().lat_deg, sent[before].lat_deg) << "flying on north";
        EXPECT_EQ(live(hexid)->objectid, newOid);
        EXPECT_EQ(SimRunState.load(), 2) << "no command failed";
        EXPECT_TRUE(pendingCreates.empty() && packetRequests.empty());
        return newOid;
    }
};

}  // namespace

TEST_F(SimRespawnTest, ANewRouteRecreatesTheAircraftAsANewObjectWhereItFlies) {
    std::filesystem::create_directory(dir.path() / "orig_dest");
    deliverFlight(0x4C0B01, "UAL9", "A320", "LHR", "JFK", "");
    const std::uint32_t oldOid = runUntilActive(0x4C0B01, 400);
    ASSERT_NE(oldOid, 0u) << dir.logText();
    run(30);
    ASSERT_FALSE(sim.recordedPositions(oldOid).empty());

    TrafficMessage m = airborne(0x4C0B01, "UAL9", 1100, 50.2);
    m.orig = iata("CDG");
    m.dest = iata("FRA");
    deliver(m, gf_simTick() + 3000);
    EXPECT_TRUE(logged("respawns because of orig-dest change"));
    ASSERT_EQ(live(0x4C0B01)->simState, SimState::liveryrespawn);

    const std::uint32_t newOid = expectRespawned(0x4C0B01, oldOid);
    ASSERT_NE(newOid, 0u);
    EXPECT_EQ(sim.object(newOid)->title, "A320 livery") << "a new route keeps the livery";
    EXPECT_EQ(live(0x4C0B01)->orig, iata("CDG"));
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "orig_dest" / fmt::format("{}.pln", oldOid)))
        << "the old object's plan went with it";
    EXPECT_TRUE(std::filesystem::exists(dir.path() / "orig_dest" / fmt::format("{}.pln", newOid)));
}

TEST_F(SimRespawnTest, ARegcodeOfAnotherModelRecreatesTheAircraftInTheNewLivery) {
    sim.setKnownTitles({{"A320 livery", "A320", std::nullopt, std::nullopt},
                        {"A321 livery", "A321", std::nullopt, std::nullopt}});
    const std::uint16_t baw = gf_airlineIndex("BAW");
    dbaseRecords = {{"G-EUAA", baw, 0, gf_modelIndex("A320"), false, true},
                    {"G-EUBB", baw, 0, gf_modelIndex("A321"), false, true}};
    deliverFlight(0x4C0B02, "BAW77", "B738", "LHR", "JFK", "G-EUAA");
    const std::uint32_t oldOid = runUntilActive(0x4C0B02, 400);
    ASSERT_NE(oldOid, 0u) << dir.logText();
    EXPECT_EQ(sim.object(oldOid)->title, "A320 livery");
    run(30);

    TrafficMessage m = airborne(0x4C0B02, "BAW77", 1100, 50.2);
    m.regcode = "G-EUBB";
    deliver(m, gf_simTick() + 3000);
    EXPECT_TRUE(logged("respawns because of regcode change"));

    const std::uint32_t newOid = expectRespawned(0x4C0B02, oldOid);
    ASSERT_NE(newOid, 0u);
    EXPECT_EQ(sim.object(newOid)->title, "A321 livery");
    EXPECT_EQ(sim.object(newOid)->atcId, "BAW77");
}
