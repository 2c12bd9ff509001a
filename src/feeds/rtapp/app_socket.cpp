// The TCP side of the link: listening, taking the client, receiving and
// draining. Socket values are copied under the socket lock and used outside
// it; a close shuts the socket down, which wakes whatever waits on it, and
// the number itself is closed by its last holder.
#include <array>
#include <stdexcept>
#include <thread>

#include <fmt/format.h>

#include "app/exit_request.h"
#include "app/log.h"
#include "app/parameters.h"
#include "app/winsock_errors.h"
#include "feeds/rtapp/rtapp_link.h"

namespace tfx {

RtAppEndpoints rtAppEndpoints;
RtAppTiming rtAppTiming;
AppSocket appSocket;
std::atomic<bool> rtAppFeedConnected{false};

namespace {

std::string lf_errorText() {
    return gf_winsockErrorText(gf_socketError());
}

}  // namespace

SharedSocket gf_appClient() {
    std::lock_guard lock(appSocket.socketLock);
    return appSocket.clientSocket;
}

SharedSocket gf_appClientFor(std::uint32_t taken) {
    std::lock_guard lock(appSocket.socketLock);
    return appSocket.clientsTaken.load() == taken ? appSocket.clientSocket : nullptr;
}

void gf_dropAppClient(const SharedSocket& which) {
    std::lock_guard lock(appSocket.socketLock);
    if (which && appSocket.clientSocket != which) return;  // already replaced
    if (appSocket.clientSocket) gf_shutdownSocket(appSocket.clientSocket->fd);
    appSocket.clientSocket.reset();
    appSocket.connected = false;
}

void lf_linkLog(std::string_view text) {
    if (gf_keepRunning()) gf_logLine(text);
}

std::string gf_rtAppPortText() {
    return rtAppEndpoints.tcpPort.empty() ? params.PORT_NUMBER.current : rtAppEndpoints.tcpPort;
}

void gf_listenRTApp(const std::string& port) {
    const std::uint16_t number = gf_portNumber(port);
    if (number == 0)
        throw std::runtime_error(fmt::format("getaddrinfo failed with error {}", 10109));
    SocketFd s = gf_tcpSocket();
    if (s == NO_SOCKET) throw std::runtime_error("socket failed with error " + lf_errorText());
    if (!gf_setBlocking(s, true)) {
        const std::string text = lf_errorText();
        gf_closeSocket(s);
        throw std::runtime_error("ioctlsocket failed with error " + text);
    }
    if (!gf_setReuseAddress(s)) {
        gf_closeSocket(s);
        throw std::runtime_error("setsockopt(SO_REUSEADDR) failed");
    }
    if (!gf_bindSocket(s, rtAppEndpoints.address, number)) {
        const std::string text = lf_errorText();
        gf_closeSocket(s);
        throw std::runtime_error("Bind failed at port " + port + " with error " + text);
    }
    if (!gf_listenSocket(s)) {
        const std::string text = lf_errorText();
        gf_closeSocket(s);
        throw std::runtime_error("listen failed with error " + text);
    }
    std::lock_guard lock(appSocket.socketLock);
    if (appSocket.listenSocket) gf_shutdownSocket(appSocket.listenSocket->fd);
    appSocket.listenSocket = gf_shareSocket(s);
}

void gf_takeAppClient(SocketFd client) {
    if (!gf_setNoDelay(client)) {
        const int error = gf_socketError();
        gf_closeSocket(client);
        throw std::runtime_error(
            fmt::format("{} setsockopt failed with error {}", "waitForClient", error));
    }
    if (rtAppTiming.clientSendBuffer > 0)
        gf_setSendBufferSize(client, rtAppTiming.clientSendBuffer);
    {
        // Nothing meant for an earlier client goes to this one.
        std::lock_guard lock(linkSender.lock);
        linkSender.queue.clear();
    }
    // Cleared before the count moves: the reader asks the new client for
    // the history as soon as it sees the count change.
    gf_clearBufferRequest();
    {
        // The count moves with the client, so that a message queued for
        // the old one is never matched to the new one.
        std::lock_guard lock(appSocket.socketLock);
        if (appSocket.clientSocket) gf_shutdownSocket(appSocket.clientSocket->fd);
        appSocket.clientSocket = gf_shareSocket(client);
        appSocket.connected = true;
        ++appSocket.clientsTaken;
    }
}

bool waitForClient() {
    SharedSocket listener;
    {
        std::lock_guard lock(appSocket.socketLock);
        if (appSocket.clientSocket || !appSocket.listenSocket) return false;
        listener = appSocket.listenSocket;
    }
    try {
        // Short waits, so that a close of the listening socket or the end of
        // the session ends the wait even where a close does not wake accept.
        while (true) {
            {
                std::lock_guard lock(appSocket.socketLock);
                if (appSocket.listenSocket != listener) return false;
            }
            if (!gf_keepRunning()) return false;
            const int ready = gf_waitReadable(listener->fd, rtAppTiming.acceptStep_ms);
            if (ready < 0) return false;
            if (ready > 0) break;
        }
        SocketFd client = gf_acceptClient(listener->fd);
        if (client == NO_SOCKET) return false;
        gf_takeAppClient(client);
        gf_startLinkSender();
        return true;
    } catch (const std::exception& e) {
        lf_linkLog(fmt::format("waitForClient interrupted: {}", e.what()));
        return false;
    }
}

std::string receive() {
    std::lock_guard receiving(appSocket.receiveLock);
    const SharedSocket client = gf_appClient();
    if (!client) return {};
    // An application that connects and then stays silent must not hold the
    // start for ever: wait as long as the probe lasts.
    if (gf_waitReadable(client->fd, rtAppTiming.probe_ms) <= 0) {
        lf_linkLog(fmt::format("receive: {}", "no reply"));
        return {};
    }
    std::string buffer(RT_APP_BUFFER_SIZE, '\0');
    const auto n = gf_receiveBytes(client->fd, buffer.data(), buffer.size());
    if (n <= 0) {
        lf_linkLog(
            fmt::format("receive: {}", n == 0 ? std::string("connection closed") : lf_errorText()));
        return {};
    }
    if (static_cast<std::size_t>(n) >= RT_APP_BUFFER_SIZE) {
        lf_linkLog(fmt::format("receive: buffer overrun: {}", n));
        return {};
    }
    buffer.resize(static_cast<std::size_t>(n));
    return buffer;
}

void drainReceiveBuffer() {
    std::lock_guard receiving(appSocket.receiveLock);
    const SharedSocket client = gf_appClient();
    if (!client) return;
    std::array<char, RT_APP_BUFFER_SIZE> scratch;
    while (true) {
        const int ready = gf_waitReadable(client->fd, 0);
        if (ready == 0) return;
        if (ready < 0) {
            lf_linkLog(fmt::format("drainReceiveBuffer select error: {}", lf_errorText()));
            return;
        }
        const auto n = gf_receiveBytes(client->fd, scratch.data(), scratch.size());
        if (n == 0) {
            gf_dropAppClient(client);
            return;
        }
        if (n < 0) {
            const int error = gf_socketError();
            if (error == WSA_EWOULDBLOCK) return;
            if (error == WSA_ECONNABORTED || error == WSA_ECONNRESET) {
                gf_dropAppClient(client);
                return;
            }
            lf_linkLog(
                fmt::format("drainReceiveBuffer recv error: {}", gf_winsockErrorText(error)));
            return;
        }
    }
}

void gf_closeRTApp() {
    if (appSocket.connected) sendDataPacket("exit\r\n");
    gf_stopLinkSender();
    std::lock_guard lock(appSocket.socketLock);
    if (appSocket.clientSocket) gf_shutdownSocket(appSocket.clientSocket->fd);
    if (appSocket.listenSocket) gf_shutdownSocket(appSocket.listenSocket->fd);
    appSocket.clientSocket.reset();
    appSocket.listenSocket.reset();
    appSocket.connected = false;
}

}  // namespace tfx
