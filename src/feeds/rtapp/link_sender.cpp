// The link's own thread: it sends what the other threads queued, each
// message within a time limit, drains what the application sent after a
// position report, and takes a new connection of the application while the
// old one still stands (a restarted or woken application connects anew).
// A peer that stops reading is dropped, and the next report finds the
// application gone, so that the link starts over as for a lost application.
#include <algorithm>
#include <chrono>

#include <fmt/format.h>

#include "app/complaint_limit.h"
#include "app/exit_request.h"
#include "app/log.h"
#include "app/winsock_errors.h"
#include "feeds/rtapp/reader_state.h"
#include "feeds/rtapp/rtapp_link.h"

namespace tfx {

LinkSender linkSender;

namespace {

// The thread looks at its queue this often. Callers do not wake it: a wake
// is a system call on the caller's side, which the tick should not pay for
// a report that may well wait a few milliseconds.
constexpr int IDLE_WAIT_MS = 10;
constexpr int WRITABLE_STEP_MS = 50;

enum class SendResult { sent, failed, stalled };

// The send's own limit, cut short once the link is closing.
std::int64_t lf_deadline(std::int64_t own_ms) {
    std::lock_guard lock(linkSender.lock);
    return linkSender.stop ? std::min(own_ms, linkSender.stopBy_ms) : own_ms;
}

SendResult lf_sendWithin(SocketFd fd, std::string_view text, std::int64_t own_ms) {
    while (!text.empty()) {
        const auto n = gf_sendBytesNow(fd, text);
        if (n > 0) {
            text.remove_prefix(static_cast<std::size_t>(n));
            continue;
        }
        if (n < 0 && gf_socketError() != WSA_EWOULDBLOCK) return SendResult::failed;
        const std::int64_t left = lf_deadline(own_ms) - gf_steadyMillis();
        if (left <= 0) return SendResult::stalled;
        if (gf_waitWritable(fd, static_cast<int>(std::min<std::int64_t>(left, WRITABLE_STEP_MS))) <
            0)
            return SendResult::failed;
    }
    return SendResult::sent;
}

void lf_send(const Outgoing& item) {
    // A message taken from the queue just before a new connection replaced
    // the old one must not go to the new peer.
    const SharedSocket client = gf_appClientFor(item.meantFor);
    if (!client) return;
    switch (lf_sendWithin(client->fd, item.text, gf_steadyMillis() + rtAppTiming.sendLimit_ms)) {
        case SendResult::sent:
            break;
        case SendResult::failed:
            lf_linkLog(fmt::format("sendDataPacket to RealTraffic failed: {}",
                                   gf_winsockErrorText(gf_socketError())));
            gf_dropAppClient(client);
            lf_linkLog("RealTraffic client socket closed");
            return;
        case SendResult::stalled:
            lf_linkLog(fmt::format(
                "The RealTraffic application does not read the link: nothing went out for {} ms; "
                "connection dropped",
                rtAppTiming.sendLimit_ms));
            gf_dropAppClient(client);
            lf_linkLog("RealTraffic client socket closed");
            return;
    }
    if (!item.drainAfter) return;
    std::lock_guard lock(appSocket.bufferRequestLock);
    if (!appSocket.bufferRequested) drainReceiveBuffer();
}

ComplaintLimit linkComplaints;

// The connection in use is alive while its traffic comes; one that never
// brought any, or fell silent, may be a frozen or restarted application.
bool lf_currentLooksAlive() {
    const std::int64_t last = trafficReaderState.lastDatagram_ms.load();
    return last != 0 && gf_steadyMillis() - last < rtAppTiming.silentFeed_ms;
}

// While connected, a second connection on the listening socket is the
// application again (restarted, or woken after a freeze): it replaces the
// old one when that one has gone silent, and the reader starts over with
// it. While the old one is alive the newcomer is turned away, so that two
// applications never take the link from each other in turn.
void lf_takeReplacement() {
    if (!appSocket.connected) return;
    SharedSocket listener;
    {
        std::lock_guard lock(appSocket.socketLock);
        listener = appSocket.listenSocket;
    }
    if (!listener || gf_waitReadable(listener->fd, 0) <= 0) return;
    SocketFd client = gf_acceptClient(listener->fd);
    if (client == NO_SOCKET) return;
    if (lf_currentLooksAlive()) {
        gf_closeSocket(client);
        if (gf_keepRunning())
            gf_complain(linkComplaints, "second connection",
                        "A second RealTraffic connection was turned away: the one in use is alive");
        return;
    }
    try {
        gf_takeAppClient(client);
    } catch (const std::exception& e) {
        lf_linkLog(fmt::format("waitForClient interrupted: {}", e.what()));
        return;
    }
    lf_linkLog("RealTraffic connected again: the new connection replaces the old one");
    sendDataPacket("Qs999=version\r\n");
}

void lf_run() {
    while (true) {
        Outgoing item;
        {
            std::unique_lock lock(linkSender.lock);
            linkSender.wake.wait_for(lock, std::chrono::milliseconds(IDLE_WAIT_MS),
                                     [] { return linkSender.stop || !linkSender.queue.empty(); });
            if (linkSender.queue.empty()) {
                if (linkSender.stop) return;
                lock.unlock();
                lf_takeReplacement();
                continue;
            }
            item = std::move(linkSender.queue.front());
            linkSender.queue.pop_front();
        }
        lf_send(item);
        lf_takeReplacement();
    }
}

}  // namespace

bool sendDataPacket(std::string_view text, bool drainAfter) {
    if (!appSocket.connected) return false;
    bool full = false;
    {
        std::lock_guard lock(linkSender.lock);
        full = linkSender.queue.size() >= SEND_QUEUE_LIMIT;
        if (!full)
            linkSender.queue.push_back(
                {std::string(text), drainAfter, appSocket.clientsTaken.load()});
    }
    if (full) {
        lf_linkLog(fmt::format(
            "The RealTraffic application does not read the link: {} messages wait; connection "
            "dropped",
            SEND_QUEUE_LIMIT));
        gf_dropAppClient(nullptr);
        lf_linkLog("RealTraffic client socket closed");
        return false;
    }
    return true;
}

void gf_startLinkSender() {
    std::lock_guard life(linkSender.lifeLock);
    if (linkSender.thread.joinable()) return;
    {
        std::lock_guard lock(linkSender.lock);
        linkSender.stop = false;
    }
    linkSender.thread = std::thread(lf_run);
}

void gf_stopLinkSender() {
    std::lock_guard life(linkSender.lifeLock);
    if (!linkSender.thread.joinable()) return;
    if (linkSender.thread.get_id() == std::this_thread::get_id()) return;
    {
        std::lock_guard lock(linkSender.lock);
        linkSender.stop = true;
        linkSender.stopBy_ms = gf_steadyMillis() + rtAppTiming.exitLimit_ms;
    }
    linkSender.wake.notify_one();
    linkSender.thread.join();
    std::lock_guard lock(linkSender.lock);
    linkSender.queue.clear();
}

}  // namespace tfx
