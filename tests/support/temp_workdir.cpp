#include "support/temp_workdir.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

#include <fmt/format.h>

#include "app/log.h"
#include "app/parameters.h"
#include "support/environment.h"

namespace fs = std::filesystem;

namespace tfx::test {
namespace {

void lf_setDataDir(const std::string& value) {
    setEnvVar("ZEPT_DATA_DIR", value);
}

// A new folder of its own under the system's temporary folder.
fs::path lf_makeTempDir() {
    std::random_device seed;
    std::mt19937_64 random(seed());
    for (int attempt = 0; attempt < 100; ++attempt) {
        fs::path dir = fs::temp_directory_path() / fmt::format("zept-test-{:012x}", random() >> 16);
        if (fs::create_directory(dir)) return dir;
    }
    throw std::runtime_error("cannot make a temporary folder");
}

}  // namespace

TempWorkdir::TempWorkdir(bool openLog) : previous_(fs::current_path()) {
    dir_ = lf_makeTempDir();
    fs::current_path(dir_);
    lf_setDataDir(dir_.string());
    params.resetToDefaults();
    if (openLog) gf_openLog();
}

TempWorkdir::~TempWorkdir() {
    gf_closeLog();
    std::error_code ec;
    fs::current_path(previous_, ec);
    fs::remove_all(dir_, ec);
    lf_setDataDir("");
}

std::string TempWorkdir::logText() const {
    gf_flushLog();
    return read("Log.txt");
}

fs::path TempWorkdir::write(const std::string& name, const std::string& bytes) const {
    const fs::path p = dir_ / name;
    std::ofstream out(p, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return p;
}

std::string TempWorkdir::read(const std::string& name) const {
    std::ifstream in(dir_ / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace tfx::test
