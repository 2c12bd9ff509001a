// The livery scan of a full AI installation (about 20,000 liveries in 3,000
// aircraft.cfg files, made by scripts/make_ai_install.py into
// build/ai_install_large on first use): the whole scan with a cold and with a
// warm page cache, and reading the scanned-liveries file back. Memory: the
// peak resident growth of one scan and of one read-back, and the file's size.
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include "../tools/publish_lib.h"
#include "app/parameters.h"
#include "liveries/liveries_scan.h"
#include "liveries/reference_db.h"
#include "liveries/scanned_liveries_file.h"

namespace fs = std::filesystem;

namespace {

// This file's name as the compiler saw it: absolute, or relative to the
// build folder (compiler cache), where the program lies.
fs::path lf_sourceFolder() {
    const fs::path file = __FILE__;
    if (file.is_absolute()) return file.parent_path().parent_path();
    std::error_code ec;
    const fs::path exe = fs::canonical("/proc/self/exe", ec);
    return fs::weakly_canonical(exe.parent_path() / file, ec).parent_path().parent_path();
}
const fs::path SOURCE = lf_sourceFolder();
const fs::path TREE = SOURCE / "build" / "ai_install_large";

struct ScanFolder {
    fs::path previous = fs::current_path();
    fs::path path;
    bool ready = false;
    ScanFolder() {
        if (!fs::exists(TREE / "seeded.json")) {
            const std::string command = "python3 '" +
                                        (SOURCE / "scripts" / "make_ai_install.py").string() +
                                        "' '" + TREE.string() + "' --size large >/dev/null";
            if (std::system(command.c_str()) != 0) return;
        }
        std::string pattern = (fs::temp_directory_path() / "zept-bench-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) return;
        path = pattern;
        fs::create_directories(path / "input");
        fs::create_directories(path / "output");
        std::ifstream in(SOURCE / "data" / "dbase.xml", std::ios::binary);
        const std::string xml((std::istreambuf_iterator<char>(in)),
                              std::istreambuf_iterator<char>());
        const std::string sealed = tfx::publish::gf_encryptBytes(xml);
        std::ofstream(path / "input" / "dbase.enc", std::ios::binary)
            .write(sealed.data(), static_cast<std::streamsize>(sealed.size()));
        fs::current_path(path);
        tfx::gf_clearReferenceData();
        tfx::params.resetToDefaults();
        tfx::params.MSFS_INSTALL_PATH.current = TREE / "Packages";
        // Every livery stays, as in one large package: the file holds them all.
        tfx::params.LIG_PRIORITIZE.current = false;
        ready = tfx::gf_readDbase();
    }
    ~ScanFolder() {
        tfx::gf_clearReferenceData();
        fs::current_path(previous);
        std::error_code ec;
        if (!path.empty()) fs::remove_all(path, ec);
    }
};

// Drops the tree's files from the page cache, so that the next scan reads
// them from the disk.
void lf_dropTreeFromCache() {
    std::error_code ec;
    for (fs::recursive_directory_iterator it(TREE, ec), end; !ec && it != end; it.increment(ec)) {
        if (!it->is_regular_file(ec)) continue;
        const int fd = ::open(it->path().c_str(), O_RDONLY);
        if (fd < 0) continue;
        ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
        ::close(fd);
    }
}

long lf_statusKb(const char* key) {
    std::ifstream in("/proc/self/status");
    std::string line;
    while (std::getline(in, line))
        if (line.rfind(key, 0) == 0) return std::atol(line.c_str() + std::strlen(key));
    return -1;
}

// Peak resident growth of one run of work, in a child process so that
// nothing allocated before hides or inflates it. Megabytes, or -1.
double lf_peakGrowthMb(const std::function<bool()>& work) {
    int ends[2];
    if (::pipe(ends) != 0) return -1;
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        ::malloc_trim(0);
        const long before = lf_statusKb("VmRSS:");
        std::ofstream("/proc/self/clear_refs") << "5";
        const bool ok = work();
        const long peak = lf_statusKb("VmHWM:");
        const long growth = ok && before >= 0 && peak >= 0 ? peak - before : -1;
        (void)!::write(ends[1], &growth, sizeof growth);
        ::_exit(0);
    }
    ::close(ends[1]);
    long growth = -1;
    if (::read(ends[0], &growth, sizeof growth) != sizeof growth) growth = -1;
    ::close(ends[0]);
    ::waitpid(child, nullptr, 0);
    return growth < 0 ? -1 : static_cast<double>(growth) / 1024.0;
}

bool lf_scan() {
    try {
        tfx::gf_scanLiveries();
        return true;
    } catch (...) {
        return false;
    }
}

void lf_scanBench(benchmark::State& state, bool cold) {
    const ScanFolder folder;
    if (!folder.ready) {
        state.SkipWithError("no installation to scan");
        return;
    }
    for (auto _ : state) {
        if (cold) {
            state.PauseTiming();
            lf_dropTreeFromCache();
            state.ResumeTiming();
        }
        if (!lf_scan()) state.SkipWithError("scan failed");
    }
    state.counters["liveries"] = static_cast<double>(tfx::scanList.size());
    state.counters["peak_MB"] = lf_peakGrowthMb(lf_scan);
}

void BM_ScanLiveriesWarm(benchmark::State& state) {
    lf_scanBench(state, false);
}
void BM_ScanLiveriesCold(benchmark::State& state) {
    lf_scanBench(state, true);
}

void BM_ReadScannedLiveries(benchmark::State& state) {
    const ScanFolder folder;
    if (!folder.ready || !lf_scan()) {
        state.SkipWithError("scan failed");
        return;
    }
    std::vector<tfx::Livery> list;
    for (auto _ : state)
        if (!tfx::gf_readScannedLiveries(list, tfx::gf_scannedLiveriesPath()))
            state.SkipWithError("read failed");
    state.counters["liveries"] = static_cast<double>(list.size());
    state.counters["file_MB"] =
        static_cast<double>(fs::file_size(tfx::gf_scannedLiveriesPath())) / 1e6;
    state.counters["peak_MB"] = lf_peakGrowthMb([] {
        std::vector<tfx::Livery> again;
        return tfx::gf_readScannedLiveries(again, tfx::gf_scannedLiveriesPath());
    });
}

}  // namespace

BENCHMARK(BM_ScanLiveriesWarm)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_ScanLiveriesCold)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ReadScannedLiveries)->Unit(benchmark::kMillisecond)->MinTime(1.0);
