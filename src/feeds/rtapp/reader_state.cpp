#include "feeds/rtapp/reader_state.h"

#include <cmath>
#include <numbers>

#include "airports/airport_session.h"
#include "feeds/rtapp/rtapp_readers.h"
#include "parking/airport_context.h"
#include "parking/park_airport.h"
#include "parking/user_stand.h"
#include "sim/user_data.h"

namespace tfx {

TrafficReaderState trafficReaderState;

void gf_resetReaderState(TrafficReaderState& s) {
    s.bufferCounter = 0;
    s.lastHeard = 0;
    s.bufferDone = false;
    s.parkedDone = false;
    s.linesDropped = 0;
    s.implausible = 0;
    gf_resetComplaints(s.complaints);
    s.batch.clear();
    s.batchKind = BatchKind::none;
    s.batchStart_ms = 0;
    s.batchHexids.clear();
    s.cycle_ms = DEFAULT_CYCLE_MS;
    s.liveMarkersSeen = false;
    s.bufferMarkersSeen = false;
    s.noMarkersLogged = false;
    s.parkedLast_ms = 0;
    s.parkedMarkerSeen = false;
    s.parkedRequestsSeen = s.parkedRequests.load();
    s.lastDatagram_ms = 0;
    s.batchSeen = {};
    s.contextValid = false;
    s.parkedBuilding.clear();
    gf_clearSeen(rtAppSeen);
    {
        std::lock_guard lock(s.parkedLock);
        s.parkedFinished.clear();
    }
    {
        std::lock_guard lock(s.positionLock);
        s.position = {};
    }
    s.seenActive = false;
    rtAppSeen.collecting = false;
    gf_resetWeatherState();
}

void gf_publishReaderPosition(TrafficReaderState& s) {
    const UserData user = gf_userData();
    ReaderPosition p;
    p.lat = user.lat;
    p.lon = user.lon;
    p.cosLat = std::cos(user.lat * std::numbers::pi / 180.0);
    p.userAltOffset_ft = user.alt - user.indicatedAlt;
    if (parkAirport.known()) {
        p.fieldAltitude_ft = parkAirport.alt_ft;
        p.parkAirport = LatLon{parkAirport.lat, parkAirport.lon};
    }
    p.userStand = gf_userDestStand();
    p.nearestStand = gf_closestStandToUser({user.lat, user.lon}).value_or("");
    std::lock_guard lock(s.positionLock);
    s.position = std::move(p);
}

std::vector<ParkedMessage> gf_takeParkedList(TrafficReaderState& s) {
    std::vector<ParkedMessage> taken;
    std::lock_guard lock(s.parkedLock);
    taken.swap(s.parkedFinished);
    return taken;
}

}  // namespace tfx
