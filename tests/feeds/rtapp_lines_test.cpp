// The application's lines as the traffic reader sees them: fields, numbers,
// the end markers and their delays, parked lists, and lines that are wrong.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "../../tools/rt_app_standin_lib.h"
#include "app/options.h"
#include "feeds/rtapp/reader_state.h"
#include "feeds/rtapp/rtapp_lines.h"
#include "liveries/reference_db.h"
#include "support/temp_workdir.h"

using namespace tfx;

namespace {

struct Handed {
    std::size_t count;
    int delay_s;
    bool fromRtApp;
};
std::vector<Handed> handed;

void lf_record(std::vector<TrafficMessage>& batch, int delay_s, bool fromRtApp) {
    handed.push_back({batch.size(), delay_s, fromRtApp});
    batch.clear();
}

scenario::Report lf_report(std::uint32_t hexid, double alt_ft = 3000) {
    scenario::Report r;
    r.hexid = hexid;
    r.lat = 51.85;
    r.lon = -1.32;
    r.alt_ft = alt_ft;
    r.gs_kt = 150;
    r.track_deg = 187;
    r.callsign = "EZY12AB";
    r.model = "A320";
    r.regcode = "G-EZAA";
    r.airline = "EZY";
    r.tas_kt = 160;
    return r;
}

class RtAppLines : public ::testing::Test {
protected:
    void SetUp() override {
        gf_clearReferenceData();
        gf_modelIndex("");
        gf_airlineIndex("");
        gf_publishOptions([](Options& o) {
            o.RANGE = 40;
            o.range_nm = 40;
            o.rangeSquared_nm2 = 1600;
            o.LIGHT_AIRCRAFT = true;
        });
        gf_resetReaderState(state);
        state.sink = &lf_record;
        state.position.lat = 51.8369;
        state.position.lon = -1.32;
        state.position.cosLat = std::cos(51.8369 * std::numbers::pi / 180);
        handed.clear();
    }
    void TearDown() override { gf_clearReferenceData(); }
    void line(const std::string& text) { gf_processRTAppLine(state, text); }
    std::string traffic(std::uint32_t hexid, const char* kind = "RTTFC") {
        return standin::gf_trafficLine(kind, lf_report(hexid), 1732320000.0 + (hexid - 4000000));
    }

