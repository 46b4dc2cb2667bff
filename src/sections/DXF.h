#pragma once

#include "sections/Seccion.h"

#include <string>
#include <string_view>
#include <vector>

// A section sheet as an AutoCAD R12 ("AC1009") DXF text: a minimal header,
// the line types and layers, then lines and texts drawn out as plain
// entities (arrowheads as three lines), so that any CAD program reads it.
namespace teskal {

// A text as R12 takes it: diacritics folded, "×" "°" "²" "³" "ñ" "Ñ" spelt in
// ASCII, line breaks as blanks and every other non-ASCII character dropped.
std::string sanearTextoDXF(std::string_view texto);

// The ACI colour of a discipline's layer: ARQ 7, EST 3, MEP 5, TOP 30,
// ARE 1, EXI 6, any other 7.
int colorCapaDXF(std::string_view clave);

// The whole file: the sheet's lines (grid left out), its visible labels and
// its dimensions, one text height for all from the extent of the lines.
std::string generarDXF(const std::vector<Segmento2D>& segmentos, const std::vector<Etiqueta2D>& etiquetas,
                       const std::vector<Cota2D>& cotas);

} // namespace teskal
