// A small wrapper over BSD sockets for the links to local programs: TCP
// listen, accept, connect, send, receive; UDP bind, send and receive. Every
// failure is a value; error codes use the Winsock numbers that the log and
// the link's rules are written in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tfx {

#ifdef _WIN32
using SocketFd = std::uintptr_t;                     // SOCKET
inline constexpr SocketFd NO_SOCKET = ~SocketFd{0};  // INVALID_SOCKET
#else
using SocketFd = int;
inline constexpr SocketFd NO_SOCKET = -1;
#endif

// Winsock numbers of the errors the links tell apart.
inline constexpr int WSA_EINTR = 10004;
inline constexpr int WSA_EWOULDBLOCK = 10035;
inline constexpr int WSA_ECONNABORTED = 10053;
inline constexpr int WSA_ECONNRESET = 10054;
inline constexpr int WSA_ETIMEDOUT = 10060;

// Bound to every interface: the application may run on another machine
// of the network and broadcasts its datagrams there.
inline constexpr std::string_view ANY_ADDRESS = "0.0.0.0";

// Starts the system's socket library (Winsock 2.2) for this process; 0 on
// success, else the error code. pf_stopSockets ends one successful start
// and does nothing when none is left. Nothing to start on POSIX systems.
int pf_startSockets();
void pf_stopSockets();

// The last socket error of this thread, as a Winsock number.
int gf_socketError();
// An errno value as a Winsock number (Winsock numbers pass unchanged).
int gf_winsockNumber(int errnoValue);

// New sockets; NO_SOCKET on failure (gf_socketError tells why).
SocketFd gf_tcpSocket();
SocketFd gf_udpSocket();

bool gf_setReuseAddress(SocketFd s);
bool gf_setBroadcast(SocketFd s);
bool gf_setNoDelay(SocketFd s);
bool gf_setBlocking(SocketFd s, bool blocking);
bool gf_setReceiveTimeout(SocketFd s, int timeout_ms);
// Kernel buffer sizes; tests make them small to show a peer that stops reading.
bool gf_setSendBufferSize(SocketFd s, int bytes);
bool gf_setReceiveBufferSize(SocketFd s, int bytes);

// address is a dotted IPv4 text; port 0 lets the system choose.
bool gf_bindSocket(SocketFd s, const std::string& address, std::uint16_t port);
bool gf_listenSocket(SocketFd s);
// The port the socket is bound to, 0 on failure.
std::uint16_t gf_boundPort(SocketFd s);
SocketFd gf_acceptClient(SocketFd listener);
bool gf_connectSocket(SocketFd s, const std::string& address, std::uint16_t port);

// 1 readable, 0 not within the wait, -1 error.
int gf_waitReadable(SocketFd s, int timeout_ms);
// 1 writable, 0 not within the wait, -1 error.
int gf_waitWritable(SocketFd s, int timeout_ms);

// Bytes moved, or -1 (gf_socketError tells why). Sending never raises a signal.
std::int64_t gf_sendBytes(SocketFd s, std::string_view data);
// As gf_sendBytes, but never waits: a full buffer gives -1 with WSA_EWOULDBLOCK.
std::int64_t gf_sendBytesNow(SocketFd s, std::string_view data);
std::int64_t gf_receiveBytes(SocketFd s, char* buffer, std::size_t size);
std::int64_t gf_receiveDatagram(SocketFd s, char* buffer, std::size_t size);
std::int64_t gf_sendDatagram(SocketFd s, std::string_view data, const std::string& address,
                             std::uint16_t port);

// Shuts the socket down (waking a thread blocked on it), closes it and sets
// it to NO_SOCKET. Nothing happens for NO_SOCKET.
void gf_closeSocket(SocketFd& s);

// Wakes every thread that waits on the socket and ends its traffic, but
// keeps the number: only the last holder of a SharedSocket closes it.
void gf_shutdownSocket(SocketFd s);

// A socket used by several threads. The number is closed when the last
// holder lets go, so no thread ever uses a number that another thread closed
// (and the system may have handed out again).
struct OwnedSocket {
    explicit OwnedSocket(SocketFd s) : fd(s) {}
    ~OwnedSocket() { gf_closeSocket(fd); }
    OwnedSocket(const OwnedSocket&) = delete;
    OwnedSocket& operator=(const OwnedSocket&) = delete;
    SocketFd fd;
};
using SharedSocket = std::shared_ptr<OwnedSocket>;
inline SharedSocket gf_shareSocket(SocketFd s) {
    return s == NO_SOCKET ? nullptr : std::make_shared<OwnedSocket>(s);
}

// The IPv4 broadcast addresses of the interfaces that are up, loopback
// excluded; empty when the machine has none.
std::vector<std::string> gf_broadcastAddresses();
// The address a socket is bound to, dotted; empty on failure.
std::string gf_boundAddress(SocketFd s);

// A port text as a number; 0 when it is none.
std::uint16_t gf_portNumber(std::string_view text);

}  // namespace tfx
