#pragma once

#include "sections/SeccionGuardada.h"
#include "timeline/PaqueteAWP.h"
#include "viewport/markup/ComentarioMarkup.h"

#include <QByteArray>
#include <QDateTime>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace teskal {

// One linked model as the project keeps it: no geometry, no transform.
struct ModeloGuardado {
    std::string nombre;
    std::string rutaAbsoluta; // empty when the model had no path
    std::optional<std::string> rutaRelativa; // only in a package: "modelos/<file>"
    bool isVisible = true;
    double transparencia = 0;
    friend bool operator==(const ModeloGuardado&, const ModeloGuardado&) = default;
};

struct EspecialidadGuardada {
    std::string key;
    std::string nombre;
    std::string icono;
    double colorR = 0, colorG = 0, colorB = 0;
    bool isVisible = true;
    std::vector<ModeloGuardado> modelos;
    friend bool operator==(const EspecialidadGuardada&, const EspecialidadGuardada&) = default;
};

// A clash as the project keeps it: names, keys, viewpoint and state, no nodes.
struct InterferenciaGuardada {
    std::string id;
    std::string nombreA, especialidadA, nombreB, especialidadB;
    std::string estado; // the state's text
    double vpPosX = 0, vpPosY = 0, vpPosZ = 0;
    double vpTgtX = 0, vpTgtY = 0, vpTgtZ = 0;
    double radio = 0;
    // The elements' GlobalIds, absent in documents that predate them or when
    // the converter gave none.
    std::optional<std::string> globalIdA, globalIdB;
    // The penetration or clearance and the contact centre of an exact or
    // clearance clash; absent for a box clash and in older documents.
    std::optional<double> distancia{};
    std::optional<double> centroX{}, centroY{}, centroZ{};
    friend bool operator==(const InterferenciaGuardada&, const InterferenciaGuardada&) = default;
};

struct AnalisisGuardado {
    std::string id;
    std::string nombre;
    QDateTime fecha;
    double tolerancia = 0;
    std::vector<InterferenciaGuardada> interferencias;
    // The method's text ("Geometría exacta", "Cajas envolventes", "Holgura")
    // and the clearance of "Holgura"; a document without them holds a box
    // analysis.
    std::optional<std::string> metodo{};
    std::optional<double> holgura{};
    friend bool operator==(const AnalisisGuardado&, const AnalisisGuardado&) = default;
};

// The project document: disciplines and their models, the clash history, and
// the optional sections of the timeline, saved sections with their dimensions
// and labels (keyed by sheet title), and comments.
struct ProyectoTESKAL {
    int version = 2;
    std::vector<std::string> ordenEspecialidades;
    std::vector<EspecialidadGuardada> especialidades;
    std::vector<AnalisisGuardado> historialAnalisis;
    std::optional<TimeLinerConfig> timeLiner;
    std::optional<std::vector<SeccionGuardada>> secciones;
    std::optional<CotasPorTitulo> cotasPorSeccion;
    std::optional<EtiquetasGuardadasPorTitulo> etiquetasPorSeccion;
    std::optional<std::vector<ComentarioMarkup>> comentarios;
};

// The document as the file holds it: UTF-8 JSON, indented, keys sorted,
// dates "yyyy-MM-ddTHH:mm:ssZ" in UTC, UUIDs in upper case.
QByteArray codificarProyecto(const ProyectoTESKAL& p);
// The document of a file, or the Spanish description of why it can't be read:
// not JSON, a required key missing, a value of the wrong type.
std::variant<ProyectoTESKAL, std::string> decodificarProyecto(const QByteArray& datos);

} // namespace teskal
