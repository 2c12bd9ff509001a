// Stand claims on a small apron: which stands an aircraft fits, who yields a
// stand to whom, what an arrival that went wrong does, and static aircraft
// that make way for a live one or turn out to be it.
#include <cmath>
#include <string>
#include <vector>

#include "airports/loaded_airport.h"
#include "parking/park_airport.h"
#include "parking/user_stand.h"
#include "sim/sim_client.h"
#include "traffic/stand_claims.h"
#include "traffic/units.h"
#include "traffic_fixture.h"

namespace tfx::test {

namespace {

constexpr double APRON_LAT = 21.33, APRON_LON = -157.92;
constexpr double M_PER_DEG_LAT = 111132.95;

double lf_nm(double m) {
    return m * NM_PER_M;
}

// A stand north_m metres north of the apron's reference point, heading east.
Stand lf_stand(std::uint32_t number, std::uint32_t type, double radius_m, double north_m,
               bool heli = false) {
    Stand s;
    s.number = number;
    s.id = "S" + std::to_string(number);
    s.type = type;
    s.radius = lf_nm(radius_m);
    s.heli = heli;
    s.latitude = APRON_LAT + north_m / M_PER_DEG_LAT;
    s.longitude = APRON_LON;
    s.heading = PI / 2;
    return s;
}

LatLon lf_north(double m) {
    return {APRON_LAT + m / M_PER_DEG_LAT, APRON_LON};
}

class StandClaimsTest : public TrafficTest {
protected:
    void SetUp() override {
        TrafficTest::SetUp();
        parkAirport.icao = 0x50484e4c;  // PHNL
        parkAirport.lat = APRON_LAT;
        parkAirport.lon = APRON_LON;
    }
    static std::vector<Stand>& stands() { return loadedAirport.file.stands; }

