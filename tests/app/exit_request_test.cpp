#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "app/exit_request.h"
#include "app/run_flags.h"

using namespace tfx;

namespace {
struct CleanSlot {
    CleanSlot() { reset(); }
    ~CleanSlot() { reset(); }
    static void reset() {
        gf_clearExitRequest();
        userClosing = 0;
        gf_onUserClosing = nullptr;
    }
};
}  // namespace

TEST(ExitRequest, FirstRequestWinsLaterOnesAreDropped) {
    CleanSlot clean;
    EXPECT_TRUE(gf_keepRunning());
    EXPECT_FALSE(gf_exitRequest());
    gf_requestExit(ExitReason::NewFlight, 60);   // a flight load
    gf_requestExit(ExitReason::NewSettings, 1);  // then new settings
    ASSERT_TRUE(gf_exitRequest());
    EXPECT_EQ(gf_exitRequest()->reason, ExitReason::NewFlight);
    EXPECT_EQ(gf_exitRequest()->seconds, 60);
    EXPECT_FALSE(gf_keepRunning());
    gf_clearExitRequest();
    EXPECT_TRUE(gf_keepRunning());
}

TEST(ExitRequest, UserCloseMarksTheProcessEvenWhenNotFirst) {
    CleanSlot clean;
    int wakeups = 0;
    gf_onUserClosing = [&] { ++wakeups; };
    gf_requestExit(ExitReason::NewFlight, 60);
    gf_requestExit(4, 1);
    EXPECT_EQ(gf_exitRequest()->reason, ExitReason::NewFlight);
    EXPECT_EQ(userClosing.load(), 1);
    EXPECT_EQ(wakeups, 1);
    gf_clearExitRequest();
    EXPECT_FALSE(gf_keepRunning()) << "a user's close outlives the slot";
}

TEST(ExitRequest, RacingRequestsLeaveExactlyOneWinner) {
    CleanSlot clean;
    std::vector<std::thread> threads;
    for (int r = 1; r <= 8; ++r) threads.emplace_back([r] { gf_requestExit(r, r * 10); });
    for (auto& t : threads) t.join();
    const auto winner = gf_exitRequest();
    ASSERT_TRUE(winner);
    EXPECT_EQ(winner->seconds, static_cast<int>(winner->reason) * 10)
        << "reason and seconds stay paired";
}
