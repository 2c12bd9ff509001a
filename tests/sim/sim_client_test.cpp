// The simulator thread's handlers, one connection to the built-in simulator
// stepped by the test: setup, the run state, the frame step with its
// commands, creates and their answers, the user aircraft and the ways a
// connection ends a session.
#include <gtest/gtest.h>

#include <cmath>

#include "app/options.h"
#include "app/run_flags.h"
#include "app/user_exception.h"
#include "liveries/code_interning.h"
#include "liveries/reference_db.h"
#include "sim/sim_client_fixture.h"
#include "sim/sim_ids.h"

using namespace tfx;
using tfx::test::SimClientTest;

namespace {

constexpr std::uint32_t LIVE_HEXID = 0x400A01;
constexpr std::uint32_t STATIC_HEXID = 512;

CreateRequest request(const char* title, std::uint32_t hexid, bool onGround) {
    CreateRequest r;
    r.lat = 51.8369;
    r.lon = -1.3150;
    r.alt = onGround ? 0 : 3000;
    r.heading = 270;
    r.onGround = onGround;
    r.callsign = fmt::format("T{:x}", hexid);
    r.title = title;
    r.hexid = hexid;
    return r;
}

std::vector<SimMessage> ofKind(const std::vector<SimMessage>& all, std::uint32_t kind) {
    std::vector<SimMessage> out;
    for (const SimMessage& m : all)
        if (m.kind == kind) out.push_back(m);
    return out;
}

// Frames go by until the creates are answered; the object identifiers by
// hexid.
std::map<std::uint32_t, std::uint32_t> assigned(const std::vector<SimMessage>& all) {
    std::map<std::uint32_t, std::uint32_t> out;
    for (const SimMessage& m : all)
        if (m.kind == SIM_LIVE_OBJECT_ID || m.kind == SIM_STATIC_OBJECT_ID)
            out[m.hexid] = m.objectid;
    return out;
}

}  // namespace

TEST_F(SimClientTest, ConnectionFollowsTheFlightAndAFlightLoadEndsTheSession) {
    connect();
    EXPECT_EQ(SimRunState.load(), 2) << "connected, the flight running";
    EXPECT_NE(dir.logText().find("KittyHawk (11.0.282174.999) connected"), std::string::npos);
    sim.pause(true);
    step(50);
    EXPECT_EQ(SimRunState.load(), 1);
    sim.pause(false);
    step(50);
    EXPECT_EQ(SimRunState.load(), 2);
    EXPECT_EQ(exitReason(), ExitReason::NotYetSet);

    sim.loadFlight();
    step(50);
    EXPECT_EQ(exitReason(), ExitReason::NewFlight);
    EXPECT_EQ(gf_exitRequest()->seconds, 60);
    EXPECT_NE(dir.logText().find("SimConnect: flight loaded event"), std::string::npos);
}

TEST_F(SimClientTest, QuitEndsTheConnectionButNotTheSession) {
    connect();
    sim.quit();
    dispatch();
    EXPECT_TRUE(context.quit);
    EXPECT_EQ(SimRunState.load(), 0);
    EXPECT_EQ(exitReason(), ExitReason::NotYetSet);
}

TEST_F(SimClientTest, OtherSimulatorIsAMismatchAndOpensNothing) {
    runChoice = std::make_shared<const RunChoice>(RunChoice{2, true});
    connect();
    EXPECT_TRUE(context.quit);
    EXPECT_TRUE(context.mismatch);
    EXPECT_EQ(context.runningSim, "MSFS 2020");
    EXPECT_EQ(SimRunState.load(), 0) << "the records after the refused OPEN are stale";
    EXPECT_FALSE(context.error);
}

struct UnknownSimTest : SimClientTest {
    static BuiltinSimConfig config() {
        BuiltinSimConfig c;
        c.application_name = "Flight-Sim X!";
        return c;
    }
    UnknownSimTest() : SimClientTest(config()) {}
};

