#pragma once

#include "analyses/clash/EstadoClash.h"
#include "scene/Node.h"

#include <QDateTime>
#include <glm/vec3.hpp>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace teskal {

// The key of a pair of texts: the two sorted ascending and joined with "|",
// the same whichever order they come in. Keys discipline pairs and element
// name pairs alike.
std::string clavePar(std::string_view a, std::string_view b);

// One candidate element of a search: its node, discipline key, name ("sin
// nombre" without one) and its own box, read once on the main thread.
struct NodoBB {
    std::shared_ptr<Node> node;
    std::string key;
    std::string nombre;
    std::string globalId; // empty when the converter gave none
    glm::dvec3 bbMin{0.0};
    glm::dvec3 bbMax{0.0};
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
};

// One run of the search, kept in the workspace's history.
struct AnalisisInterferencias {
    std::string id; // UUID
    std::string nombre;
    QDateTime fecha;
    double tolerancia = 0.02;
    std::vector<Interferencia> interferencias;

    int cuenta(EstadoClash e) const {
        int n = 0;
        for (const auto& i : interferencias) n += i.estado == e;
        return n;
    }
};

} // namespace teskal
