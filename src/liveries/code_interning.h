// Model and airline codes as small numbers. Each code gets the next free
// 16-bit index on first use; index 0 is the empty code. The tables only grow,
// and may grow from any thread while others read codes by index.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tfx {

struct CodeHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept {
        return std::hash<std::string_view>{}(text);
    }
};

struct InternTable {
    // Index 0 is the empty code, "none", from the start and after each clear.
    explicit InternTable(std::string_view name_) : name(name_), codes{std::string()} {
        indexOf.emplace(std::string(), 0);
    }
    std::string_view name;  // for the log
    mutable std::shared_mutex lock;
    // A deque keeps every stored code in place while the table grows, so a
    // reference handed out by gf_codeAt stays valid.
    std::deque<std::string> codes;
    std::unordered_map<std::string, std::uint16_t, CodeHash, std::equal_to<>> indexOf;
    bool fullReported = false;
};

inline constexpr std::size_t INTERN_CAPACITY = 65536;

extern InternTable modelCodes;
extern InternTable airlineCodes;

std::optional<std::uint16_t> gf_findCode(const InternTable& table, std::string_view code);
// The code's index, appending it when new. A full table logs once and gives 0.
std::uint16_t gf_internCode(InternTable& table, std::string_view code);
// The code of an index; the empty code for an index never handed out.
const std::string& gf_codeAt(const InternTable& table, std::uint16_t index);
std::size_t gf_codeCount(const InternTable& table);
// Back to the empty code alone, at index 0.
void gf_clearCodes(InternTable& table);

// Shorthands for the two tables.
inline const std::string& gf_modelCode(std::uint16_t index) {
    return gf_codeAt(modelCodes, index);
}
inline const std::string& gf_airlineCode(std::uint16_t index) {
    return gf_codeAt(airlineCodes, index);
}

}  // namespace tfx
