// The area the web API's traffic reader asks for.
#pragma once

namespace tfx {

// Recomputes the query box around the user's position.
void gf_updateQueryBox();

}  // namespace tfx
