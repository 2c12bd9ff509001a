#include "app/file_utils.h"

#include <algorithm>
#include <cctype>
#include <string>

#include <fmt/format.h>
#include <fmt/std.h>

#include "app/log.h"
#include "platform/file_replace.h"

namespace fs = std::filesystem;

namespace tfx {
namespace {

std::string lf_lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

template <typename Filter>
void lf_removeFiles(const fs::path& folder, std::string_view name, Filter keep) {
    try {
        std::error_code ec;
        if (!fs::is_directory(folder, ec)) return;
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (!entry.is_regular_file(ec) || keep(entry.path())) continue;
            if (!fs::remove(entry.path(), ec) && ec)
                gf_logError(
                    fmt::format("Failed to remove {} ({})", entry.path().string(), ec.message()));
        }
    } catch (const std::exception& e) {
        gf_logError(fmt::format("{} exception: {}", name, e.what()));
    }
}

}  // namespace

bool gf_save1GenerationOf(const fs::path& path) {
    if (!path.has_extension()) {
        gf_logError(
            fmt::format("gf_save1GenerationOf: no extension in filename: {}", path.string()));
        return false;
    }
    fs::path copy = path;
    copy.replace_filename(path.stem().string() + "0" + path.extension().string());

    std::error_code ec;
    const auto status = fs::status(path, ec);
    if (ec && ec != std::errc::no_such_file_or_directory) {
        gf_logError(fmt::format("exists({}): {}", path.string(), ec.message()));
        return false;
    }
    if (!fs::exists(status)) return true;

    // Copy beside the target and swap, so an interrupted copy never replaces
    // the generation we already had with half a file.
    const fs::path tmp = pf_temporaryNameFor(copy);
    if (!fs::copy_file(path, tmp, fs::copy_options::overwrite_existing, ec) ||
        !pf_replaceFile(tmp, copy, ec)) {
        std::error_code ignored;
        fs::remove(tmp, ignored);
        gf_logError(
            fmt::format("copy {} -> {} failed: {}", path.string(), copy.string(), ec.message()));
        return false;
    }
    return true;
}

bool gf_saveXml(pugi::xml_document& document, const fs::path& path) {
    pugi::xml_node first = document.first_child();
    pugi::xml_node decl = first;
    if (first.type() != pugi::node_declaration)
        decl = document.prepend_child(pugi::node_declaration);
    decl.remove_attribute("version");
    decl.remove_attribute("encoding");
    decl.prepend_attribute("encoding") = "UTF-8";
    decl.prepend_attribute("version") = "1.0";

    const fs::path tmp = pf_temporaryNameFor(path);
    if (!document.save_file(tmp.c_str(), "  ", pugi::format_default, pugi::encoding_utf8)) {
        std::error_code ignored;
        fs::remove(tmp, ignored);
        return false;
    }
    std::error_code ec;
    if (!pf_replaceFile(tmp, path, ec)) {
        fs::remove(tmp, ec);
        return false;
    }
    return true;
}

void gf_removeFile(const fs::path& path) {
    if (path.empty()) return;
    std::error_code ec;
    if (!fs::remove(path, ec) && ec)
        gf_logError(
            fmt::format("Warning: could not remove '{}', error: {}", path.string(), ec.message()));
}

void gf_removeFilesFromDirectory(const fs::path& path) {
    lf_removeFiles(path, "gf_removeFilesFromDirectory", [](const fs::path&) { return false; });
}

void gf_removeXMLFilesFromDirectory() {
    lf_removeFiles("tblo", "gf_removeXMLFilesFromDirectory",
                   [](const fs::path& p) { return lf_lower(p.extension().string()) != ".xml"; });
}

}  // namespace tfx
