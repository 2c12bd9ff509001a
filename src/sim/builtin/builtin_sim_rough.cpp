// The built-in simulator's habits, drawn from the scenario's seed: frames
// that come unevenly and now and then stall, creates answered late, out of
// order or never, and object ids handed out again.
#include <algorithm>
#include <cmath>

#include "sim/builtin/builtin_sim_internal.h"

namespace tfx::bsim {

namespace {

constexpr double kSecond_us = 1e6;

double lf_uniform(SimWorld& world) {
    return std::uniform_real_distribution<double>(0.0, 1.0)(world.random);
}

}  // namespace

std::int64_t gf_nextFrameTime_us(SimWorld& world) {
    const SimRoughness& r = world.scenario.rough;
    const double base_us = kSecond_us / world.config.frame_rate_hz;
    // A stall moves every later frame; the jitter moves one frame about its
    // place on the grid, so that the rate stays right on average.
    if (r.stall_every_s > 0 && lf_uniform(world) < base_us / (r.stall_every_s * kSecond_us))
        world.frameOrigin_us += r.stall_ms * 1000;
    double at_us = static_cast<double>(world.frameOrigin_us) +
                   static_cast<double>(world.frameCount + 1) * base_us;
    if (r.frame_jitter > 0) at_us += r.frame_jitter * base_us * (2.0 * lf_uniform(world) - 1.0);
    return std::max<std::int64_t>(world.now_us + 1, std::llround(at_us));
}

std::optional<std::int64_t> gf_createAnswerDelay_us(SimWorld& world) {
    const SimRoughness& r = world.scenario.rough;
    if (r.create_never_every > 0 && lf_uniform(world) * r.create_never_every < 1.0)
        return std::nullopt;
    const double span_ms = static_cast<double>(r.create_delay_max_ms - r.create_delay_min_ms);
    return std::llround((static_cast<double>(r.create_delay_min_ms) + span_ms * lf_uniform(world)) *
                        1000.0);
}

DWORD gf_takeObjectId(SimWorld& world) {
    if (world.scenario.rough.reuse_object_ids && !world.freedIds.empty()) {
        const DWORD id = world.freedIds.front();
        world.freedIds.pop_front();
        return id;
    }
    if (world.nextObjectId == world.config.user_object_id) ++world.nextObjectId;
    return world.nextObjectId++;
}

void gf_freeObjectId(SimWorld& world, DWORD objectId) {
    if (world.scenario.rough.reuse_object_ids) world.freedIds.push_back(objectId);
}

void gf_restartNumbering(SimWorld& world) {
    world.nextObjectId = world.config.first_ai_object_id;
    world.freedIds.clear();
}

}  // namespace tfx::bsim
