// A test's own program folder: a fresh temporary directory that becomes the
// working folder and the data folder, with the log open in it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tfx::test {

class TempWorkdir {
public:
    explicit TempWorkdir(bool openLog = true);
    ~TempWorkdir();
    TempWorkdir(const TempWorkdir&) = delete;
    TempWorkdir& operator=(const TempWorkdir&) = delete;

    const std::filesystem::path& path() const { return dir_; }
    // Everything logged so far (flushes first).
    std::string logText() const;
    // Writes bytes to a file in the folder and returns its path.
    std::filesystem::path write(const std::string& name, const std::string& bytes) const;
    std::string read(const std::string& name) const;

private:
    std::filesystem::path dir_;
    std::filesystem::path previous_;
};

}  // namespace tfx::test
