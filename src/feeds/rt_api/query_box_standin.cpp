// STAND-IN for the query box of the web API's traffic reader: nothing is
// recomputed. The real body replaces this file.
#include "feeds/rt_api/query_box.h"

namespace tfx {

void gf_updateQueryBox() {}

}  // namespace tfx
