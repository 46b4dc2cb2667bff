#include "sections/HojaSeccion.h"

#include "federation/Formato.h"

#include <QUuid>
#include <algorithm>
#include <cmath>
#include <glm/geometric.hpp>

namespace teskal {

namespace {

double distanciaASegmento(const glm::dvec2& m, const glm::dvec2& a, const glm::dvec2& b) {
    const glm::dvec2 d = b - a;
    const double l2 = glm::dot(d, d);
    if (l2 <= 0.0) return glm::length(m - a);
    const double t = std::clamp(glm::dot(m - a, d) / l2, 0.0, 1.0);
    return glm::length(m - (a + d * t));
}

// The 14 by 14 pixel square around a circle of radius 7.
bool enCuadroCerrar(const glm::dvec2& m, const glm::dvec2& centro) {
    return std::abs(m.x - centro.x) <= radioCirculoCerrar && std::abs(m.y - centro.y) <= radioCirculoCerrar;
}

// The first `n` characters (code points) of a UTF-8 text, and its length in them.
std::size_t caracteres(const std::string& s) {
    std::size_t n = 0;
    for (unsigned char c : s)
        if ((c & 0xC0) != 0x80) ++n;
    return n;
}
std::string primeros(const std::string& s, std::size_t n) {
    std::size_t vistos = 0;
    for (std::size_t i = 0; i < s.size(); ++i) {
        if ((static_cast<unsigned char>(s[i]) & 0xC0) != 0x80) {
            if (vistos == n) return s.substr(0, i);
            ++vistos;
        }
    }
    return s;
}

} // namespace

std::vector<LineaEtiqueta> lineasEtiqueta(const Etiqueta2D& e) {
    std::vector<LineaEtiqueta> lineas;
    lineas.push_back({0, caracteres(e.nombre) >= 33 ? primeros(e.nombre, 30) + "…" : e.nombre});
    if (!e.tipoIFC.empty()) lineas.push_back({1, e.tipoIFC});
    lineas.push_back({2, e.dimensiones});
    if (!e.material.empty())
        lineas.push_back({3, "Mat: " + (caracteres(e.material) >= 27 ? primeros(e.material, 24) + "…" : e.material)});
    if (!e.nivel.empty()) lineas.push_back({4, "Nivel: " + e.nivel});
    return lineas;
}

void EstadoHoja::encuadrar() {
    if (segmentos.empty() || !(ancho > 10 && alto > 10)) return;
    glm::dvec2 mn(segmentos[0].p1), mx(segmentos[0].p1);
    for (const auto& s : segmentos)
        for (const glm::vec2& p : {s.p1, s.p2}) {
            mn = glm::min(mn, glm::dvec2(p));
            mx = glm::max(mx, glm::dvec2(p));
        }
    const glm::dvec2 ext = mx - mn;
    if (!(ext.x > 0) || !(ext.y > 0)) return;
    escala = std::min((ancho - 100) / ext.x, (alto - 100) / ext.y);
    panOffset = {-(mn.x + mx.x) * 0.5 * escala, (mn.y + mx.y) * 0.5 * escala};
}

void EstadoHoja::zoom(double deltaVertical, const glm::dvec2& raton) {
    if (deltaVertical == 0) return;
    const double factor = deltaVertical > 0 ? 1.15 : 1.0 / 1.15;
    const double nueva = std::clamp(escala * factor, 4.0, 4000.0);
    if (nueva == escala) return;
    const glm::dvec2 h = aHoja(raton);
    escala = nueva;
    panOffset = {raton.x - escala * h.x - ancho * 0.5, raton.y + escala * h.y - alto * 0.5};
}

std::optional<glm::vec2> EstadoHoja::ajustarAPunto(const glm::dvec2& m) const {
    double mejor = 15.0;
    std::optional<glm::dvec2> hallado;
    for (const auto& s : segmentos) {
        if (!s.esCorte) continue;
        const glm::dvec2 a = aVista(s.p1), b = aVista(s.p2);
        if (const double d = glm::length(m - a); d < std::min(mejor, 7.5)) {
            mejor = d;
            hallado = a;
        }
        if (const double d = glm::length(m - b); d < std::min(mejor, 7.5)) {
            mejor = d;
            hallado = b;
        }
        const glm::dvec2 ab = b - a;
        const double l2 = glm::dot(ab, ab);
        if (l2 > 0) {
            const double t = std::clamp(glm::dot(m - a, ab) / l2, 0.0, 1.0);
            const glm::dvec2 q = a + ab * t;
            if (const double d = glm::length(m - q); d < mejor) {
                mejor = d;
                hallado = q;
            }
        }
    }
    if (!hallado) return std::nullopt;
    return glm::vec2(aHoja(*hallado));
}

std::optional<std::size_t> EstadoHoja::elegirSegmento(const glm::dvec2& m, double tolerancia) const {
    double mejor = tolerancia;
    std::optional<std::size_t> hallado;
    for (std::size_t i = 0; i < segmentos.size(); ++i) {
        const auto& s = segmentos[i];
        if (!s.esCorte || s.nombreElemento.empty()) continue;
        const double d = distanciaASegmento(m, aVista(s.p1), aVista(s.p2));
        if (d < mejor) {
            mejor = d;
            hallado = i;
        }
    }
    return hallado;
}

double EstadoHoja::factorGrosor() const { return std::max(1.5 / escala * 60.0, 0.4); }

Etiqueta2D* EstadoHoja::etiqueta(const std::optional<std::string>& id) {
    if (!id) return nullptr;
    for (auto& e : etiquetas)
        if (e.id == *id) return &e;
    return nullptr;
}

Cota2D* EstadoHoja::cota(const std::optional<std::string>& id) {
    if (!id) return nullptr;
    for (auto& c : cotas)
        if (c.id == *id) return &c;
    return nullptr;
}

GeometriaEtiqueta EstadoHoja::geometriaEtiqueta(const Etiqueta2D& e, const MedidasTexto& medidas) const {
    GeometriaEtiqueta g;
    g.texto = aVista(e.ancla + e.offsetTexto);
    g.bloque = medidas.bloqueEtiqueta(e);
    g.caja = {g.texto.x - 4, g.texto.y - 0.5 * g.bloque.y - 3, g.bloque.x + 8, g.bloque.y + 6};
    // The leader leaves the box on the element's side.
    const bool izquierda = e.offsetTexto.x < 0;
    g.inicioGuia = {izquierda ? g.caja.derecha() : g.caja.x, g.texto.y};
    g.codo = g.inicioGuia + glm::dvec2(izquierda ? 14.0 : -14.0, 0.0);
    g.ancla = aVista(e.ancla);
    g.centroOcultar = {g.caja.derecha() + radioCirculoCerrar, g.caja.y - 1.0};
    return g;
}

GeometriaCota EstadoHoja::geometriaCota(const Cota2D& c, const MedidasTexto& medidas) const {
    GeometriaCota g;
    g.a = aVista(c.p1);
    g.b = aVista(c.p2);
    const float largo = glm::length(c.p2 - c.p1);
    const double largoVista = glm::length(g.b - g.a);
    g.dibujable = largo > 0.001f && largoVista > 1.0;
    if (largoVista > 0) {
        const glm::dvec2 d = (g.b - g.a) / largoVista;
        g.n = {-d.y, d.x};
    }
    g.o = escala * static_cast<double>(c.offsetLateral);
    g.linea1 = g.a + g.n * g.o;
    g.linea2 = g.b + g.n * g.o;
    g.texto = formato("%.2f m", static_cast<double>(largo));
    g.tamanoTexto = std::max(std::min(escala * 0.1, 11.0), 7.0);
    const glm::dvec2 t = medidas.textoCota(g.texto, g.tamanoTexto);
    const glm::dvec2 medio = (g.linea1 + g.linea2) * 0.5;
    g.rectTexto = {medio.x - t.x * 0.5 - 2, medio.y - t.y * 0.5 - 1, t.x + 4, t.y + 2};
    g.centroBorrar = {g.rectTexto.derecha() + 10.0, medio.y};
    return g;
}

bool EstadoHoja::pulsar(const glm::dvec2& m, int clics, const MedidasTexto& medidas) {
    if (modoCota) {
        const glm::vec2 q = ajustarAPunto(m).value_or(glm::vec2(aHoja(m)));
        if (!cotaP1Preview) {
            cotaP1Preview = q;
        } else {
            // A second click on the first point cancels the dimension.
            if (glm::length(q - *cotaP1Preview) > 0.01f)
                cotas.push_back(Cota2D{QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString(),
                                       *cotaP1Preview, q, 0.6f});
            cotaP1Preview.reset();
        }
        return true;
    }
    if (modoEtiquetar) {
        const auto i = elegirSegmento(m, 12.0);
        if (!i) return false;
        const Segmento2D& s = segmentos[*i];
        for (auto& e : etiquetas) {
            if (e.nombre != s.nombreElemento || e.key != s.key) continue;
            if (!e.visible) {
                // The text goes where the click was, 80 pixels further out.
                const glm::dvec2 h = aHoja(m);
                const double d = h.x - e.ancla.x, dy = h.y - e.ancla.y;
                e.offsetTexto = {static_cast<float>(d > 0 ? d + 80 / escala : d - 80 / escala),
                                 static_cast<float>(dy)};
            }
            e.visible = true;
            return true;
        }
        return false;
    }
    if (clics == 2) {
        encuadrar();
        return true;
    }
    if (Etiqueta2D* e = etiqueta(etiquetaSeleccionadaId); e && e->visible) {
        if (enCuadroCerrar(m, geometriaEtiqueta(*e, medidas).centroOcultar)) {
            e->visible = false;
            etiquetaSeleccionadaId.reset();
            return true;
        }
    }
    if (Cota2D* c = cota(cotaSeleccionadaId)) {
        if (enCuadroCerrar(m, geometriaCota(*c, medidas).centroBorrar)) {
            const std::string id = c->id;
            std::erase_if(cotas, [&](const Cota2D& x) { return x.id == id; });
            cotaSeleccionadaId.reset();
            return true;
        }
    }
    for (const auto& c : cotas) {
        const GeometriaCota g = geometriaCota(c, medidas);
        if (!g.dibujable || distanciaASegmento(m, g.linea1, g.linea2) >= 8.0) continue;
        cotaDragId = c.id;
        cotaDragMouseStart = m;
        cotaDragOffsetStart = c.offsetLateral;
        cotaDragHasMoved = false;
        etiquetaSeleccionadaId.reset();
        return true;
    }
    if (mostrarEtiquetas) {
        for (const auto& e : etiquetas) {
            if (!e.visible) continue;
            const GeometriaEtiqueta g = geometriaEtiqueta(e, medidas);
            const RectVista extremo{g.codo.x - 7, g.codo.y - 6, 14, 12};
            if (!g.caja.contiene(m) && !extremo.contiene(m)) continue;
            draggedLabelId = e.id;
            dragMouseStart = m;
            dragHasMoved = false;
            etiquetaSeleccionadaId.reset();
            cotaSeleccionadaId.reset();
            return true;
        }
    }
    etiquetaSeleccionadaId.reset();
    cotaSeleccionadaId.reset();
    lastMouse = m;
    return true;
}

bool EstadoHoja::arrastrar(const glm::dvec2& m) {
    if (cotaDragId && cotaDragMouseStart) {
        cotaDragHasMoved = true;
        if (Cota2D* c = cota(cotaDragId)) {
            const glm::dvec2 a = aVista(c->p1), b = aVista(c->p2);
            const double l = glm::length(b - a);
            if (l > 0) {
                const glm::dvec2 d = (b - a) / l;
                const double t = (m.y - cotaDragMouseStart->y) * d.x - (m.x - cotaDragMouseStart->x) * d.y;
                c->offsetLateral = std::max(0.1f, cotaDragOffsetStart + static_cast<float>(t / escala));
            }
        }
        return true;
    }
    if (draggedLabelId && dragMouseStart) {
        dragHasMoved = true;
        if (Etiqueta2D* e = etiqueta(draggedLabelId))
            e->offsetTexto += glm::vec2(static_cast<float>((m.x - dragMouseStart->x) / escala),
                                        static_cast<float>(-(m.y - dragMouseStart->y) / escala));
        dragMouseStart = m;
        return true;
    }
    if (lastMouse) {
        panOffset += m - *lastMouse;
        lastMouse = m;
        return true;
    }
    return false;
}

bool EstadoHoja::soltar() {
    if (cotaDragId) {
        if (!cotaDragHasMoved) cotaSeleccionadaId = cotaDragId;
        cotaDragId.reset();
        cotaDragMouseStart.reset();
        cotaDragOffsetStart = 0;
        cotaDragHasMoved = false;
    } else if (draggedLabelId && !dragHasMoved) {
        etiquetaSeleccionadaId = draggedLabelId;
    }
    draggedLabelId.reset();
    dragMouseStart.reset();
    dragHasMoved = false;
    lastMouse.reset();
    return true;
}

bool EstadoHoja::mover(const glm::dvec2& m) {
    mousePos = m;
    if (modoCota) {
        snapPoint = ajustarAPunto(m);
        return true;
    }
    return modoEtiquetar;
}

bool EstadoHoja::escape() {
    cotaP1Preview.reset();
    return true;
}

} // namespace teskal
