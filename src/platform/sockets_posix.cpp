#include "platform/sockets.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace tfx {

namespace {

bool lf_address(const std::string& text, std::uint16_t port, sockaddr_in& out) {
    out = {};
    out.sin_family = AF_INET;
    out.sin_port = htons(port);
    return inet_pton(AF_INET, text.c_str(), &out.sin_addr) == 1;
}

bool lf_setInt(SocketFd s, int level, int name, int value) {
    return setsockopt(s, level, name, &value, sizeof value) == 0;
}

}  // namespace

int pf_startSockets() {
    return 0;
}

void pf_stopSockets() {}

int gf_winsockNumber(int e) {
    switch (e) {
        case 0:
            return 0;
        case EINTR:
            return 10004;
        case EBADF:
            return 10009;
        case EACCES:
            return 10013;
        case EFAULT:
            return 10014;
        case EINVAL:
            return 10022;
        case EMFILE:
            return 10024;
        case EAGAIN:
            return 10035;
        case EINPROGRESS:
            return 10036;
        case EALREADY:
            return 10037;
        case ENOTSOCK:
            return 10038;
        case EDESTADDRREQ:
            return 10039;
        case EMSGSIZE:
            return 10040;
        case EPROTOTYPE:
            return 10041;
        case ENOPROTOOPT:
            return 10042;
        case EPROTONOSUPPORT:
            return 10043;
        case EOPNOTSUPP:
            return 10045;
        case EAFNOSUPPORT:
            return 10047;
        case EADDRINUSE:
            return 10048;
        case EADDRNOTAVAIL:
            return 10049;
        case ENETDOWN:
            return 10050;
        case ENETUNREACH:
            return 10051;
        case ENETRESET:
            return 10052;
        case ECONNABORTED:
            return 10053;
        case ECONNRESET:
            return 10054;
        case EPIPE:
            return 10054;  // the peer is gone: what Winsock reports as a reset
        case ENOBUFS:
            return 10055;
        case EISCONN:
            return 10056;
        case ENOTCONN:
            return 10057;
        case ESHUTDOWN:
            return 10058;
        case ETIMEDOUT:
            return 10060;
        case ECONNREFUSED:
            return 10061;
        case EHOSTDOWN:
            return 10064;
        case EHOSTUNREACH:
            return 10065;
        default:
            return e;
    }
}

int gf_socketError() {
    return gf_winsockNumber(errno);
}

SocketFd gf_tcpSocket() {
    return ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, IPPROTO_TCP);
}

SocketFd gf_udpSocket() {
    return ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP);
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
    const int flags = fcntl(s, F_GETFL, 0);
    if (flags < 0) return false;
    return fcntl(s, F_SETFL, blocking ? (flags & ~O_NONBLOCK) : (flags | O_NONBLOCK)) == 0;
}

bool gf_setReceiveTimeout(SocketFd s, int timeout_ms) {
    timeval tv{};
    tv.tv_sec = timeout_ms / 1000;
    tv.tv_usec = (timeout_ms % 1000) * 1000;
    return setsockopt(s, SOL_SOCKET, SO_RCVTIMEO, &tv, sizeof tv) == 0;
}

bool gf_setSendBufferSize(SocketFd s, int bytes) {
    return lf_setInt(s, SOL_SOCKET, SO_SNDBUF, bytes);
}

bool gf_setReceiveBufferSize(SocketFd s, int bytes) {
    return lf_setInt(s, SOL_SOCKET, SO_RCVBUF, bytes);
}

bool gf_bindSocket(SocketFd s, const std::string& address, std::uint16_t port) {
    sockaddr_in a{};
    if (!lf_address(address, port, a)) {
        errno = EINVAL;
        return false;
    }
    return ::bind(s, reinterpret_cast<const sockaddr*>(&a), sizeof a) == 0;
}

bool gf_listenSocket(SocketFd s) {
    return ::listen(s, SOMAXCONN) == 0;
}

