#include "airports/airport_paths.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <system_error>
#include <vector>

#include <fmt/format.h>

#include "airports/airport_catalogue.h"
#include "app/log.h"
#include "app/text_utils.h"
#include "platform/wide_text.h"

namespace fs = std::filesystem;

namespace tfx {
namespace {

std::string lf_lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::optional<fs::path> lf_inScanFolder(const fs::path& folder, const IcaoCode& icao) {
    const std::string code(icao.text());
    if (auto target = gf_readPointerFile(folder / (code + ".txt"))) return target;
    std::error_code ec;
    const fs::path xml = folder / (code + ".xml");
    if (fs::is_regular_file(xml, ec)) return xml;
    return std::nullopt;
}

std::vector<std::string> lf_components(const fs::path& path) {
    std::vector<std::string> parts;
    for (const auto& part : path.lexically_normal()) {
        const std::string text = part.generic_string();
        if (!text.empty() && text != "/") parts.push_back(text);
    }
    return parts;
}

// Slashes become blanks, blanks at both ends go; nothing when empty or no UTF-8.
std::optional<std::string> lf_cleanPublisher(std::string name) {
    std::replace(name.begin(), name.end(), '/', ' ');
    std::replace(name.begin(), name.end(), '\\', ' ');
    const auto first = name.find_first_not_of(' ');
    if (first == std::string::npos) return std::nullopt;
    const auto last = name.find_last_not_of(' ');
    std::string cleaned(name.begin() + static_cast<std::ptrdiff_t>(first),
                        name.begin() + static_cast<std::ptrdiff_t>(last) + 1);
    try {
        (void)utf8_to_wide(cleaned);
    } catch (const std::exception& e) {
        gf_logError(fmt::format("Invalid UTF-8 publisher '{}': {}", cleaned, e.what()));
        return std::nullopt;
    }
    return cleaned;
}

// "%20" becomes a blank; other escapes stay as they are.
std::string lf_blanksDecoded(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.substr(i, 3) == "%20") {
            out += ' ';
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

}  // namespace

std::optional<fs::path> gf_readPointerFile(const fs::path& txt) {
    std::ifstream in(txt, std::ios::binary);
    if (!in) return std::nullopt;
    std::string line;
    std::getline(in, line);
    const std::string target = gf_trim(line);
    if (target.size() < 4) return std::nullopt;
    fs::path path = pf_pathFromUtf8(target);
    const std::string ext = lf_lower(path.extension().string());
    if (ext != ".xml" && ext != ".enc") return std::nullopt;
    return path;
}

std::optional<fs::path> gf_findAirportFile(const IcaoCode& icao) {
    if (icao.empty()) return std::nullopt;
    if (auto found = lf_inScanFolder("airports/my_thirdparty", icao)) return found;
    if (auto found = lf_inScanFolder("airports/my_simaddon", icao)) return found;
    if (gf_airportKnown(icao))
        return fs::path("archive") / "stock" / (std::string(icao.text()) + ".enc");
    return std::nullopt;
}

bool gf_airportFileKnown(const IcaoCode& icao) {
    return gf_findAirportFile(icao).has_value();
}

std::string gf_percentDecode(std::string_view text) {
    const auto hex = [](char c) -> int {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        if (c >= 'A' && c <= 'F') return c - 'A' + 10;
        return -1;
    };
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hex(text[i + 1]) >= 0 &&
            hex(text[i + 2]) >= 0) {
            out += static_cast<char>(hex(text[i + 1]) * 16 + hex(text[i + 2]));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

std::optional<ArchiveName> gf_parseArchivePath(const fs::path& path) {
    const auto parts = lf_components(path);
    const auto archive = std::find(parts.begin(), parts.end(), "archive");
    if (archive == parts.end() || std::distance(archive, parts.end()) < 3) return std::nullopt;
    ArchiveName name;
    const std::string& kind = *(archive + 1);
    if (kind == "stock" || kind == "simaddon") {
        if (std::distance(archive, parts.end()) != 3) return std::nullopt;
        name.publisher = kind;
    } else if (kind == "thirdparty") {
        if (std::distance(archive, parts.end()) != 4) return std::nullopt;
        name.publisher = gf_percentDecode(*(archive + 2));
    } else {
        return std::nullopt;
    }
    const std::string stem = fs::path(parts.back()).stem().string();
    IcaoCode code;
    if (stem.size() < 4 || !gf_tryIcaoCode(stem.substr(0, 4), code)) return std::nullopt;
    for (std::size_t i = 0; i < 4; ++i)
        if (!std::isalpha(static_cast<unsigned char>(stem[i]))) return std::nullopt;
    name.icao = std::string(code.text());
    name.version = stem.substr(4);
    if (!std::all_of(name.version.begin(), name.version.end(),
                     [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    return name;
}

fs::path gf_learnedFolderOf(std::string_view publisher) {
    const fs::path learned = fs::path("airports") / "learned";
    if (publisher == "stock") return learned / "stock";
    if (publisher == "simaddon") return learned / "simaddon";
    return learned / "thirdparty" / pf_pathFromUtf8(publisher);
}

std::optional<fs::path> gf_learnedPathOf(const fs::path& path, std::string_view publisher) {
    const std::string ext = lf_lower(path.extension().string());
    if (ext != ".xml" && ext != ".enc") return std::nullopt;
    std::string stem = path.stem().string();
    if (stem.size() > 4) stem.resize(4);
    const std::string file = stem + ".xml";

    const auto parts = lf_components(path);
    const fs::path learned = fs::path("airports") / "learned";
    auto at = std::find_if(parts.begin(), parts.end(),
                           [](const std::string& p) { return p == "archive" || p == "airports"; });
    const auto left = std::distance(at, parts.end());
    if (at == parts.end() || left < 3) return std::nullopt;

    if (*at == "archive") {
        const std::string& kind = *(at + 1);
        if ((kind == "stock" || kind == "simaddon") && left == 3) return learned / kind / file;
        if (kind == "thirdparty" && left == 4) {
            const auto name = lf_cleanPublisher(lf_blanksDecoded(*(at + 2)));
            if (!name) return std::nullopt;
            return learned / "thirdparty" / *name / file;
        }
        return std::nullopt;
    }
    const std::string& folder = *(at + 1);
    if (folder == "learned") return std::nullopt;
    if (folder == "my_thirdparty" || folder == "my_thirdparty2024") {
        const auto name = lf_cleanPublisher(std::string(publisher));
        if (!name) return std::nullopt;
        return learned / "thirdparty" / *name / file;
    }
    if (folder == "my_simaddon") return learned / "simaddon" / file;
    fs::path relative;
    for (auto it = at + 1; it + 1 != parts.end(); ++it) relative /= *it;
    return learned / relative / file;
}

}  // namespace tfx
