#include "sim/user_data.h"

#include <mutex>

#include "sim/sim_ids.h"
#include "sim/sim_queues.h"

namespace tfx {

namespace {
std::mutex userDataLock;
UserData userData;
}  // namespace

UserData gf_userData() {
    std::lock_guard lock(userDataLock);
    return userData;
}

void gf_storeUserData(const UserData& data) {
    std::lock_guard lock(userDataLock);
    userData = data;
    if (userData.alt < 0) userData.alt = 0;
}

UserData gf_requestUserData() {
    gf_requestSimData(REQUEST_USER_POSITION, 0);
    return gf_userData();
}

}  // namespace tfx
