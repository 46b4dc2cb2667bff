#pragma once

#include "sections/HojaSeccion.h"

#include <QFont>

class QPainter;
class QPaintDevice;

namespace teskal {

// The fonts of a sheet, sized in the device's pixels (so that a size of 9 is
// 9 pixels on the screen and 9 points in a PDF of the view's size).
enum class FuenteHoja { nombre, tipo, dimensiones, detalle, cota, cerrar };
QFont fuenteHoja(FuenteHoja cual, double tamano, const QPaintDevice* dispositivo);

// The sizes of label blocks and dimension texts, measured with the sheet's
// fonts on a paint device.
class MedidasQt : public MedidasTexto {
public:
    explicit MedidasQt(const QPaintDevice* dispositivo) : dispositivo_(dispositivo) {}
    glm::dvec2 bloqueEtiqueta(const Etiqueta2D& etiqueta) const override;
    glm::dvec2 textoCota(const std::string& texto, double tamano) const override;

private:
    const QPaintDevice* dispositivo_;
};

// Draws a sheet as it stands, in this order: white ground, the metre mesh
// when zoomed in, grid axes, seen lines, cut lines, the origin cross, the
// visible labels, the dimensions and the overlays of the two tools. The
// screen and the PDF of a sheet both draw through here.
void dibujarHoja(QPainter& p, const EstadoHoja& hoja);

} // namespace teskal
