// The application's lines as the traffic reader sees them: fields, numbers,
// the end markers and their delays, parked lists, and lines that are wrong.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "../../tools/rt_app_standin_lib.h"
#include "app/options.h"
#include "feeds/rtapp/reader_state.h"
#include "feeds/rtapp/rtapp_lines.h"
#include "feeds/rtapp/rtapp_link.h"
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
    void TearDown() override {
        gf_resetReaderState(state);
        state.sink = nullptr;
        state.position = {};
        gf_clearReferenceData();
    }
    void line(const std::string& text) { gf_processRTAppLine(state, text); }
    std::string traffic(std::uint32_t hexid, const char* kind = "RTTFC") {
        return standin::gf_trafficLine(kind, lf_report(hexid), 1732320000.0 + (hexid - 4000000));
    }

    test::TempWorkdir dir;
    // The program's own reader state, which the requests to the application mark.
    TrafficReaderState& state = trafficReaderState;
};

TEST(RtAppFields, EmptyFieldsCountAndNumbersMustBeWhole) {
    std::vector<std::string_view> f;
    gf_splitFields("A,,B,", f);
    EXPECT_EQ(f.size(), 4u);
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
    for (const char* bad : {"", "12x", "nan", "1e999", " 5"}) {
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
    line("RTPARK,4CA1F3,51.84,-1.31,EIN13,A320,EI-DEB,306,-3");  // no time
    line("RTPARK,4CA1F3,51.84,-1.31,EIN13,A320,EI-DEB,306");     // too few fields
    EXPECT_TRUE(gf_takeParkedList(state).empty());
    line("RTPARK_EOT");
    EXPECT_TRUE(state.parkedDone);
    const auto parked = gf_takeParkedList(state);
    ASSERT_EQ(parked.size(), 1u);
    EXPECT_EQ(parked[0].stand, "305");
    EXPECT_EQ(parked[0].hexid, 0x4CA1F2u) << "a parked hexid is hexadecimal";
    EXPECT_NE(dir.logText().find("exception in processRTAppLine: hexid incorrect ZZZ"),
              std::string::npos);
}

}  // namespace

// A looped scenario must look like new aircraft each round, never like the
// last round's aircraft jumping back to where they began.
TEST(StandinRounds, EachRoundFliesUnderOtherTransponderCodes) {
    std::vector<std::string_view> f;
    const std::string first = standin::gf_trafficLine("RTTFC", lf_report(4199306), 1732320000);
    const std::string second = standin::gf_trafficLine("RTTFC", lf_report(4199306), 1732320240, 1);
    gf_splitFields(first, f);
    const TrafficRecord a = gf_readTrafficFields(f);
    gf_splitFields(second, f);
    const TrafficRecord b = gf_readTrafficFields(f);
    EXPECT_EQ(a.hexid, 4199306u);
    EXPECT_NE(b.hexid, a.hexid);
    EXPECT_LE(b.hexid, 0xFFFFFFu);  // still a transponder code
    EXPECT_EQ(standin::gf_roundHexid(4199306, 16), 4199306u);
}

