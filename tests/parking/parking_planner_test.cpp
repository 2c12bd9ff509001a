// The plan at a small handmade airport: the order of reliability, overlaps,
// the user's stand, aircraft the feed shows moving, half hours over
// midnight, and a run without randomness repeating itself.
#include <set>
#include <utility>

#include "airports/airport_file_io.h"
#include "feeds/rtapp/reader_state.h"
#include "parking/parking_fixture.h"
#include "parking/parking_plan.h"
#include "parking/parking_planner.h"
#include "parking/user_stand.h"

namespace tfx::test {
namespace {

constexpr double LAT = 21.3, LON = -157.9;

// G1 and G2 overlap; the others stand 110 m apart in a row.
std::string smallAirport(const std::string& extraG6 = "") {
    const std::string stands =
        standXml("G1", LAT, LON, optXml("N1", "UAL", "B738", 3, "18:24", "UAL1:UAL2")) +
        standXml("G2", LAT, LON - 0.0003, optXml("N2", "UAL", "B738", 3, "19:22", "UAL3")) +
        standXml("G3", LAT + 0.001, LON, optXml("N3", "DAL", "B738", 3, "20", "DAL5")) +
        standXml("G4", LAT + 0.002, LON, optXml("N4", "HAL", "A332", 3, "10:12", "HAL9")) +
        standXml("G5", LAT + 0.003, LON, optXml("N5", "HAL", "A332", 3, "20:30", "HAL7")) +
        standXml("G6", LAT + 0.004, LON, optXml("N6", "SWA", "B737", 3, "20", "SWA4") + extraG6);
    return apfText(
        param("airport_name", "Test") + param("publisher", "simaddon") + param("altitude", "13"),
        stands);
}

class ParkingPlanner : public ParkingTest {
protected:
    void SetUp() override {
        ParkingTest::SetUp();
        weekNow = gf_weekSlot(3, 20);
        learnedSettings("TEST", param("parking_percentage", "50") + param("AUTO_PARK", "false") +
                                    param("MAX_FIT", "8"));
    }
    // The sid and callsign of every static aircraft standing in the end.
    std::set<std::pair<std::string, std::string>> parkedAfterPlan() {
        gf_parkAtAirport();
        run(3000);
        std::set<std::pair<std::string, std::string>> out;
        for (const StaticAircraft* ac : activeStatics())
            out.insert({gf_standName(ac->sid), ac->callsign});
        return out;
    }
};

TEST_F(ParkingPlanner, FillsInOrderOfReliabilityAndKeepsOverlapsTheUserAndMovingAircraftOut) {
    parkAt("TEST", smallAirport(), LAT, LON);
    userAt(LAT + 0.001, LON, true);  // on stand G3
    ParkedMessage record;
    record.aimo.model = gf_modelIndex("B739");
    record.callsign = "ASA12";
    record.regcode = "N12AS";
    record.hexid = 0xABC123;
    // It came three hours ago: it still goes ahead of the file's aircraft of
    // this half hour on its stand (SWA4).
    record.hh = 14;
    record.stand = "G6";
    record.lat = LAT + 0.004;
    record.lon = LON;
    {
        std::lock_guard lock(trafficReaderState.parkedLock);
        trafficReaderState.parkedFinished = {record};
    }
    trafficReaderState.parkedDone = true;
    feedHeard({"HAL7"});

    const auto parked = parkedAfterPlan();

    // 6 stands at 50 %: the parked record first, one of the two overlapping
    // stands, then the option of eight half hours ago.
    EXPECT_EQ(parking.wantedParked, 3);
    ASSERT_EQ(parked.size(), 3u) << dir.logText();
    EXPECT_TRUE(parked.contains({"G6", "ASA12*"}));
    EXPECT_TRUE(parked.contains({"G4", "HAL9*"}));
    EXPECT_TRUE(parked.contains({"G1", "UAL1*"}) != parked.contains({"G2", "UAL3*"}));
    for (const StaticAircraft* ac : activeStatics()) {
        EXPECT_NE(gf_standName(ac->sid), "G3");
        EXPECT_NE(gf_standName(ac->sid), "G5");
        if (gf_standName(ac->sid) == "G6") {
            EXPECT_EQ(ac->rtHexid, 0xABC123u);
        }
    }
    // The stand the user stands at is reserved for the user here from now on.
    EXPECT_TRUE(logged("Reserved user stand 'G3' blocked for static aircraft"));
    EXPECT_TRUE(logged("\nUser aircraft at stand: G3"));
}

TEST_F(ParkingPlanner, HalfHoursReachBackOverMidnightAndTheDepartureNumberShowsWhenDue) {
    // Monday 00:00: the stays of Sunday evening are found half an hour back;
    // the one that goes on into Monday shows its arrival number, the other
    // one its departure number.
    weekNow = gf_weekSlot(1, 0);
    const std::string stands =
        standXml("S1", LAT, LON,
                 optXml("N71", "UAL", "B738", 7, "40:47", "UAL71:UAL72") +
                     optXml("N71", "UAL", "B738", 1, "1:3", "UAL71:UAL72")) +
        standXml("S2", LAT + 0.001, LON, optXml("N81", "DAL", "B738", 7, "44:47", "DAL81:DAL82"));
    parkAt("TEST",
           apfText(param("airport_name", "T") + param("publisher", "simaddon") +
                       param("altitude", "13"),
                   stands),
           LAT, LON);
    learnedSettings("TEST", param("parking_percentage", "100") + param("AUTO_PARK", "false") +
                                param("MAX_FIT", "1"));
    const auto parked = parkedAfterPlan();
    EXPECT_EQ(parked,
              (std::set<std::pair<std::string, std::string>>{{"S1", "UAL71*"}, {"S2", "DAL82*"}}));
}

TEST_F(ParkingPlanner, WithoutRandomnessTheSameDataGiveTheSamePlan) {
    setOptions([](Options& o) { o.RANDOM = false; });
    learnedSettings("TEST", param("parking_percentage", "100") + param("AUTO_PARK", "false") +
                                param("MAX_FIT", "8"));
    // Five aircraft stood at G6 in this half hour; without randomness the
    // first of them is always taken.
    std::string many;
    for (int i = 1; i <= 5; ++i)
        many +=
            optXml("N6" + std::to_string(i), "SWA", "B737", 3, "20", "SWA6" + std::to_string(i));
    parkAt("TEST", smallAirport(many), LAT, LON);
    std::vector<std::set<std::pair<std::string, std::string>>> plans;
    for (int i = 0; i < 3; ++i) {
        plans.push_back(parkedAfterPlan());
        lf_removeAllStaticAndLiveAtAirport();
        run(300);
        lf_leaveAirport();
        parkAt("TEST", smallAirport(many), LAT, LON);
    }
    // The walk over the stands turns at every plan; every other plan is the same.
    EXPECT_EQ(plans[0], plans[2]);
    for (const auto& plan : plans) EXPECT_TRUE(plan.contains({"G6", "SWA4*"}));
}

TEST(ParkedTarget, FollowsTheStandCountThePercentageAndTheMaximum) {
    TempWorkdir dir;
    struct Row {
        std::size_t stands;
        std::int32_t percent, maxPark, want;
    };
    const Row rows[] = {
        {1, 0, 500, 1},    {1, 30, 500, 1}, {3, 49, 500, 1}, {3, 50, 500, 2},
        {76, 30, 500, 23}, {76, 30, 5, 5},  {76, 30, 0, 0},  {0, 30, 500, 1},
    };
    for (const Row& row : rows) {
        loadedAirport.file.stands.assign(row.stands, Stand{});
        gf_publishOptions([&](Options& o) {
            o.parking_percentage = row.percent;
            o.MAX_PARK_SEL = row.maxPark;
        });
        EXPECT_EQ(gf_parkedTarget(), row.want)
            << row.stands << " stands at " << row.percent << " %, max " << row.maxPark;
    }
    gf_clearLoadedAirport();
    gf_buildOptions();
}

}  // namespace
}  // namespace tfx::test
