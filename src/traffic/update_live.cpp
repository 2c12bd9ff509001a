// Every tick, every live aircraft: a buffered one waits in the spawn gate, an
// active one steps along its stream and hands its position to the frame.
#include <algorithm>
#include <array>
#include <stdexcept>

#include <fmt/format.h>

#include "app/log.h"
#include "sim/object_id_text.h"
#include "sim/sim_queues.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/flight_motion.h"
#include "traffic/removal.h"
#include "traffic/traffic.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"

namespace tfx {

namespace {

void lf_nothing(LiveAircraft&) {}

void lf_updateActive(LiveAircraft& ac) {
    if (ac.stream.empty()) {
        gf_logLine(fmt::format(
            "{} stream empty ? {}, hexid:{:x}, objectid:{}, alt:{:.0f} ft, lalo:{:.5f},{:.5f}, "
            "TAS:{:.0f}",
            "updateLiveAc", gf_logName(ac), ac.hexid, gf_objectIdText(ac.objectid), ac.alt, ac.lat,
            ac.lon, ac.tas));
        removeAircraftFromSim(ac);
        return;
    }
    if (gf_simTick() >= ac.stream.front().time) {
        nextPosMain(ac);
        ac.vs = ac.nextVs;
        ac.tas = (!ac.stream.empty() && ac.stream.front().same != 0) ? 0 : ac.nextTas;
    }
    if (ac.simState != SimState::active) return;
    if (!ac.stream.empty() && ac.stream.front().same == 0) lf_stepAircraft(ac);
    if (ac.objectid != 0) {
        gf_framePut(ac.objectid, MotionBlock{ac.lat, ac.lon, ac.pitch, ac.bank, ac.heading, ac.alt,
                                             ac.vs, ac.tas});
    } else {
        gf_logLine(fmt::format("{} objectid=0? hexid: {:x},cs:{}, reg:{}, aimo:{} sz:{}",
                               "updateLiveAc", ac.hexid, ac.callsign, ac.regcode,
                               gf_aimoText(ac.aimo), ac.stream.size()));
        removeAircraftFromSim(ac);
    }
}

using StateHandler = void (*)(LiveAircraft&);

// What a tick does with a live record, by its SimState.
constexpr std::array<StateHandler, SIM_STATE_COUNT> SIM_STATE_HANDLERS = {
    lf_spawnGate,     // buffer
    lf_nothing,       // adding2sim
    lf_updateActive,  // active
    lf_nothing,       // liveryrespawn
    lf_nothing,       // removingfromsim
};

}  // namespace

bool updateLiveAc(LiveAircraft& ac) {
    try {
        const auto state = static_cast<std::size_t>(ac.simState);
        if (state < SIM_STATE_HANDLERS.size()) SIM_STATE_HANDLERS[state](ac);
    } catch (...) {
        // Context for the log; the record stays and the tick goes on.
        try {
            throw std::runtime_error(
                fmt::format("{}: {} {}, sz:{}, fs:{}, st:{}", "updateLiveAc",
                            lf_currentExceptionText(), gf_logName(ac), ac.stream.size(),
                            gf_flightStateName(ac.flightState), gf_simStateName(ac.simState)));
        } catch (...) {
            lf_trafficException("updateLiveAc");
        }
    }
    return ac.eraseNow != 0 || ac.dropQueued != 0;
}

void lf_sweepLiveTable() {
    for (auto& ac : liveAircraft) {
        if (ac.eraseNow == 0 && ac.dropQueued == 0) continue;
        try {
            lf_cleanupLiveAircraft(ac);
        } catch (...) {
            lf_trafficException("lf_cleanupLiveAircraft");
        }
    }
    std::erase_if(liveAircraft,
                  [](const LiveAircraft& ac) { return ac.eraseNow != 0 || ac.dropQueued != 0; });
}

void lf_sweepStaticTable() {
    staticErasePending = false;
    for (const auto& ac : staticAircraft) {
        if (ac.eraseNow != 0) lf_purgeAircraft(ac.hexid, ac.objectid);
    }
    std::erase_if(staticAircraft, [](const StaticAircraft& ac) { return ac.eraseNow != 0; });
}

void lf_updateAllLive() {
    bool anyErase = false;
    for (std::size_t i = 0; i < liveAircraft.size(); ++i) {
        if (updateLiveAc(liveAircraft[i])) anyErase = true;
    }
    if (anyErase) lf_sweepLiveTable();
    if (staticErasePending) lf_sweepStaticTable();
    gf_publishFrame();
}

}  // namespace tfx
