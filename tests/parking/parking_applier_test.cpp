// Carrying a plan out: one static aircraft at a time while its stand is
// free, its callsign and lights, taking back what is still queued, and the
// parked count held at the target.
#include <fmt/format.h>

#include "parking/parking_fixture.h"
#include "parking/parking_plan.h"
#include "parking/parking_planner.h"
#include "sim/sim_ids.h"

namespace tfx::test {
namespace {

constexpr double LAT = 21.3, LON = -157.9;

class ParkingApplier : public ParkingTest {
protected:
    void SetUp() override {
        ParkingTest::SetUp();
        weekNow = gf_weekSlot(3, 20);
        const std::string stands = standXml("G1", LAT, LON) + standXml("G2", LAT, LON - 0.0003) +
                                   standXml("G3", LAT + 0.001, LON) +
                                   standXml("G4", LAT + 0.002, LON);
        parkAt("TEST",
               apfText(param("airport_name", "T") + param("publisher", "simaddon") +
                           param("altitude", "13"),
                       stands),
               LAT, LON);
        ASSERT_FALSE(lf_readParkedFile().has_value());
        parking.wantedParked = 10;
    }
    static void plan(const std::string& stand, const std::string& cs1, const std::string& cs2,
                     const char* airline = "HAL", std::uint8_t useFirst = 1) {
        StaticPlan entry;
        entry.sid = gf_standNumberOf(stand);
        entry.cs1 = cs1;
        entry.cs2 = cs2;
        entry.aimo.airline = gf_airlineIndex(airline);
        entry.aimo.model = gf_modelIndex("A332");
        entry.reg = "N" + stand;
        entry.useFirst = useFirst;
        parking.plan.insert(parking.plan.begin(), entry);
    }
    static LiveAircraft& parkedLive(const std::string& callsign, const std::string& stand,
                                    std::uint64_t lastMoved) {
        LiveAircraft ac;
        ac.hexid = 0xA00000 + static_cast<std::uint32_t>(liveAircraft.size());
        ac.objectid = 5000 + static_cast<std::uint32_t>(liveAircraft.size());
        ac.callsign = callsign;
        ac.sid = gf_standNumberOf(stand);
        ac.simState = SimState::active;
        ac.flightState = FlightState::parked;
        ac.lastMoved = lastMoved;
        liveAircraft.push_back(ac);
        return liveAircraft.back();
    }
    static const StaticAircraft* onStand(const std::string& stand) {
        for (const StaticAircraft& ac : staticAircraft)
            if (gf_standName(ac.sid) == stand) return &ac;
        return nullptr;
    }
};

TEST_F(ParkingApplier, CreatesOneAtATimeWhileTheStandIsFreeWithItsCallsignAndLights) {
    parkedLive("UAL9", "G1", 1);
    plan("G1", "HAL1", "");       // a live aircraft stands there
    plan("G2", "HAL2", "");       // beside it
    plan("G3", "HAL3_", "HAL4");  // the feed's ghost mark goes, the static mark comes
    plan("G4", "", "", "HAL");    // no callsign at all

    for (std::size_t left = 3; left < 4; --left) {
        lf_addOneStatic();
        EXPECT_EQ(parking.plan.size(), left);
    }
    EXPECT_TRUE(
        logged("G1            : no static parking for HAL1, live aircraft UAL9 standing here"));
    EXPECT_TRUE(
        logged("G2            : no static parking for HAL2, live aircraft UAL9 is adjacent "
               "at G1, possibly colliding"));
    ASSERT_NE(onStand("G3"), nullptr);
    EXPECT_EQ(onStand("G3")->callsign, "HAL3*");
    ASSERT_NE(onStand("G4"), nullptr);
    EXPECT_EQ(onStand("G4")->callsign, fmt::format("HAL{}*", onStand("G4")->hexid));
    EXPECT_EQ(onStand("G1"), nullptr);
    EXPECT_EQ(onStand("G2"), nullptr);

    // The tick hands the simulator one create each 0.2 s.
    tickUntilMultipleOf(20);
    SimCommands created = takeCommands();
    ASSERT_EQ(created.creates.size(), 1u);
    EXPECT_EQ(created.creates[0].callsign, "HAL3*");
    EXPECT_TRUE(created.creates[0].onGround);
    EXPECT_EQ(created.creates[0].title, "A332 livery");
    gf_postSimMessage({700, created.creates[0].hexid, 0, SIM_STATIC_OBJECT_ID, 0, 0});
    tick(201);
    const StaticAircraft* g3 = onStand("G3");
    ASSERT_EQ(g3->simState, SimState::active);
    const SimCommands setUp = takeCommands();
    const auto sent = [&](std::uint32_t event, std::uint32_t value) {
        return std::any_of(setUp.clientEvents.begin(), setUp.clientEvents.end(),
                           [&](const ClientEvent& e) {
                               return e.objectid == 700 && e.event == event && e.value == value;
                           });
    };
    EXPECT_TRUE(sent(EVENT_ENGINE_AUTO_SHUTDOWN, 0));
    EXPECT_TRUE(sent(EVENT_BEACON_LIGHTS_SET, 0));
    EXPECT_TRUE(sent(EVENT_LOGO_LIGHTS_SET, 1));
    EXPECT_TRUE(logged("G3            : HAL3*    parked"));
    EXPECT_EQ(parkedUpdatedCount, 1);
}

TEST_F(ParkingApplier, RemovingAllTakesQueuedCreatesBackSoNoObjectAppears) {
    plan("G3", "HAL3", "");
    plan("G4", "HAL4", "");
    tickUntilMultipleOf(20);
    tickUntilMultipleOf(20);  // G3 went to the simulator, G4 waits in the queue
    ASSERT_EQ(staticCreates.size(), 1u);
    gf_removeAllStatic();
    EXPECT_TRUE(staticCreates.empty());
    EXPECT_EQ(onStand("G4"), nullptr);
    ASSERT_NE(onStand("G3"), nullptr);
    EXPECT_EQ(onStand("G3")->removeOnArrival, 1);  // it goes as soon as it is there
    for (const CreateRequest& c : takeCommands().creates)
        gf_postSimMessage({800, c.hexid, 0, SIM_STATIC_OBJECT_ID, 0, 0});
    tick(202);
    EXPECT_EQ(takeCommands().removes, std::vector<std::uint32_t>{800});
}

TEST_F(ParkingApplier, ANewcomerAtTheTargetPushesOutTheParkedAircraftLongestWithoutAReport) {
    for (int i = 0; i < 10; ++i)
        parkedLive("L" + std::to_string(i), "", 1000 - static_cast<std::uint64_t>(i));
    lf_enforceParkedMax(1);
    EXPECT_TRUE(logged("live parked L9 removed"));
    EXPECT_EQ(gf_findLive(0xA00009)->simState, SimState::removingfromsim);
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(liveAircraft[static_cast<std::size_t>(i)].simState, SimState::active);
}

}  // namespace
}  // namespace tfx::test
