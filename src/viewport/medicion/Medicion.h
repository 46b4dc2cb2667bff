#pragma once

#include "viewport/medicion/EstadoMedicion.h"

#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// The measurement model of the 3D view: values, label texts, vertex snapping
// and the figures a measurement adds to the scene. All in scene metres and
// world coordinates; no widget, no GL. Label images come from the painter of
// EstadoMedicion.
namespace teskal {

// Only the first vertices of a geometry are snapped to: the bound keeps a
// hover over a large mesh within one frame.
inline constexpr std::size_t limiteVerticesSnap = 8000;
// The snap radius, 20 pixels, squared.
inline constexpr float radioSnap2 = 400.0f;

// The area of a polygon in space: half the length of the sum of the cross
// products of consecutive corners, the last with the first. Exact for any
// planar polygon, convex or not; a non-planar one gets the area of its
// projection along the mean normal. Fewer than three corners give 0.
double areaPoligono(const std::vector<glm::vec3>& puntos);
// The angle at `vertice` between the arms to `a` and `b`, in degrees; none
// when an arm has no length (its direction is undefined).
std::optional<double> anguloGrados(const glm::vec3& vertice, const glm::vec3& a, const glm::vec3& b);
// The plain mean of the points.
glm::vec3 centroide(const std::vector<glm::vec3>& puntos);

// Label texts: "%.3f m", "%.3f m²", "%.2f°", and the point's three lines
// "X  %+.4f m", "Y  ...", "Z  ...".
std::string textoDistancia(double metros);
std::string textoArea(double metros2);
std::string textoAngulo(double grados);
std::vector<std::string> lineasPunto(const glm::vec3& p);

// The snap ring's radius at a distance from the camera: 1.2 % of it, never
// below 0.05 m, so that it holds steady on the screen.
float radioAnillo(float distanciaCamara);

// The vertex of the node's geometry nearest to the mouse on the screen,
// within 20 pixels, among the first 8000 of its vertex source, as a world
// point. Depth is not looked at; vertices behind the camera are left out.
std::optional<glm::vec3> ajustarVertice(const Node& nodo, const VistaRaton& vista);

// The ray under the mouse: from the near plane, away from the camera.
void rayoRaton(const VistaRaton& vista, glm::vec3& origen, glm::vec3& direccion);

// The figures. Each is a new node (or subtree) named "_TESKAL_Medicion…", to
// hang under the scene root.
std::shared_ptr<Node> figuraMarcador(const glm::vec3& p, const std::string& texto, const PintorEtiquetas& pintor);
std::shared_ptr<Node> figuraDistancia(const glm::vec3& a, const glm::vec3& b, const PintorEtiquetas& pintor);
std::shared_ptr<Node> figuraAngulo(const glm::vec3& vertice, const glm::vec3& a, const glm::vec3& b,
                                   const PintorEtiquetas& pintor);
std::shared_ptr<Node> figuraPunto(const glm::vec3& p, const PintorEtiquetas& pintor);
// The closed polygon with its area label; null with fewer than 3 points.
std::shared_ptr<Node> figuraPoligono(const std::vector<glm::vec3>& puntos, const PintorEtiquetas& pintor);
// The hover ring at a snapped point, seen through walls.
std::shared_ptr<Node> figuraAnillo(const glm::vec3& p, float radio);
// The rubber band: through the area's points and p, back to the first
// (green); or from A to p with its distance label (cyan); null with neither.
std::shared_ptr<Node> figuraBandaElastica(const std::vector<glm::vec3>& puntosArea,
                                          const std::optional<glm::vec3>& puntoA, const glm::vec3& p,
                                          const glm::vec3& posicionCamara, const PintorEtiquetas& pintor);

} // namespace teskal
