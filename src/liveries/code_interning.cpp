#include "liveries/code_interning.h"

#include <mutex>

#include <fmt/format.h>

#include "app/log.h"

namespace tfx {

InternTable modelCodes("model");
InternTable airlineCodes("airline");

std::optional<std::uint16_t> gf_findCode(const InternTable& table, std::string_view code) {
    std::shared_lock lock(table.lock);
    const auto it = table.indexOf.find(code);
    if (it == table.indexOf.end()) return std::nullopt;
    return it->second;
}

std::uint16_t gf_internCode(InternTable& table, std::string_view code) {
    if (const auto known = gf_findCode(table, code)) return *known;
    std::unique_lock lock(table.lock);
    // Another thread may have added it between the two locks.
    if (const auto it = table.indexOf.find(code); it != table.indexOf.end()) return it->second;
    if (table.codes.size() >= INTERN_CAPACITY) {
        if (!table.fullReported) {
            table.fullReported = true;
            lock.unlock();
            gf_logError(
                fmt::format("{} code table full, '{}' and later new codes are taken as empty",
                            table.name, code));
        }
        return 0;
    }
    const auto index = static_cast<std::uint16_t>(table.codes.size());
    table.codes.emplace_back(code);
    table.indexOf.emplace(table.codes.back(), index);
    return index;
}

const std::string& gf_codeAt(const InternTable& table, std::uint16_t index) {
    static const std::string empty;
    std::shared_lock lock(table.lock);
    return index < table.codes.size() ? table.codes[index] : empty;
}

std::size_t gf_codeCount(const InternTable& table) {
    std::shared_lock lock(table.lock);
    return table.codes.size();
}

void gf_clearCodes(InternTable& table) {
    std::unique_lock lock(table.lock);
    table.codes.clear();
    table.indexOf.clear();
    table.codes.emplace_back();
    table.indexOf.emplace(std::string(), 0);
    table.fullReported = false;
}

}  // namespace tfx
