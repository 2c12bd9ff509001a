// The headless body of the window: updates are applied to the window's state
// at once, and status and error lines are written to the console.
#include <atomic>
#include <cstdio>
#include <mutex>

#include <fmt/format.h>

#include "app/log.h"
#include "gui/gui.h"

namespace tfx {
namespace {

std::mutex guiMutex;
std::atomic<bool> shutDown{false};
std::string status;
std::string error;

void lf_apply(const GuiUpdate& u) {
    switch (u.kind) {
        case GuiKind::Status: {
            const auto& p = std::get<TextAndFlag>(u.payload);
            if (!error.empty()) return;
            if (p.flag) gf_logLine(p.text);
            if (p.text != status && !p.text.empty()) fmt::print("status: {}\n", p.text);
            status = p.text;
            return;
        }
        case GuiKind::Error: {
            const auto& text = std::get<std::string>(u.payload);
            status.clear();
            if (text == error) return;
            error = text;
            gf_logLine(fmt::format("Error {}", text));
            fmt::print(stderr, "Error {}\n", text);
            return;
        }
        case GuiKind::ClearStatus:
            if (error.empty()) status.clear();
            return;
        case GuiKind::ClearError:
            error.clear();
            return;
        case GuiKind::Reset:
            status.clear();
            error.clear();
            return;
        default:
            return;  // the rest only matters to a window
    }
}

}  // namespace

void Gui::enqueueUpdate(GuiUpdate update) {
    if (shutDown.load()) return;
    std::lock_guard lock(guiMutex);
    lf_apply(update);
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
