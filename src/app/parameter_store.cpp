// The table of parameters: every key with its default and limits. The order
// of the members and of the lists is the order of a freshly written file.
#include <algorithm>
#include <cstdint>

#include "app/parameters.h"
#include "app/version.h"

namespace tfx {
namespace {

std::vector<std::int32_t> lf_steps(std::int32_t first, std::int32_t last, std::int32_t step) {
    std::vector<std::int32_t> list;
    for (std::int32_t v = first; v <= last; v += step) list.push_back(v);
    return list;
}

std::vector<float> lf_maxFitHours() {
    std::vector<float> list;
    for (int i = 1; i <= 48; ++i) list.push_back(0.5f * static_cast<float>(i));
    return list;
}

const std::vector<std::int32_t> MAX_SEL_LIST = {0,  5,  10, 15, 20, 25,  30,
                                                35, 40, 45, 50, 75, 100, 500};

// Control identifiers of the window, numbered in the order of the table.
enum ControlId : std::uint16_t {
    ID_SKIP_AIRPORT_SCAN = 1001,
    ID_SKIP_LIVERIES_SCAN,
    ID_LIG_PRIORITIZE,
    ID_LIG_AUTOMATIC,
    ID_COLLISION_USER_GND,
    ID_COLLISION_USER_AIR,
    ID_COLLISION_LIVE_PARKED_GND,
    ID_RANDOM,
    ID_ALWAYS_ON_TOP,
    ID_AEROWINX,
    ID_GUID_CHANGES,
    ID_OBJECTID_LIST,
    ID_NAV_LIGHTS_WHILE_PARKED,
    ID_AUTO_RANGE,
    ID_LIGHT_AIRCRAFT,
    ID_HELICOPTERS,
    ID_HIGH_PERF_AIRCRAFT,
    ID_SIM_TIME,
    ID_KEEP_SIM_TIME_PAR,
    ID_WEEK,
    ID_PARK_SOFT,
    ID_RT_PARKTRAFFIC_ONLY,
    ID_AUTO_PARK,
    ID_RANGE,
    ID_HOLDING_THRESHOLD_METERS,
    ID_MAX_HOLDING_MINUTES,
    ID_TIME_SHIFT_DAYS,
    ID_TIME_SHIFT_HOURS,
    ID_MATCHING_DEPTH,
    ID_TCAS_FL,
    ID_TIME_SHIFT_MINS,
    ID_MAX_PARK_SEL,
    ID_MAX_LIVE_SEL,
    ID_AIRP_RANGE,
    ID_AIRP_HEIGHT,
    ID_parking_percentage,
    ID_DESTINATION,
    ID_ALL_AIR_GND_SELECTOR,
    ID_SIM_CHOICE,
    ID_RT_CHOISE,
    ID_QNH_UNIT,
    ID_MAX_FIT_FL,
    ID_AIRCRAFT_SELECTOR,
    ID_STAND_SELECTOR,
    ID_Tblo,
    ID_Aircraft,
    ID_Block,
    ID_Unblock,
    ID_Park,
    ID_Flush,
};

}  // namespace

const std::vector<std::int32_t> PARKING_INTERVAL_LIST = {10, 15, 20, 25, 30, 40, 50, 60, 90, 1440};

// clang-format off
ParameterStore::ParameterStore()
    : PSX_SERVER_HERE("PSX_SERVER_HERE", true),
      COLLAPSED("COLLAPSED", true),

