#include "feeds/rtapp/udp_receiver.h"

#include <stdexcept>

#include <fmt/format.h>

#include "app/log.h"
#include "app/winsock_errors.h"

namespace tfx {

UdpReceiver::~UdpReceiver() {
    close();
}

void UdpReceiver::open() {
    close();
    socket_ = gf_udpSocket();
    if (socket_ == NO_SOCKET)
        throw std::runtime_error(fmt::format("failed to create the socket, error: {}",
                                             gf_winsockErrorText(gf_socketError())));
    // Another program on this machine may listen to the same broadcasts.
    gf_setReuseAddress(socket_);
    if (!gf_setBroadcast(socket_)) {
        const int error = gf_socketError();
        close();
        throw std::runtime_error(fmt::format("failed to set socket to broadcast, error: {}",
                                             gf_winsockErrorText(error)));
    }
    if (!gf_bindSocket(socket_, rtAppEndpoints.address, port_)) {
        const int error = gf_socketError();
        close();
        throw std::runtime_error(fmt::format("bind failed, error: {}", gf_winsockErrorText(error)));
    }
}

void UdpReceiver::close() {
    gf_closeSocket(socket_);
}

void UdpReceiver::receiveLoop() {
    if (socket_ == NO_SOCKET) throw std::runtime_error("receive: socket_ is INVALID_SOCKET");
    if (!gf_setReceiveTimeout(socket_, 1000))
        throw std::runtime_error(fmt::format("setsockopt SO_RCVTIMEO failed, socket_={}, error={}",
                                             socket_, gf_socketError()));
    while (true) {
        if (stop.load()) {
            onStop();
            return;
        }
        const auto n = gf_receiveDatagram(socket_, buffer_.data(), RT_APP_BUFFER_SIZE);
        const int error = n < 0 ? gf_socketError() : 0;
        onIdle();
        if (n == 0) continue;
        if (n < 0) {
            if (error == WSA_EINTR || error == WSA_EWOULDBLOCK || error == WSA_ETIMEDOUT) continue;
            if (stop.load()) {
                onStop();
                return;
            }
            throw std::runtime_error(fmt::format("receive error: {}", gf_winsockErrorText(error)));
        }
        const auto size = static_cast<std::size_t>(n);
        if (size >= RT_APP_BUFFER_SIZE) {
            gf_complain(complaints, "buffer overrun",
                        fmt::format("buffer overrun: {} bytes", size));
            continue;
        }
        buffer_[size] = '\0';
        ++datagrams;
        const std::string_view text(buffer_.data(), size);
        if (text == last_ && !isControl(text)) continue;
        last_.assign(text);
        onDatagram(text);
    }
}

}  // namespace tfx
