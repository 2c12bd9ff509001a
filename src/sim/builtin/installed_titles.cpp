#include "sim/builtin/installed_titles.h"

#include <algorithm>
#include <fstream>

#include "app/text_files.h"
#include "platform/known_folders.h"
#include "platform/wide_text.h"

namespace fs = std::filesystem;

namespace tfx {

namespace {

std::string lf_trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(" \t\r");
    return std::string(text.substr(first, last - first + 1));
}

std::string lf_lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// A value as the simulator reads it: quoted text, else the text before a
// comment.
std::string lf_value(std::string_view text) {
    const std::string value = lf_trimmed(text);
    if (!value.empty() && value.front() == '"') {
        const auto close = value.find('"', 1);
        return value.substr(1, close == std::string::npos ? std::string::npos : close - 1);
    }
    return lf_trimmed(std::string_view(value).substr(0, value.find(';')));
}

void lf_readFile(const fs::path& path, std::vector<KnownTitle>& out) {
    std::vector<std::string> lines;
    const Charset charset = gf_detectCharset(path);
    if (charset == Charset::none_found || !gf_readTextLines(charset, path, lines)) return;
    std::string model;
    std::vector<std::string> titles;
    bool inFltsim = false;
    for (const std::string& line : lines) {
        const std::string text = lf_trimmed(line);
        if (text.starts_with("[")) {
            inFltsim = lf_lower(text).starts_with("[fltsim.");
            continue;
        }
        const auto eq = text.find('=');
        if (eq == std::string::npos || text.starts_with(";")) continue;
        const std::string key = lf_lower(lf_trimmed(std::string_view(text).substr(0, eq)));
        if (key == "icao_type_designator" && model.empty())
            model = lf_value(std::string_view(text).substr(eq + 1)).substr(0, 4);
        else if (key == "title" && inFltsim)
            titles.push_back(lf_value(std::string_view(text).substr(eq + 1)));
    }
    for (std::string& title : titles)
        if (!title.empty()) out.push_back({std::move(title), model, std::nullopt, std::nullopt});
}

}  // namespace

std::optional<fs::path> gf_simPackagesFolder() {
    const auto local = pf_localAppData();
    if (!local) return std::nullopt;
    std::ifstream in(*local / "Packages" / "Microsoft.FlightSimulator_8wekyb3d8bbwe" /
                     "LocalCache" / "UserCfg.opt");
    for (std::string line; std::getline(in, line);) {
        if (line.find("InstalledPackagesPath") == std::string::npos) continue;
        const auto open = line.find('"');
        const auto close = open == std::string::npos ? open : line.find('"', open + 1);
        if (close == std::string::npos) return std::nullopt;
        return pf_pathFromUtf8(line.substr(open + 1, close - open - 1));
    }
    return std::nullopt;
}

std::vector<KnownTitle> gf_readInstalledTitles(const fs::path& packages) {
    std::vector<KnownTitle> titles;
    std::error_code ec;
    for (const char* root : {"Official", "Community"}) {
        fs::recursive_directory_iterator it(packages / root,
                                            fs::directory_options::follow_directory_symlink |
                                                fs::directory_options::skip_permission_denied,
                                            ec);
        for (; !ec && it != fs::recursive_directory_iterator(); it.increment(ec))
            if (it->is_regular_file(ec) &&
                lf_lower(it->path().filename().string()) == "aircraft.cfg")
                lf_readFile(it->path(), titles);
        ec.clear();
    }
    return titles;
}

}  // namespace tfx