      SKIP_AIRPORT_SCAN("SKIP_AIRPORT_SCAN", false, ID_SKIP_AIRPORT_SCAN),
      SKIP_LIVERIES_SCAN("SKIP_LIVERIES_SCAN", false, ID_SKIP_LIVERIES_SCAN),
      LIG_PRIORITIZE("LIG_PRIORITIZE", true, ID_LIG_PRIORITIZE),
      LIG_AUTOMATIC("LIG_AUTOMATIC", true, ID_LIG_AUTOMATIC),
      COLLISION_USER_GND("COLLISION_USER_GND", true, ID_COLLISION_USER_GND),
      COLLISION_USER_AIR("COLLISION_USER_AIR", true, ID_COLLISION_USER_AIR),
      COLLISION_LIVE_PARKED_GND("COLLISION_LIVE_PARKED_GND", false, ID_COLLISION_LIVE_PARKED_GND),
      RANDOM("RANDOM", true, ID_RANDOM),
      ALWAYS_ON_TOP("ALWAYS_ON_TOP", false, ID_ALWAYS_ON_TOP),
      AEROWINX("AEROWINX", false, ID_AEROWINX),
      GUID_CHANGES("GUID_CHANGES", true, ID_GUID_CHANGES),
      OBJECTID_LIST("OBJECTID_LIST", false, ID_OBJECTID_LIST),
      NAV_LIGHTS_WHILE_PARKED("NAV_LIGHTS_WHILE_PARKED", true, ID_NAV_LIGHTS_WHILE_PARKED),
      AUTO_RANGE("AUTO_RANGE", true, ID_AUTO_RANGE),
      LIGHT_AIRCRAFT("LIGHT_AIRCRAFT", true, ID_LIGHT_AIRCRAFT),
      HELICOPTERS("HELICOPTERS", true, ID_HELICOPTERS),
      HIGH_PERF_AIRCRAFT("HIGH_PERF_AIRCRAFT", true, ID_HIGH_PERF_AIRCRAFT),
      SIM_TIME("SIM_TIME", false, ID_SIM_TIME),
      KEEP_SIM_TIME_PAR("KEEP_SIM_TIME_PAR", false, ID_KEEP_SIM_TIME_PAR),
      WEEK("WEEK", false, ID_WEEK),
      PARK_SOFT("PARK_SOFT", false, ID_PARK_SOFT),
      RT_PARKTRAFFIC_ONLY("RT_PARKTRAFFIC_ONLY", false, ID_RT_PARKTRAFFIC_ONLY),
      AUTO_PARK("AUTO_PARK", true, ID_AUTO_PARK),

      MAIN_WINDOW_X("MAIN_WINDOW_X", 400, -30000, 30000),
      MAIN_WINDOW_Y("MAIN_WINDOW_Y", 20, -30000, 30000),
      PARKING_INTERVAL_MINUTES("PARKING_INTERVAL_MINUTES", 20, 10, 1440),
      LAST_EPOCH_TIME("LAST_EPOCH_TIME:", 0, 0, 2147483647),
      BLOCK_HEXIDDEC("BLOCK_HEXIDDEC", 0, 0, 16777215),
      MAX_FIT("MAX_FIT", 47, 0, 47),
      RANGE_GROUND("RANGE_GROUND", 10, 2, 100),
      RANGE_1("RANGE_1", 20, 2, 100),
      RANGE_2("RANGE_2", 40, 2, 100),
      RANGE_3("RANGE_3", 50, 1, 100),
      RANGE_ABOVE("RANGE_ABOVE", 60, 2, 100),
      FLIGHT_LEVEL_1("FLIGHT_LEVEL_1", 100, 2, 480),
      FLIGHT_LEVEL_2("FLIGHT_LEVEL_2", 200, 2, 480),
      FLIGHT_LEVEL_3("FLIGHT_LEVEL_3", 300, 2, 480),

      RANGE("RANGE", 40, lf_steps(2, 100, 1), ID_RANGE),
      HOLDING_THRESHOLD_METERS("HOLDING_THRESHOLD_METERS", 250,
          {10, 50, 100, 150, 200, 250, 300, 350, 400, 450, 500, 600, 700, 800, 900},
          ID_HOLDING_THRESHOLD_METERS),
      MAX_HOLDING_MINUTES("MAX_HOLDING_MINUTES", 3, lf_steps(1, 60, 1), ID_MAX_HOLDING_MINUTES),
      TIME_SHIFT_DAYS("TIME_SHIFT_DAYS", 0, lf_steps(0, 13, 1), ID_TIME_SHIFT_DAYS),
      TIME_SHIFT_HOURS("TIME_SHIFT_HOURS", 0, lf_steps(0, 23, 1), ID_TIME_SHIFT_HOURS),
      MATCHING_DEPTH("MATCHING_DEPTH", 4, lf_steps(1, 7, 1), ID_MATCHING_DEPTH),
      TCAS_FL("TCAS_FL", 180,
          {100, 120, 140, 160, 180, 200, 220, 240, 260, 280, 300, 320, 440}, ID_TCAS_FL),
      TIME_SHIFT_MINS("TIME_SHIFT_MINS", 0, lf_steps(0, 59, 1), ID_TIME_SHIFT_MINS),
      MAX_PARK_SEL("MAX_PARK_SEL", 500, MAX_SEL_LIST, ID_MAX_PARK_SEL),
      MAX_LIVE_SEL("MAX_LIVE_SEL", 500, MAX_SEL_LIST, ID_MAX_LIVE_SEL),
      AIRP_RANGE("AIRP_RANGE", 20, {5, 10, 15, 20, 25, 30}, ID_AIRP_RANGE),
      AIRP_HEIGHT("AIRP_HEIGHT", 18000,
          {2000, 4000, 6000, 8000, 10000, 12000, 14000, 16000, 18000, 36000, 48000}, ID_AIRP_HEIGHT),
      parking_percentage("parking_percentage", 30, lf_steps(0, 100, 5), ID_parking_percentage),

