// The simulator thread's handlers against the built-in simulator in stepped
// mode: the test opens the connection, runs the setup and dispatches on its
// own thread, so every frame and answer comes when the test says.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "app/exit_request.h"
#include "app/run_state.h"
#include "sim/builtin/builtin_sim.h"
#include "sim/sim_client.h"
#include "sim/sim_client_internal.h"
#include "sim/sim_queues.h"
#include "sim/user_data.h"
#include "support/temp_workdir.h"

namespace tfx::test {

class SimClientTest : public ::testing::Test {
protected:
    explicit SimClientTest(BuiltinSimConfig config = {}) : sim(std::move(config)) {}

    void SetUp() override {
        gf_setSimConnectApi(&sim);
        gf_clearSimBuffers();
        gf_clearExitRequest();
        gf_resetSimClientState();
        gf_storeUserData({});
        SimRunState = 0;
        runChoice = std::make_shared<const RunChoice>();
        ASSERT_TRUE(sim.loadScenario(egtkScenario()));
        // Answers at known times; how the link copes with the rough
        // simulator is tested on its own.
        sim.setRoughness(SimRoughness::polite());
        sim.run();
        sim.loadFlight();
    }
    void TearDown() override {
        if (handle != nullptr) SimConnect_Close(handle);
        l_hsimconnect = nullptr;
        gf_setSimConnectApi(nullptr);
        gf_clearSimBuffers();
        gf_resetSimClientState();
        gf_clearExitRequest();
        SimRunState = 0;
    }

    static std::string egtkScenario() {
        return std::string(ZEPT_SOURCE_DIR) + "/data/sim_scenario_egtk.json";
    }

    // Opens and declares, as the thread does for each connection.
    void connect() {
        ASSERT_EQ(SimConnect_Open(&handle, "ZEPT", nullptr, 0, nullptr, 0), S_OK);
        l_hsimconnect = handle;
        ASSERT_TRUE(lf_setupConnection(handle));
        dispatch();
    }
    void dispatch() { ASSERT_EQ(SimConnect_CallDispatch(handle, &lf_dispatch, &context), S_OK); }
    // The clock moves on in slices of 10 ms, each followed by a dispatch,
    // as the thread would: answers to what one frame sent come later.
    void step(std::int64_t ms) {
        for (std::int64_t done = 0; done < ms; done += 10) {
            sim.advance(10);
            dispatch();
        }
    }
    static std::vector<SimMessage> messages() {
        std::vector<SimMessage> out;
        gf_takeSimMessages(out);
        return out;
    }
    static ExitReason exitReason() {
        const auto r = gf_exitRequest();
        return r ? r->reason : ExitReason::NotYetSet;
    }

    TempWorkdir dir;
    BuiltinSim sim;
    HANDLE handle = nullptr;
    DispatchContext context;
};

}  // namespace tfx::test
