// The user aircraft as the simulator reports it: the position block with the
// jump test and the simulator's clock, the title, and the model with the half
// wing span the collision checks need.
#include <chrono>
#include <cmath>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "app/exit_request.h"
#include "app/log.h"
#include "app/user_exception.h"
#include "gui/gui.h"
#include "liveries/code_interning.h"
#include "liveries/reference_db.h"
#include "sim/sim_client.h"
#include "sim/sim_client_internal.h"
#include "sim/user_data.h"
#include "traffic/geometry.h"

namespace tfx {
namespace {

constexpr double ZERO_POSITION_DEG = 0.0001;
constexpr double TELEPORT_NM = 10;
constexpr std::size_t MAX_TITLE_CHARS = 48;
constexpr DWORD MODEL_BYTES = 32;
constexpr double METRES_PER_NM = 1852;

bool lf_isZero(double lat, double lon) {
    return std::abs(lat) <= ZERO_POSITION_DEG && std::abs(lon) <= ZERO_POSITION_DEG;
}

template <class T>
T lf_datum(const SIMCONNECT_RECV_SIMOBJECT_DATA& record, std::size_t offset) {
    T value;
    std::memcpy(&value, reinterpret_cast<const char*>(&record.dwData) + offset, sizeof value);
    return value;
}

std::int64_t lf_epochSeconds(std::int64_t year, std::int64_t dayOfYear, std::int64_t secondsOfDay) {
    using namespace std::chrono;
    const sys_days newYear = year_month_day{std::chrono::year{static_cast<int>(year)}, January, 1d};
    return newYear.time_since_epoch().count() * 86400 + (dayOfYear - 1) * 86400 + secondsOfDay;
}

// The half span of a model known to the reference data, in NM.
std::optional<double> lf_knownHalfSpan(std::string_view model) {
    const auto index = gf_findCode(modelCodes, model);
    if (!index) return std::nullopt;
    const double span = gf_halfWingspanNm(*index);
    if (span <= 0) return std::nullopt;
    return span;
}

// ".0.text" ends names like "ATCCOM.AC_MODEL_A320.0.text": the code stands
// right before it, in four, three or two letters.
std::string lf_modelFromAtcText(const std::string& value) {
    const std::size_t at = value.find(".0.text");
    for (std::size_t n : {4u, 3u, 2u}) {
        if (at < n) continue;
        std::string piece = value.substr(at - n, n);
        if (piece == "A380") piece = "A388";
        if (lf_knownHalfSpan(piece)) return piece;
    }
    return value;
}

std::string lf_correctedModel(const std::string& value) {
    struct Fix {
        std::string_view from, to;
    };
    static constexpr Fix EXACT[] = {
        {"A350-900", "A359"}, {"A220-300", "BCS3"}, {"KODIAK", "K100"}, {"GL6T", "GLEX"},
        {"N738B", "B38M"},    {"UH-1H", "UH1"},     {"777", "772"},     {"A330-200 (RR)", "A332"}};
    for (const Fix& f : EXACT)
        if (value == f.from) return std::string(f.to);
    if (value.find("Phenom 300E") != std::string::npos) return "E55P";
    if (value.find(".0.text") != std::string::npos) return lf_modelFromAtcText(value);
    if (value.starts_with("$$:") && value.size() >= 5) return value.substr(3);
    if (value == "737") {
        static constexpr Fix BY_TITLE[] = {{"DG 737-800", "B738"},
                                           {"DG 737-700", "B737"},
                                           {"DG 737-600", "B736"},
                                           {"DG 737-900", "B739"}};
        for (const Fix& f : BY_TITLE)
            if (userTitle.find(f.from) != std::string::npos) return std::string(f.to);
    }
    return value;
}

void lf_deduceModel(const std::string& raw) {
    gf_logLine(fmt::format("model raw: {}", raw));
    if (raw.empty()) {
        gf_showStatus(
            "171: No model info from your user aircraft received in SimConnect, CRJ7 is taken "
            "instead",
            true);
        userModel = "CRJ7";
        userHalfSpan = lf_knownHalfSpan(userModel).value_or(maxHalfWingspan);
        return;
    }
    userModel = lf_correctedModel(raw);
    std::string line = fmt::format("SimConnect: User aircraft model: {}", userModel);
    if (userModel.find("camerapod") != std::string::npos ||
        userModel.find("Crew Vessel") != std::string::npos) {
        Gui::enqueueUpdate({GuiKind::WingspanKnown, TextAndFlag{userModel, true}});
        userModel = "E190";
        userHalfSpan = lf_knownHalfSpan(userModel).value_or(maxHalfWingspan);
        userCategory = AircraftCategory::Light;
        gf_logLine(line);
        return;
    }
    double span = userModel.size() < 5 ? lf_knownHalfSpan(userModel).value_or(maxHalfWingspan)
                                       : maxHalfWingspan;
    if (span == maxHalfWingspan) {
        static constexpr std::string_view TITLE_STARTS[] = {"Aerosoft A319", "Aerosoft A320",
                                                            "Aerosoft A321"};
        bool deduced = false;
        for (std::string_view start : TITLE_STARTS) {
            if (!userTitle.starts_with(start)) continue;
            userModel = std::string(start.substr(start.size() - 4));
            line = fmt::format("SimConnect: User aircraft model deduced from title: {}", userModel);
            const auto known = lf_knownHalfSpan(userModel);
            span = known.value_or(maxHalfWingspan);
            deduced = known.has_value();
            break;
        }
        if (!deduced)
            gf_showStatus(
                "User aircraft wing span unknown, max is taken instead, please report in my "
                "Forum!");
    }
    if (span != maxHalfWingspan) {
        line += fmt::format(", half wing span: {:.1F} meter", span * METRES_PER_NM);
        Gui::enqueueUpdate({GuiKind::WingspanKnown, TextAndFlag{userModel, true}});
    }
    const auto index = gf_findCode(modelCodes, userModel);
    userCategory = index ? gf_modelCategory(*index) : AircraftCategory::Light;
    line += fmt::format(", category: {}", gf_categoryWord(userCategory.load()));
    gf_logLine(line);
    userHalfSpan = span;
}

}  // namespace

void lf_userPositionReply(const SIMCONNECT_RECV_SIMOBJECT_DATA& record) {
    UserData user;
    user.lat = lf_datum<double>(record, 0);
    user.lon = lf_datum<double>(record, 8);
    user.pitch = lf_datum<double>(record, 16);
    user.bank = lf_datum<double>(record, 24);
    user.vs = lf_datum<double>(record, 32);
    user.heading = lf_datum<double>(record, 40);
    user.alt = std::max(0.0, lf_datum<double>(record, 48));
    user.indicatedAlt = lf_datum<double>(record, 56);
    user.agl = lf_datum<double>(record, 64);
    user.groundSpeed = lf_datum<double>(record, 72);
    user.zuluTime = lf_datum<std::int64_t>(record, 80);
    user.zuluDayOfYear = lf_datum<std::int64_t>(record, 88);
    user.zuluYear = lf_datum<std::int64_t>(record, 96);
    user.lightStates = lf_datum<std::int64_t>(record, 104);
    user.track = lf_datum<double>(record, 112);
    gf_storeUserData(user);

    const PreviousUserPos before = previousUserPos;
    if (!lf_isZero(before.lat, before.lon) && !lf_isZero(user.lat, user.lon) &&
        gf_distanceNm({before.lat, before.lon}, {user.lat, user.lon}) > TELEPORT_NM) {
        gf_logLine("Teleport");
        gf_requestExit(ExitReason::NewFlight, 60);
    }
    previousUserPos = {user.lat, user.lon};
    // The stand the user stands at needs the airport context; until it can
    // answer, the field stays empty.
    Gui::enqueueUpdate({GuiKind::UserStand, std::string()});
    if (user.zuluYear > 0)
        simEpochTime = lf_epochSeconds(user.zuluYear, user.zuluDayOfYear, user.zuluTime);
    userObjectId = record.dwObjectID;
}

void lf_userTitleReply(const SIMCONNECT_RECV_SIMOBJECT_DATA& record, DWORD cbData) {
    const char* text = reinterpret_cast<const char*>(&record.dwData);
    const std::size_t room = cbData - SIMOBJECT_DATA_OFFSET;
    const std::size_t length = strnlen(text, room);
    if (length == room) {
        gf_logError("SimConnect USER_AC_TITLE is not null terminated");
        return;
    }
    const std::string title(text, std::min(length, MAX_TITLE_CHARS));
    if (title.empty()) gf_logLine("! Title of your aircraft is empty?");
    if (title != userTitle) {
        userTitle = title;
        gf_logLine(fmt::format("SimConnect: user aircraft title: {}", title));
    }
}

void lf_userModelReply(const SIMCONNECT_RECV_SIMOBJECT_DATA& record) {
    const char* text = reinterpret_cast<const char*>(&record.dwData);
    try {
        lf_deduceModel(std::string(text, strnlen(text, MODEL_BYTES)));
    } catch (const std::exception&) {
        throw UserRelatedException(
            73, "It looks like you have not selected an aircraft as user vehicle");
    }
}

void gf_updateUserStand() {
    // The closest stand comes from the airport context, which cannot tell it
    // yet: nothing is recorded.
}

}  // namespace tfx