TEST_F(UnknownSimTest, AnUnknownSimulatorStopsWithItsCleanedName) {
    connect();
    ASSERT_TRUE(context.error);
    try {
        std::rethrow_exception(context.error);
    } catch (const UserRelatedException& e) {
        EXPECT_EQ(e.code, 77);
        EXPECT_EQ(e.message, "'FlightSim X' not being MSFS 2020 or MSFS 2024 connects ... ?");
    }
}

TEST_F(SimClientTest, CreatesAreAnsweredReleasedFrozenAndRefusalsReachTheTick) {
    connect();
    gf_queueCreate(request("Airbus A320 Neo Asobo", LIVE_HEXID, false));
    gf_queueCreate(request("DA62 Asobo", STATIC_HEXID, true));
    gf_queueCreate(request("No Such Livery", LIVE_HEXID + 1, false));
    step(1000);
    const std::vector<SimMessage> all = messages();
    const auto ids = assigned(all);
    ASSERT_EQ(ids.size(), 2u) << dir.logText();
    EXPECT_EQ(ofKind(all, SIM_LIVE_OBJECT_ID).size(), 1u);
    EXPECT_EQ(ofKind(all, SIM_STATIC_OBJECT_ID).size(), 1u);
    for (const auto& [hexid, objectid] : ids) {
        const auto view = sim.object(objectid);
        ASSERT_TRUE(view) << hexid;
        EXPECT_TRUE(view->released);
        EXPECT_TRUE(view->freezeLatLon && view->freezeAltitude && view->freezeAttitude);
    }
    const auto refused = ofKind(all, SIM_CREATE_FAILED);
    ASSERT_EQ(refused.size(), 1u);
    EXPECT_EQ(refused[0].hexid, LIVE_HEXID + 1);
    EXPECT_TRUE(pendingCreates.empty());
    EXPECT_TRUE(packetRequests.empty());
    EXPECT_NE(dir.logText().find("CREATE_OBJECT_FAILED packetId:"), std::string::npos);

    // An exception about a packet that carried no create changes nothing.
    lf_createFailed(99999);
    EXPECT_NE(dir.logText().find("CREATE_OBJECT_FAILED packetId:99999 (no pending request)"),
              std::string::npos);
    EXPECT_TRUE(messages().empty());
}

TEST_F(SimClientTest, PositionsGoOutOncePerSwapAndNeverForTheUser) {
    connect();
    gf_queueCreate(request("Airbus A320 Neo Asobo", LIVE_HEXID, false));
    step(1000);
    const std::uint32_t oid = assigned(messages()).at(LIVE_HEXID);
    const std::size_t before = sim.recordedPositions(oid).size();

    MotionBlock motion;
    motion.lat = 51.9;
    motion.lon = -1.25;
    motion.alt = 4200;
    motion.heading = 1.0;
    motion.tas = 180;
    gf_framePut(oid, motion);
    MotionBlock userMotion = motion;
    userMotion.lat = 10;
    gf_framePut(userObjectId.load(), userMotion);
    gf_publishFrame();
    step(100);  // three frames: one swap, sent once
    const auto sent = sim.recordedPositions(oid);
    ASSERT_EQ(sent.size(), before + 1);
    const auto now = sim.object(oid);
    EXPECT_NEAR(now->lat_deg, 51.9, 1e-9);
    EXPECT_NEAR(now->alt_ft, 4200, 1e-6);
    EXPECT_GT(std::abs(sim.object(0)->lat_deg - 10), 1) << "the user aircraft is not moved";
}

