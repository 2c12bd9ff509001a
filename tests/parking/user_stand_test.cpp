// The stand under the user's aircraft, asked from other threads while the
// main thread replaces the stand list at each airport it loads.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "parking/user_stand.h"
#include "sim/sim_client.h"

namespace tfx {
namespace {

std::vector<Stand> lf_stands(const char* name, double lat) {
    Stand stand;
    stand.id = name;
    stand.latitude = lat;
    stand.longitude = 8.0;
    return {stand};
}

TEST(UserStand, ConcurrentReadersSeeAWholeListWhileItIsReplaced) {
    userOnGround = 1;
    // 11 m and 22 m north of the user: only the first is under the aircraft.
    const std::vector<Stand> near = lf_stands("N1", 50.0001), far = lf_stands("F1", 50.0002);
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::vector<std::thread> readers;
    for (int r = 0; r < 2; ++r)
        readers.emplace_back([&] {
            while (!stop.load()) {
                const auto stand = gf_closestStandToUser({50.0, 8.0});
                if (stand && *stand != "N1") ++wrong;
            }
        });
    for (int i = 0; i < 2000; ++i) gf_publishStandPositions(i % 2 == 0 ? near : far);
    stop = true;
    for (std::thread& t : readers) t.join();
    EXPECT_EQ(wrong.load(), 0);
    gf_publishStandPositions(near);
    EXPECT_EQ(gf_closestStandToUser({50.0, 8.0}), "N1");
    gf_publishStandPositions({});
    EXPECT_FALSE(gf_closestStandToUser({50.0, 8.0}).has_value());
    userOnGround = -1;
}

}  // namespace
}  // namespace tfx
