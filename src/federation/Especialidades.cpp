#include "federation/Especialidades.h"

#include <QString>
#include <QTextBoundaryFinder>
#include <algorithm>

namespace teskal {

std::string_view textoUnidades(Unidades u) {
    switch (u) {
    case Unidades::milimetros: return "Milímetros";
    case Unidades::metros: return "Metros";
    case Unidades::pies: return "Pies";
    case Unidades::pulgadas: return "Pulgadas";
    }
    return "Metros";
}

float factorUnidades(Unidades u) {
    switch (u) {
    case Unidades::milimetros: return 0.001f;
    case Unidades::metros: return 1.0f;
    case Unidades::pies: return 0.3048f;
    case Unidades::pulgadas: return 0.0254f;
    }
    return 1.0f;
}

std::optional<Unidades> unidadesDesdeTexto(std::string_view texto) {
    for (Unidades u : {Unidades::milimetros, Unidades::metros, Unidades::pies, Unidades::pulgadas})
        if (textoUnidades(u) == texto) return u;
    return std::nullopt;
}

std::vector<std::string> ordenEspecialidadesPorDefecto() {
    return {"ARQ", "EST", "MEP", "TOP", "ARE", "EXI"};
}

std::map<std::string, EspecialidadBIM> especialidadesPorDefecto() {
    auto esp = [](const char* nombre, const char* icono, float r, float g, float b) {
        EspecialidadBIM e;
        e.nombre = nombre;
        e.icono = icono;
        e.colorOriginal = Color{r, g, b, 1.0f};
        return e;
    };
    return {
        {"ARQ", esp("Arquitectura", "building.2", 0.85f, 0.85f, 0.85f)},
        {"EST", esp("Estructura", "square.3.layers.3d", 0.6f, 0.6f, 0.6f)},
        {"MEP", esp("MEP", "pipe.and.drop", 0.2f, 0.55f, 1.0f)},
        {"TOP", esp("Topografía", "map", 0.55f, 0.35f, 0.1f)},
        {"ARE", esp("Áreas de Reserva", "rectangle.dashed", 1.0f, 0.55f, 0.0f)},
        {"EXI", esp("Existente", "clock.arrow.circlepath", 0.6f, 0.25f, 0.8f)},
    };
}

std::string claveNuevaEspecialidad(std::string_view nombre, const std::vector<std::string>& claves) {
    // Characters as a reader sees them, not bytes: "Área" gives "ÁRE".
    const QString texto = QString::fromUtf8(nombre.data(), static_cast<qsizetype>(nombre.size()));
    QTextBoundaryFinder caracteres(QTextBoundaryFinder::Grapheme, texto);
    qsizetype fin = 0;
    for (int tomados = 0; tomados < 3; ++tomados) {
        const qsizetype siguiente = caracteres.toNextBoundary();
        if (siguiente < 0) break;
        fin = siguiente;
    }
    const std::string base = texto.left(fin).toUpper().toStdString();
    auto tomada = [&](const std::string& k) { return std::find(claves.begin(), claves.end(), k) != claves.end(); };
    std::string clave = base;
    for (int n = 1; tomada(clave); ++n) clave = base + std::to_string(n);
    return clave;
}

} // namespace teskal
