// The built-in simulator on its own thread, as the program runs it.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "sim/builtin/builtin_sim_client.h"
#include "support/temp_workdir.h"

using namespace tfx;
using namespace tfx::test;

TEST(BuiltinSimThread, FramesArriveOnTheRealClockAndDispatchOnTheCallersThread) {
    TempWorkdir dir;
    SimTestClient client;
    client.sim.startThread();
    client.sim.advance(1000);  // refused: the thread keeps the time
    EXPECT_NE(dir.logText().find("advance() while its own thread"), std::string::npos);

    client.open();
    ASSERT_EQ(SimConnect_SubscribeToSystemEvent(client.handle, TEST_EVENT_FRAME, "Frame"), S_OK);
    client.sim.loadFlight();
    const auto caller = std::this_thread::get_id();
    struct Seen {
        std::thread::id caller;
        int frames = 0;
        bool elsewhere = false;
    } seen{caller};
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(300);
    while (std::chrono::steady_clock::now() < until) {
        ASSERT_EQ(SimConnect_CallDispatch(
                      client.handle,
                      [](SIMCONNECT_RECV* r, DWORD, void* p) {
                          auto* s = static_cast<Seen*>(p);
                          if (r->dwID == SIMCONNECT_RECV_ID_EVENT_FRAME) ++s->frames;
                          s->elsewhere |= std::this_thread::get_id() != s->caller;
                      },
                      &seen),
                  S_OK);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    client.sim.stopThread();
    // 30 a second for 0.3 s; generous bounds for a busy machine.
    EXPECT_GE(seen.frames, 5);
    EXPECT_LE(seen.frames, 12);
    EXPECT_FALSE(seen.elsewhere);
    EXPECT_GE(client.sim.now_ms(), 200) << "the clock follows real time";
}
