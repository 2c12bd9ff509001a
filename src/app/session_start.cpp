// A session's start: the steps from the folder check to the main loop.
#include <chrono>
#include <ctime>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include <fmt/format.h>

#include "airports/airport_session.h"
#include "app/decrypt.h"
#include "app/exit_request.h"
#include "app/exit_status.h"
#include "app/file_utils.h"
#include "app/log.h"
#include "app/options.h"
#include "app/parameters.h"
#include "app/run_flags.h"
#include "app/run_state.h"
#include "app/run_words.h"
#include "app/session_internal.h"
#include "app/stale_files.h"
#include "app/update_check.h"
#include "app/user_exception.h"
#include "feeds/feed_start.h"
#include "gui/gui.h"
#include "liveries/liveries_scan.h"
#include "liveries/reference_db.h"
#include "parking/airport_context.h"
#include "parking/park_airport_list.h"
#include "platform/sockets.h"
#include "sim/sim_client.h"
#include "sim/sim_queues.h"
#include "sim/user_data.h"
#include "traffic/traffic.h"

namespace fs = std::filesystem;

namespace tfx {

std::jthread simClientThread;

namespace {

// Folders the session writes into, made when missing.
constexpr const char* WORKING_FOLDERS[] = {
    "output",
    "output/info",
    "output/errors",
    "airports",
    "airports/learned",
    "airports/learned/stock",
    "airports/learned/simaddon",
    "airports/learned/thirdparty",
    "my_simaddon",
    "my_thirdparty",
    "my_regcodes",
};

// Plain forms of the encrypted data files, which must never outlive a read.
constexpr const char* PLAIN_DATA_FILES[] = {
    "dbase.xml",    "AIG-regcodes.xml", "airports.xml",
    "archives.xml", "wktraffic.xml",    "ICAO_airports.txt",
};

int installPathFailures = 0;

// Waits in steps, polling gf_keepRunning; false when the session ends first.
template <typename Done>
bool lf_waitFor(Done done, std::chrono::milliseconds step, int maxSteps = -1) {
    for (int i = 0; maxSteps < 0 || i < maxSteps; ++i) {
        if (!gf_keepRunning()) return false;
        if (done()) return true;
        std::this_thread::sleep_for(step);
    }
    return done();
}

bool lf_positionIsZero(const UserData& u) {
    return std::abs(u.lat) <= 0.0001 && std::abs(u.lon) <= 0.0001;
}

std::size_t lf_entriesOf(const fs::path& folder) {
    std::error_code ec;
    if (!fs::is_directory(folder, ec)) return 0;
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder, ec), fs::directory_iterator()));
}

void lf_publishRunChoice() {
    auto choice = std::make_shared<RunChoice>();
    choice->simulator = params.SIM_CHOICE.current == "MSFS 2020" ? 1 : 2;
    choice->rtDirect = params.RT_CHOISE.current == "RT Direct";
    runChoice.store(std::move(choice));
}

PathParameter& lf_installPathParameter() {
    return gf_isMSFS2020() ? params.MSFS_INSTALL_PATH : params.MSFS_2024_INSTALL_PATH;
}

void lf_checkInstallPath() {
    PathParameter& installPath = lf_installPathParameter();
    if (!installPath.current.empty()) return;
    if (auto found = gf_findInstallPath()) {
        installPath.current = *found;
        gf_saveParameter(installPath);
        return;
    }
    gf_logError(gf_isMSFS2020() ? "ZEPT cannot find the MSFS install path."
                                : "ZEPT cannot find the MSFS2024 install path.");
    if (++installPathFailures < 3) {
        gf_requestExit(ExitReason::NewSettings, 1);
    } else {
        // Closes as the user would, but the user didn't choose it.
        gf_setExitProblem(EXIT_FAILED, "the simulator's install path was not found");
        gf_requestExit(ExitReason::UserClosedSim, 5);
    }
}

void lf_holdForWebApi() {
    if (!gf_isRTDirect()) return;
    const std::int64_t now = std::time(nullptr);
    std::int64_t elapsed = now - params.LAST_EPOCH_TIME.current;
    if (elapsed < 0) elapsed = 0;
    if (elapsed >= 2) return;
    const std::int64_t wait_s = 2 - elapsed;
    gf_showStatus(fmt::format(
        "Holding for {} seconds... (RT API cannot be revisited within {} seconds)", wait_s, 2));
    for (std::int64_t i = 0; i < wait_s && gf_keepRunning(); ++i)
        std::this_thread::sleep_for(std::chrono::seconds(1));
}

bool lf_createFlightPlanFolder() {
    if (!gf_isMSFS2020()) return true;
    const fs::path folder = gf_dataFolder() / "orig_dest";
    std::error_code ec;
    fs::create_directories(folder, ec);
    if (ec) gf_logError(fmt::format("gf_createFlightPlanFolder: {}", ec.message()));
    return fs::is_directory(folder, ec);
}

}  // namespace

