// The built-in simulator's life and clock: running and quitting, flights,
// the frame step, its own thread, and the views tests take of it.
#include <chrono>
#include <cmath>

#include <fmt/format.h>

#include "app/log.h"
#include "sim/builtin/builtin_sim.h"
#include "sim/builtin/builtin_sim_internal.h"
#include "sim/builtin/builtin_sim_terrain.h"

namespace tfx {

namespace {

using bsim::SystemEvent;

constexpr std::int64_t kSecond_us = 1'000'000;

BuiltinSimConfig lf_checked(BuiltinSimConfig config) {
    if (!(config.frame_rate_hz >= 1 && config.frame_rate_hz <= 1000)) {
        gf_logError(fmt::format("Built-in simulator: frame rate {} is not 1 to 1000, 30 taken",
                                config.frame_rate_hz));
        config.frame_rate_hz = 30;
    }
    if (config.first_ai_object_id <= config.user_object_id) {
        config.first_ai_object_id = config.user_object_id + 1;
    }
    return config;
}

// "Sim" and its two one-way companions.
void lf_notifySim(bsim::SimWorld& world, bool simulating) {
    bsim::gf_notify(world, SystemEvent::Sim, simulating ? 1 : 0);
    bsim::gf_notify(world, simulating ? SystemEvent::SimStart : SystemEvent::SimStop, 0);
}

void lf_run(bsim::SimWorld& world) {
    world.running = true;
    world.frameOrigin_us = world.lastFrame_us = world.now_us;
    world.frameCount = 0;
    world.nextFrame_us = bsim::gf_nextFrameTime_us(world);
    world.nextSecond_us = world.now_us + kSecond_us;
}

// The simulator process ends. A crash says nothing: its connections just
// break, with whatever they had not dispatched lost.
void lf_goAway(bsim::SimWorld& world, bool crash) {
    for (auto& [id, connection] : world.connections) {
        if (connection.dead) continue;
        if (crash) {
            connection.pending.clear();
        } else {
            bsim::gf_newRecordOf<SIMCONNECT_RECV_QUIT>(world, connection, SIMCONNECT_RECV_ID_QUIT);
        }
        connection.dead = true;
    }
    world.running = world.flightLoaded = world.paused = false;
    world.creates.clear();
    bsim::gf_removeAiObjects(world, 0);
    bsim::gf_restartNumbering(world);
    bsim::gf_placeUserAircraft(world);
}

void lf_loadFlight(bsim::SimWorld& world) {
    if (world.flightLoaded && !world.paused) lf_notifySim(world, false);
    bsim::gf_removeAiObjects(world, 0);
    world.flightLoaded = true;
    world.paused = false;
    world.flightTime_us = 0;
    ++world.flightCount;
    bsim::gf_resetUserAircraft(world);
    bsim::gf_notifyFlightLoaded(world,
                                fmt::format("flights\\zept\\builtin{}.FLT", world.flightCount));
    lf_notifySim(world, true);
}

// The scenario's restart: the simulator goes at a flight time and comes
// back with the same flight a little later.
void lf_scheduledRestart(bsim::SimWorld& world) {
    const SimRoughness& r = world.scenario.rough;
    if (world.restartDone || !r.restart_at_s || !world.flightLoaded ||
        static_cast<double>(world.flightTime_us) < *r.restart_at_s * kSecond_us)
        return;
    world.restartDone = true;
    gf_logLine(fmt::format("Built-in simulator: {} at {} s of flight time",
                           r.restart_crash ? "crashes" : "quits", *r.restart_at_s));
    lf_goAway(world, r.restart_crash);
    world.comeBack_us = world.now_us + std::llround(r.restart_down_s * kSecond_us);
}

}  // namespace

BuiltinSim::BuiltinSim(BuiltinSimConfig config) {
    world_.config = lf_checked(std::move(config));
    world_.nextObjectId = world_.config.first_ai_object_id;
    world_.random.seed(world_.scenario.rough.seed);
    world_.recorder.limit = world_.config.max_recorded_positions;
    bsim::gf_resetUserAircraft(world_);
}

BuiltinSim::~BuiltinSim() {
    stopThread();
    bsim::gf_closeRecordingFile(world_.recorder);
    if (gf_simConnectApi() == this) gf_setSimConnectApi(nullptr);
}

bool BuiltinSim::loadScenario(const std::filesystem::path& path) {
    auto scenario = gf_readSimScenario(path);
    if (!scenario) return false;
    setScenario(std::move(*scenario));
    return true;
}

void BuiltinSim::setScenario(Scenario scenario) {
    std::lock_guard lock(mutex_);
    if (!scenario.installed.empty()) world_.knownTitles = scenario.installed;
    world_.scenario = std::move(scenario);
    world_.random.seed(world_.scenario.rough.seed);
    world_.restartDone = false;
    bsim::gf_resetUserAircraft(world_);
}

void BuiltinSim::setRoughness(const SimRoughness& rough) {
    std::lock_guard lock(mutex_);
    world_.scenario.rough = rough;
    world_.random.seed(rough.seed);
    world_.restartDone = false;
}

void BuiltinSim::setKnownTitles(std::vector<KnownTitle> titles) {
    std::lock_guard lock(mutex_);
    world_.knownTitles = std::move(titles);
}

void BuiltinSim::run() {
    std::lock_guard lock(mutex_);
    if (world_.running) return;
    world_.comeBack_us = -1;
    lf_run(world_);
    wake_.notify_all();
}

void BuiltinSim::quit() {
    std::lock_guard lock(mutex_);
    if (!world_.running) return;
    lf_goAway(world_, false);
}

void BuiltinSim::crash() {
    std::lock_guard lock(mutex_);
    if (!world_.running) return;
    lf_goAway(world_, true);
}

void BuiltinSim::loadFlight() {
    std::lock_guard lock(mutex_);
    if (!world_.running) {
        gf_logError("Built-in simulator: no flight can load while the simulator is not running");
        return;
    }
    lf_loadFlight(world_);
}

void BuiltinSim::pause(bool paused) {
    std::lock_guard lock(mutex_);
    if (!world_.flightLoaded || world_.paused == paused) return;
    world_.paused = paused;
    bsim::gf_notify(world_, SystemEvent::Pause, paused ? 1 : 0);
    lf_notifySim(world_, !paused);
}

void BuiltinSim::endFlight() {
    std::lock_guard lock(mutex_);
    if (!world_.flightLoaded) return;
    if (!world_.paused) lf_notifySim(world_, false);
    world_.flightLoaded = world_.paused = false;
    bsim::gf_removeAiObjects(world_, 0);
    bsim::gf_placeUserAircraft(world_);
}

void BuiltinSim::teleportUser(double lat_deg, double lon_deg, std::optional<double> alt_ft) {
    if (!(std::abs(lat_deg) <= 90 && std::abs(lon_deg) <= 180) ||
        (alt_ft && !std::isfinite(*alt_ft))) {
        gf_logError(fmt::format("Built-in simulator: no teleport to {}, {}", lat_deg, lon_deg));
        return;
    }
    std::lock_guard lock(mutex_);
    world_.scenario.user.path = {PathPoint{0, lat_deg, lon_deg, alt_ft}};
    world_.scenario.user.loop = false;
    bsim::gf_placeUserAircraft(world_);
}

void BuiltinSim::stepTo(std::int64_t target_us) {
    if (target_us < world_.now_us) return;
    for (;;) {
        if (world_.running && world_.nextFrame_us <= target_us) {
            world_.now_us = world_.nextFrame_us;
            runFrame();
            ++world_.frameCount;
            if (world_.running) world_.nextFrame_us = bsim::gf_nextFrameTime_us(world_);
        } else if (!world_.running && world_.comeBack_us >= 0 && world_.comeBack_us <= target_us) {
            world_.now_us = world_.comeBack_us;
            world_.comeBack_us = -1;
            lf_run(world_);
            lf_loadFlight(world_);
        } else {
            break;
        }
    }
    world_.now_us = target_us;
}

void BuiltinSim::runFrame() {
    const std::int64_t dt_us = world_.now_us - world_.lastFrame_us;
    world_.lastFrame_us = world_.now_us;
    if (world_.flightLoaded && !world_.paused) {
        world_.flightTime_us += dt_us;
        bsim::gf_placeUserAircraft(world_);
        bsim::gf_steerAiObjects(world_, static_cast<double>(dt_us) / kSecond_us);
        lf_scheduledRestart(world_);
        if (!world_.running) return;
    }
    bsim::gf_completeDueCreates(world_);
    const bool secondBoundary = world_.now_us >= world_.nextSecond_us;
    if (secondBoundary) {
        while (world_.nextSecond_us <= world_.now_us) world_.nextSecond_us += kSecond_us;
        bsim::gf_notify(world_, SystemEvent::OneSecond, 0);
        if (world_.flightLoaded)
            bsim::gf_recordFileLine(world_.recorder, RecordKind::user,
                                    bsim::gf_recordedNow(world_, bsim::gf_userAircraft(world_)));
    }
    bsim::gf_servePeriodicRequests(world_, secondBoundary);
    bsim::gf_notifyFrame(world_);
}

void BuiltinSim::startThread() {
    std::lock_guard lock(mutex_);
    if (thread_.joinable()) return;
    thread_ = std::jthread([this](std::stop_token stop) { threadBody(stop); });
}

void BuiltinSim::stopThread() {
    std::jthread thread;
    {
        std::lock_guard lock(mutex_);
        thread = std::move(thread_);
    }
    if (!thread.joinable()) return;
    thread.request_stop();
    thread.join();
}

void BuiltinSim::threadBody(std::stop_token stop) {
    using Clock = std::chrono::steady_clock;
    std::unique_lock lock(mutex_);
    const auto realOrigin = Clock::now();
    const std::int64_t simOrigin = world_.now_us;
    while (!stop.stop_requested()) {
        const std::int64_t target_us =
            simOrigin +
            std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - realOrigin)
                .count();
        // After a stall (a debugger, a suspended machine) the lost frames are
        // skipped rather than fired in a burst.
        if (world_.running && target_us - world_.nextFrame_us > kSecond_us) {
            world_.frameOrigin_us = world_.lastFrame_us = target_us;
            world_.frameCount = 0;
            world_.nextFrame_us = target_us;
        }
        stepTo(target_us);
        const std::int64_t wake_us = world_.running ? world_.nextFrame_us : world_.now_us + 10000;
        wake_.wait_until(lock, stop, realOrigin + std::chrono::microseconds(wake_us - simOrigin),
                         [] { return false; });
    }
}

