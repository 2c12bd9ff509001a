#include "liveries/livery_index_files.h"

#include <fstream>

#include <fmt/format.h>

#include "app/log.h"
#include "platform/file_replace.h"

namespace fs = std::filesystem;

namespace tfx {

bool gf_writeReportLines(const fs::path& path, const std::vector<std::string>& lines) {
    std::error_code ec;
    if (path.has_parent_path()) fs::create_directories(path.parent_path(), ec);
    const fs::path temporary = pf_temporaryNameFor(path);
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        for (const std::string& line : lines) out << line << '\n';
        out.flush();
        if (!out) {
            out.close();
            fs::remove(temporary, ec);
            gf_logError(fmt::format("Error writing file {}", path.string()));
            return false;
        }
    }
    if (!pf_replaceFile(temporary, path, ec)) {
        fs::remove(temporary, ec);
        gf_logError(fmt::format("Error writing file {}: {}", path.string(), ec.message()));
        return false;
    }
    return true;
}

}  // namespace tfx