bool lf_init() {
    gf_checkRadiusParameters();
    if (runWords.rtApp && params.RT_CHOISE.current != "RT App") {
        // For this run only: the stored choice is not written.
        params.RT_CHOISE.current = "RT App";
        gf_logLine("RT_CHOISE=\"RT App\" for this run (--rt-app)");
    }
    lf_publishRunChoice();
    gf_buildOptions();

    // An install path given as the Community folder means its parent.
    PathParameter& installPath = lf_installPathParameter();
    if (installPath.current.filename() == "Community") {
        installPath.current = installPath.current.parent_path();
        gf_saveParameter(installPath);
    }

    std::error_code ec;
    for (const char* folder : WORKING_FOLDERS) fs::create_directories(folder, ec);
    if (fs::exists("ObjectIdList.txt", ec)) gf_removeFile("ObjectIdList.txt");
    gf_removeDecryptLeftovers();
    gf_removeSessionLeftovers();
    for (const char* name : PLAIN_DATA_FILES) {
        const fs::path plain = fs::path("input") / name;
        if (fs::exists(plain, ec)) gf_removeFile(plain);
    }

    const bool firstSession = restartPending.load() == 0;
    if (firstSession && !gf_updateCheck()) return false;
    // The reference data lives for the process: read once, kept over restarts.
    if (firstSession && !gf_readDbase()) throw std::runtime_error("reading data files failed!");

    const auto airports = gf_readAirportsXml();
    if (const auto* error = std::get_if<std::string>(&airports)) throw std::runtime_error(*error);
    if (std::get<std::size_t>(airports) == 0)
        throw std::runtime_error(
            fmt::format("reading '{}' resulted in an empty airport list!", "airports.xml"));

    lf_checkInstallPath();

    if (commandLineJob.load()) {
        gf_logLine("Command line job:");
        gf_logLine("production");
        processExitCode = 0;
        return false;
    }
    return true;
}

bool lf_startSimClient() {
    gf_clearSimBuffers();
    SimRunState = 0;
    userOnGround = -1;
    simClientThread = std::jthread(gf_simClientThread);
    using namespace std::chrono_literals;
    if (!lf_waitFor([] { return SimRunState.load() == 2; }, 100ms)) return false;

    gf_requestSimData(2, 0);  // on-ground data, from now on once a second
    if (!lf_waitFor(
            [] {
                // The request goes out every round: the on-ground state
                // stays unknown until a position has come.
                const bool placed = !lf_positionIsZero(gf_requestUserData());
                return placed && userOnGround.load() >= 0;
            },
            500ms))
        return false;
    gf_requestSimData(1, 0);  // title and model
    return lf_waitFor([] { return !lf_positionIsZero(gf_requestUserData()); }, 200ms);
}

void lf_main() {
    inStartup = 1;
    struct ClosingGuard {
        ~ClosingGuard() { lf_closingDown(); }
    } closing;
    try {
        if (const int error = pf_startSockets(); error != 0)
            throw std::runtime_error(fmt::format("WSAStartup failed, error: {}", error));
        if (!fs::is_directory("docs"))
            throw UserRelatedException(
                41, fmt::format("{} must be run from the {} folder!", PROGRAM_NAME, PROGRAM_NAME));
        if (!lf_init() || !gf_keepRunning()) return;

        if (!(params.SKIP_LIVERIES_SCAN.current && fs::exists(gf_scannedLiveriesPath())))
            gf_scanLiveries();
        // A close during the scan leaves no new file to read: end as asked.
        if (!gf_keepRunning()) return;
        gf_processScannedLiveries();
        if (!gf_keepRunning()) return;

        lf_holdForWebApi();
        if (!gf_keepRunning()) return;

        Gui::enqueueUpdate(
            {GuiKind::SimaddonCount, static_cast<std::int64_t>(lf_entriesOf("my_simaddon"))});
        Gui::enqueueUpdate(
            {GuiKind::ThirdpartyCount, static_cast<std::int64_t>(lf_entriesOf("my_thirdparty"))});
        if (!lf_createFlightPlanFolder()) return;

        gf_readMyParkAirportsFile();
        gf_takeStoredDestination();
        trafficOpen = 0;
        gf_stopTraffic();
        gf_flushLog();
        if (!gf_keepRunning()) return;

        if (!lf_startSimClient()) return;
        gf_parkAirportAtStart();
        if (!(gf_isRTDirect() ? lf_startRTAPIFeeds() : lf_startRTAppFeeds())) return;
        if (!gf_keepRunning()) return;

        inStartup = 0;
        lf_mainLoop();
    } catch (const std::exception& e) {
        if (commandLineJob.load()) {
            gf_logLine(fmt::format("exception {}", e.what()));
            processExitCode = 1;
        }
        gf_setExitProblem(EXIT_FAILED, e.what());
        gf_showError(e.what());
        gf_logError(e.what());
        gf_requestExit(ExitReason::SystemError, 0);
    }
}

}  // namespace tfx
