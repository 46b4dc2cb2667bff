#pragma once

#include "scene/Node.h"
#include "sections/Seccion.h"
#include "sections/SeccionGuardada.h"

#include <memory>
#include <optional>
#include <vector>

namespace teskal {

// The workspace's state of the sections subsystem: the plane of the "Sección"
// panel, the plane shown in the 3D view, the saved sections and the stores of
// dimensions and labels by sheet title.
struct EstadoSeccion {
    bool activa = false;    // the plane is shown and the 3D view is clipped
    int eje = 2;            // 0 X, 1 Y, 2 Z
    double posicion = 0.0;  // along the axis, metres
    double rangoMin = -50.0; // ends of the position slider
    double rangoMax = 50.0;
    int modoProfundidad = 0; // 0 "Corte exacto", 1 "Con profundidad", 2 "Ilimitada"
    double profundidad = 1.0; // metres, for mode 1
    std::shared_ptr<Node> nodoPlanVisual; // the translucent plane in the scene

    std::vector<SeccionGuardada> guardadas;
    std::optional<std::string> pendienteEliminar; // the id the alert "Eliminar sección" asks about
    CotasPorTitulo almacenCotas;         // what a sheet restores on opening and keeps on closing
    EtiquetasPorTitulo almacenEtiquetas;

    // A sheet that `abrirPlano2D` made and the window has not opened yet.
    std::optional<Plano2D> planoPorAbrir;
};

// The name of the plane's node in the scene: a helper, never an element.
inline constexpr std::string_view nombrePlanoSeccion = "_TESKAL_PlanoSeccion";

} // namespace teskal
