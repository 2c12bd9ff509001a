// A park airport for parking tests: the bundled reference database, generic
// liveries of the airport's models, an airport file in the scan folder, and a
// simulator stand-in that answers creates and removals late and in any order.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <random>
#include <string>
#include <vector>

#include "airports/airport_test_support.h"
#include "airports/loaded_airport.h"
#include "app/parameters.h"
#include "feeds/seen_sets.h"
#include "gui/gui.h"
#include "parking/airport_context.h"
#include "parking/park_airport.h"
#include "parking/parking_applier.h"
#include "parking/parking_state.h"
#include "parking/parking_update.h"
#include "sim/sim_client.h"
#include "support/sealed_dbase.h"
#include "traffic/traffic_fixture.h"

namespace tfx::test {

class ParkingTest : public TrafficTest {
protected:
    void SetUp() override {
        TrafficTest::SetUp();
        gf_clearReferenceData();
        sealDbase(dir, bundledDbaseXml());
        ASSERT_TRUE(gf_readDbase());
        publishModelLiveries({"A320", "A21N", "A332", "A333", "A343", "B712", "B734", "B737",
                              "B738", "B739", "B744", "B752", "B753", "B763", "B764", "B77L",
                              "B77W", "B788", "B789", "C172", "MD11", "P28A"});
        // The road of the application, with no application: nothing is sent.
        runChoice = std::make_shared<const RunChoice>(RunChoice{1, false});
        params.PSX_SERVER_HERE.current = false;
        userOnGround = 0;
        gf_clearSeen(rtAppSeen);
    }
    void TearDown() override {
        lf_leaveAirport();
        userOnGround = -1;
        TrafficTest::TearDown();
    }

    // The airport's file where the scan puts add-on airports, and the
    // airport as the park airport.
    void parkAt(const std::string& icao, const std::string& fileText, double lat, double lon) {
        std::filesystem::create_directories(dir.path() / "airports" / "my_simaddon");
        dir.write("airports/my_simaddon/" + icao + ".xml", fileText);
        Airport airport;
        airport.icao = IcaoCode(icao);
        airport.latitude = lat;
        airport.longitude = lon;
        gf_setParkAirport(airport);
    }
    // Settings of the airport, as a learned file beside it carries them.
    void learnedSettings(const std::string& icao, const std::string& parameters) {
        std::filesystem::create_directories(dir.path() / "airports" / "learned" / "simaddon");
        dir.write("airports/learned/simaddon/" + icao + ".xml",
                  "<?xml version=\"1.0\"?><root><meta><info name=\"copyright\" value=\"c\"/>"
                  "</meta><parameters>" +
                      parameters + "</parameters></root>");
    }
    void userAt(double lat, double lon, bool onGround, double agl_ft = 0) {
        UserData user;
        user.lat = lat;
        user.lon = lon;
        user.agl = agl_ft;
        gf_storeUserData(user);
        userAircraft = user;
        userOnGround = onGround ? 1 : 0;
    }

    // The simulator's side: creates and removals are answered a few ticks
    // later, in any order; with neverAnswerOneIn set, some creates never.
    void answerSim() {
        SimCommands taken = takeCommands();
        for (const CreateRequest& c : taken.creates) {
            if (neverAnswerOneIn > 0 && random() % neverAnswerOneIn == 0) {
                neverAnswered.push_back({c.hexid, gf_simTick()});
                continue;
            }
            answers.push_back({nextObject++, c.hexid, static_cast<std::int32_t>(random() % 30),
                               SIM_STATIC_OBJECT_ID, 0, 0});
        }
        for (const std::uint32_t objectid : taken.removes)
            answers.push_back(
                {objectid, 0, static_cast<std::int32_t>(random() % 30), SIM_OBJECT_REMOVED, 0, 0});
        std::shuffle(answers.begin(), answers.end(), random);
        for (auto it = answers.begin(); it != answers.end();) {
            if (it->count-- > 0) {
                ++it;
                continue;
            }
            gf_postSimMessage({it->objectid, it->hexid, 0, it->kind, 0, 0});
            it = answers.erase(it);
        }
    }
    void run(int ticks) {
        for (int i = 0; i < ticks; ++i) {
            tick();
            answerSim();
        }
    }
    static std::vector<const StaticAircraft*> activeStatics() {
        std::vector<const StaticAircraft*> out;
        for (const StaticAircraft& ac : staticAircraft)
            if (ac.simState == SimState::active) out.push_back(&ac);
        return out;
    }
    // What the feed heard moving since the collection began.
    static void feedHeard(const std::vector<std::string>& callsigns) {
        BatchSeen batch;
        std::uint32_t hexid = 0x400000;
        for (const std::string& cs : callsigns) gf_addSeen(batch, {cs, hexid++});
        gf_mergeSeen(rtAppSeen, batch);
    }

    std::mt19937 random{19};
    std::uint32_t neverAnswerOneIn = 0;
    struct Unanswered {
        std::uint32_t hexid;
        std::int32_t tick;
    };
    std::vector<Unanswered> neverAnswered;
    std::deque<SimMessage> answers;
    std::uint32_t nextObject = 100;
};

// One stand of a handmade airport file.
inline std::string standXml(const std::string& id, double lat, double lon,
                            const std::string& opts = "", const char* type = "GATE_HEAVY",
                            double radius_m = 30) {
    return "<parkpos id=\"" + id + "\" typestr=\"" + type + "\" latitude=\"" + std::to_string(lat) +
           "\" longitude=\"" + std::to_string(lon) + "\" heading=\"90.0\" radius=\"" +
           std::to_string(radius_m) + "\">" + opts + "</parkpos>\n";
}

inline std::string optXml(const std::string& reg, const std::string& airline,
                          const std::string& type, int day, const std::string& hh,
                          const std::string& cs) {
    return "<opt reg=\"" + reg + "\" airl=\"" + airline + "\" type=\"" + type + "\" day=\"" +
           std::to_string(day) + "\" hh=\"" + hh + "\" cs=\"" + cs + "\"/>";
}

}  // namespace tfx::test
