#include <charconv>

#include "platform/sockets.h"

namespace tfx {

std::uint16_t gf_portNumber(std::string_view text) {
    unsigned value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || ec != std::errc() || end != text.data() + text.size() || value > 65535)
        return 0;
    return static_cast<std::uint16_t>(value);
}

}  // namespace tfx
