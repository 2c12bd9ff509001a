#include "airports/xml_text.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include <fmt/format.h>

namespace tfx {

std::optional<std::string> gf_readWholeFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::optional<std::string> gf_parseXmlText(std::string_view text, pugi::xml_document& document) {
    const pugi::xml_parse_result parsed = document.load_buffer(text.data(), text.size());
    if (parsed) return std::nullopt;
    const auto offset = static_cast<std::size_t>(std::max<std::ptrdiff_t>(parsed.offset, 0));
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(offset, text.size()));
    const auto line = 1 + std::count(text.begin(), end, '\n');
    return fmt::format("{} at line {}", parsed.description(), line);
}

}  // namespace tfx
