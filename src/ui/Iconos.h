#pragma once

#include <QIcon>
#include <string>

namespace teskal {

// The theme icon for a symbol name of the workspace ("building.2", "eye",
// ...). An unknown name gives the theme's folder icon.
QIcon iconoSimbolo(const std::string& simbolo);

} // namespace teskal
