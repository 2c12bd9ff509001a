// The whole simulator thread against the built-in simulator on its own
// clock: it waits for the simulator, follows the flight, and goes back to
// waiting when the simulator quits.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "app/app_messages.h"
#include "app/exit_request.h"
#include "app/run_flags.h"
#include "app/run_state.h"
#include "sim/builtin/builtin_sim.h"
#include "sim/sim_client.h"
#include "sim/sim_ids.h"
#include "sim/sim_queues.h"
#include "sim/user_data.h"
#include "support/temp_workdir.h"

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

struct ThreadRun {
    ThreadRun() {
        gf_clearExitRequest();
        userClosing = 0;
        gf_clearSimBuffers();
        gf_resetSimClientState();
        gf_storeUserData({});
        runChoice = std::make_shared<const RunChoice>();
        Scenario parked;
        parked.airports.push_back({"EGTK", 51.8369, -1.3200, 270, 2});
        parked.user.path.push_back({0, 51.8369, -1.3200, std::nullopt});
        sim.setScenario(parked);
        gf_setSimConnectApi(&sim);
        sim.startThread();
    }
    ~ThreadRun() {
        thread.request_stop();
        if (thread.joinable()) thread.join();
        sim.stopThread();
        gf_setSimConnectApi(nullptr);
        gf_clearSimBuffers();
        gf_resetSimClientState();
        gf_clearExitRequest();
        SimRunState = 0;
    }
    test::TempWorkdir dir;
    BuiltinSim sim;
    std::jthread thread;
};

}  // namespace

TEST(SimClientThread, WaitsForTheSimulatorFollowsTheFlightAndOutlivesItsQuit) {
    ThreadRun run;
    SimRunState = 0;
    run.thread = std::jthread(gf_simClientThread);
    std::this_thread::sleep_for(150ms);
    EXPECT_EQ(SimRunState.load(), 0) << "no simulator runs yet";

    run.sim.run();
    run.sim.loadFlight();
    ASSERT_TRUE(within(2s, [] { return SimRunState.load() == 2; })) << run.dir.logText();
    secondBeat = 0;
    gf_requestSimData(REQUEST_USER_ON_GROUND, 0);
    gf_requestSimData(REQUEST_USER_POSITION, 0);
    ASSERT_TRUE(within(3s, [] { return secondBeat.load() == 1 && userOnGround.load() >= 0; }))
        << run.dir.logText();

    run.sim.quit();
    ASSERT_TRUE(within(2s, [] { return SimRunState.load() == 0; }));
    EXPECT_FALSE(gf_exitRequest()) << "a closed simulator does not end the program";
    run.sim.run();
    run.sim.loadFlight();
    EXPECT_TRUE(within(2s, [] { return SimRunState.load() == 2; })) << run.dir.logText();
    const std::string log = run.dir.logText();
    EXPECT_NE(log.find("KittyHawk (11.0.282174.999) connected"), std::string::npos) << log;
}

TEST(SimClientThread, TheOtherSimulatorSwitchesTheChoiceUnlessItIsPinned) {
    ThreadRun run;
    gf_clearAppMessages();
    runChoice = std::make_shared<const RunChoice>(RunChoice{2, true});
    run.sim.run();
    run.sim.loadFlight();
    simPinned = false;
    run.thread = std::jthread(gf_simClientThread);
    const auto message = gf_waitAppMessage(2000);
    ASSERT_TRUE(message);
    EXPECT_EQ(*message, AppMessage::MSG_SWITCH_SIM);
    run.thread.join();
    EXPECT_NE(run.dir.logText().find("MSFS and ZEPT do not match, restarting ..."),
              std::string::npos);

    // Pinned by hand: the thread waits, and says so once.
    simPinned = true;
    run.thread = std::jthread(gf_simClientThread);
    std::this_thread::sleep_for(2500ms);
    run.thread.request_stop();
    run.thread.join();
    const std::string log = run.dir.logText();
    const std::string line =
        "MSFS 2020 is running, but ZEPT is selected; waiting for MSFS 2024 ...";
    const auto first = log.find(line);
    ASSERT_NE(first, std::string::npos) << log;
    EXPECT_EQ(log.find(line, first + 1), std::string::npos) << "logged once per wait";
    EXPECT_FALSE(gf_waitAppMessage(0));
    EXPECT_EQ(SimRunState.load(), 0);
    runChoice = std::make_shared<const RunChoice>();
}
