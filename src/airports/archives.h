// What the server's airport archive holds: the publishers with their
// spellings, the simaddon airports and the third parties' airports of the
// simulator in use (input/archives.enc).
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tfx {

inline constexpr std::size_t PUBLISHERS_RESERVED = 1024;
inline constexpr std::size_t THIRDPARTIES_RESERVED = 800;

// Each entry: the canonical name first, then spellings seen in folder names.
extern std::vector<std::vector<std::string>> publisherTable;
extern std::set<std::string, std::less<>> simaddonSet;
// A publisher and its entries (an ICAO code, optionally with a version behind it).
extern std::vector<std::pair<std::string, std::vector<std::string>>> thirdpartyList;

// False when a section is broken (logged); throws when the file is missing or
// can't be decrypted, and UserRelatedException when the simaddon section is.
bool gf_readArchives(bool is2020);
void gf_clearArchives();

enum class PublisherSearch { found, notFound, noPath };
struct PublisherResult {
    PublisherSearch result = PublisherSearch::noPath;
    std::string name;  // canonical name when found
};
PublisherResult gf_findPublisher(std::string_view path);

bool gf_simaddonExists(std::string_view code);
bool gf_thirdPartyExists(std::string_view publisher, std::string_view entry);

}  // namespace tfx
