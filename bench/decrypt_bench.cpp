// Decrypting a 20 MB data file: throughput in MB per second.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "../tools/publish_lib.h"
#include "app/decrypt.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t PLAIN_BYTES = 20 * 1000 * 1000;

fs::path lf_benchFolder() {
    std::string pattern = (fs::temp_directory_path() / "zept-bench-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    return pattern;
}

void BM_StreamDecrypt20MB(benchmark::State& state) {
    const fs::path folder = lf_benchFolder();
    const fs::path enc = folder / "big.enc";
    {
        std::string plain(PLAIN_BYTES, '\0');
        for (std::size_t i = 0; i < plain.size(); ++i) plain[i] = static_cast<char>(' ' + i % 90);
        const std::string sealed = tfx::publish::gf_encryptBytes(plain);
        std::ofstream(enc, std::ios::binary)
            .write(sealed.data(), static_cast<std::streamsize>(sealed.size()));
    }
    for (auto _ : state) {
        if (!tfx::gf_streamDecrypt(enc, folder / "big.xml")) state.SkipWithError("decrypt failed");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * PLAIN_BYTES));
    state.counters["MB_per_s"] = benchmark::Counter(static_cast<double>(PLAIN_BYTES) / 1e6,
                                                    benchmark::Counter::kIsIterationInvariantRate);
    std::error_code ec;
    fs::remove_all(folder, ec);
}

}  // namespace

BENCHMARK(BM_StreamDecrypt20MB)->Unit(benchmark::kMillisecond)->MinTime(2.0);
