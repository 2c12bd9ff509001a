// The UDP reader's receive loop on loopback: repeats dropped but counted,
// over-size datagrams dropped, and a stop seen within the receive time-out.
#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <thread>

#include "feeds/rtapp/udp_receiver.h"
#include "feeds/seen_sets.h"
#include "support/temp_workdir.h"

using namespace tfx;

namespace {

class Collecting : public UdpReceiver {
public:
    Collecting() : UdpReceiver(0) {}
    void onDatagram(std::string_view text) override {
        std::lock_guard lock(m);
        got.emplace_back(text);
    }
    void onStop() override { stopped = true; }
    std::mutex m;
    std::vector<std::string> got;
    std::atomic<bool> stopped{false};
};

TEST(UdpReceiver, RepeatsAndOversizeDatagramsAndStop) {
    test::TempWorkdir dir;
    Collecting reader;
    reader.open();
    const std::uint16_t port = reader.boundPort();
    ASSERT_NE(port, 0);
    std::thread loop([&] { reader.receiveLoop(); });

    SocketFd out = gf_udpSocket();
    for (const std::string& d :
         {std::string("RTTFC_EOT"), std::string("RTTFC_EOT"), std::string(RT_APP_BUFFER_SIZE, 'x'),
          std::string(RT_APP_BUFFER_SIZE - 1, 'y'), std::string("RTTFC_EOT")})
        ASSERT_EQ(gf_sendDatagram(out, d, "127.0.0.1", port), static_cast<std::int64_t>(d.size()));
    gf_closeSocket(out);

    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    while (reader.datagrams.load() < 4 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const auto stopAt = std::chrono::steady_clock::now();
    reader.stop = true;
    loop.join();
    EXPECT_LT(std::chrono::steady_clock::now() - stopAt, std::chrono::milliseconds(1500));
    EXPECT_TRUE(reader.stopped);

    // Both copies counted, so the indicator keeps showing data; the second dropped.
    EXPECT_EQ(reader.datagrams.load(), 4u);
    ASSERT_EQ(reader.got.size(), 3u);
    EXPECT_EQ(reader.got[0], "RTTFC_EOT");
    EXPECT_EQ(reader.got[1].size(), RT_APP_BUFFER_SIZE - 1);
    EXPECT_EQ(reader.got[2], "RTTFC_EOT");
    EXPECT_NE(dir.logText().find("buffer overrun: 16384 bytes"), std::string::npos);
}

TEST(UdpReceiver, LoopOnAClosedSocketThrowsInsteadOfSpinning) {
    Collecting reader;
    EXPECT_THROW(reader.receiveLoop(), std::runtime_error);
}

// A flood of distinct aircraft cannot grow the seen sets past their bound.
TEST(SeenSets, AFloodStopsAtTheBound) {
    SeenSets road;
    BatchSeen batch;
    for (std::uint32_t i = 0; i < 3 * MAX_SEEN; ++i) {
        gf_addSeen(batch, {"C" + std::to_string(i), 100000 + i});
        if (i % 1000 == 999) gf_mergeSeen(road, batch);
    }
    gf_mergeSeen(road, batch);
    EXPECT_EQ(road.hexids.size(), MAX_SEEN);
    EXPECT_EQ(road.callsigns.size(), MAX_SEEN);
}

}  // namespace
