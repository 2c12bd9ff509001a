#include "parking/parking_update.h"

#include <chrono>

#include <fmt/format.h>

#include "airports/loaded_airport.h"
#include "app/log.h"
#include "app/options.h"
#include "app/run_state.h"
#include "feeds/rtapp/reader_state.h"
#include "feeds/rtapp/rtapp_link.h"
#include "feeds/seen_sets.h"
#include "gui/gui.h"
#include "parking/airport_context.h"
#include "parking/park_airport.h"
#include "parking/park_airport_list.h"
#include "parking/parked_count.h"
#include "parking/parking_applier.h"
#include "parking/parking_plan.h"
#include "parking/parking_planner.h"
#include "parking/parking_state.h"
#include "traffic/clock.h"

namespace tfx {

namespace {

struct UpdateState {
    std::int32_t countdown = 20;     // minutes
    std::int32_t intervalSeen = 20;  // the interval the countdown follows
    std::uint32_t requests = 0, done = 0;
    bool prepared = false;
    std::uint32_t preparedRequest = 0;
    bool preparedChanged = false;
    bool parkedDataChanged = false;
    std::uint32_t listsTaken = 0, listsAtPrepare = 0;
};
UpdateState update;

bool lf_airportLoaded() {
    return parkAirport.known() && loadedAirport.published;
}

bool lf_updatePending() {
    return update.requests != update.done || update.prepared;
}

void lf_openRequest() {
    gf_showStatus(fmt::format("{} will update static parking soon ...", PROGRAM_NAME));
    ++update.requests;
}

// A parked list that came since the last look becomes the planner's.
bool lf_takeNewParkedList() {
    if (gf_isRTDirect() || !trafficReaderState.parkedDone.exchange(false)) return false;
    parking.parkedList = gf_takeParkedList(trafficReaderState);
    ++update.listsTaken;
    return true;
}

class Stopwatch {
public:
    std::int64_t elapsed_ms() const {
        return std::chrono::duration_cast<std::chrono::milliseconds>(
                   std::chrono::steady_clock::now() - start_)
            .count();
    }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace

bool gf_adjustmentPrepared() {
    return update.prepared;
}

std::int32_t gf_parkingCountdown() {
    return update.countdown;
}

void gf_requestParkingUpdate() {
    if (!parkAirport.known()) return;
    if (!gf_isRTDirect()) gf_requestParkedHere();
    lf_openRequest();
    update.countdown = update.intervalSeen;
}

void gf_parkingIntervalMinute() {
    const std::int32_t interval = gf_options()->PARKING_INTERVAL_MINUTES;
    if (interval != update.intervalSeen) {
        update.intervalSeen = interval;
        update.countdown = interval;
        return;
    }
    --update.countdown;
    Gui::enqueueUpdate({GuiKind::NextUpdateMinutes, std::int64_t{update.countdown}});
    if (update.countdown == 2 && !gf_isRTDirect() && lf_airportLoaded()) gf_requestParkedHere();
    if (update.countdown > 0) return;
    update.countdown = interval;
    if (lf_airportLoaded() && parking.plan.empty() && !lf_updatePending()) lf_openRequest();
}

void gf_parkingUpdate() {
    gf_giveUpUnansweredStatics();
    if (lf_takeNewParkedList() && lf_airportLoaded()) {
        update.parkedDataChanged = true;
        if (parking.plan.empty() && !lf_updatePending()) lf_openRequest();
    }
    if (update.prepared) {
        update.prepared = false;
        if (lf_airportLoaded() && !gf_parkStands().empty()) {
            const Stopwatch watch;
            lf_parkingAdjustments(update.preparedChanged);
            gf_advanceSimTick(watch.elapsed_ms());
        }
        update.done = update.preparedRequest;
        if (update.listsTaken == update.listsAtPrepare) update.parkedDataChanged = false;
        return;
    }
    if (update.requests == update.done) return;
    update.preparedRequest = update.requests;
    update.preparedChanged = update.parkedDataChanged;
    update.listsAtPrepare = update.listsTaken;
    update.prepared = true;
    gf_startSeenCollection();
}

void gf_parkAtAirport() {
    const Stopwatch watch;
    if (!lf_takeNewParkedList()) {
        parking.parkedList.clear();
        // Parked traffic of this airport comes with the first update.
        if (!gf_isRTDirect()) gf_requestParkedHere();
    }
    if (const auto error = lf_readParkedFile()) {
        gf_logError(*error);
        gf_showStatus(*error);
        lf_leaveAirport();
        return;
    }
    lf_firstParking();
    gf_advanceSimTick(watch.elapsed_ms());
    update.countdown = update.intervalSeen;
}

void lf_leaveAirport() {
    if (loadedAirport.published) {
        // Entries passed over in the last plan are no less true.
        lf_reviveOptions();
        gf_saveLearned(loadedAirport.file.stands, loadedAirport.file.handmade);
    }
    Gui::enqueueUpdate({GuiKind::Publisher, std::string()});
    Gui::enqueueUpdate({GuiKind::StandCount, std::int64_t{0}});
    Gui::enqueueUpdate({GuiKind::QualityText, std::string()});
    Gui::enqueueUpdate({GuiKind::MaxPark, TwoNumbers{0, 0}});
    lf_forgetParkAirport();
    gf_clearStands();
    update.prepared = false;
    update.done = update.requests;
    update.parkedDataChanged = false;
}

void gf_parkingClosingDown() {
    if (parkAirport.known()) {
        parking.plan.clear();
        lf_removeAllStaticAndLiveAtAirport();
        lf_leaveAirport();
    }
    gf_writeMyParkAirportsFile();
}

void gf_resetParkingUpdate() {
    update = UpdateState{};
    if (const OptionsPtr options = gf_options())
        update.intervalSeen = update.countdown = options->PARKING_INTERVAL_MINUTES;
    parkedUpdatedCount = 0;
    gf_clearDelayedParked();
    gf_forgetUnansweredStatics();
    parkAirportLoadPending = false;
}

}  // namespace tfx
