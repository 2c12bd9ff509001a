// Updates of the main window from any thread. Until the window exists the
// program runs headless: the updates keep the window's state and status and
// error lines go to the console.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace tfx {

// The kinds of window update; the number is the update's identity.
enum class GuiKind : std::int32_t {
    SetCollapsed = 0,
    ToggleCollapsed = 1,
    AlwaysOnTop = 2,
    Minimise = 3,
    Redraw = 4,
    StatusTimeout = 5,
    FeedStarted = 6,
    StaticQueued = 7,
    TrafficState = 8,
    WeatherState = 10,
    FeedText = 11,
    SimText = 12,
    SimRunning = 13,
    LiveryCount = 14,
    SimaddonCount = 15,
    ThirdpartyCount = 16,
    WingspanKnown = 17,
    LiveCount = 18,
    StandCount = 19,
    ParkLive = 20,
    MaxPark = 21,
    QualityText = 22,
    ParkAirport = 23,
    AirportKnown = 24,
    NextUpdateMinutes = 25,
    HideStaticFit = 26,
    Qnh = 27,
    QnhUnit = 28,
    Publisher = 29,
    UpdateCount = 30,
    StaticFit = 31,
    LiveFit = 32,
    UserStand = 33,
    TimeShiftOff = 34,
    Status = 35,
    Error = 36,
    ClearStatus = 37,
    ClearError = 38,
    Reset = 39,
};

struct TextAndFlag {
    std::string text;
    bool flag = false;
};
struct TwoNumbers {
    std::int64_t first = 0;
    std::int64_t second = 0;
};

struct GuiUpdate {
    GuiKind kind;
    std::variant<std::monostate, bool, std::int64_t, float, std::string, TextAndFlag, TwoNumbers>
        payload;
};

struct Gui {
    // Any thread; never blocks for long.
    static void enqueueUpdate(GuiUpdate update);
    // Applies what is queued (the GUI thread's part). Returns how many.
    static int drainUpdates();
    // Stops all further updates (closing down).
    static void shutdown();
    // Read by tests and the headless status printer.
    static std::string statusText();
    static std::string errorText();
};

// The status line; with log set the text also goes to Log.txt.
void gf_showStatus(const std::string& text, bool log = false);
// The error line, logged as "Error <text>"; it stays until cleared.
void gf_showError(const std::string& text);
void gf_clearStatus();

}  // namespace tfx