      PROGRAM_VERSION("PROGRAM_VERSION", ""),
      AI_PACKAGE_SELECTOR("AI_PACKAGE_SELECTOR", "AIG, FSLTL, JF, MTL"),
      AIG_VERSION("AIG_VERSION", ""),
      ARCHIVES_VERSION("ARCHIVES_VERSION", ""),
      DBASE_VERSION("DBASE_VERSION", ""),
      WEEKLY_TRAFFIC_AIRPORTS_VERSION("WEEKLY_TRAFFIC_AIRPORTS_VERSION", ""),
      AIRPORTS_VERSION("AIRPORTS_VERSION", ""),
      PORT_NUMBER("PORT_NUMBER", "10747"),
      lfolder{StringParameter("lfolder0", ""), StringParameter("lfolder1", ""),
              StringParameter("lfolder2", ""), StringParameter("lfolder3", ""),
              StringParameter("lfolder4", ""), StringParameter("lfolder5", ""),
              StringParameter("lfolder6", ""), StringParameter("lfolder7", ""),
              StringParameter("lfolder8", ""), StringParameter("lfolder9", "")},
      BLOCK_AIRCRAFT("BLOCK_AIRCRAFT", ""),
      BLOCK_CALLSIGN("BLOCK_CALLSIGN", ""),
      BLOCK_REGCODE("BLOCK_REGCODE", ""),
      DESTINATION("DESTINATION", "", ID_DESTINATION),

      ALL_AIR_GND_SELECTOR("ALL_AIR_GND_SELECTOR", "All traffic",
          {"All traffic", "Airborne only", "Ground only"}, ID_ALL_AIR_GND_SELECTOR),
      SIM_CHOICE("SIM_CHOICE", "MSFS 2020", {"MSFS 2020", "MSFS 2024"}, ID_SIM_CHOICE),
      RT_CHOISE("RT_CHOISE", "RT Direct", {"RT Direct", "RT App"}, ID_RT_CHOISE),
      QNH_UNIT("QNH_UNIT", "QNH hPa", {"QNH hPa", "QNH inHg"}, ID_QNH_UNIT),

      MSFS_INSTALL_PATH("MSFS_INSTALL_PATH", std::filesystem::path()),
      MSFS_2024_INSTALL_PATH("MSFS_2024_INSTALL_PATH", std::filesystem::path()),

      MAX_FIT_FL("MAX_FIT_FL", 24.0f, lf_maxFitHours(), ID_MAX_FIT_FL),
      AIRCRAFT_SELECTOR("AIRCRAFT_SELECTOR", "", ID_AIRCRAFT_SELECTOR),
      STAND_SELECTOR("STAND_SELECTOR", "", ID_STAND_SELECTOR),
      Tblo("Tblo", ID_Tblo), Aircraft("Aircraft", ID_Aircraft), Block("Block", ID_Block),
      Unblock("Unblock", ID_Unblock), Park("Park", ID_Park), Flush("Flush", ID_Flush),

