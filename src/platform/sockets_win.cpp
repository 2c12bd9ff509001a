#include "platform/sockets.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
// Winsock first: the other two build on it.
#include <winsock2.h>

#include <mstcpip.h>
#include <ws2tcpip.h>

#include <atomic>
#include <climits>
#include <mutex>

// Not in every SDK's headers.
#ifndef SIO_UDP_CONNRESET
#define SIO_UDP_CONNRESET _WSAIOW(IOC_VENDOR, 12)
#endif

namespace tfx {

namespace {

// Starts by pf_startSockets not yet ended by pf_stopSockets.
std::atomic<int> sessionStarts{0};

bool lf_address(const std::string& text, std::uint16_t port, sockaddr_in& out) {
    out = {};
    out.sin_family = AF_INET;
    out.sin_port = htons(port);
    return inet_pton(AF_INET, text.c_str(), &out.sin_addr) == 1;
}

bool lf_setInt(SocketFd s, int level, int name, int value) {
    return setsockopt(s, level, name, reinterpret_cast<const char*>(&value), sizeof value) == 0;
}

int lf_length(std::size_t size) {
    return size > static_cast<std::size_t>(INT_MAX) ? INT_MAX : static_cast<int>(size);
}

// Sockets made before the session starts the library (tools, tests, the
// stand-in application) still work: the first socket starts it once for the
// rest of the process. Winsock counts starts, so this never ends the
// library under a session that started it too.
void lf_ensureStarted() {
    static std::once_flag once;
    std::call_once(once, [] {
        WSADATA data{};
        ::WSAStartup(MAKEWORD(2, 2), &data);
    });
}

SocketFd lf_noInherit(SOCKET s) {
    if (s != INVALID_SOCKET)
        ::SetHandleInformation(reinterpret_cast<HANDLE>(s), HANDLE_FLAG_INHERIT, 0);
    return s;
}

}  // namespace

int pf_startSockets() {
    WSADATA data{};
    const int error = ::WSAStartup(MAKEWORD(2, 2), &data);
    if (error == 0) ++sessionStarts;
    return error;
}

void pf_stopSockets() {
    // Only a start of ours is ended, whatever order the callers' failures
    // leave them in.
    int starts = sessionStarts.load();
    while (starts > 0 && !sessionStarts.compare_exchange_weak(starts, starts - 1)) {
    }
    if (starts > 0) ::WSACleanup();
}

int gf_winsockNumber(int e) {
    return e;
}

int gf_socketError() {
    return ::WSAGetLastError();
}

SocketFd gf_tcpSocket() {
    lf_ensureStarted();
    return lf_noInherit(::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
}

SocketFd gf_udpSocket() {
    lf_ensureStarted();
    const SOCKET s = lf_noInherit(::socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP));
    if (s != INVALID_SOCKET) {
        // Without this a datagram sent to a closed port makes the next
        // receive on this socket fail with a connection reset, which UDP
        // readers elsewhere never see.
        BOOL off = FALSE;
        DWORD returned = 0;
        ::WSAIoctl(s, SIO_UDP_CONNRESET, &off, sizeof off, nullptr, 0, &returned, nullptr, nullptr);
    }
    return s;
}

bool gf_setReuseAddress(SocketFd s) {
    return lf_setInt(s, SOL_SOCKET, SO_REUSEADDR, 1);
}

bool gf_setBroadcast(SocketFd s) {
    return lf_setInt(s, SOL_SOCKET, SO_BROADCAST, 1);
}

bool gf_setNoDelay(SocketFd s) {
    return lf_setInt(s, IPPROTO_TCP, TCP_NODELAY, 1);
}

bool gf_setBlocking(SocketFd s, bool blocking) {
    u_long nonBlocking = blocking ? 0 : 1;
    return ::ioctlsocket(s, FIONBIO, &nonBlocking) == 0;
}

bool gf_setReceiveTimeout(SocketFd s, int timeout_ms) {
    const DWORD ms = static_cast<DWORD>(timeout_ms);
    return setsockopt(s, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&ms), sizeof ms) ==
           0;
}

bool gf_bindSocket(SocketFd s, const std::string& address, std::uint16_t port) {
    sockaddr_in a{};
    if (!lf_address(address, port, a)) {
        ::WSASetLastError(WSAEINVAL);
        return false;
    }
    return ::bind(s, reinterpret_cast<const sockaddr*>(&a), sizeof a) == 0;
}

bool gf_listenSocket(SocketFd s) {
    return ::listen(s, SOMAXCONN) == 0;
}

std::uint16_t gf_boundPort(SocketFd s) {
    sockaddr_in a{};
    int len = sizeof a;
    if (getsockname(s, reinterpret_cast<sockaddr*>(&a), &len) != 0) return 0;
    return ntohs(a.sin_port);
}

