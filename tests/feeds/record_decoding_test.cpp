// The decoding rules that are easy to get wrong: headings, true airspeed
// gaps, the ground zone round the park airport, callsigns, the altitude
// correction, the squawk rule, the seen sets and the blocked aircraft.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "app/options.h"
#include "feeds/decode_context.h"
#include "liveries/reference_db.h"

using namespace tfx;

namespace {

constexpr double EGTK_LAT = 51.8369, EGTK_LON = -1.3200;

class Decoding : public ::testing::Test {
protected:
    void SetUp() override {
        gf_clearReferenceData();
        gf_modelIndex("");
        gf_airlineIndex("");
        gf_publishOptions([](Options& o) {
            o = Options{};
            o.RANGE = 40;
            o.range_nm = 40;
            o.rangeSquared_nm2 = 1600;
        });
        ctx.lat = EGTK_LAT;
        ctx.lon = EGTK_LON;
        ctx.cosLat = std::cos(EGTK_LAT * std::numbers::pi / 180);
        ctx.parkAirport = LatLon{EGTK_LAT, EGTK_LON};
        ctx.parkCosLat = ctx.cosLat;
        ctx.options = gf_options();
        ctx.collectEarly = 1;
    }
    void TearDown() override { gf_clearReferenceData(); }

    static TrafficRecord airborne() {
        TrafficRecord r;
        r.timestamp = 1732320000.4;
        r.hexid = 0x400001;
        r.lat = EGTK_LAT + 0.1;
        r.lon = EGTK_LON;
        r.altitude = 5000;
        r.gs = 200;
        r.track = 90;
        r.TAS = 210;
        r.callsign = "BAW123";
        r.model = "A320";
        r.regcode = "G-EUUA";
        r.source = "adsb_other";
        return r;
    }
    // A ground record dist_nm north of the park airport.
    static TrafficRecord onGroundNorth(double dist_nm) {
        TrafficRecord r = airborne();
        r.altitude = 0;
        r.gs = 10;
        r.lat = EGTK_LAT + dist_nm / 60;
        return r;
    }
    std::optional<TrafficMessage> decode(const TrafficRecord& r) {
        return gf_decodeTraffic(r, ctx).message;
    }