std::uint16_t gf_boundPort(SocketFd s) {
    sockaddr_in a{};
    socklen_t len = sizeof a;
    if (getsockname(s, reinterpret_cast<sockaddr*>(&a), &len) != 0) return 0;
    return ntohs(a.sin_port);
}

SocketFd gf_acceptClient(SocketFd listener) {
    return ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
}

bool gf_connectSocket(SocketFd s, const std::string& address, std::uint16_t port) {
    sockaddr_in a{};
    if (!lf_address(address, port, a)) {
        errno = EINVAL;
        return false;
    }
    return ::connect(s, reinterpret_cast<const sockaddr*>(&a), sizeof a) == 0;
}

int gf_waitReadable(SocketFd s, int timeout_ms) {
    pollfd p{s, POLLIN, 0};
    const int n = ::poll(&p, 1, timeout_ms);
    if (n < 0) return errno == EINTR ? 0 : -1;
    if (n == 0) return 0;
    if (p.revents & POLLNVAL) {
        errno = EBADF;
        return -1;
    }
    return 1;
}

int gf_waitWritable(SocketFd s, int timeout_ms) {
    pollfd p{s, POLLOUT, 0};
    const int n = ::poll(&p, 1, timeout_ms);
    if (n < 0) return errno == EINTR ? 0 : -1;
    if (n == 0) return 0;
    if (p.revents & POLLNVAL) {
        errno = EBADF;
        return -1;
    }
    return 1;
}

std::int64_t gf_sendBytesNow(SocketFd s, std::string_view data) {
    return ::send(s, data.data(), data.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

std::int64_t gf_sendBytes(SocketFd s, std::string_view data) {
    return ::send(s, data.data(), data.size(), MSG_NOSIGNAL);
}

std::int64_t gf_receiveBytes(SocketFd s, char* buffer, std::size_t size) {
    return ::recv(s, buffer, size, 0);
}

std::int64_t gf_receiveDatagram(SocketFd s, char* buffer, std::size_t size) {
    return ::recvfrom(s, buffer, size, 0, nullptr, nullptr);
}

std::int64_t gf_sendDatagram(SocketFd s, std::string_view data, const std::string& address,
                             std::uint16_t port) {
    sockaddr_in a{};
    if (!lf_address(address, port, a)) {
        errno = EINVAL;
        return -1;
    }
    return ::sendto(s, data.data(), data.size(), MSG_NOSIGNAL,
                    reinterpret_cast<const sockaddr*>(&a), sizeof a);
}

void gf_closeSocket(SocketFd& s) {
    if (s == NO_SOCKET) return;
    ::shutdown(s, SHUT_RDWR);
    ::close(s);
    s = NO_SOCKET;
}

void gf_shutdownSocket(SocketFd s) {
    if (s != NO_SOCKET) ::shutdown(s, SHUT_RDWR);
}

std::vector<std::string> gf_broadcastAddresses() {
    std::vector<std::string> out;
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) return out;
    for (const ifaddrs* a = list; a; a = a->ifa_next) {
        if (!a->ifa_addr || a->ifa_addr->sa_family != AF_INET) continue;
        if (!(a->ifa_flags & IFF_UP) || (a->ifa_flags & IFF_LOOPBACK) ||
            !(a->ifa_flags & IFF_BROADCAST) || !a->ifa_broadaddr)
            continue;
        char text[INET_ADDRSTRLEN] = {};
        const auto* b = reinterpret_cast<const sockaddr_in*>(a->ifa_broadaddr);
        if (inet_ntop(AF_INET, &b->sin_addr, text, sizeof text)) out.emplace_back(text);
    }
    freeifaddrs(list);
    return out;
}

std::string gf_boundAddress(SocketFd s) {
    sockaddr_in a{};
    socklen_t len = sizeof a;
    if (getsockname(s, reinterpret_cast<sockaddr*>(&a), &len) != 0) return {};
    char text[INET_ADDRSTRLEN] = {};
    return inet_ntop(AF_INET, &a.sin_addr, text, sizeof text) ? std::string(text) : std::string();
}

}  // namespace tfx
