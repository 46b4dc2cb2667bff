#pragma once

#include <QByteArray>
#include <QDateTime>
#include <optional>
#include <string>
#include <vector>

// The records of a markup comment: freehand strokes and texts drawn over the
// 3D view, kept as data next to the JPEG picture of the view they were drawn
// on. Coordinates are points of the drawing canvas, origin at the top left and
// y growing downward; colours are sRGB components from 0 to 1.
namespace teskal {

struct PuntoMarkup {
    double x = 0;
    double y = 0;
    friend bool operator==(const PuntoMarkup&, const PuntoMarkup&) = default;
};

// One freehand stroke, its points in drawing order.
struct TrazadoMarkup {
    std::string id; // UUID, upper case
    std::vector<PuntoMarkup> puntos;
    double r = 1, g = 0, b = 0;
    double grosor = 3; // line width in points
    friend bool operator==(const TrazadoMarkup&, const TrazadoMarkup&) = default;
};

// One text placed on the canvas, drawn at (x, y).
struct TextoMarkup {
    std::string id; // UUID, upper case
    std::string texto;
    double x = 0, y = 0;
    double r = 1, g = 0, b = 0;
    double tamano = 16; // font size
    friend bool operator==(const TextoMarkup&, const TextoMarkup&) = default;
};

// One saved comment. The tag reads "MRK-001", "MRK-002", ...; the id also
// names the comment's topic folder in a BCF archive.
struct ComentarioMarkup {
    std::string id; // UUID, upper case
    std::string tag;
    std::vector<TrazadoMarkup> trazados;
    std::vector<TextoMarkup> textos;
    std::optional<QByteArray> imagenJPEG; // absent when the view could not be captured
    QDateTime fecha;                      // moment of saving, UTC
    std::string autor;
    std::string descripcion;
    friend bool operator==(const ComentarioMarkup&, const ComentarioMarkup&) = default;
};

} // namespace teskal
