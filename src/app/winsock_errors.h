// Text of a socket error code in Winsock numbering, for log lines.
#pragma once

#include <string>

namespace tfx {

// "10061 Connection refused"; unknown codes get "Unknown errror code".
std::string gf_winsockErrorText(int code);

}  // namespace tfx
