#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <string>

#include "platform/sockets.h"

using namespace tfx;

namespace {

struct Socket {
    SocketFd fd;
    explicit Socket(SocketFd s) : fd(s) {}
    ~Socket() { gf_closeSocket(fd); }
};

}  // namespace

// A session starts and ends the socket library; an end too many (a session
// that failed half way) must not take the library from sockets still in use.
TEST(Sockets, LibraryStartsAndEndsInPairs) {
    ASSERT_EQ(pf_startSockets(), 0);
    pf_stopSockets();
    pf_stopSockets();
    pf_stopSockets();
    Socket s(gf_udpSocket());
    ASSERT_NE(s.fd, NO_SOCKET) << gf_socketError();
    EXPECT_TRUE(gf_bindSocket(s.fd, "127.0.0.1", 0));
}

TEST(Sockets, TcpOnLoopbackBothWays) {
    Socket listener(gf_tcpSocket());
    ASSERT_NE(listener.fd, NO_SOCKET);
    ASSERT_TRUE(gf_setReuseAddress(listener.fd));
    ASSERT_TRUE(gf_bindSocket(listener.fd, "127.0.0.1", 0)) << gf_socketError();
    ASSERT_TRUE(gf_listenSocket(listener.fd));
    const std::uint16_t port = gf_boundPort(listener.fd);
    ASSERT_NE(port, 0);

    Socket client(gf_tcpSocket());
    ASSERT_TRUE(gf_connectSocket(client.fd, "127.0.0.1", port)) << gf_socketError();
    Socket server(gf_acceptClient(listener.fd));
    ASSERT_NE(server.fd, NO_SOCKET);
    EXPECT_TRUE(gf_setNoDelay(server.fd));

    std::array<char, 64> buffer{};
    EXPECT_EQ(gf_waitReadable(server.fd, 0), 0) << "nothing sent yet";
    EXPECT_EQ(gf_sendBytes(client.fd, "Qs999=version\r\n"), 15);
    ASSERT_EQ(gf_waitReadable(server.fd, 2000), 1);
    ASSERT_EQ(gf_receiveBytes(server.fd, buffer.data(), buffer.size()), 15);
    EXPECT_EQ(std::string(buffer.data(), 15), "Qs999=version\r\n");

    EXPECT_EQ(gf_sendBytes(server.fd, "{}"), 2);
    ASSERT_EQ(gf_receiveBytes(client.fd, buffer.data(), buffer.size()), 2);

    // The peer's close reads as 0 bytes, not as an error.
    gf_closeSocket(server.fd);
    EXPECT_EQ(gf_receiveBytes(client.fd, buffer.data(), buffer.size()), 0);
}

// The readers' loops go on after these numbers and stop on any other, so
// every platform must give the same ones.
TEST(Sockets, ErrorsComeAsWinsockNumbers) {
    Socket probe(gf_tcpSocket());
    ASSERT_TRUE(gf_bindSocket(probe.fd, "127.0.0.1", 0));
    const std::uint16_t closedPort = gf_boundPort(probe.fd);
    gf_closeSocket(probe.fd);
    Socket client(gf_tcpSocket());
    EXPECT_FALSE(gf_connectSocket(client.fd, "127.0.0.1", closedPort));
    EXPECT_EQ(gf_socketError(), 10061) << "connection refused";

    Socket udp(gf_udpSocket());
    ASSERT_TRUE(gf_bindSocket(udp.fd, "127.0.0.1", 0));
    ASSERT_TRUE(gf_setReceiveTimeout(udp.fd, 200));
    std::array<char, 64> buffer{};
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(gf_receiveDatagram(udp.fd, buffer.data(), buffer.size()), -1);
    const int error = gf_socketError();
    EXPECT_TRUE(error == WSA_ETIMEDOUT || error == WSA_EWOULDBLOCK) << error;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));

    Socket bad(gf_udpSocket());
    EXPECT_FALSE(gf_bindSocket(bad.fd, "not an address", 0));
    EXPECT_EQ(gf_socketError(), 10022) << "invalid argument";
}
