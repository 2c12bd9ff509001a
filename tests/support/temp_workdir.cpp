#include "support/temp_workdir.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "app/log.h"
#include "app/parameters.h"

namespace fs = std::filesystem;

namespace tfx::test {

TempWorkdir::TempWorkdir(bool openLog) : previous_(fs::current_path()) {
    std::string pattern = (fs::temp_directory_path() / "zept-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    dir_ = pattern;
    fs::current_path(dir_);
    ::setenv("ZEPT_DATA_DIR", dir_.c_str(), 1);
    params.resetToDefaults();
    if (openLog) gf_openLog();
}

TempWorkdir::~TempWorkdir() {
    gf_closeLog();
    std::error_code ec;
    fs::current_path(previous_, ec);
    fs::remove_all(dir_, ec);
    ::unsetenv("ZEPT_DATA_DIR");
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