namespace {

// What the public form of the application sends beyond today's lines.
TEST_F(RtAppLines, ShortLinesTaggedSourcesAndAbsentColumns) {
    std::string line43 = traffic(4000001);
    line43.erase(line43.rfind(','));  // no airline field
    std::vector<std::string_view> f;
    gf_splitFields(line43, f);
    ASSERT_EQ(f.size(), 43u);
    TrafficRecord r = gf_readTrafficFields(f);
    EXPECT_TRUE(r.airline.empty());

    std::string tagged = traffic(4000002);
    tagged.replace(tagged.find("adsb_icao"), 9, "F_adsb_icao");
    gf_splitFields(tagged, f);
    f[5] = "null";   // vertical speed
    f[20] = "null";  // true airspeed
    f[23] = "null";  // roll
    r = gf_readTrafficFields(f);
    EXPECT_EQ(r.source, "adsb_icao");
    EXPECT_DOUBLE_EQ(r.trueheading, 187);
    EXPECT_DOUBLE_EQ(r.vs, 0);
    EXPECT_DOUBLE_EQ(r.TAS, -1);
    EXPECT_EQ(gf_plainSource("adsb_icao_nt"), "adsb_icao_nt");
    EXPECT_EQ(gf_plainSource("X_adsb_icao"), "adsb_icao");
    EXPECT_EQ(gf_plainSource("mlat"), "mlat");

    line(line43);
    line(tagged);
    line("RTTFC_EOT");
    ASSERT_EQ(handed.size(), 1u);
    EXPECT_EQ(handed[0].count, 2u);
}

TEST_F(RtAppLines, ImplausibleValuesAreRefusedCountedAndQuiet) {
    auto with = [&](std::uint32_t hexid, std::size_t field, const std::string& text) {
        std::vector<std::string_view> f;
        const std::string good = traffic(hexid);
        gf_splitFields(good, f);
        std::string out;
        for (std::size_t i = 0; i < f.size(); ++i)
            out += (i ? "," : "") + (i == field ? text : std::string(f[i]));
        return out;
    };
    const std::string bad[] = {with(4000001, 4, "1e308"), with(4000002, 4, "2100000000"),
                               with(4000003, 5, "1e300"), with(4000004, 8, "99999"),
                               with(4000005, 23, "400")};
    for (int round = 0; round < 200; ++round)
        for (const auto& b : bad) line(b);
    line(with(4000006, 4, "41000"));  // high, but flown
    line("RTTFC_EOT");
    ASSERT_EQ(handed.size(), 1u);
    EXPECT_EQ(handed[0].count, 1u);
    EXPECT_EQ(state.implausible.load(), 1000u);
    const std::string log = dir.logText();
    EXPECT_NE(log.find("implausible altitude: 1e+308"), std::string::npos);
    std::size_t lines = 0;
    for (auto at = log.find("implausible"); at != std::string::npos;
         at = log.find("implausible", at + 1))
        ++lines;
    EXPECT_LE(lines, 3u);  // a thousand refusals, three lines
}

// Without end markers: an aircraft that reports again closes the cycle, a
// batch that waited a cycle goes out, none grows past its bound, and the
// history ends when live traffic comes.
TEST_F(RtAppLines, WithoutMarkersBatchesGoOutByCycle) {
    std::int64_t now = 1000000;
    auto at = [&](const std::string& text, std::int64_t step_ms) {
        now += step_ms;
        gf_processRTAppLine(state, text, now);
    };
    // History repeats aircraft: one batch, cut into pieces by the reports'
    // times (24 s old: played 6 s ahead; 2 s and 0 s old: 24 s ahead, as
    // live ones would be).
    at(standin::gf_trafficLine("RTBUF", lf_report(4000001), 1732319972), 0);
    at(standin::gf_trafficLine("RTBUF", lf_report(4000001), 1732319994), 10);
    at(standin::gf_trafficLine("RTBUF", lf_report(4000005), 1732319996), 10);
    at(traffic(4000002), 10);  // live traffic ends the history
    EXPECT_TRUE(state.bufferDone);
    ASSERT_EQ(handed.size(), 2u);
    EXPECT_EQ(handed[0].delay_s, 6);
    EXPECT_EQ(handed[1].delay_s, 24);
    EXPECT_EQ(handed[1].count, 2u);
    handed.erase(handed.begin());

    at(traffic(4000003), 500);
    at(traffic(4000002), 10);  // the same report again (a repeating network): not a new cycle
    EXPECT_EQ(handed.size(), 1u);
    at(standin::gf_trafficLine("RTTFC", lf_report(4000002), 1732320004), 1490);
    // 4000002 reports again: the cycle was 2 s
    ASSERT_EQ(handed.size(), 2u);
    EXPECT_EQ(handed[1].count, 2u);
    EXPECT_EQ(handed[1].delay_s, 30);

    // One aircraft, then silence: handed over after 1.5 cycles at most.
    gf_trafficReaderIdle(state, now + 1000);
    EXPECT_EQ(handed.size(), 2u);
    gf_trafficReaderIdle(state, now + 3100);
    ASSERT_EQ(handed.size(), 3u);
    EXPECT_EQ(handed[2].count, 1u);
    EXPECT_EQ(dir.logText().find("sends no end markers"),
              dir.logText().rfind("sends no end markers"));

    // A flood of distinct aircraft within one cycle.
    for (std::uint32_t i = 0; i < MAX_BATCH + 10; ++i) at(traffic(4100000 + i), 0);
    for (const auto& h : handed) EXPECT_LE(h.count, MAX_BATCH);
    EXPECT_EQ(handed.back().count, MAX_BATCH);
}

// A new request drops a list that an answer before it had begun; stands
// come without the airport in front.
TEST_F(RtAppLines, ParkedListsFollowTheLatestRequest) {
    gf_modelIndex("A320");
    validModels.insert("A320");
    line("RTPARK,4CA1F2,51.84,-1.31,EIN12,A320,EI-DEA,EGTK_305,1732320000");
    gf_requestParked({51.8, -1.4, 51.9, -1.2});  // no link: only the reader hears of it
    line("RTPARK,4CA1F3,51.84,-1.31,EIN13,A320,EI-DEB,EGTK_306,1732320000");
    line("RTPARK_EOT");
    auto parked = gf_takeParkedList(state);
    ASSERT_EQ(parked.size(), 1u);
    EXPECT_EQ(parked[0].stand, "306");

    // The user's stand, with or without the airport, is never handed out.
    state.position.userStand = "EGTK_307";
    state.contextValid = false;
    line("RTPARK,4CA1F4,51.84,-1.31,EIN14,A320,EI-DEC,307,1732320000");
    line("RTPARK,4CA1F5,51.84,-1.31,EIN15,A320,EI-DED,EGTK_307,1732320000");
    line("RTPARK_EOT");
    EXPECT_TRUE(gf_takeParkedList(state).empty());
    EXPECT_EQ(gf_plainStandName("YSSY_I61"), "I61");
    EXPECT_EQ(gf_plainStandName("A_12"), "A_12");
    EXPECT_EQ(gf_plainStandName("egtk_12"), "egtk_12");
}

}  // namespace
