#pragma once

#include "scene/Color.h"

#include <QColor>
#include <QString>
#include <string>
#include <string_view>

// The workspace's UTF-8 texts and colours as the widgets take them.
namespace teskal {

inline QString q(const std::string& s) { return QString::fromStdString(s); }
inline QString q(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); }
// A colour as a style sheet's "#rrggbb".
inline QString css(const Color& c) { return QColor::fromRgbF(c.r, c.g, c.b).name(); }

} // namespace teskal
