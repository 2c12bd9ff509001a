#include "liveries/regcode_files.h"

#include <algorithm>
#include <variant>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "app/log.h"
#include "app/text_files.h"
#include "app/text_utils.h"

namespace fs = std::filesystem;

namespace tfx {

namespace {

const char* lf_plural(std::size_t count) {
    return count == 1 ? "" : "s";
}

void lf_logRead(const std::vector<RegcodeEntry>& entries, std::size_t from, const fs::path& path) {
    std::size_t regcodes = 0;
    for (std::size_t i = from; i < entries.size(); ++i) regcodes += entries[i].regcodes.size();
    const std::size_t titles = entries.size() - from;
    gf_logLine(fmt::format("{:5} livery title{} with {} regcode{}, read from {}", titles,
                           lf_plural(titles), regcodes, lf_plural(regcodes), path.string()));
}

std::vector<std::string> lf_regcodeList(const std::string& text) {
    std::vector<std::string> list;
    for (const std::string& piece : gf_split(text, ',')) {
        std::string code = gf_trim(piece);
        if (!code.empty()) list.push_back(std::move(code));
    }
    return list;
}

}  // namespace

bool gf_readRegcodeTextFile(const fs::path& path, std::vector<RegcodeEntry>& entries) {
    auto read = gf_readFileLines(path, 1024);
    if (std::holds_alternative<std::string>(read)) {
        gf_logError(fmt::format("{} could not be opened", path.string()));
        return false;
    }
    bool ok = true;
    const std::size_t from = entries.size();
    for (const std::string& line : std::get<std::vector<std::string>>(read)) {
        if (line.size() < 6) continue;
        const std::vector<std::string> fields = gf_split(line, ';');
        RegcodeEntry entry{gf_trim(fields[0]), {}, false};
        if (entry.title.empty()) continue;
        if (fields.size() >= 2) {
            const std::vector<std::string> listed = lf_regcodeList(fields[1]);
            for (const std::string& code : listed) {
                if (code.size() < 3 || code.size() > 12) {
                    gf_logError(
                        fmt::format("wrong regcode length '{}' in {}", code, path.string()));
                    ok = false;
                } else {
                    entry.regcodes.push_back(code);
                }
            }
            if (listed.size() == 1) {
                if (entry.regcodes.empty()) continue;  // its one regcode was wrong
                entry.special = true;
            } else if (listed.size() >= 2) {
                entry.special = fields.size() >= 3 && fields[2] == "#" && !entry.regcodes.empty();
            }
        }
        entries.push_back(std::move(entry));
    }
    lf_logRead(entries, from, path);
    return ok;
}

bool gf_readRegcodeFolder(const fs::path& folder, std::vector<RegcodeEntry>& entries) {
    std::vector<fs::path> files;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        std::string ext = it->path().extension().string();
        std::transform(ext.begin(), ext.end(), ext.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (ext == ".txt" && it->is_regular_file(ec)) files.push_back(it->path());
    }
    std::sort(files.begin(), files.end());
    bool ok = true;
    for (const fs::path& file : files) ok = gf_readRegcodeTextFile(file, entries) && ok;
    return ok;
}

bool gf_readAigRegcodesXml(const fs::path& path, std::vector<RegcodeEntry>& entries) {
    pugi::xml_document doc;
    const pugi::xml_parse_result parsed = doc.load_file(path.c_str());
    if (parsed.status == pugi::status_file_not_found || parsed.status == pugi::status_io_error) {
        gf_logError(fmt::format("{} could not be opened", path.string()));
        return false;
    }
    if (!parsed) {
        gf_logError(fmt::format("{} not loaded: {}", path.string(), parsed.description()));
        return false;
    }
    const pugi::xml_node root = doc.child("root");
    if (!root.child("meta")) {
        gf_logError(fmt::format("{} not loaded: {}", path.string(), "no <meta> node"));
        return false;
    }
    const pugi::xml_node aig = root.child("aig");
    if (!aig) {
        gf_logError("No <aig> node found in XML.");
        return false;
    }
    bool ok = true;
    const std::size_t from = entries.size();
    std::string previous;
    for (const pugi::xml_node l : aig.children("l")) {
        const std::string title = l.attribute("t").value();
        if (title.empty()) continue;
        if (title == previous) {
            gf_logError(fmt::format("Duplicate title '{}' (same as previous)", title));
            ok = false;
        }
        previous = title;
        entries.push_back(
            {title, lf_regcodeList(l.attribute("r").value()), l.attribute("s").as_bool()});
    }
    lf_logRead(entries, from, path);
    return ok;
}

}  // namespace tfx
