// A reader of one UDP port: opens the socket, receives with a one-second
// time-out so that its stop flag is seen, drops repeats and over-size
// datagrams, and hands each new datagram on as text.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

#include "app/complaint_limit.h"
#include "feeds/rtapp/rtapp_link.h"
#include "platform/sockets.h"

namespace tfx {

class UdpReceiver {
public:
    explicit UdpReceiver(std::uint16_t port) : port_(port) {}
    virtual ~UdpReceiver();
    UdpReceiver(const UdpReceiver&) = delete;
    UdpReceiver& operator=(const UdpReceiver&) = delete;

    virtual void onDatagram(std::string_view text) = 0;
    virtual void onStop() {}
    // After every datagram and every receive time-out (at least once a second).
    virtual void onIdle() {}
    // Lines that pass the repeat filter: a marker may rightly come twice in a row.
    virtual bool isControl(std::string_view) const { return false; }

    // Throws the texts of a failed set-up.
    void open();
    // Until the stop flag is set; throws on a receive error while running.
    void receiveLoop();
    void close();
    void resetLast() { last_.clear(); }
    // The port actually bound; differs from the one asked for only when that was 0.
    std::uint16_t boundPort() const { return gf_boundPort(socket_); }

    std::atomic<bool> stop{false};
    std::atomic<std::uint32_t> datagrams{0};
    ComplaintLimit complaints;

private:
    std::uint16_t port_;
    SocketFd socket_ = NO_SOCKET;
    std::array<char, RT_APP_BUFFER_SIZE + 1> buffer_{};
    std::string last_;
};

}  // namespace tfx
