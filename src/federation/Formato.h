#pragma once

#include <string>

namespace teskal {

// printf-style formatting that always writes a point for decimals, whatever
// the machine's locale ("%.2f" of 1.5 is "1.50").
std::string formato(const char* plantilla, ...) __attribute__((format(printf, 1, 2)));

} // namespace teskal
