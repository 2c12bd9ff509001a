#include "feeds/qnh.h"

namespace tfx {

std::atomic<std::int32_t> qnh{1013};

}  // namespace tfx
