// The traffic tick and the simulator thread's handlers together against the
// built-in simulator in stepped mode: each tick of 10 ms is followed by 10 ms
// of the simulator's clock and a dispatch, as the two threads would take
// turns, so every create, answer and removal comes when the test says.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "app/exit_request.h"
#include "sim/builtin/builtin_sim.h"
#include "sim/sim_client.h"
#include "sim/sim_client_internal.h"
#include "traffic/traffic_fixture.h"

namespace tfx::test {

class SimTrafficTest : public TrafficTest {
protected:
    void SetUp() override {
        TrafficTest::SetUp();
        gf_resetSimClientState();
        gf_clearExitRequest();
        gf_setSimConnectApi(&sim);
        sim.setRoughness(SimRoughness::polite());
        // The stand-in matcher names every title "<model> livery"; the
        // simulated installation knows only the titles a test lists.
        sim.setKnownTitles({{"A320 livery", "A320", std::nullopt, std::nullopt}});
        sim.run();
        sim.loadFlight();
        ASSERT_EQ(SimConnect_Open(&handle, "ZEPT", nullptr, 0, nullptr, 0), S_OK);
        l_hsimconnect = handle;
        ASSERT_TRUE(lf_setupConnection(handle));
        dispatch();
        ASSERT_EQ(SimRunState.load(), 2);
    }
    void TearDown() override {
        SimConnect_Close(handle);
        l_hsimconnect = nullptr;
        gf_setSimConnectApi(nullptr);
        gf_resetSimClientState();
        gf_clearExitRequest();
        TrafficTest::TearDown();
    }

    // The tick takes object identifiers from 3 up; the simulator's own start
    // far above that.
    static BuiltinSimConfig simConfig() {
        BuiltinSimConfig c;
        c.first_ai_object_id = 1000;
        return c;
    }

    void dispatch() { ASSERT_EQ(SimConnect_CallDispatch(handle, &lf_dispatch, &context), S_OK); }
    // Ticks of 10 ms, the simulator's clock and frames going along.
    void run(int ticks) {
        for (int i = 0; i < ticks; ++i) {
            tick();
            sim.advance(10);
            dispatch();
        }
    }
    // Runs until the aircraft has an object in the simulator and is active,
    // at most the given number of ticks; its object identifier, or 0.
    std::uint32_t runUntilActive(std::uint32_t hexid, int maxTicks) {
        for (int i = 0; i < maxTicks; ++i) {
            const LiveAircraft* ac = live(hexid);
            if (ac != nullptr && ac->simState == SimState::active) return ac->objectid;
            run(1);
        }
        return 0;
    }
    // How often the log holds a text.
    std::size_t loggedCount(const std::string& text) const {
        const std::string log = dir.logText();
        std::size_t n = 0;
        for (auto at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) ++n;
        return n;
    }

    BuiltinSim sim{simConfig()};
    HANDLE handle = nullptr;
    DispatchContext context;
};

}  // namespace tfx::test