void BuiltinSim::advance(std::int64_t ms) {
    std::lock_guard lock(mutex_);
    if (thread_.joinable()) {
        gf_logError("Built-in simulator: advance() while its own thread keeps the time, ignored");
        return;
    }
    if (ms < 0) {
        gf_logError(fmt::format("Built-in simulator: the clock can't go back {} ms", -ms));
        return;
    }
    stepTo(world_.now_us + ms * 1000);
}

std::int64_t BuiltinSim::now_ms() const {
    std::lock_guard lock(mutex_);
    return world_.now_us / 1000;
}

std::vector<RecordedPosition> BuiltinSim::recordedPositions() const {
    std::lock_guard lock(mutex_);
    return world_.recorder.positions;
}

std::vector<RecordedPosition> BuiltinSim::recordedPositions(std::uint32_t objectId) const {
    std::lock_guard lock(mutex_);
    return gf_positionsOf(world_.recorder.positions, objectId);
}

bool BuiltinSim::writeRecordingCsv(const std::filesystem::path& path) const {
    std::lock_guard lock(mutex_);
    return gf_writePositionsCsv(world_.recorder.positions, path);
}

bool BuiltinSim::startRecordingFile(const std::filesystem::path& path) {
    std::lock_guard lock(mutex_);
    return bsim::gf_openRecordingFile(world_.recorder, path);
}

