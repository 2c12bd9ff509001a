// An exception whose message tells the user what to do or know. A catcher may
// show what() as it stands: "<code>: <message>".
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include <fmt/format.h>

namespace tfx {

struct UserRelatedException : std::runtime_error {
    UserRelatedException(std::int32_t code_, const std::string& message_)
        : std::runtime_error(fmt::format("{}: {}", code_, message_)),
          code(code_),
          message(message_) {}

    std::int32_t code;
    std::string message;
};

}  // namespace tfx
