// STAND-IN for the weather decoding of the application's weather port: only
// a JSON object whose "QNH" is a number in hPa between 900 and 1100 is taken.
// Inches of mercury, texts and the error codes of the full decoder come with
// the weather issue, which replaces this file.
#include <atomic>
#include <chrono>
#include <cmath>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "app/complaint_limit.h"
#include "app/log.h"
#include "feeds/qnh.h"
#include "feeds/rtapp/rtapp_readers.h"
#include "gui/gui.h"

namespace tfx {

namespace {

// The weather thread's last value; the traffic reader clears it on a new
// connection, so it is atomic.
std::atomic<std::int32_t> readerQnh{0};
std::atomic<std::int64_t> lastGood_s{0};
ComplaintLimit weatherComplaints;
constexpr std::size_t LOGGED_TEXT_CHARS = 200;  // of a bad datagram, in the log

std::string_view lf_short(std::string_view text) {
    return text.substr(0, LOGGED_TEXT_CHARS);
}

}  // namespace

void gf_takeWeatherDatagram(std::string_view text) {
    try {
        const auto data = nlohmann::json::parse(text);
        const auto it = data.is_object() ? data.find("QNH") : data.end();
        if (it == data.end() || !it->is_number()) {
            gf_complain(weatherComplaints, "no QNH", fmt::format("no QNH {}", lf_short(text)));
            return;
        }
        const double value = it->get<double>();
        if (!std::isfinite(value) || value < 900.0 || value > 1100.0) {
            gf_complain(weatherComplaints, "QNH outside limits",
                        fmt::format("{} in {}", fmt::format("QNH outside limits: {:.2F}", value),
                                    lf_short(text)));
            return;
        }
        lastGood_s = std::chrono::duration_cast<std::chrono::seconds>(
                         std::chrono::steady_clock::now().time_since_epoch())
                         .count();
        const auto rounded = static_cast<std::int32_t>(std::lround(value));
        if (readerQnh.exchange(rounded) != rounded) {
            qnh.exchange(rounded);
            Gui::enqueueUpdate({GuiKind::Qnh, std::int64_t{rounded}});
        }
    } catch (const std::exception& e) {
        gf_complain(weatherComplaints, "weather exception",
                    fmt::format("Exception {}, in {}", e.what(), lf_short(text)));
    }
}

void gf_resetWeatherState() {
    readerQnh = 0;
    lastGood_s = 0;
}

std::int64_t gf_lastGoodWeather_s() {
    return lastGood_s.load();
}

}  // namespace tfx
