// The package a file belongs to: the nearest manifest.json above it.
#include <variant>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "airports/install_path.h"
#include "app/log.h"
#include "app/text_files.h"

namespace fs = std::filesystem;

namespace tfx {

namespace {

std::string lf_text(const nlohmann::json& object, const char* key) {
    const auto it = object.find(key);
    return it != object.end() && it->is_string() ? it->get<std::string>() : std::string();
}

}  // namespace

std::optional<PackageData> gf_readManifest(const fs::path& manifest) {
    std::error_code ec;
    const std::uintmax_t size = fs::file_size(manifest, ec);
    if (ec) return std::nullopt;
    if (size > MAX_MANIFEST_BYTES) {
        gf_logLine(fmt::format("Ignoring manifest larger than {} bytes: '{}'", MAX_MANIFEST_BYTES,
                               manifest.string()));
        return std::nullopt;
    }
    auto read = gf_readFileLines(manifest, 4096);
    const auto* lines = std::get_if<std::vector<std::string>>(&read);
    if (lines == nullptr) return std::nullopt;
    std::string text;
    for (const std::string& line : *lines) text.append(line).push_back('\n');
    const nlohmann::json doc = nlohmann::json::parse(text, nullptr, false);
    if (!doc.is_object()) return std::nullopt;
    PackageData data;
    data.version = lf_text(doc, "package_version");
    if (data.version.empty()) data.version = lf_text(doc, "version");
    data.title = lf_text(doc, "title");
    data.manufacturer = lf_text(doc, "manufacturer");
    data.creator = lf_text(doc, "creator");
    return data;
}

std::optional<PackageData> gf_searchManifest(const fs::path& path) {
    try {
        fs::path current = path;
        for (int level = 0; level <= MANIFEST_SEARCH_LEVELS + 1; ++level) {
            const fs::path manifest = current / "manifest.json";
            std::error_code ec;
            if (fs::is_regular_file(manifest, ec)) return gf_readManifest(manifest);
            fs::path parent = current.parent_path();
            if (parent.empty() || parent == current) break;
            current = std::move(parent);
        }
    } catch (const std::exception& e) {
        gf_logLine(
            fmt::format("Exception in gf_searchManifest for '{}': {}", path.string(), e.what()));
    }
    return std::nullopt;
}

}  // namespace tfx
