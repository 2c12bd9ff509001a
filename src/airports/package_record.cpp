#include "airports/package_record.h"

#include <algorithm>
#include <cctype>

#include <fmt/format.h>

#include "app/log.h"

namespace tfx {

namespace {

std::string lf_lower(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

const std::optional<PackageData>& lf_package(PackagedFile& file) {
    if (!file.packageSearched) {
        file.package = gf_searchManifest(file.bglPath);
        file.packageSearched = true;
    }
    return file.package;
}

bool lf_isCodeCharacter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

}  // namespace

std::optional<std::string> gf_publisherOfRecord(PackagedFile& file, const PackageLookups& lookups) {
    try {
        const std::string path = file.bglPath.string();
        const std::string lowerPath = lf_lower(path);
        if (lowerPath.find("microsoft-airport") != std::string::npos ||
            lowerPath.find("asobo-airport") != std::string::npos) {
            gf_logLine(fmt::format("publisher: {}", "simaddon"));
            return "simaddon";
        }
        if (auto name = lookups.findPublisher(path)) {
            gf_logLine(fmt::format("publisher: {}", *name));
            return name;
        }
        const auto& package = lf_package(file);
        if (!package) return std::nullopt;
        if (auto name = lookups.findPublisher(package->manufacturer)) {
            if (*name == "Microsoft" || lf_lower(*name).find("asobo") != std::string::npos)
                name = "simaddon";
            gf_logLine(fmt::format("publisher '{}'", *name));
            return name;
        }
        if (auto name = lookups.findPublisher(package->creator)) {
            gf_logLine(fmt::format("publisher '{}'", *name));
            return name;
        }
    } catch (const std::exception& e) {
        gf_logLine(fmt::format("{} exception: {}", "gf_publisherOfRecord", e.what()));
    }
    return std::nullopt;
}

std::optional<std::string> gf_airportCodeOfRecord(PackagedFile& file,
                                                  const PackageLookups& lookups) {
    try {
        if (auto code = lookups.findAirportCode(file.bglPath.string())) {
            gf_logLine(fmt::format("airport has code '{}' in BGL path", *code));
            return code;
        }
        const std::string stem = file.bglPath.stem().string();
        if (stem.size() == 4 && std::all_of(stem.begin(), stem.end(), lf_isCodeCharacter) &&
            lookups.hasTrafficThisWeek(stem)) {
            gf_logLine(fmt::format("airport has code '{}' in stem", stem));
            return stem;
        }
        const auto& package = lf_package(file);
        if (!package) return std::nullopt;
        if (auto code = lookups.findAirportCode(package->title)) {
            gf_logLine(fmt::format("airport has code '{}' in title of manifest", *code));
            return code;
        }
    } catch (const std::exception& e) {
        gf_logLine(fmt::format("{} exception: {}", "gf_airportCodeOfRecord", e.what()));
    }
    return std::nullopt;
}

}  // namespace tfx
