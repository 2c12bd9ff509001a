// Stand-in for the simulator thread until the simulator link exists: it
// reports a running flight at once, parks the user aircraft at Oxford
// Kidlington and gives the once-a-second beat, so that a session can start,
// run its main loop and close down.
#include <chrono>
#include <thread>

#include "app/exit_request.h"
#include "app/run_flags.h"
#include "app/run_state.h"
#include "sim/sim_client.h"
#include "sim/user_data.h"

namespace tfx {

std::atomic<std::int8_t> userOnGround{-1};

void gf_simClientThread(std::stop_token stop) {
    UserData user;
    user.lat = 51.8369;
    user.lon = -1.3200;
    user.alt = 270;
    user.indicatedAlt = 270;
    gf_storeUserData(user);
    userOnGround = 1;
    SimRunState = 2;
    auto nextBeat = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    while (!stop.stop_requested() && gf_keepRunning()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        if (std::chrono::steady_clock::now() >= nextBeat) {
            nextBeat += std::chrono::seconds(1);
            secondBeat = 1;
        }
    }
    SimRunState = 0;
}

}  // namespace tfx
