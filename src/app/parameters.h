// The program's settings: a fixed set of named, typed parameter objects that
// exist from program start, and their stored form parameters.xml in the data
// folder. Engine threads never read these objects; they read the option
// snapshot (options.h), which is republished after every change.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace tfx {

struct Parameter {
    explicit Parameter(std::string key_) : key(std::move(key_)) {}
    virtual ~Parameter() = default;
    std::string key;  // the name attribute in parameters.xml
};

template <typename T>
struct TypedParameter : Parameter {
    TypedParameter(std::string key_, T default_, T min_, T max_)
        : Parameter(std::move(key_)),
          defaultValue(default_),
          minimum(min_),
          maximum(max_),
          current(default_) {}
    TypedParameter(std::string key_, T default_)
        : TypedParameter(std::move(key_), default_, default_, default_) {}
    T defaultValue;
    T minimum;
    T maximum;
    T current;
};

using BoolParameter = TypedParameter<bool>;
using IntParameter = TypedParameter<std::int32_t>;
using RealParameter = TypedParameter<float>;
using StringParameter = TypedParameter<std::string>;
using PathParameter = TypedParameter<std::filesystem::path>;

// Ties a parameter to its control in the main window.
struct ControlBinding {
    ControlBinding(std::uint16_t id, std::int32_t y) : controlId(id), y_px(y) {}
    std::uint16_t controlId;
    std::int32_t y_px;
    void* handle = nullptr;  // filled when the window is built
    std::uintptr_t extra = 0;
};

struct BoolOption : BoolParameter, ControlBinding {
    BoolOption(std::string key_, bool default_, std::uint16_t id)
        : BoolParameter(std::move(key_), default_), ControlBinding(id, 0) {}
};

struct IntSelector : IntParameter, ControlBinding {
    IntSelector(std::string key_, std::int32_t default_, std::vector<std::int32_t> list_,
                std::uint16_t id)
        : IntParameter(std::move(key_), default_, list_.front(), list_.back()),
          ControlBinding(id, 0),
          list(std::move(list_)) {}
    std::vector<std::int32_t> list;
};

struct RealSelector : RealParameter, ControlBinding {
    RealSelector(std::string key_, float default_, std::vector<float> list_, std::uint16_t id)
        : RealParameter(std::move(key_), default_, list_.front(), list_.back()),
          ControlBinding(id, 0),
          list(std::move(list_)) {}
    std::vector<float> list;
};

struct StringSelector : StringParameter, ControlBinding {
    StringSelector(std::string key_, std::string default_, std::vector<std::string> list_,
                   std::uint16_t id)
        : StringParameter(std::move(key_), std::move(default_)),
          ControlBinding(id, 0),
          list(std::move(list_)) {}
    std::vector<std::string> list;
};

struct TextOption : StringParameter, ControlBinding {
    TextOption(std::string key_, std::string default_, std::uint16_t id)
        : StringParameter(std::move(key_), std::move(default_)), ControlBinding(id, 0) {}
};

// A button: no value, its caption stands in the key. Never stored.
struct CommandButton : Parameter, ControlBinding {
    CommandButton(std::string caption, std::uint16_t id)
        : Parameter(std::move(caption)), ControlBinding(id, 0) {}
};

struct ParameterStore {
    ParameterStore();
    ParameterStore(const ParameterStore&) = delete;
    ParameterStore& operator=(const ParameterStore&) = delete;