SocketFd gf_acceptClient(SocketFd listener) {
    return lf_noInherit(::accept(listener, nullptr, nullptr));
}

bool gf_connectSocket(SocketFd s, const std::string& address, std::uint16_t port) {
    sockaddr_in a{};
    if (!lf_address(address, port, a)) {
        ::WSASetLastError(WSAEINVAL);
        return false;
    }
    return ::connect(s, reinterpret_cast<const sockaddr*>(&a), sizeof a) == 0;
}

int gf_waitReadable(SocketFd s, int timeout_ms) {
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(s, &readable);
    timeval wait{};
    wait.tv_sec = timeout_ms / 1000;
    wait.tv_usec = (timeout_ms % 1000) * 1000;
    const int n = ::select(0, &readable, nullptr, nullptr, &wait);
    if (n == SOCKET_ERROR) return ::WSAGetLastError() == WSAEINTR ? 0 : -1;
    return n == 0 ? 0 : 1;
}

std::int64_t gf_sendBytes(SocketFd s, std::string_view data) {
    return ::send(s, data.data(), lf_length(data.size()), 0);
}

std::int64_t gf_receiveBytes(SocketFd s, char* buffer, std::size_t size) {
    return ::recv(s, buffer, lf_length(size), 0);
}

std::int64_t gf_receiveDatagram(SocketFd s, char* buffer, std::size_t size) {
    const int n = ::recvfrom(s, buffer, lf_length(size), 0, nullptr, nullptr);
    // A datagram larger than the buffer arrives cut and flagged as an error
    // here; elsewhere it arrives cut with the buffer's length. The readers
    // judge a full buffer as an overrun, so give them that.
    if (n == SOCKET_ERROR && ::WSAGetLastError() == WSAEMSGSIZE)
        return static_cast<std::int64_t>(size);
    return n;
}

std::int64_t gf_sendDatagram(SocketFd s, std::string_view data, const std::string& address,
                             std::uint16_t port) {
    sockaddr_in a{};
    if (!lf_address(address, port, a)) {
        ::WSASetLastError(WSAEINVAL);
        return -1;
    }
    return ::sendto(s, data.data(), lf_length(data.size()), 0,
                    reinterpret_cast<const sockaddr*>(&a), sizeof a);
}

void gf_closeSocket(SocketFd& s) {
    if (s == NO_SOCKET) return;
    ::shutdown(s, SD_BOTH);
    ::closesocket(s);
    s = NO_SOCKET;
}

bool gf_setSendBufferSize(SocketFd s, int bytes) {
    return lf_setInt(s, SOL_SOCKET, SO_SNDBUF, bytes);
}

bool gf_setReceiveBufferSize(SocketFd s, int bytes) {
    return lf_setInt(s, SOL_SOCKET, SO_RCVBUF, bytes);
}

int gf_waitWritable(SocketFd s, int timeout_ms) {
    fd_set writable;
    FD_ZERO(&writable);
    FD_SET(s, &writable);
    timeval wait{};
    wait.tv_sec = timeout_ms / 1000;
    wait.tv_usec = (timeout_ms % 1000) * 1000;
    const int n = ::select(0, nullptr, &writable, nullptr, &wait);
    if (n == SOCKET_ERROR) return ::WSAGetLastError() == WSAEINTR ? 0 : -1;
    return n == 0 ? 0 : 1;
}

void gf_shutdownSocket(SocketFd s) {
    if (s != NO_SOCKET) ::shutdown(s, SD_BOTH);
}

// Only the stand-in application's --lan word asks for these; on Windows it
// has none, and the stand-in falls back to the loopback network.
std::vector<std::string> gf_broadcastAddresses() {
    return {};
}

std::string gf_boundAddress(SocketFd s) {
    sockaddr_in a{};
    int len = sizeof a;
    if (::getsockname(s, reinterpret_cast<sockaddr*>(&a), &len) != 0) return {};
    char text[INET_ADDRSTRLEN] = {};
    return ::inet_ntop(AF_INET, &a.sin_addr, text, sizeof text) ? std::string(text) : std::string();
}

// Winsock has no per-call "don't wait": the socket is non-blocking for this
// one send and blocking again after it.
std::int64_t gf_sendBytesNow(SocketFd s, std::string_view data) {
    u_long on = 1, off = 0;
    if (::ioctlsocket(s, FIONBIO, &on) != 0) return -1;
    const int n = ::send(s, data.data(), lf_length(data.size()), 0);
    const int error = n == SOCKET_ERROR ? ::WSAGetLastError() : 0;
    ::ioctlsocket(s, FIONBIO, &off);
    if (n == SOCKET_ERROR) ::WSASetLastError(error);
    return n;
}

}  // namespace tfx
