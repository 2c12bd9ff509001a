#include "app/run_flags.h"

namespace tfx {

std::atomic<std::uint8_t> restartPending{0};
std::atomic<std::uint8_t> userClosing{0};
std::atomic<std::uint8_t> inStartup{0};
std::atomic<std::uint8_t> flightPaused{0};
std::atomic<std::uint8_t> secondBeat{0};
std::atomic<std::uint8_t> commandLineJob{0};
std::atomic<int> processExitCode{0};
std::function<void()> gf_onUserClosing;

}  // namespace tfx
