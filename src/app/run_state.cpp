#include "app/run_state.h"

namespace tfx {

std::atomic<std::uint8_t> SimRunState{0};
std::atomic<std::uint8_t> trafficOpen{0};
std::atomic<std::shared_ptr<const RunChoice>> runChoice{std::make_shared<const RunChoice>()};

bool gf_isMSFS2020() {
    return runChoice.load()->simulator == 1;
}

bool gf_isRTDirect() {
    return runChoice.load()->rtDirect;
}

}  // namespace tfx