      plainBools{&PSX_SERVER_HERE, &COLLAPSED},
      boundBools{&SKIP_AIRPORT_SCAN, &SKIP_LIVERIES_SCAN, &LIG_PRIORITIZE, &LIG_AUTOMATIC,
                 &COLLISION_USER_GND, &COLLISION_USER_AIR, &COLLISION_LIVE_PARKED_GND, &RANDOM,
                 &ALWAYS_ON_TOP, &AEROWINX, &GUID_CHANGES, &OBJECTID_LIST,
                 &NAV_LIGHTS_WHILE_PARKED, &AUTO_RANGE, &LIGHT_AIRCRAFT, &HELICOPTERS,
                 &HIGH_PERF_AIRCRAFT, &SIM_TIME, &KEEP_SIM_TIME_PAR, &WEEK, &PARK_SOFT,
                 &RT_PARKTRAFFIC_ONLY, &AUTO_PARK},
      plainInts{&MAIN_WINDOW_X, &MAIN_WINDOW_Y, &PARKING_INTERVAL_MINUTES, &LAST_EPOCH_TIME,
                &BLOCK_HEXIDDEC, &MAX_FIT, &RANGE_GROUND, &RANGE_1, &RANGE_2, &RANGE_3,
                &RANGE_ABOVE, &FLIGHT_LEVEL_1, &FLIGHT_LEVEL_2, &FLIGHT_LEVEL_3},
      boundInts{&RANGE, &HOLDING_THRESHOLD_METERS, &MAX_HOLDING_MINUTES, &TIME_SHIFT_DAYS,
                &TIME_SHIFT_HOURS, &MATCHING_DEPTH, &TCAS_FL, &TIME_SHIFT_MINS, &MAX_PARK_SEL,
                &MAX_LIVE_SEL, &AIRP_RANGE, &AIRP_HEIGHT, &parking_percentage},
      strings{&PROGRAM_VERSION, &AI_PACKAGE_SELECTOR, &AIG_VERSION, &ARCHIVES_VERSION,
              &DBASE_VERSION, &WEEKLY_TRAFFIC_AIRPORTS_VERSION, &AIRPORTS_VERSION, &PORT_NUMBER,
              &lfolder[0], &lfolder[1], &lfolder[2], &lfolder[3], &lfolder[4], &lfolder[5],
              &lfolder[6], &lfolder[7], &lfolder[8], &lfolder[9], &BLOCK_AIRCRAFT,
              &BLOCK_CALLSIGN, &BLOCK_REGCODE, &DESTINATION},
      boundStrings{&ALL_AIR_GND_SELECTOR, &SIM_CHOICE, &RT_CHOISE, &QNH_UNIT},
      paths{&MSFS_INSTALL_PATH, &MSFS_2024_INSTALL_PATH} {}
// clang-format on

void ParameterStore::resetToDefaults() {
    for (auto* p : plainBools) p->current = p->defaultValue;
    for (auto* p : boundBools) p->current = p->defaultValue;
    for (auto* p : plainInts) p->current = p->defaultValue;
    for (auto* p : boundInts) p->current = p->defaultValue;
    for (auto* p : strings) p->current = p->defaultValue;
    for (auto* p : boundStrings) p->current = p->defaultValue;
    for (auto* p : paths) p->current = p->defaultValue;
    MAX_FIT_FL.current = MAX_FIT_FL.defaultValue;
    AIRCRAFT_SELECTOR.current.clear();
    STAND_SELECTOR.current.clear();
}

ParameterStore params;

const std::vector<std::string>& gf_aiPackageOrderings() {
    static const std::vector<std::string> orderings = [] {
        const std::vector<std::string> packages = {"AIG", "FSLTL", "JF", "MTL"};
        std::vector<std::string> out;
        auto join = [&](const std::vector<int>& idx) {
            std::string text;
            for (std::size_t i = 0; i < idx.size(); ++i) {
                if (i > 0) text += ", ";
                text += packages[static_cast<std::size_t>(idx[i])];
            }
            out.push_back(text);
        };
        // From most to fewest packages; subsets in package order; within a
        // subset every permutation in dictionary order of the package order
        // (which for pairs gives "A, B" then "B, A").
        for (int size = 4; size >= 1; --size) {
            std::vector<unsigned> masks;
            for (unsigned mask = 0; mask < 16; ++mask)
                if (__builtin_popcount(mask) == size) masks.push_back(mask);
            // Subsets in the order of their members: {A,F} {A,J} {A,M} {F,J}...
            std::sort(masks.begin(), masks.end(), [](unsigned a, unsigned b) {
                for (int bit = 0; bit < 4; ++bit) {
                    const bool ia = a & (1u << bit), ib = b & (1u << bit);
                    if (ia != ib) return ia;
                }
                return false;
            });
            for (unsigned mask : masks) {
                std::vector<int> idx;
                for (int bit = 0; bit < 4; ++bit)
                    if (mask & (1u << bit)) idx.push_back(bit);
                do join(idx);
                while (std::next_permutation(idx.begin(), idx.end()));
            }
        }
        return out;
    }();
    return orderings;
}

}  // namespace tfx
