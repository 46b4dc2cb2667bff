#pragma once

#include "analyses/clash/Interferencias.h"
#include "scene/Color.h"

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <map>
#include <string>

namespace teskal {

class RenderizadorImagenes;

// Size and samples of a clash thumbnail, and the dark ground behind the two
// elements (the report's thumbnail frame has the same).
inline constexpr QSize tamanoThumbnail{460, 310};
inline constexpr int muestrasThumbnail = 4;
inline constexpr Color fondoThumbnail{0.102f, 0.102f, 0.102f, 1.0f};

// The thumbnail of one clash: its two elements in red and blue, lit only by
// the thumbnail scene's own lights. `escena` is the live scene that a clash
// restored from a project finds its elements in (may be null). Null when the
// renderer has no OpenGL context.
QImage renderThumbnail(const Interferencia& interferencia, Scene* escena,
                       RenderizadorImagenes& renderizador);

// The thumbnails of every clash of an analysis, in turn, by clash id.
std::map<std::string, QImage> renderThumbnails(const AnalisisInterferencias& analisis,
                                               Scene* escena, RenderizadorImagenes& renderizador);

// The same images as PNG bytes; an image that can't be encoded is left out.
std::map<std::string, QByteArray> thumbnailsPNG(const std::map<std::string, QImage>& thumbnails);

} // namespace teskal