    // An active live aircraft standing at stand sid.
    static LiveAircraft& occupant(std::uint32_t hexid, const std::string& callsign,
                                  std::int32_t sid, FlightState state, bool stillReported) {
        LiveAircraft ac;
        ac.hexid = hexid;
        ac.objectid = hexid + 1000;
        ac.callsign = callsign;
        ac.sid = sid;
        ac.simState = SimState::active;
        ac.flightState = state;
        ac.atStandSeen = stillReported ? 1 : 0;
        ac.lastMessageTime = 1000;
        ac.clearance = lf_nm(20);
        StreamPoint p;
        p.same = 1;
        p.time = gf_simTick() + 60480000;  // parked: its next point is a week away
        ac.stream.push_back(p);
        liveAircraft.push_back(ac);
        return liveAircraft.back();
    }
    // A static aircraft at stand sid; a queued one waits in the create queue.
    static void staticAt(std::uint32_t hexid, const std::string& callsign, std::int32_t sid,
                         bool queued, const std::string& regcode = "") {
        StaticAircraft st;
        st.hexid = hexid;
        st.callsign = callsign;
        st.regcode = regcode;
        st.sid = sid;
        st.clearance = lf_nm(20);
        if (queued) {
            st.simState = SimState::adding2sim;
            CreateRequest r;
            r.callsign = callsign;
            r.hexid = hexid;
            staticCreates.push_back(r);
        } else {
            st.simState = SimState::active;
            st.objectid = hexid + 2000;
        }
        staticAircraft.push_back(st);
    }
    // A few reports of an aircraft standing still at a place, the first due
    // now (a feed repeats a standing aircraft every 20 s or so).
    static void standingAt(std::uint32_t hexid, const std::string& callsign, LatLon at) {
        for (int i = 0; i < 3; ++i) {
            TrafficMessage m = onGround(hexid, callsign, 1000.0 + 20 * i, at.lat, 0);
            m.point.lon = at.lon + (i % 2) * 1e-5;  // a metre of noise
            deliver(m, gf_simTick() + 2000 * i);
        }
    }
};

}  // namespace

TEST_F(StandClaimsTest, AStandTakesTheCategoriesItsTypeNamesAndNoAircraftTooWideForIt) {
    struct Case {
        std::uint32_t type;
        double radius_m, halfSpan_m;
        bool heli;
        AircraftCategory category;
        bool fits;
    };
    using C = AircraftCategory;
    const Case cases[] = {
        // No aircraft overhangs a stand by more than 5.4 m, whatever its type.
        {8, 24, 30, false, C::Light, false},
        {8, 24, 29, false, C::Bizjet, true},
        // A small gate takes a Large only when it doesn't overhang at all.
        {8, 24, 25, false, C::Large, false},
        {8, 24, 24, false, C::Large, true},
        {9, 30, 20, false, C::Heavy, false},
        {13, 40, 10, false, C::Light, false},
        // Fuel stands allow 5 m of overhang, the extra types 1.8 m.
        {12, 10, 14.9, false, C::Heavy, true},
        {12, 10, 15.2, false, C::Heavy, false},
        {15, 10, 11.7, false, C::HighPerf, true},
        {20, 10, 11.9, false, C::Light, false},
        // A helipad is for helicopters only.
        {0, 15, 8, true, C::Rotorcraft, true},
        {0, 15, 8, true, C::Light, false},
        {0, 15, 8, false, C::Rotorcraft, false},
    };
    for (const Case& c : cases) {
        Stand s = lf_stand(1, c.type, c.radius_m, 0, c.heli);
        EXPECT_EQ(lf_standFits(s, c.category, lf_nm(c.halfSpan_m)), c.fits)
            << "type " << c.type << " radius " << c.radius_m << " half span " << c.halfSpan_m << " "
            << gf_categoryWord(c.category);
    }
}

TEST_F(StandClaimsTest,
       TheSearchTakesTheNearestFittingStandAndAFurtherOneOnlyIfItKnowsTheAircraft) {
    stands() = {lf_stand(1, 1, 20, 30), lf_stand(2, 1, 20, 47), lf_stand(3, 1, 20, 44),
                lf_stand(4, 0, 20, 5, true), lf_stand(5, 1, 20, 10)};
    stands()[1].options.push_back({{}, "", "ABC123", "", 1, 1, 1, 1, 1, false});
    stands()[4].blockedByOverlap = true;
    AircraftBase ac;
    ac.callsign = "ABC123";
    ac.category = AircraftCategory::Light;
    ac.halfSpan = lf_nm(10);
    ac.standSearchNear = lf_nm(40);
    ac.standSearchFar = lf_nm(50);
    double d_m = 0;
    // Near: the nearest usable one; the blocked stand and the helipad are passed over.
    EXPECT_EQ(gf_closestStand(stands(), lf_north(0), ac, d_m, true), &stands()[0]);
    EXPECT_NEAR(d_m, 30, 0.1);
    // Nothing near: the further stand that knows the callsign, not the nearer stranger.
    EXPECT_EQ(gf_closestStand(stands(), lf_north(90), ac, d_m, true), &stands()[1]);
    EXPECT_NEAR(d_m, 43, 0.1);
    EXPECT_EQ(gf_closestStand(stands(), lf_north(90), ac, d_m, false), nullptr);
    EXPECT_EQ(d_m, 99999);
    // A helicopter takes the helipad and nothing else.
    ac.category = AircraftCategory::Rotorcraft;
    EXPECT_EQ(gf_closestStand(stands(), lf_north(30), ac, d_m, true), &stands()[3]);
    EXPECT_EQ(gf_closestStand(stands(), lf_north(-60), ac, d_m, true), nullptr);
}

TEST_F(StandClaimsTest, AParkedAircraftYieldsOnlyToItsOwnCallsignToTheRealOneOrWhenItLeftTheFeed) {
    struct Case {
        const char* newcomer;
        const char* occupant;
        FlightState state;
        bool stillReported;
        bool standFree;
    };
    using F = FlightState;
    const Case cases[] = {
        {"ABC1", "ABC1", F::parked, true, true},     // the same aircraft again
        {"ABC1_", "ABC1", F::parked, true, false},   // its ghost never takes it
        {"ABC1_", "ABC1", F::parked, false, false},  // not even when it left the feed
        {"XYZ9_", "ABC1", F::parked, false, false},  // nor any ghost
        {"ABC1", "ABC1_", F::parked, true, true},    // the real one replaces its ghost
        {"XYZ9", "ABC1_", F::parked, true, true},    // and anyone replaces a ghost
        {"XYZ9", "ABC1", F::parked, true, false},    // still reported: it stays
        {"XYZ9", "ABC1", F::parked, false, true},    // gone from the feed: it yields
        {"XYZ9", "ABC1", F::pushing_back, true, false},
        {"XYZ9", "ABC1", F::pushing_back, false, true},
        {"XYZ9", "ABC1", F::taxi, true, true},  // on its way, no claim
    };
    stands() = {lf_stand(1, 15, 40, 0)};
    for (const Case& c : cases) {
        liveAircraft.clear();
        const LiveAircraft& o = occupant(900001, c.occupant, 1, c.state, c.stillReported);
        const bool free = lf_checkStandIsNotUsedByOtherLiveAircraftSub(1, c.newcomer);
        const std::string what = std::string(c.newcomer) + " at " + c.occupant;
        EXPECT_EQ(free, c.standFree) << what;
        // Only an occupant in a standing state that yields is removed.
        const bool removed = c.standFree && c.state != F::taxi;
        EXPECT_EQ(o.simState == SimState::removingfromsim, removed) << what;
    }
}

TEST_F(StandClaimsTest, AnArrivalShortOfTheStandTaxisOnOneTurnedAwayOrBeatenToItEnds) {
    stands() = {lf_stand(1, 15, 40, 0)};
    const auto arriveAt = [](double north_m, double heading_deg) -> LiveAircraft& {
        liveAircraft.clear();
        LiveAircraft ac;
        ac.hexid = 900002;
        ac.callsign = "ARR1";
        ac.flightState = FlightState::parking;
        ac.simState = SimState::active;
        ac.sid = 1;
        ac.standLat = APRON_LAT;
        ac.standLon = APRON_LON;
        ac.standHeading = PI / 2;
        const LatLon at = lf_north(north_m);
        ac.lat = at.lat;
        ac.lon = at.lon;
        ac.heading = heading_deg * RAD_PER_DEG;
        StreamPoint p;
        p.lat = at.lat;
        p.lon = at.lon;
        p.time = gf_simTick();
        ac.stream.push_back(p);
        liveAircraft.push_back(ac);
        return liveAircraft.back();
    };
    LiveAircraft& shortOf = arriveAt(19, 90);
    EXPECT_TRUE(lf_arrivedAtStand(shortOf));
    EXPECT_EQ(shortOf.flightState, FlightState::taxi);
    EXPECT_EQ(shortOf.sid, 0);
    EXPECT_FALSE(stands()[0].liveHere);

    LiveAircraft& turned = arriveAt(1, 90 + 41);
    EXPECT_FALSE(lf_arrivedAtStand(turned));
    EXPECT_EQ(turned.extensions, 1);

    LiveAircraft& onIt = arriveAt(1, 90 + 39);
    EXPECT_TRUE(lf_arrivedAtStand(onIt));
    EXPECT_EQ(onIt.flightState, FlightState::parked);
    EXPECT_TRUE(stands()[0].liveHere);

    LiveAircraft& second = arriveAt(0.5, 90);
    EXPECT_FALSE(lf_arrivedAtStand(second));
    EXPECT_EQ(second.flightState, FlightState::parking);
}

TEST_F(StandClaimsTest, StaticAircraftMakeWayForASpawnAndAQueuedOneNeverAppears) {
    // Stand 2 overlaps stand 1 and lies close enough to touch; stand 3 is far.
    stands() = {lf_stand(1, 15, 40, 0), lf_stand(2, 15, 40, 15), lf_stand(3, 15, 40, 300)};
    stands()[0].overlaps = {2};
    staticAt(11, "QUE1*", 1, true);
    staticAt(12, "NXT2*", 2, false);
    staticAt(13, "FAR3*", 3, false);
    standingAt(900003, "UAL1", lf_north(1));
    tick();
    ASSERT_NE(live(900003), nullptr);
    EXPECT_EQ(live(900003)->flightState, FlightState::parked);
    EXPECT_EQ(live(900003)->sid, 1);
    // The queued one is gone before any create went out.
    EXPECT_EQ(gf_findStatic(11), nullptr);
    EXPECT_TRUE(staticCreates.empty());
    EXPECT_EQ(gf_findStatic(12)->simState, SimState::removingfromsim);
    EXPECT_EQ(gf_findStatic(13)->simState, SimState::active);
    for (int i = 0; i < 100; ++i) {
        tick();
        for (const CreateRequest& c : takeCommands().creates) EXPECT_NE(c.hexid, 11u);
    }
}

TEST_F(StandClaimsTest, AnAircraftCreatedAtTheUsersStandTaxisInsteadOfParking) {
    stands() = {lf_stand(1, 15, 40, 0), lf_stand(2, 15, 40, 300)};
    gf_publishStandPositions(stands());
    userOnGround.store(1);
    userAircraft.lat = lf_north(301).lat;
    userAircraft.lon = APRON_LON;
    standingAt(900006, "NEW2", lf_north(300));
    tick();
    userOnGround.store(-1);
    gf_publishStandPositions({});
    ASSERT_NE(live(900006), nullptr);
    EXPECT_NE(live(900006)->flightState, FlightState::parked);
    EXPECT_EQ(live(900006)->sid, 0);
}

TEST_F(StandClaimsTest, AStaticCopyOfALiveAircraftGoesAfterItsNameLookup) {
    stands() = {lf_stand(1, 15, 40, 0), lf_stand(2, 15, 40, 300)};
    staticAt(21, "OTHER*", 1, false, "N123AB");
    staticAt(22, "KEEP*", 2, false, "N999ZZ");
    TrafficMessage m = onGround(900007, "HAL7", 1000, APRON_LAT + 0.01, 15);
    m.regcode = "N123AB";
    deliver(m, gf_simTick());
    m.time += 5;
    m.point.lat += 0.0002;
    deliver(m, gf_simTick() + 500);
    tick();
    ASSERT_NE(live(900007), nullptr);
    gf_trafficEverySecond();
    EXPECT_EQ(gf_findStatic(21)->simState, SimState::removingfromsim);
    EXPECT_EQ(gf_findStatic(22)->simState, SimState::active);
}

}  // namespace tfx::test
