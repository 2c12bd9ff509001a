// The link against the built-in simulator on its own clock, rough as the real
// one, with the simulator thread and the tick running: the user's data keeps
// up with a moving user for the whole session, with or without the TCP link,
// and a simulator that crashes and comes back in the middle of a session is
// taken up again.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

#include "app/exit_request.h"
#include "app/options.h"
#include "app/parameters.h"
#include "app/run_flags.h"
#include "app/run_state.h"
#include "feeds/rtapp/reader_state.h"
#include "feeds/rtapp/rt_app_position.h"
#include "sim/builtin/builtin_sim.h"
#include "sim/sim_client.h"
#include "sim/sim_ids.h"
#include "sim/sim_queues.h"
#include "traffic/traffic_fixture.h"

using namespace tfx;
using namespace std::chrono_literals;

namespace {

template <typename Cond>
bool within(std::chrono::milliseconds limit, Cond cond) {
    const auto until = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < until) {
        if (cond()) return true;
        std::this_thread::sleep_for(5ms);
    }
    return cond();
}

class SimConnectionLifeTest : public test::TrafficTest {
protected:
    void SetUp() override {
        TrafficTest::SetUp();
        gf_clearExitRequest();
        userClosing = 0;
        gf_resetSimClientState();
        SimRunState = 0;
        psxBefore = params.PSX_SERVER_HERE.current;
        gf_setSimConnectApi(&sim);
    }
    void TearDown() override {
        thread.request_stop();
        if (thread.joinable()) thread.join();
        sim.stopThread();
        gf_setSimConnectApi(nullptr);
        params.PSX_SERVER_HERE.current = psxBefore;
        gf_resetSimClientState();
        gf_clearExitRequest();
        TrafficTest::TearDown();
    }
    // The simulator runs a flight on its own clock, and the link connects.
    void start(const Scenario& scenario) {
        sim.setScenario(scenario);
        sim.startThread();
        sim.run();
        sim.loadFlight();
        thread = std::jthread(gf_simClientThread);
        ASSERT_TRUE(within(3s, [] { return SimRunState.load() == 2; })) << dir.logText();
    }
    // The main loop's beat: a tick every 10 ms for this long.
    static void tickFor(std::chrono::milliseconds span) {
        const auto until = std::chrono::steady_clock::now() + span;
        while (std::chrono::steady_clock::now() < until) {
            gf_trafficTick();
            std::this_thread::sleep_for(10ms);
        }
    }

    BuiltinSim sim;
    std::jthread thread;
    bool psxBefore = true;
};

// North at 360 knots climbing 2000 feet a minute, then a right turn east.
Scenario lf_climbingTurn() {
    Scenario s;
    s.user.path = {{0, 50.0, 8.0, 2000.0}, {60, 50.1, 8.0, 4000.0}, {120, 50.1, 8.2, 6000.0}};
    return s;
}

}  // namespace

TEST_F(SimConnectionLifeTest, TheUsersDataFollowsAMovingUserWithoutTheTcpLink) {
    params.PSX_SERVER_HERE.current = false;
    runChoice = std::make_shared<const RunChoice>(RunChoice{1, false});  // the road "RT App"

    start(lf_climbingTurn());

    tickFor(1200ms);
    const double earlyLat = userAircraft.lat;
    tickFor(1500ms);
    const SimObjectView truth = *sim.object(0);

    // 360 knots is 0.0017 degrees of latitude a second: the tick's copy is
    // at most about a second behind the simulator.
    EXPECT_GT(userAircraft.lat, earlyLat) << "the copy moves with the user";
    EXPECT_NEAR(userAircraft.lat, truth.lat_deg, 0.003) << dir.logText();
    {
        std::lock_guard lock(trafficReaderState.positionLock);
        EXPECT_NEAR(trafficReaderState.position.lat, truth.lat_deg, 0.003)
            << "the range centre follows the user too";
    }
    // The simulator's signs come through as they are: nose up and a bank
    // towards the right turn ahead are negative.
    EXPECT_LT(userAircraft.pitch, -0.01);
    EXPECT_LT(userAircraft.bank, -0.01);
    EXPECT_NEAR(userAircraft.indicatedAlt - userAircraft.alt, SimRoughness{}.pressure_offset_ft,
                1.0);
}

TEST_F(SimConnectionLifeTest, AfterACrashAndRestartRequestsAreRenewedAndLostObjectsEnd) {
    Scenario s;
    s.user.path = {{0, 51.8369, -1.3200, std::nullopt}};
    s.installed = {{"A320 livery", "A320", std::nullopt, std::nullopt}};
    s.rough.create_never_every = 0;
    s.rough.restart_at_s = 1.5;
    s.rough.restart_down_s = 0.5;
    s.rough.restart_crash = true;  // no QUIT: the link sees only the broken connection
    start(s);
    gf_requestSimData(REQUEST_USER_ON_GROUND, 0);  // as the session's start does, once

    CreateRequest create;
    create.lat = 51.84;
    create.lon = -1.31;
    create.alt = 3000;
    create.callsign = "CR1";
    create.title = "A320 livery";
    create.hexid = 0x4C2000;
    gf_queueCreate(create);
    std::vector<SimMessage> seen;
    auto collect = [&] {
        std::vector<SimMessage> now;
        gf_takeSimMessages(now);
        seen.insert(seen.end(), now.begin(), now.end());
    };
    auto has = [&](std::uint32_t kind, std::uint32_t objectid) {
        return std::any_of(seen.begin(), seen.end(), [&](const SimMessage& m) {
            return m.kind == kind && (objectid == 0 || m.objectid == objectid);
        });
    };
    ASSERT_TRUE(within(3s, [&] {
        collect();
        return has(SIM_LIVE_OBJECT_ID, 0);
    }));
    const std::uint32_t oid = std::find_if(seen.begin(), seen.end(), [](const SimMessage& m) {
                                  return m.kind == SIM_LIVE_OBJECT_ID;
                              })->objectid;

    ASSERT_TRUE(within(4s, [&] {
        return dir.logText().find("SimConnect dispatch failed; reconnecting ...") !=
               std::string::npos;
    })) << "the crash comes only as a broken connection";
    ASSERT_TRUE(within(4s, [] { return SimRunState.load() == 2; })) << dir.logText();
    EXPECT_TRUE(within(3s, [&] {
        collect();
        return has(SIM_OBJECT_REMOVED, oid);
    })) << "the crash took the object along";

    secondBeat = 0;
    EXPECT_TRUE(within(3s, [] { return secondBeat.load() == 1; }))
        << "the once-a-second data comes again on the new connection\n"
        << dir.logText();
    EXPECT_FALSE(gf_exitRequest()) << "a simulator that comes back does not end the session";
}

TEST_F(SimConnectionLifeTest, EveryPositionReportAsksAgainAndMovesTheRangeCentreEvenForAerowinx) {
    params.PSX_SERVER_HERE.current = true;
    setOptions([](Options& o) { o.AEROWINX = true; });  // no TCP link to us
    UserData user;
    user.lat = 50.5;
    user.lon = 8.5;
    gf_storeUserData(user);
    gf_sendPosition();
    const SimCommands queued = gf_peekSimCommands();
    EXPECT_TRUE(std::any_of(queued.requests.begin(), queued.requests.end(),
                            [](const SimRequest& r) { return r.kind == REQUEST_USER_POSITION; }))
        << "the next report has fresh data";
    std::lock_guard lock(trafficReaderState.positionLock);
    EXPECT_EQ(trafficReaderState.position.lat, 50.5);
    EXPECT_EQ(trafficReaderState.position.lon, 8.5);
}
