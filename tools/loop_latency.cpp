// Runs the main loop's 10 ms grid for a while with a loaded tick and a
// once-a-second beat from another thread (as the simulator gives it), and
// reports how late each tick started and whether the grid drifted.
// Usage: loop_latency [seconds=60] [tick_load_us=1000]
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <thread>
#include <vector>

#include <fmt/format.h>

#include "app/tick_grid.h"

namespace {

using Clock = std::chrono::steady_clock;

// Busy work standing in for the traffic tick.
void lf_spin(std::chrono::microseconds load) {
    const auto until = Clock::now() + load;
    volatile double x = 1.0;
    while (Clock::now() < until) x = std::sqrt(x + 1.0);
}

double lf_percentile(std::vector<double> v, double p) {
    if (v.empty()) return 0;
    const auto k = static_cast<std::size_t>(p * static_cast<double>(v.size() - 1));
    std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(k), v.end());
    return v[k];
}

}  // namespace

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 60;
    const auto load = std::chrono::microseconds(argc > 2 ? std::atoi(argv[2]) : 1000);

    std::atomic<bool> beat{false};
    std::atomic<bool> done{false};
    std::thread simulator([&] {
        auto next = Clock::now() + std::chrono::seconds(1);
        while (!done) {
            std::this_thread::sleep_until(next);
            next += std::chrono::seconds(1);
            beat = true;
        }
    });

    std::vector<double> late_ms;
    late_ms.reserve(static_cast<std::size_t>(seconds) * 110);
    const auto start = Clock::now();
    const auto end = start + std::chrono::seconds(seconds);
    long ticks = 0;
    tfx::SteadyLoopClock clock;
    tfx::gf_runTickGrid(
        clock,
        [&] {
            ++ticks;
            beat.exchange(false);  // the tick takes the beat
            lf_spin(load);
            return Clock::now() < end;
        },
        [&] { return beat.load(); },
        [&](auto due, auto now) {
            late_ms.push_back(std::chrono::duration<double, std::milli>(now - due).count());
        });
    const double elapsed_s = std::chrono::duration<double>(Clock::now() - start).count();
    done = true;
    simulator.join();

    const double expected = elapsed_s / 0.010;
    fmt::print("ticks {} in {:.2f} s (grid expects {:.0f}, drift {:+.2f}%)\n", ticks, elapsed_s,
               expected, 100.0 * (static_cast<double>(ticks) - expected) / expected);
    fmt::print("tick start lateness: median {:.3f} ms, p99 {:.3f} ms, max {:.3f} ms\n",
               lf_percentile(late_ms, 0.5), lf_percentile(late_ms, 0.99),
               *std::max_element(late_ms.begin(), late_ms.end()));
    return 0;
}