TEST_F(SimClientTest, RemovalsCompleteAndSkipTheUserAircraft) {
    connect();
    gf_queueCreate(request("Airbus A320 Neo Asobo", LIVE_HEXID, false));
    step(1000);
    const std::uint32_t oid = assigned(messages()).at(LIVE_HEXID);
    gf_queueRemoval(oid);
    gf_queueRemoval(userObjectId.load());
    step(200);
    EXPECT_FALSE(sim.object(oid));
    EXPECT_TRUE(sim.object(0)) << "the user aircraft stays";
    const auto removed = ofKind(messages(), SIM_OBJECT_REMOVED);
    ASSERT_EQ(removed.size(), 1u);
    EXPECT_EQ(removed[0].objectid, oid);
    EXPECT_NE(dir.logText().find(fmt::format("SimConnect call to remove ac with objectid {}", oid)),
              std::string::npos);
    EXPECT_EQ(SimRunState.load(), 2);
}

TEST_F(SimClientTest, FlapsGoOutBetweenTwoReleasesAndReverseThrustSetsTheLevers) {
    connect();
    gf_queueCreate(request("Airbus A320 Neo Asobo", LIVE_HEXID, false));
    step(1000);
    const std::uint32_t oid = assigned(messages()).at(LIVE_HEXID);
    gf_sendEvent(oid, EVENT_FLAPS_SET, 8192);
    gf_setReverseThrust(oid, true, 1);
    step(50);
    EXPECT_EQ(sim.eventCount(oid, "FLAPS_SET"), 1u);
    const auto view = sim.object(oid);
    EXPECT_GT(view->flaps_pct, 0);
    EXPECT_DOUBLE_EQ(view->spoilers_pct, 100);
    EXPECT_DOUBLE_EQ(view->throttle1_pct, -100);
}

TEST_F(SimClientTest, AFailedRequestStopsEveryCommandAndAsksForARestart) {
    connect();
    sim.quit();  // from now on every call on the connection fails
    gf_requestSimData(REQUEST_USER_POSITION, 0);
    gf_queueCreate(request("Airbus A320 Neo Asobo", LIVE_HEXID, false));
    lf_frameStep(handle);
    EXPECT_EQ(SimRunState.load(), 3);
    EXPECT_EQ(exitReason(), ExitReason::SimConnectError);
    EXPECT_EQ(gf_exitRequest()->seconds, 9);
    EXPECT_TRUE(pendingCreates.empty()) << "the create after the failure is dropped";
    EXPECT_NE(dir.logText().find("SimConnect request user ac position fails"), std::string::npos);

    // State 3 outlives the quit and the flight events.
    dispatch();
    EXPECT_TRUE(context.quit);
    EXPECT_EQ(SimRunState.load(), 3);
}

// A simulator that crashes takes the connection's objects along without a
// word; packet numbers and request answers of the dead connection mean
// nothing on the next one.
TEST_F(SimClientTest, ALostConnectionEndsItsObjectsAndSendsUnansweredCreatesAgain) {
    connect();
    gf_queueCreate(request("Airbus A320 Neo Asobo", LIVE_HEXID, false));
    step(400);
    const auto first = assigned(messages());
    ASSERT_EQ(first.size(), 1u);
    const std::uint32_t lostObject = first.begin()->second;
    gf_queueCreate(request("Airbus A320 Neo Asobo", LIVE_HEXID + 1, false));
    step(50);
    ASSERT_EQ(pendingCreates.size(), 1u) << "sent, not yet answered";

    sim.crash();
    SimConnect_Close(handle);
    handle = nullptr;
    lf_connectionLost();
    const auto gone = ofKind(messages(), SIM_OBJECT_REMOVED);
    ASSERT_EQ(gone.size(), 1u);
    EXPECT_EQ(gone[0].objectid, lostObject);
    EXPECT_TRUE(packetRequests.empty());

    sim.run();
    sim.loadFlight();
    connect();
    step(400);
    const auto again = assigned(messages());
    ASSERT_EQ(again.size(), 1u) << dir.logText();
    EXPECT_EQ(again.begin()->first, LIVE_HEXID + 1) << "the waiting aircraft got its object";
    EXPECT_TRUE(pendingCreates.empty());
}

