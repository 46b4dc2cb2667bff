#pragma once

#include <string>

namespace teskal {

// A short Spanish description of a system error number (errno), for the
// sentences the user reads.
std::string describirErrorSistema(int codigo);

} // namespace teskal
