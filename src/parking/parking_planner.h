// The planner's entries: reading the park airport's file, the first plan
// there, and the later plans of the parking update.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tfx {

// Loads the park airport's file as the stand list; nothing when it went
// well, else the error text.
std::optional<std::string> lf_readParkedFile();
// The first plan at an airport.
void lf_firstParking();
// The later plans; with parkedDataChanged new parked records came in.
void lf_parkingAdjustments(bool parkedDataChanged);
// The user's reserved stand and the stand under the user's aircraft, with
// the stands they overlap, are kept free.
void lf_blockUserStands();
void lf_collectLiveStayers();
void lf_departingStatics(std::uint64_t slot);

}  // namespace tfx
