// The TCP side of the link: listening, taking the client, sending, receiving
// and draining. Socket values are read under the socket lock and used outside
// it, so that a close from another thread wakes whatever waits on them.
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

SocketFd lf_client() {
    std::lock_guard lock(appSocket.socketLock);
    return appSocket.clientSocket;
}

void lf_closeClient() {
    std::lock_guard lock(appSocket.socketLock);
    gf_closeSocket(appSocket.clientSocket);
    appSocket.connected = false;
}

std::string lf_errorText() {
    return gf_winsockErrorText(gf_socketError());
}

}  // namespace

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
    gf_closeSocket(appSocket.listenSocket);
    appSocket.listenSocket = s;
}

bool waitForClient() {
    SocketFd listener;
    {
        std::lock_guard lock(appSocket.socketLock);
        if (appSocket.clientSocket != NO_SOCKET || appSocket.listenSocket == NO_SOCKET)
            return false;
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
            const int ready = gf_waitReadable(listener, rtAppTiming.acceptStep_ms);
            if (ready < 0) return false;
            if (ready > 0) break;
        }
        SocketFd client = gf_acceptClient(listener);
        if (client == NO_SOCKET) return false;
        if (!gf_setNoDelay(client)) {
            const int error = gf_socketError();
            gf_closeSocket(client);
            throw std::runtime_error(
                fmt::format("{} setsockopt failed with error {}", "waitForClient", error));
        }
        std::lock_guard lock(appSocket.socketLock);
        appSocket.clientSocket = client;
        appSocket.connected = true;
        return true;
    } catch (const std::exception& e) {
        lf_linkLog(fmt::format("waitForClient interrupted: {}", e.what()));
        return false;
    }
}

bool sendDataPacket(std::string_view text) {
    std::lock_guard sending(appSocket.sendLock);
    const SocketFd client = lf_client();
    if (client == NO_SOCKET) return false;
    std::size_t sent = 0;
    while (sent < text.size()) {
        const auto n = gf_sendBytes(client, text.substr(sent));
        if (n <= 0) {
            lf_linkLog(fmt::format("sendDataPacket to RealTraffic failed: {}", lf_errorText()));
            lf_closeClient();
            lf_linkLog("RealTraffic client socket closed");
            return false;
        }
        sent += static_cast<std::size_t>(n);
    }
    return true;
}

std::string receive() {
    std::lock_guard receiving(appSocket.receiveLock);
    const SocketFd client = lf_client();
    if (client == NO_SOCKET) return {};
    // An application that connects and then stays silent must not hold the
    // start for ever: wait as long as the probe lasts.
    if (gf_waitReadable(client, rtAppTiming.probe_ms) <= 0) {
        lf_linkLog(fmt::format("receive: {}", "no reply"));
        return {};
    }
    std::string buffer(RT_APP_BUFFER_SIZE, '\0');
    const auto n = gf_receiveBytes(client, buffer.data(), buffer.size());
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
    std::array<char, RT_APP_BUFFER_SIZE> scratch;
    while (true) {
        const SocketFd client = lf_client();
        if (client == NO_SOCKET) return;
        const int ready = gf_waitReadable(client, 0);
        if (ready == 0) return;
        if (ready < 0) {
            lf_linkLog(fmt::format("drainReceiveBuffer select error: {}", lf_errorText()));
            return;
        }
        const auto n = gf_receiveBytes(client, scratch.data(), scratch.size());
        if (n == 0) {
            lf_closeClient();
            return;
        }
        if (n < 0) {
            const int error = gf_socketError();
            if (error == WSA_EWOULDBLOCK) return;
            if (error == WSA_ECONNABORTED || error == WSA_ECONNRESET) {
                lf_closeClient();
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
    std::lock_guard lock(appSocket.socketLock);
    gf_closeSocket(appSocket.clientSocket);
    gf_closeSocket(appSocket.listenSocket);
    appSocket.connected = false;
}

}  // namespace tfx
