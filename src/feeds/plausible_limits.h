// What an aircraft can do. A report beyond these is a fault of the feed or
// a hostile sender, never something to show: the decoder refuses it.
#pragma once

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tfx {

struct PlausibleRange {
    std::string_view field;
    double min, max;
};

// Altitude: below the lowest airfield (about -1,300 ft) with room for
// pressure errors, above the ceiling of anything that carries a transponder
// in ordinary traffic. Speeds: beyond the fastest aircraft that fly today.
// Vertical speed: well past an emergency descent. Roll: past knife edge
// means a broken value, not a manoeuvre we could show.
inline constexpr PlausibleRange ALTITUDE_LIMIT_FT{"altitude", -2000, 66000};
inline constexpr PlausibleRange GROUND_SPEED_LIMIT_KT{"gs", 0, 1200};
inline constexpr PlausibleRange AIRSPEED_LIMIT_KT{"TAS", -1, 1200};
inline constexpr PlausibleRange VERTICAL_SPEED_LIMIT_FPM{"vs", -25000, 25000};
inline constexpr PlausibleRange ROLL_LIMIT_DEG{"roll", -90, 90};

inline constexpr std::array<const PlausibleRange*, 5> PLAUSIBLE_LIMITS = {
    &ALTITUDE_LIMIT_FT, &GROUND_SPEED_LIMIT_KT, &AIRSPEED_LIMIT_KT, &VERTICAL_SPEED_LIMIT_FPM,
    &ROLL_LIMIT_DEG};

// A value outside its range; readers count these apart from malformed lines.
class ImplausibleValue : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

inline bool gf_plausible(const PlausibleRange& range, double value) {
    return value >= range.min && value <= range.max;
}

}  // namespace tfx
