#include "sections/SeccionGuardada.h"

#include <QUuid>

namespace teskal {

Etiqueta2DGuardada etiquetaGuardada(const Etiqueta2D& etiqueta) {
    return {etiqueta.nombre, etiqueta.key, etiqueta.visible, etiqueta.offsetTexto};
}

Etiqueta2D etiquetaRestaurada(const Etiqueta2DGuardada& guardada) {
    Etiqueta2D e;
    e.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
    e.ancla = glm::vec2(0.0f);
    e.offsetTexto = guardada.offsetTexto;
    e.nombre = guardada.nombre;
    e.key = guardada.key;
    e.visible = guardada.visible;
    e.color = colorEtiquetaRestaurada;
    return e;
}

EtiquetasGuardadasPorTitulo etiquetasGuardadas(const EtiquetasPorTitulo& porTitulo) {
    EtiquetasGuardadasPorTitulo resultado;
    for (const auto& [titulo, etiquetas] : porTitulo) {
        auto& lista = resultado[titulo];
        lista.reserve(etiquetas.size());
        for (const Etiqueta2D& e : etiquetas) lista.push_back(etiquetaGuardada(e));
    }
    return resultado;
}

EtiquetasPorTitulo etiquetasRestauradas(const EtiquetasGuardadasPorTitulo& porTitulo) {
    EtiquetasPorTitulo resultado;
    for (const auto& [titulo, guardadas] : porTitulo) {
        auto& lista = resultado[titulo];
        lista.reserve(guardadas.size());
        for (const Etiqueta2DGuardada& g : guardadas) lista.push_back(etiquetaRestaurada(g));
    }
    return resultado;
}

} // namespace teskal
