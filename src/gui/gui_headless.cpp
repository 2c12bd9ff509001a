// The headless body of the window: updates are applied to the window's state
// at once, and status and error lines are written to the console.
#include <atomic>
#include <mutex>

#include <fmt/format.h>

#include "app/deferred_output.h"
#include "app/log.h"
#include "gui/gui.h"

namespace tfx {
namespace {

std::mutex guiMutex;
std::atomic<bool> shutDown{false};
std::string status;
std::string error;

// What an update writes, done after the window's lock is let go: a thread
// must not wait on the disk or the console of another one.
struct Output {
    std::string logLine;
    std::string consoleLine;
    bool error = false;
};

Output lf_apply(const GuiUpdate& u) {
    Output out;
    switch (u.kind) {
        case GuiKind::Status: {
            const auto& p = std::get<TextAndFlag>(u.payload);
            if (!error.empty()) return out;
            if (p.flag) out.logLine = p.text;
            if (p.text != status && !p.text.empty()) out.consoleLine = "status: " + p.text;
            status = p.text;
            return out;
        }
        case GuiKind::Error: {
            const auto& text = std::get<std::string>(u.payload);
            status.clear();
            if (text == error) return out;
            error = text;
            out.logLine = fmt::format("Error {}", text);
            out.consoleLine = out.logLine;
            out.error = true;
            return out;
        }
        case GuiKind::ClearStatus:
            if (error.empty()) status.clear();
            return out;
        case GuiKind::ClearError:
            error.clear();
            return out;
        case GuiKind::Reset:
            status.clear();
            error.clear();
            return out;
        default:
            return out;  // the rest only matters to a window
    }
}

}  // namespace

void Gui::enqueueUpdate(GuiUpdate update) {
    if (shutDown.load()) return;
    Output out;
    {
        std::lock_guard lock(guiMutex);
        out = lf_apply(update);
    }
    if (!out.logLine.empty()) gf_logLine(out.logLine);
    if (!out.consoleLine.empty()) gf_consoleLine(out.consoleLine, out.error);
}

int Gui::drainUpdates() {
    return 0;
}

void Gui::shutdown() {
    shutDown.store(true);
}

std::string Gui::statusText() {
    std::lock_guard lock(guiMutex);
    return status;
}

std::string Gui::errorText() {
    std::lock_guard lock(guiMutex);
    return error;
}

void gf_showStatus(const std::string& text, bool log) {
    Gui::enqueueUpdate({GuiKind::Status, TextAndFlag{text, log}});
}

void gf_showError(const std::string& text) {
    Gui::enqueueUpdate({GuiKind::Error, text});
}

void gf_clearStatus() {
    Gui::enqueueUpdate({GuiKind::ClearStatus, std::monostate{}});
}

}  // namespace tfx
