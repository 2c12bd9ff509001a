// What a position report costs the tick. Before the link had its own
// thread the tick sent on the socket itself (a system call under a lock,
// and a wait without end when the peer stopped reading); now it queues the
// text for the link's thread. Both against a peer on loopback that reads.
#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "app/exit_request.h"
#include "feeds/rtapp/rtapp_link.h"

namespace {

using namespace tfx;

const std::string REPORT = "Qs121=5000;10000;1.570800;3500000;140000;0.904725;-0.023038\r\n";

std::uint16_t lf_freePort() {
    SocketFd s = gf_tcpSocket();
    gf_bindSocket(s, "127.0.0.1", 0);
    const std::uint16_t port = gf_boundPort(s);
    gf_closeSocket(s);
    return port;
}

struct ReadingPeer {
    SocketFd socket = NO_SOCKET;
    std::atomic<bool> stop{false};
    std::thread reader;
    void start() {
        reader = std::thread([this] {
            char buffer[65536];
            while (!stop)
                if (gf_waitReadable(socket, 50) > 0 &&
                    gf_receiveBytes(socket, buffer, sizeof buffer) <= 0)
                    break;
        });
    }
    ~ReadingPeer() {
        stop = true;
        if (reader.joinable()) reader.join();
        gf_closeSocket(socket);
    }
};

void BM_ReportSentOnTheTick(benchmark::State& state) {
    const std::uint16_t port = lf_freePort();
    SocketFd listener = gf_tcpSocket();
    gf_bindSocket(listener, "127.0.0.1", port);
    gf_listenSocket(listener);
    ReadingPeer peer;
    peer.socket = gf_tcpSocket();
    gf_connectSocket(peer.socket, "127.0.0.1", port);
    SocketFd client = gf_acceptClient(listener);
    gf_setNoDelay(client);
    peer.start();
    for (auto _ : state) benchmark::DoNotOptimize(gf_sendBytes(client, REPORT));
    gf_closeSocket(client);
    gf_closeSocket(listener);
}
BENCHMARK(BM_ReportSentOnTheTick);

void BM_ReportQueuedForTheLink(benchmark::State& state) {
    gf_clearExitRequest();
    const std::uint16_t port = lf_freePort();
    gf_listenRTApp(std::to_string(port));
    std::thread accept([] { waitForClient(); });
    ReadingPeer peer;
    peer.socket = gf_tcpSocket();
    gf_connectSocket(peer.socket, "127.0.0.1", port);
    accept.join();
    peer.start();
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(sendDataPacket(REPORT));
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        // The tick reports every 200 ms; the link's thread keeps up long
        // before the next one, so the queue is empty again here.
        while (true) {
            std::lock_guard lock(linkSender.lock);
            if (linkSender.queue.empty()) break;
        }
    }
    gf_closeRTApp();
}
BENCHMARK(BM_ReportQueuedForTheLink)->UseManualTime()->Iterations(500);

}  // namespace