    DecodeContext ctx;
};

TEST_F(Decoding, TrueHeadingOnlyFromAdsbAndZeroMeansNorth) {
    TrafficRecord r = airborne();
    r.source = "adsb_icao";
    r.trueheading = 0;
    r.track = 0;
    auto m = decode(r);
    ASSERT_TRUE(m);
    EXPECT_TRUE(m->point.headingValid && m->point.hasAttitude);
    EXPECT_DOUBLE_EQ(m->point.heading, 2 * std::numbers::pi);
    EXPECT_NEAR(m->point.track, 360.0, 1e-9);  // a track of 0 takes the heading

    r.source = "mlat";
    m = decode(r);
    ASSERT_TRUE(m);
    EXPECT_FALSE(m->point.headingValid);
    EXPECT_FALSE(m->point.hasAttitude);

    r.source = "adsb_icao";
    r.trueheading = -5;
    EXPECT_FALSE(decode(r)->point.headingValid);
    r.trueheading = 360.5;
    EXPECT_THROW(decode(r), std::runtime_error);
}

TEST_F(Decoding, MissingTasComesFromTheAltitudeTable) {
    TrafficRecord r = airborne();
    r.TAS = -1;
    r.altitude = 25000;
    EXPECT_DOUBLE_EQ(decode(r)->point.tas, 430);
    r.altitude = 2000;  // a boundary belongs to the lower row
    EXPECT_DOUBLE_EQ(decode(r)->point.tas, 180);
    r.altitude = 2001;
    EXPECT_DOUBLE_EQ(decode(r)->point.tas, 220);
    r.TAS = 0;  // only exactly -1 means missing
    EXPECT_DOUBLE_EQ(decode(r)->point.tas, 0);
}

TEST_F(Decoding, WhereAndWhenARecordIsTaken) {
    // Ground records only within five miles of the park airport; the air anywhere in range.
    EXPECT_TRUE(decode(onGroundNorth(4.9)));
    EXPECT_FALSE(decode(onGroundNorth(5.1)));
    ctx.parkAirport.reset();
    EXPECT_FALSE(decode(onGroundNorth(0.1)));
    EXPECT_TRUE(decode(airborne()));
    // Out of range: no message, but the feed was heard.
    TrafficRecord r = airborne();
    r.lat = EGTK_LAT + 41.0 / 60;
    const DecodeResult result = gf_decodeTraffic(r, ctx);
    EXPECT_FALSE(result.message);
    ASSERT_TRUE(result.roundedTimestamp);
    EXPECT_EQ(*result.roundedTimestamp, 1732320000);
    // No time, null island (the feed's way of saying "no position"), off the globe.
    for (auto spoil : {+[](TrafficRecord& x) { x.timestamp = 0; },
                       +[](TrafficRecord& x) { x.timestamp = std::nan(""); },
                       +[](TrafficRecord& x) {
                           x.lat = 0.00005;
                           x.lon = -0.00005;
                       },
                       +[](TrafficRecord& x) { x.lat = 91; }}) {
        r = airborne();
        spoil(r);
        EXPECT_THROW(decode(r), std::runtime_error);
    }
    r = airborne();
    r.hexid = 10000;  // static aircraft own the low numbers
    EXPECT_FALSE(decode(r));
}

TEST_F(Decoding, NameAndTypeFilters) {
    for (const char* dropped : {".ABC", "ABC", "ABCDEFGHI", "A@BCD", "X000001", "null"})
        EXPECT_EQ(gf_cleanCallsign(dropped), "") << dropped;
    EXPECT_EQ(gf_cleanCallsign(".ABCD"), "ABCD");
    EXPECT_EQ(gf_usableRegcode("G-AB"), "G-AB");
    EXPECT_EQ(gf_usableRegcode("ABCDEFGHIJKLM"), "");
    EXPECT_TRUE(gf_isAircraftMessage("A20N", "A3"));
    EXPECT_FALSE(gf_isAircraftMessage("A20N", "C1"));  // a ground vehicle
    EXPECT_FALSE(gf_isAircraftMessage("GLID", ""));
    EXPECT_FALSE(gf_isAircraftMessage("A320X", ""));
    EXPECT_THROW(gf_iataRef("L-R"), std::runtime_error);
    EXPECT_FALSE(gf_iataRef("null").known());
}

TEST_F(Decoding, ANameIsEnoughButOneIsNeeded) {
    TrafficRecord r = airborne();
    r.callsign = "";
    auto m = decode(r);
    ASSERT_TRUE(m);
    EXPECT_EQ(m->regcode, "G-EUUA");
    r.regcode = "null";
    EXPECT_FALSE(decode(r));
    r = airborne();
    r.regcode = "";
    EXPECT_TRUE(decode(r)) << "no block set blocks nothing, even without names";
}

TEST_F(Decoding, SeenSetsAreFilledBeforeTheNameTestOnlyWhenEarly) {
    ctx.collectSeen = 1;
    TrafficRecord r = airborne();
    r.callsign = "";
    r.regcode = "";
    EXPECT_TRUE(gf_decodeTraffic(r, ctx).seen);
    ctx.collectEarly = 0;
    EXPECT_FALSE(gf_decodeTraffic(r, ctx).seen);
    ctx.collectSeen = 0;
    EXPECT_FALSE(gf_decodeTraffic(airborne(), ctx).seen);
}

TEST_F(Decoding, SquawkZeroOnTheGroundDroppedOnlyWhereTheRoadCarriesIt) {
    TrafficRecord r = onGroundNorth(1);
    r.squawk = "0000";
    EXPECT_TRUE(decode(r));
    ctx.dropSquawk0000 = 1;
    EXPECT_FALSE(decode(r));
    r = airborne();
    r.squawk = "0000";
    EXPECT_TRUE(decode(r));  // only on the ground
}

TEST_F(Decoding, AltitudeCorrectionByRoadAndSnapToTheGround) {
    StreamPoint p;
    const auto corrected = [&p](double alt, double speed, std::optional<double> field_ft,
                                double qnh_hPa, bool low, double offset_ft) {
        p.alt = alt;
        p.speed = speed;
        gf_correctAltitude(p, field_ft, qnh_hPa, low, offset_ft);
        return p.alt;
    };
    // The application's altitudes are already corrected low down.
    EXPECT_DOUBLE_EQ(corrected(10000, 200, std::nullopt, 1013, false, 0), 10000);
    EXPECT_DOUBLE_EQ(corrected(10000, 200, std::nullopt, 1013, true, 0), 9992.5);
    // Above the transition blend the pressure altitude stays, with the user's offset.
    EXPECT_DOUBLE_EQ(corrected(30000, 200, std::nullopt, 1003, false, 40), 30000 + 307.5 + 40);
    EXPECT_DOUBLE_EQ(corrected(-50, 200, std::nullopt, 1013, true, 0), 0);
    // Near the field: slow aircraft snap to the ground, fast ones only below it.
    EXPECT_EQ(corrected(330, 40, 270.0, 1013, false, 0), 0);
    EXPECT_DOUBLE_EQ(corrected(330, 130, 270.0, 1013, false, 0), 330);
    EXPECT_EQ(corrected(200, 200, 270.0, 1013, false, 0), 0);
}

TEST_F(Decoding, BankOnlyInTheAirAndTurnedToRightPositive) {
    TrafficRecord r = airborne();
    r.roll = 10;
    auto m = decode(r);
    EXPECT_TRUE(m->point.bankValid);
    EXPECT_NEAR(m->point.bank, -10 * std::numbers::pi / 180, 1e-12);
    r.roll = -1;
    EXPECT_FALSE(decode(r)->point.bankValid);
    r = onGroundNorth(1);
    r.roll = 10;
    EXPECT_FALSE(decode(r)->point.bankValid);
}

TEST_F(Decoding, BlockByCallsignLearnsTheHexidForLaterBatches) {
    gf_publishOptions([](Options& o) { o.blockCallsign = "BAW123"; });
    ctx.options = gf_options();
    EXPECT_FALSE(decode(airborne()));
    EXPECT_EQ(gf_options()->blockHexid, 0x400001u);
    EXPECT_EQ(gf_options()->blockRegcode, "G-EUUA");

    ctx.options = gf_options();  // the next batch
    TrafficRecord renamed = airborne();
    renamed.callsign = "SHT4X";
    renamed.regcode = "";
    EXPECT_FALSE(decode(renamed));
    TrafficRecord other = airborne();
    other.hexid = 0x400002;
    other.callsign = "EZY1";
    other.regcode = "G-EZAA";
    EXPECT_TRUE(decode(other));
}

TEST_F(Decoding, BlockWithTrailingMarkMatchesTheShorterCallsignOnce) {
    gf_publishOptions([](Options& o) {
        o.blockCallsign = "BAW123_";
        o.blockTrailing = true;
    });
    ctx.options = gf_options();
    EXPECT_FALSE(decode(airborne()));
    const OptionsPtr learned = gf_options();
    EXPECT_EQ(learned->blockCallsign, "BAW123");
    EXPECT_FALSE(learned->blockTrailing);
    EXPECT_EQ(learned->blockHexid, 0x400001u);
}

}  // namespace
