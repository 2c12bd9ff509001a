// Parked records: the generic type codes, completion from the registration
// database, the half hour, and the user's own stand that is never given away.
#include <gtest/gtest.h>

#include "app/options.h"
#include "feeds/decode_context.h"
#include "liveries/reference_db.h"
#include "support/sealed_dbase.h"

using namespace tfx;

namespace {

class Parked : public ::testing::Test {
protected:
    void SetUp() override {
        test::DbaseText text;
        text.aircrafts += R"(<aircraft types="A388,B763,B752"/>)";
        text.optional =
            R"(<dbase><d r="G-EUPA" a="BAW" m="A319"/><d r="DLH4AB" a="DLH" m="A321"/></dbase>)";
        test::sealDbase(dir, text.text());
        gf_clearReferenceData();
        ASSERT_TRUE(gf_readDbase());
        gf_publishOptions([](Options& o) {
            o.LIGHT_AIRCRAFT = true;
            o.HELICOPTERS = false;
            o.HIGH_PERF_AIRCRAFT = true;
        });
        ctx.options = gf_options();
        ctx.userStand = "12";
    }
    void TearDown() override { gf_clearReferenceData(); }

    static ParkedRecord record() {
        ParkedRecord r;
        r.hexid = 0x406A11;
        r.lat = 51.47;
        r.lon = -0.45;
        r.timestamp = 1732320000 + 10 * 3600 + 29 * 60 + 29;  // 10:29:29 UTC
        r.callsign = "BAW12A";
        r.model = "A320";
        r.regcode = "G-EUUA";
        r.stand = "5";
        return r;
    }

    test::TempWorkdir dir;
    ParkedContext ctx;
};

TEST_F(Parked, HalfHourTypeAndNamesAreCompleted) {
    ParkedRecord r = record();
    EXPECT_EQ(gf_decodeParked(r, ctx)->hh, 20);
    r.timestamp += 1;  // 10:29:30
    EXPECT_EQ(gf_decodeParked(r, ctx)->hh, 21);
    // A generic type code is narrowed.
    r.model = "A380";
    EXPECT_EQ(gf_modelCode(gf_decodeParked(r, ctx)->aimo.model), "A388");
    // The registration's record completes the aircraft; an empty callsign
    // becomes the registration.
    r.regcode = "G-EUPA";
    r.callsign = "";
    r.model = "A320";
    auto p = gf_decodeParked(r, ctx);
    ASSERT_TRUE(p);
    EXPECT_EQ(gf_modelCode(p->aimo.model), "A319");
    EXPECT_EQ(gf_airlineCode(p->aimo.airline), "BAW");
    EXPECT_EQ(p->callsign, "G-EUPA");
    // Without a registration the callsign is looked up in the same records.
    r.regcode = "";
    r.callsign = "DLH4AB";
    p = gf_decodeParked(r, ctx);
    ASSERT_TRUE(p);
    EXPECT_EQ(p->regcode, "DLH4AB");
    EXPECT_EQ(gf_modelCode(p->aimo.model), "A321");
}

TEST_F(Parked, TheUsersStandIsNeverGivenAwayAndBadRecordsAreRefused) {
    ParkedRecord r = record();
    r.stand = "12";
    EXPECT_FALSE(gf_decodeParked(r, ctx));
    ctx.userStand.clear();
    ctx.nearestStand = "12";
    EXPECT_FALSE(gf_decodeParked(r, ctx));
    r.stand = "";
    ctx.nearestStand.clear();
    EXPECT_FALSE(gf_decodeParked(r, ctx));

    r = record();
    r.model = "XYZ9";
    EXPECT_FALSE(gf_decodeParked(r, ctx));
    r.model = "EC35";
    EXPECT_FALSE(gf_decodeParked(r, ctx));  // helicopters are off
    r = record();
    r.hexid = 9999;
    EXPECT_FALSE(gf_decodeParked(r, ctx));
    r = record();
    r.lat = 95;
    EXPECT_THROW(gf_decodeParked(r, ctx), std::runtime_error);
}

}  // namespace
