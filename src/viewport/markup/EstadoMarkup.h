#pragma once

#include "viewport/markup/ComentarioMarkup.h"

#include <QByteArray>
#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace teskal {

// One colour of the markup palette.
struct ColorMarkup {
    double r, g, b;
    const char* nombre;
};

inline constexpr std::array<ColorMarkup, 5> markupPaleta{{
    {1.0, 0.15, 0.15, "Rojo"},
    {1.0, 0.9, 0.0, "Amarillo"},
    {0.1, 0.9, 0.3, "Verde"},
    {0.3, 0.6, 1.0, "Azul"},
    {1.0, 1.0, 1.0, "Blanco"},
}};

// The full name of the machine's user (the account's name field up to its
// first comma), else the login name; empty when neither is known.
std::string nombreCompletoUsuario();

// "MRK-%03d" of a comment's number: MRK-001, ..., MRK-1001.
std::string tagComentario(std::size_t numero);

// The workspace state of markup comments: the saved comments, the drawing of
// the comment being made and its panel, the pending deletion and the detail
// sheet.
struct EstadoMarkup {
    bool modoMarkup = false; // the canvas and its panel are shown
    std::vector<ComentarioMarkup> comentarios; // oldest first; saved in the project
    std::vector<TrazadoMarkup> trazadosActivos;
    std::vector<TextoMarkup> textosActivos;
    int markupColorIdx = 0;
    double markupGrosor = 3.0;
    bool markupModoTexto = false;
    std::string markupTextoPend;
    std::string markupDescripcion;
    std::string markupAutor = nombreCompletoUsuario(); // kept between comments
    std::optional<std::string> comentarioPendElim;      // id of the comment the alert asks about
    std::optional<ComentarioMarkup> detalleComentario;  // the comment of the detail sheet
    // The window's capture of the 3D view with the drawing burnt in, as JPEG
    // bytes (the canvas reference of the window); none leaves the comment
    // without a picture.
    std::function<std::optional<QByteArray>()> capturarVista;
};

} // namespace teskal
