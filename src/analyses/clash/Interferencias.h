#pragma once

#include "analyses/clash/EstadoClash.h"
#include "scene/Node.h"

#include <QDateTime>
#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace teskal {

// The key of a pair of texts: the two sorted ascending and joined with "|",
// the same whichever order they come in. Keys discipline pairs and element
// name pairs alike.
std::string clavePar(std::string_view a, std::string_view b);

// How an analysis decides that two elements clash: by their meshes (the
// default of a new analysis), by the overlap of their boxes alone, or, for
// "Holgura", by meshes that come closer than a distance without touching.
enum class MetodoAnalisis { geometriaExacta, cajasEnvolventes, holgura };
inline constexpr MetodoAnalisis metodosAnalisis[] = {MetodoAnalisis::geometriaExacta,
                                                     MetodoAnalisis::cajasEnvolventes, MetodoAnalisis::holgura};
// "Geometría exacta", "Cajas envolventes", "Holgura": the text shown and kept
// in the project document.
std::string_view textoMetodo(MetodoAnalisis m);
// The method of a kept text; a text that names none is "Cajas envolventes",
// the method of the documents written before there was a choice.
MetodoAnalisis metodoDesdeTexto(std::string_view texto);

// What an analysis is run with: the sheet fills it from the workspace, and a
// caller outside the windows builds it whole.
struct ConfigAnalisis {
    std::string nombre;
    double tolerancia = 0.02; // metres: the least penetration reported
    MetodoAnalisis metodo = MetodoAnalisis::geometriaExacta;
    double holgura = 0.05; // metres: the clearance of "Holgura"
};

// One candidate element of a search: its node, discipline key, name ("sin
// nombre" without one) and its own box, read once on the main thread.
struct NodoBB {
    std::shared_ptr<Node> node;
    std::string key;
    std::string nombre;
    std::string globalId; // empty when the converter gave none
    glm::dvec3 bbMin{0.0};
    glm::dvec3 bbMax{0.0};
    // The element's mesh and the transform to world coordinates, for the
    // exact and clearance tests. Element geometry is never edited once loaded,
    // so a worker may read it while the scene lives on.
    std::shared_ptr<const Geometry> geometria{};
    glm::dmat4 mundo{1.0};
};

// One clash between two elements of two disciplines.
struct Interferencia {
    std::string id; // UUID
    std::shared_ptr<Node> nodoA, nodoB;
    std::string especialidadA, especialidadB; // discipline keys
    std::string nombreA, nombreB;
    glm::dvec3 viewpointPos{0.0};
    glm::dvec3 viewpointTarget{0.0};
    double radio = 0.5;
    EstadoClash estado = EstadoClash::abierto;
    // The elements' GlobalIds, empty when the converter gave none; they
    // outlive the nodes in the project document.
    std::string globalIdA, globalIdB;
    MetodoAnalisis metodo = MetodoAnalisis::cajasEnvolventes;
    // Metres: the penetration (exact method) or the clearance ("Holgura");
    // absent for a box clash.
    std::optional<double> distancia{};
    // The centre of the contact region (exact method) or the midpoint of the
    // nearest points ("Holgura"): where the viewpoint looks.
    std::optional<glm::dvec3> centroContacto{};
};

// One run of the search, kept in the workspace's history.
struct AnalisisInterferencias {
    std::string id; // UUID
    std::string nombre;
    QDateTime fecha;
    double tolerancia = 0.02;
    std::vector<Interferencia> interferencias;
    // Documents written before the choice of method hold box analyses.
    MetodoAnalisis metodo = MetodoAnalisis::cajasEnvolventes;
    double holgura = 0; // metres, for "Holgura"

    int cuenta(EstadoClash e) const {
        int n = 0;
        for (const auto& i : interferencias) n += i.estado == e;
        return n;
    }
};

} // namespace teskal
