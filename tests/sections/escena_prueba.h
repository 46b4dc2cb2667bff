#pragma once

// Small scenes for the section tests: element nodes made of boxes, as the OBJ
// reader leaves them (a named node with one triangle list).

#include "federation/ContentView.h"

#include <gtest/gtest.h>
#include <glm/vec3.hpp>
#include <memory>
#include <string>

namespace teskal::pruebas {

// The twelve triangles of the box [a, b].
inline std::shared_ptr<Geometry> geometriaCaja(const glm::vec3& a, const glm::vec3& b) {
    auto g = std::make_shared<Geometry>();
    for (int i = 0; i < 8; ++i)
        g->vertices.push_back({(i & 1) ? b.x : a.x, (i & 2) ? b.y : a.y, (i & 4) ? b.z : a.z});
    g->elementos.push_back({Primitiva::Triangulos,
                            {0, 1, 3, 0, 3, 2, 4, 6, 7, 4, 7, 5, 0, 4, 5, 0, 5, 1,
                             2, 3, 7, 2, 7, 6, 0, 2, 6, 0, 6, 4, 1, 5, 7, 1, 7, 3}});
    g->materiales.push_back(std::make_shared<Material>());
    return g;
}

inline std::shared_ptr<Node> elementoCaja(const std::string& nombre, const glm::vec3& a, const glm::vec3& b) {
    auto n = Node::crear(nombre);
    n->setGeometry(geometriaCaja(a, b));
    return n;
}

// The discipline `clave` with its "esp_" root and one unnamed model root
// under the scene, as a link leaves them; the model root is returned.
inline std::shared_ptr<Node> modeloEn(ContentView& cv, const std::string& clave) {
    EspecialidadBIM& e = cv.especialidades.at(clave);
    if (!e.nodoRaiz) {
        e.nodoRaiz = Node::crear("esp_" + clave);
        cv.scene.rootNode()->addChildNode(e.nodoRaiz);
    }
    auto modelo = Node::crear();
    e.nodoRaiz->addChildNode(modelo);
    return modelo;
}

// A label with the fields the sheet's tests look at.
inline Etiqueta2D etiqueta(std::string id, glm::vec2 ancla, glm::vec2 offset, std::string nombre, bool visible,
                           std::string key) {
    Etiqueta2D e;
    e.id = std::move(id);
    e.ancla = ancla;
    e.offsetTexto = offset;
    e.nombre = std::move(nombre);
    e.visible = visible;
    e.key = std::move(key);
    return e;
}

} // namespace teskal::pruebas