    // 1. plain booleans
    BoolParameter PSX_SERVER_HERE, COLLAPSED;
    // 2. bound booleans
    BoolOption SKIP_AIRPORT_SCAN, SKIP_LIVERIES_SCAN, LIG_PRIORITIZE, LIG_AUTOMATIC,
        COLLISION_USER_GND, COLLISION_USER_AIR, COLLISION_LIVE_PARKED_GND, RANDOM, ALWAYS_ON_TOP,
        AEROWINX, GUID_CHANGES, OBJECTID_LIST, NAV_LIGHTS_WHILE_PARKED, AUTO_RANGE, LIGHT_AIRCRAFT,
        HELICOPTERS, HIGH_PERF_AIRCRAFT, SIM_TIME, KEEP_SIM_TIME_PAR, WEEK, PARK_SOFT,
        RT_PARKTRAFFIC_ONLY, AUTO_PARK;
    // 3. plain integers
    IntParameter MAIN_WINDOW_X, MAIN_WINDOW_Y, PARKING_INTERVAL_MINUTES,
        LAST_EPOCH_TIME /* key "LAST_EPOCH_TIME:" */, BLOCK_HEXIDDEC, MAX_FIT, RANGE_GROUND,
        RANGE_1, RANGE_2, RANGE_3, RANGE_ABOVE, FLIGHT_LEVEL_1, FLIGHT_LEVEL_2, FLIGHT_LEVEL_3;
    // 4. bound integers
    IntSelector RANGE, HOLDING_THRESHOLD_METERS, MAX_HOLDING_MINUTES, TIME_SHIFT_DAYS,
        TIME_SHIFT_HOURS, MATCHING_DEPTH, TCAS_FL, TIME_SHIFT_MINS, MAX_PARK_SEL, MAX_LIVE_SEL,
        AIRP_RANGE, AIRP_HEIGHT, parking_percentage;
    // 5. strings
    StringParameter PROGRAM_VERSION, AI_PACKAGE_SELECTOR, AIG_VERSION, ARCHIVES_VERSION,
        DBASE_VERSION, WEEKLY_TRAFFIC_AIRPORTS_VERSION, AIRPORTS_VERSION, PORT_NUMBER;
    std::array<StringParameter, 10> lfolder;  // lfolder0 .. lfolder9
    StringParameter BLOCK_AIRCRAFT, BLOCK_CALLSIGN, BLOCK_REGCODE;
    TextOption DESTINATION;
    // 6. bound strings
    StringSelector ALL_AIR_GND_SELECTOR, SIM_CHOICE, RT_CHOISE, QNH_UNIT;
    // 7. paths
    PathParameter MSFS_INSTALL_PATH, MSFS_2024_INSTALL_PATH;

    // Not stored.
    RealSelector MAX_FIT_FL;
    TextOption AIRCRAFT_SELECTOR, STAND_SELECTOR;
    CommandButton Tblo, Aircraft, Block, Unblock, Park, Flush;

    // The seven lists in file order; a load visits them in this order too.
    std::vector<BoolParameter*> plainBools;
    std::vector<BoolOption*> boundBools;
    std::vector<IntParameter*> plainInts;
    std::vector<IntSelector*> boundInts;
    std::vector<StringParameter*> strings;
    std::vector<StringSelector*> boundStrings;
    std::vector<PathParameter*> paths;

    // Every current value back to its default (a fresh process's state).
    void resetToDefaults();
};

// The one store of the process.
extern ParameterStore params;

// Permitted values of the plain, list-driven PARKING_INTERVAL_MINUTES.
extern const std::vector<std::int32_t> PARKING_INTERVAL_LIST;
// The 64 orderings permitted for AI_PACKAGE_SELECTOR, the default first.
const std::vector<std::string>& gf_aiPackageOrderings();

// The data folder (created if missing) and the parameter file in it.
// ZEPT_DATA_DIR overrides the roaming application data folder.
std::filesystem::path gf_dataFolder();
std::filesystem::path gf_parameterFilePath();

// Loads parameters.xml: 1 when a new file with defaults was created, 0 when read.
int gf_readParameters();
void gf_createParameterFile();
void gf_saveParameter(const IntParameter& p);
void gf_saveParameter(const BoolParameter& p);
void gf_saveParameter(const StringParameter& p);
void gf_saveParameter(const PathParameter& p);
void gf_setIntParameter(IntParameter& p, std::int32_t value);
bool gf_removeParameter(const std::string& key);
// Removes keys and writes values in one replacement of the file, so that an
// interrupted change leaves the old file or the new one, never half of it.
void gf_changeParameters(const std::vector<std::string>& removeKeys,
                         const std::vector<const IntParameter*>& ints,
                         const std::vector<const StringParameter*>& strings);
// Read, then the radius rule and the version step when a file was read.
int gf_checkRadiusParameters();
void gf_applyRadiusRule();
void gf_migrateParameters();
// A check box's click: invert, store, save, republish the options.
void gf_toggleBoolOption(BoolOption& option);

// The window's place from parameters.xml before the window exists. A file that
// doesn't parse is kept as parameters0.xml and removed.
struct WindowPlace {
    std::int32_t x_px;
    std::int32_t y_px;
};
WindowPlace gf_preReadWindowPlace();

// Shows a value in its bound control; set by the window once it exists.
extern std::function<void(const ControlBinding&, const std::string& text)> gf_showInControl;

}  // namespace tfx
