#include "viewport/render/CamaraRender.h"

#include <glm/gtc/matrix_transform.hpp>
#include <glm/matrix.hpp>

namespace teskal {

CamaraRender CamaraRender::desdeNodo(const Node& nodo, float aspecto) {
    CamaraRender c;
    const Camera cam = nodo.camera().value_or(Camera{});
    const glm::mat4 mundo = nodo.worldTransform();
    c.vista = glm::inverse(mundo);
    c.posicion = glm::vec3(mundo[3]);
    c.cercano = cam.zNear > 0 ? cam.zNear : 0.01f;
    c.lejano = cam.zFar > c.cercano ? cam.zFar : c.cercano * 1000.0f;
    if (cam.ortografica) {
        const float h = cam.orthographicScale;
        c.proyeccion = glm::ortho(-h * aspecto, h * aspecto, -h, h, c.cercano, c.lejano);
    } else {
        c.proyeccion = glm::perspective(glm::radians(cam.fieldOfView), aspecto, c.cercano, c.lejano);
    }
    return c;
}

glm::vec3 CamaraRender::desproyectar(float x, float y, float z) const {
    const glm::vec4 p = glm::inverse(proyeccion * vista) * glm::vec4(x, y, z * 2.0f - 1.0f, 1.0f);
    return glm::vec3(p) / p.w;
}

} // namespace teskal