bool BuiltinSim::endRecordingFile() {
    std::lock_guard lock(mutex_);
    return bsim::gf_closeRecordingFile(world_.recorder);
}

void BuiltinSim::setRecordingLimit(std::size_t positions) {
    std::lock_guard lock(mutex_);
    world_.recorder.limit = positions;
}

std::uint32_t BuiltinSim::eventCount(std::uint32_t objectId, std::string_view simEvent) const {
    std::lock_guard lock(mutex_);
    const auto object = world_.recorder.eventCounts.find(objectId);
    if (object == world_.recorder.eventCounts.end()) return 0;
    const auto event = object->second.find(simEvent);
    return event == object->second.end() ? 0 : event->second;
}

std::optional<SimObjectView> BuiltinSim::object(std::uint32_t objectId) const {
    std::lock_guard lock(mutex_);
    const auto it = world_.objects.find(objectId == 0 ? world_.config.user_object_id : objectId);
    if (it == world_.objects.end()) return std::nullopt;
    const bsim::SimObject& o = it->second;
    const double ground_ft = bsim::gf_groundAltitudeFt(world_.scenario, o.lat_deg, o.lon_deg);
    return SimObjectView{
        o.objectId,        o.title,          o.atcId,
        o.lat_deg,         o.lon_deg,        o.alt_ft,
        o.heading_deg,     ground_ft,        o.alt_ft - ground_ft <= o.staticCg_ft + 1.0,
        o.released,        o.freezeLatLon,   o.freezeAltitude,
        o.freezeAttitude,  o.lightsMask,     o.gearDown,
        o.flaps_pct,       o.spoilers_pct,   o.throttle_pct[0],
        o.throttle_pct[1], o.enginesRunning, o.flightPlan,
        o.pitch_deg,       o.bank_deg};
}

std::vector<std::uint32_t> BuiltinSim::aiObjectIds() const {
    std::lock_guard lock(mutex_);
    std::vector<std::uint32_t> ids;
    for (const auto& [id, o] : world_.objects) {
        if (!o.isUser) ids.push_back(id);
    }
    return ids;
}

std::size_t BuiltinSim::openConnections() const {
    std::lock_guard lock(mutex_);
    return world_.connections.size();
}

bool BuiltinSim::isRunning() const {
    std::lock_guard lock(mutex_);
    return world_.running;
}

double BuiltinSim::groundAltitudeFt(double lat_deg, double lon_deg) const {
    std::lock_guard lock(mutex_);
    return bsim::gf_groundAltitudeFt(world_.scenario, lat_deg, lon_deg);
}

}  // namespace tfx
