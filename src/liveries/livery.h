// One installed livery as the scan finds it and the scanned-liveries file
// keeps it: the title the simulator creates, and the codes it stands for.
#pragma once

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace tfx {

struct Livery {
    std::string title;
    std::string regcode;  // may be empty
    std::uint16_t airline = 0;
    std::uint16_t opr = 0;  // operator's airline index, 0 when none
    std::uint16_t model = 0;
    std::uint8_t cargo = 0;  // 1 for a freighter
    std::uint16_t rank = 0;  // folder of the scan, 1..10; 0 when read back from the file
};

// The catalogue's order: by index values, then title and regcode.
inline auto gf_liveryKey(const Livery& l) {
    return std::tie(l.airline, l.opr, l.model, l.cargo, l.title, l.regcode);
}
inline bool gf_liveryLess(const Livery& a, const Livery& b) {
    return gf_liveryKey(a) < gf_liveryKey(b);
}
inline bool gf_liverySame(const Livery& a, const Livery& b) {
    return gf_liveryKey(a) == gf_liveryKey(b);
}

// What the scan found, until it is written; then what was read back.
extern std::vector<Livery> scanList;

}  // namespace tfx
