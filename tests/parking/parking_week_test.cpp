// A simulated week at Honolulu with the converted airport file: the parking
// update runs on its own clock as in the program, and every half hour the
// aircraft on the stands are checked against the file and the target. The
// occupancy curve of the week is printed.
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "airports/airport_file_io.h"
#include "feeds/rtapp/reader_state.h"
#include "parking/airport_context.h"
#include "parking/parking_fixture.h"
#include "parking/parking_plan.h"

#include "../../tools/rt_parked.h"

namespace tfx::test {
namespace {

constexpr double PHNL_LAT = 21.3194, PHNL_LON = -157.9213;
constexpr int MAX_FIT = 16;                  // eight and a half hours
constexpr std::int64_t MONDAY = 1795392000;  // 2026-11-23 00:00Z
constexpr int STEP_S = 15;
constexpr int TICKS_PER_STEP = 60;
// Aircraft the feed reports in the air or taxiing all week.
const std::vector<std::string> MOVING = {"HAL051", "HAL015", "UAL200", "DAL1186", "CAL018"};

// Whether the static aircraft's stand had it in the last maxBack half hours
// (an aircraft planned up to MAX_FIT half hours back stays until the next
// update, which comes within the half hour after).
bool lf_fileHadItLately(const Stand& stand, const StaticAircraft& ac, int maxBack) {
    for (int back = 0; back <= maxBack; ++back) {
        const std::uint64_t slot = gf_slotBefore(weekNow, back);
        const std::uint64_t bit = std::uint64_t{1} << gf_slotHalfHour(slot);
        for (const StandOption& o : stand.options)
            if (o.reg == ac.regcode && o.day == gf_slotDay(slot) && (o.hours & bit) != 0)
                return true;
    }
    return false;
}

// Whether the file has the aircraft on its stand in the present half hour.
bool lf_fileHasItNow(const Stand& stand, const StaticAircraft& ac) {
    return lf_fileHadItLately(stand, ac, 0);
}

class ParkingWeek : public ParkingTest {
protected:
    // The feed's parked list at the moment t: the aircraft that the real
    // timetable's week has on their stands (some where the file has them,
    // some moved, some another airframe), each stamped with its on-block
    // time, decoded as the reader decodes them.
    void parkedList(std::int64_t t) {
        std::vector<ParkedMessage> list;
        const ParkedContext context{gf_options(), "", ""};
        for (const scenario::Parked& p : parked::gf_parkedAt(week, static_cast<double>(t))) {
            const std::string stand = "PHNL_" + p.stand;  // the record only views it
            const ParkedRecord r{p.hexid,    p.lat,   p.lon,     p.seen_epoch_s,
                                 p.callsign, p.model, p.regcode, stand};
            if (auto decoded = gf_decodeParked(r, context)) list.push_back(std::move(*decoded));
        }
        {
            std::lock_guard lock(trafficReaderState.parkedLock);
            trafficReaderState.parkedFinished = std::move(list);
        }
        trafficReaderState.parkedDone = true;
    }
    parked::Week week;
    // Creates never answered lately: each leaves its stand empty until it is
    // given up (6,000 ticks) and the next update after that has come (in this
    // test 20 minutes are 4,800 ticks).
    std::int64_t unansweredLately() const {
        return std::count_if(neverAnswered.begin(), neverAnswered.end(),
                             [&](const Unanswered& u) { return u.tick >= gf_simTick() - 12000; });
    }
    void step(std::int64_t t) {
        weekNow = gf_weekSlotOf(t);
        if (t % 60 == 0) gf_parkingIntervalMinute();
        gf_parkingUpdate();
        feedHeard(MOVING);  // the reader goes on collecting
        for (int i = 0; i < TICKS_PER_STEP; ++i) {
            tick();
            if (i % 5 == 0) answerSim();
        }
    }
    // An update just now is carried out before the stands are looked at.
    // The plan carried out: every static aircraft stands, but for those the
    // simulator will never answer.
    bool settled() const {
        const auto waitsInVain = [&](const StaticAircraft& ac) {
            return std::any_of(neverAnswered.begin(), neverAnswered.end(),
                               [&](const Unanswered& u) { return u.hexid == ac.hexid; });
        };
        return parking.plan.empty() && std::all_of(staticAircraft.begin(), staticAircraft.end(),
                                                   [&](const StaticAircraft& ac) {
                                                       return ac.simState == SimState::active ||
                                                              waitsInVain(ac);
                                                   });
    }
    void checkCount() {
        const auto count = static_cast<std::int64_t>(activeStatics().size());
        EXPECT_LE(count, parking.wantedParked);
        EXPECT_GE(count, parking.wantedParked - 1 - unansweredLately())
            << gf_slotDay(weekNow) << " " << gf_slotHalfHour(weekNow);
    }
    void settle() {
        for (int i = 0; i < 2000 && !settled(); ++i) run(1);
        ASSERT_TRUE(settled());
    }
    // What must hold whenever the plan has been carried out.
    void checkStands(const std::vector<Stand>& stands, std::int32_t userStand) {
        const auto parked = activeStatics();
        for (std::size_t i = 0; i < parked.size(); ++i) {
            const StaticAircraft& ac = *parked[i];
            ASSERT_GE(ac.sid, 1);
            const Stand& stand = stands[static_cast<std::size_t>(ac.sid - 1)];
            if (ac.fromAirportFile != 0) {
                EXPECT_TRUE(lf_fileHadItLately(stand, ac, MAX_FIT + 1))
                    << ac.callsign << " " << ac.regcode << " on " << stand.id;
            }
            EXPECT_FALSE(gf_standsAdjacent(ac.sid, userStand)) << ac.callsign << " on " << stand.id;
            for (const std::string& cs : MOVING) {
                EXPECT_NE(ac.flightA, cs);
                EXPECT_NE(ac.flightB, cs);
            }
            for (std::size_t j = i + 1; j < parked.size(); ++j) {
                const StaticAircraft& other = *parked[j];
                EXPECT_FALSE(gf_standsAdjacent(ac.sid, other.sid))
                    << ac.callsign << " and " << other.callsign << " on " << stand.id << " and "
                    << gf_standName(other.sid);
                EXPECT_NE(ac.callsign, other.callsign);
                if (!ac.regcode.empty()) {
                    EXPECT_NE(ac.regcode, other.regcode);
                }
            }
        }
    }
};

TEST_F(ParkingWeek, AtHonoluluTheTargetHoldsWithTheFilesAircraftAndLeavingClearsEverything) {
    neverAnswerOneIn = 25;  // as the built-in simulator does
    const auto read =
        parked::gf_readParkedWeek(std::string(ZEPT_SOURCE_DIR) + "/data/parked/PHNL.csv");
    ASSERT_TRUE(read.has_value());
    week = *read;
    parkAt("PHNL", sourceFile("data/airports/archive/stock/PHNL.xml"), PHNL_LAT, PHNL_LON);
    learnedSettings("PHNL", param("parking_percentage", "30") + param("AUTO_PARK", "false") +
                                param("MAX_FIT", std::to_string(MAX_FIT)));
    userAt(21.328750, -157.914300, true);  // on stand T2-G7
    weekNow = gf_weekSlotOf(MONDAY);
    feedHeard(MOVING);
    gf_parkAtAirport();
    ASSERT_EQ(parking.wantedParked, 23);  // 30 % of 76 stands
    const std::vector<Stand>& stands = loadedAirport.file.stands;
    const std::int32_t userStand = gf_standNumberOf("T2-G7");
    ASSERT_GT(userStand, 0);

    std::string curve;
    int worst = 0;
    std::size_t mostFromFeed = 0;
    // The status line of every update would fill the test's output.
    testing::internal::CaptureStdout();
    for (std::int64_t t = MONDAY; t < MONDAY + 7 * 86400; t += STEP_S) {
        // The program asks for a new list before every update.
        if (t % 1200 == 0) parkedList(t);
        step(t);
        // Whenever the applier has done its work, the count is at the target.
        if (settled()) checkCount();
        if ((t + STEP_S) % 1800 != 0) continue;  // the last step of each half hour
        settle();
        checkStands(stands, userStand);
        const auto parked = activeStatics();
        const auto count = static_cast<int>(parked.size());
        const auto fromFeed =
            std::count_if(parked.begin(), parked.end(),
                          [](const StaticAircraft* ac) { return ac->fromAirportFile == 0; });
        const auto fileNow =
            std::count_if(parked.begin(), parked.end(), [&](const StaticAircraft* ac) {
                return ac->fromAirportFile != 0 &&
                       lf_fileHasItNow(stands[static_cast<std::size_t>(ac->sid - 1)], *ac);
            });
        checkCount();
        worst = std::max(worst, std::abs(count - parking.wantedParked));
        if (gf_slotHalfHour(weekNow) == 0) curve += fmt::format("\nday {}:", gf_slotDay(weekNow));
        curve += fmt::format(" {}/{}/{}", count, fromFeed, fileNow);
        mostFromFeed = std::max<std::size_t>(mostFromFeed, static_cast<std::size_t>(fromFeed));
        if (HasFailure()) break;
    }
    const std::string captured = testing::internal::GetCapturedStdout();
    if (HasFailure()) fmt::print("{}", captured);  // the failures are in it
    EXPECT_GT(mostFromFeed, 0u);                   // the feed's parked lists were planned
    fmt::print(
        "Static aircraft at PHNL every half hour: count/from the feed's parked lists/from the "
        "file that has them there in that half hour (the rest: earlier half hours within "
        "MAX_FIT) (target {}, largest miss {}):{}\n",
        parking.wantedParked, worst, curve);

    // The user takes off and flies out of range: every static aircraft goes,
    // one whose create is still unanswered when it is given up.
    userAt(PHNL_LAT + 0.5, PHNL_LON, false, 3000);
    gf_parkAirportCheck();
    EXPECT_FALSE(parkAirport.known());
    const std::int64_t left = MONDAY + 7 * 86400;
    for (std::int64_t t = left; t < left + 1800; t += STEP_S) step(t);
    EXPECT_TRUE(staticAircraft.empty());
    EXPECT_TRUE(takeCommands().creates.empty());
    EXPECT_TRUE(logged("PHNL is out of sight, parked aircraft will be removed"));
    EXPECT_TRUE(std::filesystem::exists("airports/learned/simaddon/PHNL.xml"));
}

}  // namespace
}  // namespace tfx::test
