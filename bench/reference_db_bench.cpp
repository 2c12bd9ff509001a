// Reading a reference database of 70,000 regcode records: time of the whole
// read (decrypt, parse, tables) and the memory it needs beyond the plain file.
#include <benchmark/benchmark.h>

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <fmt/format.h>

#include "../tools/publish_lib.h"
#include "liveries/reference_db.h"

namespace fs = std::filesystem;

namespace {

constexpr int RECORDS = 70000;

// The bundled sections with a generated dbase section of RECORDS records.
std::string lf_generatedDbase() {
    // The build compiles this file by its full path, which leads to data/.
    const fs::path source = fs::path(__FILE__).parent_path().parent_path();
    std::ifstream in(source / "data" / "dbase.xml", std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const auto from = text.find("  <dbase>");
    const auto to = text.find("</dbase>");
    if (from == std::string::npos || to == std::string::npos) std::abort();
    static constexpr const char* AIRLINES[] = {"BAW", "DLH", "AAL", "UAL", "FDX", "UPS", "KLM"};
    static constexpr const char* MODELS[] = {"A320", "B738", "B77W", "E190",
                                             "DH8D", "MD11", "A20N"};
    std::string records = "  <dbase>\n";
    records.reserve(RECORDS * 60);
    for (int i = 0; i < RECORDS; ++i) {
        // Registrations in a scattered order, as a real file lists them.
        const int n = (i * 7919) % RECORDS;
        records += fmt::format("    <d r=\"{}-{:05}\" a=\"{}\" m=\"{}\"{}{} />\n",
                               static_cast<char>('A' + n % 26), n, AIRLINES[n % 7], MODELS[n % 7],
                               n % 5 == 0 ? " o=\"CLH\"" : "", n % 7 >= 4 ? " c=\"true\"" : "");
    }
    text.replace(from, to + 8 - from, records + "  </dbase>");
    return text;
}

struct Folder {
    fs::path previous = fs::current_path();
    fs::path path;
    std::size_t plainBytes = 0;
    Folder() {
        std::string pattern = (fs::temp_directory_path() / "zept-bench-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) std::abort();
        path = pattern;
        fs::create_directory(path / "input");
        const std::string xml = lf_generatedDbase();
        plainBytes = xml.size();
        const std::string sealed = tfx::publish::gf_encryptBytes(xml);
        std::ofstream(path / "input" / "dbase.enc", std::ios::binary)
            .write(sealed.data(), static_cast<std::streamsize>(sealed.size()));
        fs::current_path(path);
    }
    ~Folder() {
        fs::current_path(previous);
        std::error_code ec;
        fs::remove_all(path, ec);
    }
};

long lf_statusKb(const char* key) {
    std::ifstream in("/proc/self/status");
    std::string line;
    while (std::getline(in, line))
        if (line.rfind(key, 0) == 0) return std::atol(line.c_str() + std::strlen(key));
    return -1;
}

// Peak resident growth of one read, measured in a child process so that no
// earlier allocation of this program hides or inflates it. Bytes, or -1.
double lf_peakGrowthOfOneRead() {
    int pipeEnds[2];
    if (::pipe(pipeEnds) != 0) return -1;
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(pipeEnds[0]);
        // Free heap pages go back to the system, so that the read has to
        // fault in every page it uses and the peak shows all of them.
        ::malloc_trim(0);
        const long before = lf_statusKb("VmRSS:");
        std::ofstream("/proc/self/clear_refs") << "5";  // peak back to the current size
        const bool ok = tfx::gf_readDbase();
        const long peak = lf_statusKb("VmHWM:");
        const long growth = ok && before >= 0 && peak >= 0 ? (peak - before) * 1024 : -1;
        (void)!::write(pipeEnds[1], &growth, sizeof growth);
        ::_exit(0);
    }
    ::close(pipeEnds[1]);
    long growth = -1;
    if (::read(pipeEnds[0], &growth, sizeof growth) != sizeof growth) growth = -1;
    ::close(pipeEnds[0]);
    ::waitpid(child, nullptr, 0);
    return static_cast<double>(growth);
}

void BM_ReadDbase70k(benchmark::State& state) {
    const Folder folder;
    const double peakGrowth = lf_peakGrowthOfOneRead();
    for (auto _ : state) {
        tfx::gf_clearReferenceData();
        if (!tfx::gf_readDbase()) state.SkipWithError("read failed");
    }
    if (tfx::dbaseRecords.size() != RECORDS) state.SkipWithError("records missing");
    state.counters["records"] = static_cast<double>(tfx::dbaseRecords.size());
    state.counters["plain_MB"] = static_cast<double>(folder.plainBytes) / 1e6;
    state.counters["peak_MB_beyond_file"] =
        peakGrowth < 0 ? -1 : (peakGrowth - static_cast<double>(folder.plainBytes)) / 1e6;
    tfx::gf_clearReferenceData();
}

void BM_LookupRegcode(benchmark::State& state) {
    const Folder folder;
    tfx::gf_clearReferenceData();
    if (!tfx::gf_readDbase()) state.SkipWithError("read failed");
    int i = 0;
    for (auto _ : state) {
        const int n = (i++ * 7919) % RECORDS;
        const std::string regcode = fmt::format("{}-{:05}", static_cast<char>('A' + n % 26), n);
        benchmark::DoNotOptimize(tfx::gf_lookupRegcode(regcode).valid);
    }
    tfx::gf_clearReferenceData();
}

}  // namespace

BENCHMARK(BM_ReadDbase70k)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_LookupRegcode);