    test::TempWorkdir dir;
    TrafficReaderState state;
};

TEST(RtAppFields, EmptyFieldsCountAndNumbersMustBeWhole) {
    std::vector<std::string_view> f;
    gf_splitFields("A,,B,", f);
    EXPECT_EQ(f.size(), 4u);
    EXPECT_EQ(f[1], "");
    EXPECT_EQ(f[3], "");

    const std::string good = standin::gf_trafficLine("RTTFC", lf_report(4000001), 1732320000.25);
    gf_splitFields(good, f);
    ASSERT_EQ(f.size(), RTTFC_FIELDS);
    TrafficRecord r = gf_readTrafficFields(f);
    EXPECT_EQ(r.hexid, 4000001u);
    EXPECT_DOUBLE_EQ(r.timestamp, 1732320000.25);
    EXPECT_DOUBLE_EQ(r.trueheading, 187);  // read because the source is adsb_icao

    auto withField = [&](std::size_t i, std::string_view text) {
        gf_splitFields(good, f);
        f[i] = text;
        return f;
    };
    EXPECT_DOUBLE_EQ(gf_readTrafficFields(withField(7, "")).track, 0);  // an empty track is north
    for (const char* bad : {"", "12x", "nan", "inf", "1e999", " 5"}) {
        try {
            gf_readTrafficFields(withField(4, bad));
            ADD_FAILURE() << "accepted altitude '" << bad << "'";
        } catch (const std::runtime_error& e) {
            EXPECT_EQ(std::string(e.what()), std::string("altitude:") + bad);
        }
    }
    EXPECT_THROW(gf_readTrafficFields(withField(1, "4a0001")), std::runtime_error);  // decimal only
    auto other = withField(17, "mlat");
    other[25] = "garbage";  // not read at all without adsb_icao
    EXPECT_NO_THROW(gf_readTrafficFields(other));
}

TEST(RtAppFields, ParkedHexidIsHexadecimal) {
    std::vector<std::string_view> f;
    gf_splitFields("RTPARK,4CA1F2,53.42,-6.25,EIN12,A320,EI-DEA,305,1732320000", f);
    EXPECT_EQ(gf_readParkedFields(f).hexid, 0x4CA1F2u);
    gf_splitFields("RTPARK,XYZ,53.42,-6.25,EIN12,A320,EI-DEA,305,1732320000", f);
    EXPECT_THROW(gf_readParkedFields(f), std::runtime_error);
    gf_splitFields("RTPARK,4CA1F2,53.42,-6.25,EIN12,A320,EI-DEA,305,-3", f);
    EXPECT_THROW(gf_readParkedFields(f), std::runtime_error);
}

TEST_F(RtAppLines, HistoryPiecesGetGrowingDelaysAndLiveCyclesThirty) {
    line(traffic(4000001, "RTBUF"));
    line("RTBUF_SEP");
    line("RTBUF_SEP");  // an empty piece hands nothing over but counts
    line(traffic(4000002, "RTBUF"));
    line(traffic(4000003, "RTBUF"));
    line("RTBUF_SEP");
    line("RTBUF_EOT");
    EXPECT_TRUE(state.bufferDone);
    line(traffic(4000004));
    line("RTTFC_EOT");
    ASSERT_EQ(handed.size(), 3u);
    EXPECT_EQ(handed[0].delay_s, 0);
    EXPECT_EQ(handed[1].delay_s, 12);
    EXPECT_EQ(handed[1].count, 2u);
    EXPECT_EQ(handed[2].delay_s, 30);
    EXPECT_TRUE(handed[2].fromRtApp);
    EXPECT_EQ(state.lastHeard.load(), 1732320004);  // the newest record heard
}

TEST_F(RtAppLines, BadLinesAreSkippedAndTheReaderGoesOn) {
    const std::string good = traffic(4000001);
    line("RTTFC,1,2,3");
    std::string nanTas = good;
    nanTas.replace(nanTas.find(",160,"), 5, ",nan,");
    line(nanTas);
    std::string badNumber = good;
    badNumber.replace(badNumber.find(",3000,"), 6, ",3e5x,");
    line(badNumber);
    line("RTWHAT,1,2");
    line("");
    line(std::string(20000, ','));
    line(traffic(4000002));
    line("RTTFC_EOT");
    ASSERT_EQ(handed.size(), 1u);
    EXPECT_EQ(handed[0].count, 1u);
    const std::string log = dir.logText();
    EXPECT_NE(
        log.find("Ignoring incomplete RT App message: 4 fields received, 43 required: RTTFC,1,2,3"),
        std::string::npos);
    EXPECT_NE(log.find("exception in processLine: altitude:3e5x"), std::string::npos);
}

TEST_F(RtAppLines, ContextIsTakenAtTheFirstRecordOfACycle) {
    line(traffic(4000001));
    // The user moves far away mid-cycle: the cycle keeps its centre.
    state.position.lat = 10;
    line(traffic(4000002));
    line("RTTFC_EOT");
    ASSERT_EQ(handed.size(), 1u);
    EXPECT_EQ(handed[0].count, 2u);
    line(traffic(4000003));
    line("RTTFC_EOT");
    EXPECT_EQ(handed.size(), 1u);  // out of range of the new centre
}

TEST_F(RtAppLines, ParkedListIsSwappedInWhole) {
    gf_modelIndex("A320");
    validModels.insert("A320");
    line("RTPARK,4CA1F2,51.84,-1.31,EIN12,A320,EI-DEA,305,1732320000");
    line("RTPARK,ZZZ,51.84,-1.31,EIN12,A320,EI-DEA,305,1732320000");
    line("RTPARK,4CA1F3,51.84,-1.31,EIN13,A320,EI-DEB,306");  // too few fields
    EXPECT_TRUE(gf_takeParkedList(state).empty());
    line("RTPARK_EOT");
    EXPECT_TRUE(state.parkedDone);
    const auto parked = gf_takeParkedList(state);
    ASSERT_EQ(parked.size(), 1u);
    EXPECT_EQ(parked[0].stand, "305");
    EXPECT_NE(dir.logText().find("exception in processRTAppLine: hexid incorrect ZZZ"),
              std::string::npos);
}

}  // namespace

// A looped scenario must look like new aircraft each round, never like the
// last round's aircraft jumping back to where they began.
TEST(StandinRounds, EachRoundFliesUnderOtherTransponderCodes) {
    std::vector<std::string_view> f;
    const std::string first = standin::gf_trafficLine("RTTFC", lf_report(4199306), 1732320000);
    const std::string second =
        standin::gf_trafficLine("RTTFC", lf_report(4199306), 1732320240, 1);
    gf_splitFields(first, f);
    const TrafficRecord a = gf_readTrafficFields(f);
    gf_splitFields(second, f);
    const TrafficRecord b = gf_readTrafficFields(f);
    EXPECT_EQ(a.hexid, 4199306u);
    EXPECT_NE(b.hexid, a.hexid);
    EXPECT_LE(b.hexid, 0xFFFFFFu);  // still a transponder code
    EXPECT_EQ(standin::gf_roundHexid(4199306, 16), 4199306u);
}