TEST_F(SimClientTest, UserPositionSetsClockAndObjectAndATeleportRestarts) {
    const std::optional<SimObjectView> parked = sim.object(0);
    ASSERT_TRUE(parked);
    sim.teleportUser(0, 0);  // the position the simulator gives before a flight
    connect();
    gf_requestSimData(REQUEST_USER_ON_GROUND, 0);
    secondBeat = 0;
    step(1100);
    EXPECT_EQ(secondBeat.load(), 1) << "the beat comes before any position";
    EXPECT_EQ(userOnGround.load(), -1) << "no on-ground state at (0, 0)";
    sim.teleportUser(parked->lat_deg, parked->lon_deg);

    gf_requestSimData(REQUEST_USER_POSITION, 0);
    step(50);
    const UserData user = gf_userData();
    EXPECT_NEAR(user.lat, 51.8352, 1e-3);
    EXPECT_NEAR(user.lon, -1.3225, 1e-3);
    EXPECT_EQ(userObjectId.load(), 1u);
    // The scenario starts at 2024-06-01 12:00:00Z.
    EXPECT_NEAR(static_cast<double>(simEpochTime.load()), 1717243200.0, 5);
    step(1000);
    EXPECT_EQ(userOnGround.load(), 1);

    sim.teleportUser(51.90, -1.30);  // about 4 NM: a taxi or a short hop
    gf_requestSimData(REQUEST_USER_POSITION, 0);
    step(50);
    EXPECT_EQ(exitReason(), ExitReason::NotYetSet);
    sim.teleportUser(52.20, -1.30);  // 18 NM on
    gf_requestSimData(REQUEST_USER_POSITION, 0);
    step(50);
    EXPECT_EQ(exitReason(), ExitReason::NewFlight);
    EXPECT_NE(dir.logText().find("Teleport"), std::string::npos);
}

TEST_F(SimClientTest, TitleAndModelWithTheHalfSpanOfTheReferenceData) {
    gf_clearReferenceData();
    gf_modelIndex("");
    const std::uint16_t c172 = gf_modelIndex("C172");
    halfWingspan[c172] = 0.003;
    maxHalfWingspan = 0.05;
    connect();
    gf_requestSimData(REQUEST_USER_TITLE_MODEL, 0);
    step(50);
    EXPECT_EQ(userTitle, "Cessna Skyhawk G1000 Asobo");
    EXPECT_EQ(userModel, "C172");
    EXPECT_DOUBLE_EQ(userHalfSpan.load(), 0.003);
    EXPECT_NE(
        dir.logText().find("SimConnect: User aircraft model: C172, half wing span: 5.6 meter"),
        std::string::npos)
        << dir.logText();
    gf_clearReferenceData();
}

TEST_F(SimClientTest, AircraftInRangeLeaveOutStaticHighAndUserAircraft) {
    gf_buildOptions();
    connect();
    CreateRequest parked = request("DA62 Asobo", STATIC_HEXID, true);
    parked.callsign = "G-STAT*";
    gf_queueCreate(parked);
    CreateRequest taxiing = request("DA62 Asobo", LIVE_HEXID, true);
    taxiing.callsign = "G-TAXI";
    gf_queueCreate(taxiing);
    gf_queueCreate(request("Airbus A320 Neo Asobo", LIVE_HEXID + 1, false));  // 3000 ft
    step(1000);
    const auto ids = assigned(messages());
    ASSERT_EQ(ids.size(), 3u);

    gf_requestSimData(REQUEST_USER_POSITION, 0);  // names the user's own object
    step(50);
    gf_requestSimData(REQUEST_AIRCRAFT_IN_RANGE, 0);
    step(50);
    const auto reports = ofKind(messages(), SIM_POSITION_REPORT);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].objectid, ids.at(LIVE_HEXID));
    EXPECT_EQ(reports[0].hexid, 1u) << "on the ground";
    EXPECT_NEAR(reports[0].a, sim.groundAltitudeFt(51.8369, -1.3150), 1);
}
