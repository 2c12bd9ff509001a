// Parsing XML from memory, so that a failure can name the line it stopped at.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include <pugixml.hpp>

namespace tfx {

// The whole file, or nothing when it can't be opened.
std::optional<std::string> gf_readWholeFile(const std::filesystem::path& path);
// Parses text into document with pugixml's default flags; on failure the
// parser's description with the line, "... at line N".
std::optional<std::string> gf_parseXmlText(std::string_view text, pugi::xml_document& document);

}  // namespace tfx
