#pragma once

#include "viewport/markup/ComentarioMarkup.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace teskal {

// What the drawing canvas does with the pointer, apart from painting: a press
// starts a stroke (or places the pending text in text mode), a drag extends
// it, a release hands it on. Points are canvas points, origin top left.
struct LienzoMarkup {
    std::vector<TrazadoMarkup> trazados; // finished strokes, set from outside
    std::vector<TextoMarkup> textos;     // texts, set from outside
    std::optional<TrazadoMarkup> trazadoActual;
    double colorR = 1.0, colorG = 0, colorB = 0;
    double grosor = 3.0;
    bool modoTexto = false;
    std::string textoPendiente;
    std::function<void(TrazadoMarkup)> onNuevoTrazado;
    std::function<void(TextoMarkup)> onNuevoTexto;

    void pulsar(const PuntoMarkup& p);
    void arrastrar(const PuntoMarkup& p);
    void soltar();
};

// A stroke draws only with two points or more.
inline bool trazadoDibujable(const TrazadoMarkup& t) { return t.puntos.size() >= 2; }

// A new upper-case UUID text.
std::string nuevoIdMarkup();

} // namespace teskal
