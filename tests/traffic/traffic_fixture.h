// A clean traffic engine for each test: tables and queues empty, the clock at
// a known tick, the flight running, default options, no park airport.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "app/options.h"
#include "app/run_state.h"
#include "liveries/reference_db.h"
#include "parking/park_airport.h"
#include "sim/sim_queues.h"
#include "sim/user_data.h"
#include "support/installed_liveries.h"
#include "support/temp_workdir.h"
#include "traffic/clock.h"
#include "traffic/traffic.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"
#include "traffic/user_aircraft.h"

namespace tfx::test {

class TrafficTest : public ::testing::Test {
protected:
    static constexpr std::int32_t START_TICK = 100000;

    void SetUp() override {
        gf_clearReferenceData();
        // Index 0 is the empty code, as after a read of the database.
        gf_modelIndex("");
        gf_airlineIndex("");
        publishModelLiveries();
        gf_buildOptions();
        gf_clearPending();
        gf_stopTraffic();
        gf_initTraffic();
        gf_clearSimBuffers();
        simTick = START_TICK;
        trafficOpen = 1;
        SimRunState = 2;
        runChoice = std::make_shared<const RunChoice>();
        gf_storeUserData({});
        userAircraft = {};
    }
    void TearDown() override {
        gf_stopTraffic();
        gf_clearSimBuffers();
        trafficOpen = 0;
        SimRunState = 0;
        gf_publishLiveryIndex(nullptr);
        gf_clearReferenceData();
    }

    // An airborne report; the model's generic livery is installed.
    static TrafficMessage airborne(std::uint32_t hexid, const std::string& callsign, double time_s,
                                   double lat, double alt_ft = 5000, const char* model = "A320") {
        TrafficMessage m;
        m.hexid = hexid;
        m.callsign = callsign;
        m.time = time_s;
        m.aimo.model = gf_modelIndex(model);
        m.point.lat = lat;
        m.point.lon = 8.0;
        m.point.alt = alt_ft;
        m.point.speed = 250;
        m.point.tas = 260;
        m.point.track = 0;
        m.point.inAir = 1;
        return m;
    }
    static TrafficMessage onGround(std::uint32_t hexid, const std::string& callsign, double time_s,
                                   double lat, double speed_kt = 15) {
        TrafficMessage m = airborne(hexid, callsign, time_s, lat, 0);
        m.point.inAir = 0;
        m.point.speed = speed_kt;
        m.point.tas = speed_kt;
        return m;
    }

    // Hands a message to the tick's intake, due at the given tick.
    static void deliver(TrafficMessage m, std::int32_t dueTick) {
        m.point.time = dueTick;
        lf_handleTrafficMessage(m);
    }
    // n points 5 seconds apart, flying north, the first due now.
    static void deliverTrack(std::uint32_t hexid, const std::string& callsign, int n,
                             double alt_ft = 5000, const char* model = "A320") {
        for (int i = 0; i < n; ++i) {
            deliver(airborne(hexid, callsign, 1000.0 + 5 * i, 50.0 + 0.01 * i, alt_ft, model),
                    gf_simTick() + 500 * i);
        }
    }

    static void tick(int n = 1) {
        for (int i = 0; i < n; ++i) gf_trafficTick();
    }
    // Ticks up to and including the next tick that runs at a multiple of
    // every (creates and removals are paced on the clock).
    static void tickUntilMultipleOf(int every) {
        for (;;) {
            const bool paced = gf_simTick() % every == 0;
            tick();
            if (paced) return;
        }
    }

    static LiveAircraft* live(std::uint32_t hexid) { return gf_findLive(hexid); }

    // What waits for the simulator thread, taken away as it would take it.
    static SimCommands takeCommands() {
        SimCommands taken;
        gf_takeSimCommands(taken);
        return taken;
    }
    // The simulator answers a create with an object identifier.
    static void assignObject(std::uint32_t hexid, std::uint32_t objectid) {
        gf_postSimMessage({objectid, hexid, 0, SIM_LIVE_OBJECT_ID, 0, 0});
    }
    static void reportRemoved(std::uint32_t objectid) {
        gf_postSimMessage({objectid, 0, 0, SIM_OBJECT_REMOVED, 0, 0});
    }
    // A spawned aircraft made active: its create is taken, its object
    // assigned and the two seconds of set-up waited out.
    void makeActive(std::uint32_t hexid, std::uint32_t objectid) {
        tickUntilMultipleOf(20);
        takeCommands();
        assignObject(hexid, objectid);
        tick(200);
        ASSERT_NE(live(hexid), nullptr);
        ASSERT_EQ(live(hexid)->simState, SimState::active);
    }

    static void setOptions(const std::function<void(Options&)>& change) {
        gf_publishOptions(change);
    }
    bool logged(const std::string& text) const {
        return dir.logText().find(text) != std::string::npos;
    }

    TempWorkdir dir;
};

}  // namespace tfx::test
