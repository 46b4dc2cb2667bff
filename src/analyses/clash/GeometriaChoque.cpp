#include "analyses/clash/GeometriaChoque.h"

#include "scene/Geometry.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <glm/geometric.hpp>
#include <glm/vec2.hpp>
#include <glm/vec4.hpp>
#include <limits>

namespace teskal {

namespace {

using dv = glm::dvec3;

// Metres: a point closer than this to a plane lies on it. Far below what the
// single-precision vertices of a model can tell apart, far above the rounding
// of the double-precision arithmetic done on them.
constexpr double epsPlano = 1e-8;

double distanciaPlano(const dv& n, const dv& origen, const dv& p) {
    const double d = glm::dot(n, p - origen);
    return std::abs(d) < epsPlano ? 0.0 : d;
}

// The points where a triangle meets a plane, given its corners' distances
// to it: corners on the plane and edges that cross it.
int cortePlano(const std::array<dv, 3>& p, const std::array<double, 3>& d, dv* salida) {
    int n = 0;
    for (int i = 0; i < 3; ++i)
        if (d[i] == 0.0) salida[n++] = p[i];
    for (int i = 0; i < 3; ++i) {
        const int j = (i + 1) % 3;
        if ((d[i] > 0 && d[j] < 0) || (d[i] < 0 && d[j] > 0)) salida[n++] = p[i] + (p[j] - p[i]) * (d[i] / (d[i] - d[j]));
    }
    return n;
}

double cruz2(const glm::dvec2& a, const glm::dvec2& b) { return a.x * b.y - a.y * b.x; }

// Two triangles of one plane: the corners of each that lie in the other and
// the points where their edges cross, found in the plane's projection on the
// two axes its normal leans on least.
void cruzarCoplanares(const std::array<dv, 3>& a, const std::array<dv, 3>& b, const dv& n, CruceTriangulos& r) {
    const dv m = glm::abs(n);
    const int k = m.x >= m.y && m.x >= m.z ? 0 : (m.y >= m.z ? 1 : 2);
    const int u = (k + 1) % 3, v = (k + 2) % 3;
    auto p2 = [&](const dv& p) { return glm::dvec2(p[u], p[v]); };
    auto anadir = [&](const dv& p) {
        if (r.cuantos < static_cast<int>(r.puntos.size())) r.puntos[static_cast<std::size_t>(r.cuantos++)] = p;
    };
    // Inside or on the border, within epsPlano of each edge's line.
    auto dentro = [&](const dv& p, const std::array<dv, 3>& t) {
        const glm::dvec2 q = p2(p);
        const double signo = cruz2(p2(t[1]) - p2(t[0]), p2(t[2]) - p2(t[0])) > 0 ? 1.0 : -1.0;
        for (int i = 0; i < 3; ++i) {
            const glm::dvec2 e0 = p2(t[static_cast<std::size_t>(i)]), e1 = p2(t[static_cast<std::size_t>((i + 1) % 3)]);
            const double largo = glm::length(e1 - e0);
            if (signo * cruz2(e1 - e0, q - e0) < -epsPlano * largo) return false;
        }
        return true;
    };
    for (const dv& p : a)
        if (dentro(p, b)) anadir(p);
    for (const dv& p : b)
        if (dentro(p, a)) anadir(p);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            const dv& a0 = a[static_cast<std::size_t>(i)];
            const dv& a1 = a[static_cast<std::size_t>((i + 1) % 3)];
            const dv& b0 = b[static_cast<std::size_t>(j)];
            const dv& b1 = b[static_cast<std::size_t>((j + 1) % 3)];
            const glm::dvec2 ra = p2(a1) - p2(a0), rb = p2(b1) - p2(b0), w = p2(b0) - p2(a0);
            const double den = cruz2(ra, rb);
            // Parallel edges overlap only where a corner lies on the other
            // edge, and the corners were taken above.
            if (std::abs(den) <= 1e-12 * glm::length(ra) * glm::length(rb)) continue;
            const double t = cruz2(w, rb) / den, s = cruz2(w, ra) / den;
            constexpr double margen = 1e-12;
            if (t >= -margen && t <= 1 + margen && s >= -margen && s <= 1 + margen)
                anadir(a0 + (a1 - a0) * std::clamp(t, 0.0, 1.0));
        }
    r.cruzan = r.cuantos > 0;
    r.coplanares = true;
}

dv puntoMasCercanoTriangulo(const dv& p, const dv& a, const dv& b, const dv& c) {
    const dv ab = b - a, ac = c - a, ap = p - a;
    const double d1 = glm::dot(ab, ap), d2 = glm::dot(ac, ap);
    if (d1 <= 0 && d2 <= 0) return a;
    const dv bp = p - b;
    const double d3 = glm::dot(ab, bp), d4 = glm::dot(ac, bp);
    if (d3 >= 0 && d4 <= d3) return b;
    const double vc = d1 * d4 - d3 * d2;
    if (vc <= 0 && d1 >= 0 && d3 <= 0) return a + ab * (d1 / (d1 - d3));
    const dv cp = p - c;
    const double d5 = glm::dot(ab, cp), d6 = glm::dot(ac, cp);
    if (d6 >= 0 && d5 <= d6) return c;
    const double vb = d5 * d2 - d1 * d6;
    if (vb <= 0 && d2 >= 0 && d6 <= 0) return a + ac * (d2 / (d2 - d6));
    const double va = d3 * d6 - d5 * d4;
    if (va <= 0 && (d4 - d3) >= 0 && (d5 - d6) >= 0) return b + (c - b) * ((d4 - d3) / ((d4 - d3) + (d5 - d6)));
    const double denom = 1.0 / (va + vb + vc);
    return a + ab * (vb * denom) + ac * (vc * denom);
}

// The nearest points of two segments, a segment of no length included.
void segmentosMasCercanos(const dv& p1, const dv& q1, const dv& p2, const dv& q2, dv& c1, dv& c2) {
    constexpr double nulo = 1e-30;
    const dv d1 = q1 - p1, d2 = q2 - p2, r = p1 - p2;
    const double a = glm::dot(d1, d1), e = glm::dot(d2, d2), f = glm::dot(d2, r);
    double s = 0, t = 0;
    if (a <= nulo && e <= nulo) {
    } else if (a <= nulo) {
        t = std::clamp(f / e, 0.0, 1.0);
    } else {
        const double c = glm::dot(d1, r);
        if (e <= nulo) {
            s = std::clamp(-c / a, 0.0, 1.0);
        } else {
            const double b = glm::dot(d1, d2), denom = a * e - b * b;
            s = denom != 0 ? std::clamp((b * f - c * e) / denom, 0.0, 1.0) : 0.0;
            t = (b * s + f) / e;
            if (t < 0) {
                t = 0;
                s = std::clamp(-c / a, 0.0, 1.0);
            } else if (t > 1) {
                t = 1;
                s = std::clamp((b - c) / a, 0.0, 1.0);
            }
        }
    }
    c1 = p1 + d1 * s;
    c2 = p2 + d2 * t;
}

dv normalTriangulo(const Triangulo& t) { return glm::normalize(glm::cross(t.b - t.a, t.c - t.a)); }

CruceTriangulos cruzarConNormales(const Triangulo& ta, const Triangulo& tb, const dv& na, const dv& nb);

bool cajasSeTocan(const dv& amin, const dv& amax, const dv& bmin, const dv& bmax) {
    for (int k = 0; k < 3; ++k)
        if (amin[k] > bmax[k] + epsPlano || bmin[k] > amax[k] + epsPlano) return false;
    return true;
}

double distanciaCajas2(const dv& amin, const dv& amax, const dv& bmin, const dv& bmax) {
    double s = 0;
    for (int k = 0; k < 3; ++k) {
        const double g = std::max({0.0, amin[k] - bmax[k], bmin[k] - amax[k]});
        s += g * g;
    }
    return s;
}

// Rays of the containment test: directions that no face of a building lies
// along, each tried when the one before grazed an edge.
constexpr std::array<dv, 3> direccionesRayo{dv(0.5773502691896258, 0.5933123477385012, 0.5609830003591218),
                                            dv(-0.3826834323650898, 0.8052403354632545, 0.4529225149810311),
                                            dv(0.2112443545883123, -0.4389172215716127, 0.8733476534891745)};

} // namespace

bool trianguloDegenerado(const Triangulo& t) {
    for (const dv* p : {&t.a, &t.b, &t.c})
        for (int k = 0; k < 3; ++k)
            if (!std::isfinite((*p)[k])) return true;
    const dv ab = t.b - t.a, ac = t.c - t.a, bc = t.c - t.b;
    const double l2 = std::max({glm::dot(ab, ab), glm::dot(ac, ac), glm::dot(bc, bc)});
    return !(glm::length(glm::cross(ab, ac)) > 1e-9 * l2);
}

CruceTriangulos cruzarTriangulos(const Triangulo& ta, const Triangulo& tb) {
    if (trianguloDegenerado(ta) || trianguloDegenerado(tb)) return {};
    return cruzarConNormales(ta, tb, normalTriangulo(ta), normalTriangulo(tb));
}

namespace {

// Two triangles with a surface, each with its unit normal.
CruceTriangulos cruzarConNormales(const Triangulo& ta, const Triangulo& tb, const dv& na, const dv& nb) {
    CruceTriangulos r;
    const std::array<dv, 3> a{ta.a, ta.b, ta.c}, b{tb.a, tb.b, tb.c};
    std::array<double, 3> db{}, da{};
    for (int i = 0; i < 3; ++i) db[static_cast<std::size_t>(i)] = distanciaPlano(na, ta.a, b[static_cast<std::size_t>(i)]);
    if ((db[0] > 0 && db[1] > 0 && db[2] > 0) || (db[0] < 0 && db[1] < 0 && db[2] < 0)) return r;
    const dv linea = glm::cross(na, nb);
    if ((db[0] == 0 && db[1] == 0 && db[2] == 0) || glm::length(linea) < 1e-12) {
        // One plane (or planes too close to parallel to give a line): if B
        // is not on A's plane it stands clear of it.
        if (!(db[0] == 0 && db[1] == 0 && db[2] == 0)) return r;
        cruzarCoplanares(a, b, na, r);
        return r;
    }
    for (int i = 0; i < 3; ++i) da[static_cast<std::size_t>(i)] = distanciaPlano(nb, tb.a, a[static_cast<std::size_t>(i)]);
    if ((da[0] > 0 && da[1] > 0 && da[2] > 0) || (da[0] < 0 && da[1] < 0 && da[2] < 0)) return r;
    if (da[0] == 0 && da[1] == 0 && da[2] == 0) {
        cruzarCoplanares(a, b, nb, r);
        return r;
    }
    // Each triangle meets the other's plane in a segment on the planes' common
    // line; the triangles meet where the two segments overlap.
    dv pa[3], pb[3];
    const int ca = cortePlano(a, da, pa), cb = cortePlano(b, db, pb);
    if (ca == 0 || cb == 0) return r;
    const dv d = glm::normalize(linea);
    auto extremos = [&](const dv* p, int n, double& lo, double& hi, dv& plo, dv& phi) {
        lo = std::numeric_limits<double>::infinity();
        hi = -lo;
        for (int i = 0; i < n; ++i) {
            const double s = glm::dot(d, p[i]);
            if (s < lo) lo = s, plo = p[i];
            if (s > hi) hi = s, phi = p[i];
        }
    };
    double loA, hiA, loB, hiB;
    dv ploA, phiA, ploB, phiB;
    extremos(pa, ca, loA, hiA, ploA, phiA);
    extremos(pb, cb, loB, hiB, ploB, phiB);
    if (std::max(loA, loB) > std::min(hiA, hiB) + epsPlano) return r;
    const dv desde = loA >= loB ? ploA : ploB;
    const dv hasta = hiA <= hiB ? phiA : phiB;
    r.cruzan = true;
    r.puntos[0] = desde;
    r.puntos[1] = std::max(loA, loB) <= std::min(hiA, hiB) ? hasta : desde;
    r.cuantos = 2;
    return r;
}

} // namespace

double distanciaTriangulos(const Triangulo& a, const Triangulo& b, dv& enA, dv& enB) {
    const CruceTriangulos c = cruzarTriangulos(a, b);
    if (c.cruzan) {
        enA = enB = c.puntos[0];
        return 0.0;
    }
    double mejor = std::numeric_limits<double>::infinity();
    auto probar = [&](const dv& pa, const dv& pb) {
        const double d = glm::length(pa - pb);
        if (d < mejor) mejor = d, enA = pa, enB = pb;
    };
    const std::array<dv, 3> va{a.a, a.b, a.c}, vb{b.a, b.b, b.c};
    for (const dv& p : va) probar(p, puntoMasCercanoTriangulo(p, b.a, b.b, b.c));
    for (const dv& p : vb) probar(puntoMasCercanoTriangulo(p, a.a, a.b, a.c), p);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            dv c1, c2;
            segmentosMasCercanos(va[static_cast<std::size_t>(i)], va[static_cast<std::size_t>((i + 1) % 3)],
                                 vb[static_cast<std::size_t>(j)], vb[static_cast<std::size_t>((j + 1) % 3)], c1, c2);
            probar(c1, c2);
        }
    return mejor;
}

MallaElemento::MallaElemento(const Geometry& g, const glm::dmat4& mundo) {
    std::vector<dv> vertices;
    vertices.reserve(g.vertices.size());
    for (const glm::vec3& v : g.vertices) vertices.push_back(dv(mundo * glm::dvec4(dv(v), 1.0)));
    std::vector<std::array<std::int32_t, 3>> indices;
    const auto n = static_cast<std::int32_t>(vertices.size());
    for (const auto& e : g.elementos) {
        if (e.primitiva != Primitiva::Triangulos) continue;
        for (std::size_t k = 0; k + 2 < e.indices.size(); k += 3) {
            const std::array<std::int32_t, 3> t{e.indices[k], e.indices[k + 1], e.indices[k + 2]};
            if (t[0] < 0 || t[1] < 0 || t[2] < 0 || t[0] >= n || t[1] >= n || t[2] >= n) continue;
            indices.push_back(t);
        }
    }
    construir(std::move(vertices), std::move(indices));
}

MallaElemento::MallaElemento(const std::vector<Triangulo>& triangulos) {
    std::vector<dv> vertices;
    std::vector<std::array<std::int32_t, 3>> indices;
    vertices.reserve(triangulos.size() * 3);
    for (const auto& t : triangulos) {
        const auto base = static_cast<std::int32_t>(vertices.size());
        vertices.insert(vertices.end(), {t.a, t.b, t.c});
        indices.push_back({base, base + 1, base + 2});
    }
    construir(std::move(vertices), std::move(indices));
}

void MallaElemento::construir(std::vector<dv> vertices, std::vector<std::array<std::int32_t, 3>> indices) {
    vertices_ = std::move(vertices);
    // Closedness: corners matched by position, every edge of the triangles
    // with a surface must be shared by an even number of them.
    thread_local std::vector<std::int32_t> porPosicion;
    thread_local std::vector<std::uint32_t> soldado;
    thread_local std::vector<std::uint64_t> aristas;
    std::vector<std::int32_t>& orden = porPosicion;
    orden.resize(vertices_.size());
    for (std::size_t i = 0; i < orden.size(); ++i) orden[i] = static_cast<std::int32_t>(i);
    // Positions compared by their bits (a strict order even with a corner that
    // is not a number), -0 taken as 0.
    auto bits = [&](std::int32_t i, int k) {
        return std::bit_cast<std::uint64_t>(vertices_[static_cast<std::size_t>(i)][k] + 0.0);
    };
    auto menor = [&](std::int32_t x, std::int32_t y) {
        for (int k = 0; k < 3; ++k)
            if (bits(x, k) != bits(y, k)) return bits(x, k) < bits(y, k);
        return false;
    };
    std::sort(orden.begin(), orden.end(), menor);
    soldado.resize(vertices_.size());
    std::uint32_t id = 0;
    for (std::size_t i = 0; i < orden.size(); ++i) {
        if (i > 0 && menor(orden[i - 1], orden[i])) ++id;
        soldado[static_cast<std::size_t>(orden[i])] = id;
    }
    aristas.clear();
    for (const auto& t : indices) {
        const Triangulo tr{vertices_[static_cast<std::size_t>(t[0])], vertices_[static_cast<std::size_t>(t[1])],
                           vertices_[static_cast<std::size_t>(t[2])]};
        if (trianguloDegenerado(tr)) continue;
        for (int k = 0; k < 3; ++k) {
            std::uint64_t x = soldado[static_cast<std::size_t>(t[static_cast<std::size_t>(k)])];
            std::uint64_t y = soldado[static_cast<std::size_t>(t[static_cast<std::size_t>((k + 1) % 3)])];
            if (x == y) continue;
            if (y < x) std::swap(x, y);
            aristas.push_back((x << 32) | y);
        }
    }
    std::sort(aristas.begin(), aristas.end());
    cerrada_ = !aristas.empty();
    for (std::size_t i = 0; i < aristas.size() && cerrada_;) {
        std::size_t j = i;
        while (j < aristas.size() && aristas[j] == aristas[i]) ++j;
        cerrada_ = (j - i) % 2 == 0;
        i = j;
    }

    // The surface: triangles with an area.
    indices_.clear();
    tri_.clear();
    for (const auto& t : indices) {
        const Triangulo tr{vertices_[static_cast<std::size_t>(t[0])], vertices_[static_cast<std::size_t>(t[1])],
                           vertices_[static_cast<std::size_t>(t[2])]};
        if (trianguloDegenerado(tr)) continue;
        tri_.push_back(tr);
        indices_.push_back(t);
    }
    if (tri_.empty()) {
        cerrada_ = false;
        return;
    }
    min_ = dv(std::numeric_limits<double>::infinity());
    max_ = -min_;
    for (const auto& t : tri_)
        for (const dv* p : {&t.a, &t.b, &t.c}) {
            min_ = glm::min(min_, *p);
            max_ = glm::max(max_, *p);
        }
    // The tree over the triangles' boxes; then the triangles are laid out in
    // its leaves' order, each leaf a range.
    thread_local std::vector<std::int32_t> ordenArbol;
    thread_local std::vector<std::pair<dv, dv>> cajas;
    ordenArbol.resize(tri_.size());
    cajas.resize(tri_.size());
    for (std::size_t i = 0; i < tri_.size(); ++i) {
        const Triangulo& t = tri_[i];
        ordenArbol[i] = static_cast<std::int32_t>(i);
        cajas[i] = {glm::min(t.a, glm::min(t.b, t.c)), glm::max(t.a, glm::max(t.b, t.c))};
    }
    orden_ = std::span<std::int32_t>(ordenArbol);
    cajas_ = std::span<const std::pair<dv, dv>>(cajas);
    arbol_.reserve(tri_.size() / 2 + 1);
    construirNodo(0, static_cast<std::int32_t>(tri_.size()));
    std::vector<Triangulo> tri(tri_.size());
    std::vector<std::array<std::int32_t, 3>> ix(tri_.size());
    for (std::size_t i = 0; i < tri.size(); ++i) {
        tri[i] = tri_[static_cast<std::size_t>(ordenArbol[i])];
        ix[i] = indices_[static_cast<std::size_t>(ordenArbol[i])];
    }
    tri_ = std::move(tri);
    indices_ = std::move(ix);
    normales_.resize(tri_.size());
    for (std::size_t i = 0; i < tri_.size(); ++i) normales_[i] = normalTriangulo(tri_[i]);
    orden_ = {};
    cajas_ = {};
}

std::int32_t MallaElemento::construirNodo(std::int32_t desde, std::int32_t hasta) {
    // orden_ holds the triangles' positions, centros_ their boxes' centres
    // (doubled); a node's triangles are a range of orden_.
    const auto yo = static_cast<std::int32_t>(arbol_.size());
    arbol_.push_back({});
    dv mn(std::numeric_limits<double>::infinity()), mx(-mn), cmn(mn), cmx(-mn);
    for (std::int32_t i = desde; i < hasta; ++i) {
        const std::int32_t t = orden_[static_cast<std::size_t>(i)];
        const auto& c = cajas_[static_cast<std::size_t>(t)];
        mn = glm::min(mn, c.first);
        mx = glm::max(mx, c.second);
        const dv centro = c.first + c.second;
        cmn = glm::min(cmn, centro);
        cmx = glm::max(cmx, centro);
    }
    arbol_[static_cast<std::size_t>(yo)].min = mn;
    arbol_[static_cast<std::size_t>(yo)].max = mx;
    const dv ext = cmx - cmn;
    const int eje = ext.x >= ext.y && ext.x >= ext.z ? 0 : (ext.y >= ext.z ? 1 : 2);
    if (hasta - desde <= 4 || !(ext[eje] > 0)) {
        arbol_[static_cast<std::size_t>(yo)].primero = desde;
        arbol_[static_cast<std::size_t>(yo)].cuenta = hasta - desde;
        return yo;
    }
    // Split at the median centre on the longest axis.
    const std::int32_t medio = desde + (hasta - desde) / 2;
    std::nth_element(orden_.begin() + desde, orden_.begin() + medio, orden_.begin() + hasta,
                     [&](std::int32_t x, std::int32_t y) {
                         const auto& a = cajas_[static_cast<std::size_t>(x)];
                         const auto& b = cajas_[static_cast<std::size_t>(y)];
                         return a.first[eje] + a.second[eje] < b.first[eje] + b.second[eje];
                     });
    construirNodo(desde, medio);
    const std::int32_t derecho = construirNodo(medio, hasta);
    arbol_[static_cast<std::size_t>(yo)].derecho = derecho;
    return yo;
}

// The crossings of the ray from p along dir with the surface: their count,
// -1 when the ray grazes an edge or runs along a face, -2 when p lies on the
// surface.
int MallaElemento::cruzarRayo(const dv& p, const dv& dir, bool conArbol) const {
    constexpr double roce = 1e-9;
    int cuenta = 0;
    auto triangulo = [&](const Triangulo& tr) {
        const dv e1 = tr.b - tr.a, e2 = tr.c - tr.a;
        const dv h = glm::cross(dir, e2);
        const double det = glm::dot(e1, h);
        const dv s = p - tr.a;
        if (std::abs(det) <= 1e-12 * glm::length(glm::cross(e1, e2))) {
            // Along the face's plane: it matters only if the ray lies in it.
            return std::abs(glm::dot(glm::normalize(glm::cross(e1, e2)), s)) < epsPlano ? -1 : 0;
        }
        const double f = 1.0 / det;
        const double u = f * glm::dot(s, h);
        if (u < -roce || u > 1 + roce) return 0;
        const dv q = glm::cross(s, e1);
        const double v = f * glm::dot(dir, q);
        if (v < -roce || u + v > 1 + roce) return 0;
        const double t = f * glm::dot(e2, q);
        if (t < -epsPlano) return 0;
        if (t <= epsPlano) return -2;
        if (u < roce || v < roce || u + v > 1 - roce) return -1;
        ++cuenta;
        return 0;
    };
    if (!conArbol) {
        for (const auto& tr : tri_)
            if (const int r = triangulo(tr); r < 0) return r;
        return cuenta;
    }
    const dv inv(1.0 / dir.x, 1.0 / dir.y, 1.0 / dir.z);
    std::int32_t pila[64];
    int tope = 0;
    pila[tope++] = 0;
    while (tope > 0) {
        const NodoArbol& n = arbol_[static_cast<std::size_t>(pila[--tope])];
        double t0 = 0, t1 = std::numeric_limits<double>::infinity();
        for (int k = 0; k < 3; ++k) {
            double a = (n.min[k] - epsPlano - p[k]) * inv[k], b = (n.max[k] + epsPlano - p[k]) * inv[k];
            if (a > b) std::swap(a, b);
            t0 = std::max(t0, a);
            t1 = std::min(t1, b);
        }
        if (t0 > t1) continue;
        if (n.cuenta > 0) {
            for (std::int32_t i = n.primero; i < n.primero + n.cuenta; ++i)
                if (const int r = triangulo(tri_[static_cast<std::size_t>(i)]); r < 0) return r;
            continue;
        }
        const std::int32_t yo = static_cast<std::int32_t>(&n - arbol_.data());
        pila[tope++] = yo + 1;
        pila[tope++] = n.derecho;
    }
    return cuenta;
}

bool MallaElemento::contiene(const dv& p) const {
    if (!cerrada_) return false;
    for (int k = 0; k < 3; ++k)
        if (!(p[k] > min_[k] && p[k] < max_[k])) return false;
    for (const dv& d : direccionesRayo) {
        const int r = cruzarRayo(p, d, true);
        if (r == -2) return false;
        if (r >= 0) return r % 2 == 1;
    }
    return false;
}

bool MallaElemento::contieneDirecto(const dv& p) const {
    if (!cerrada_) return false;
    for (const dv& d : direccionesRayo) {
        const int r = cruzarRayo(p, d, false);
        if (r == -2) return false;
        if (r >= 0) return r % 2 == 1;
    }
    return false;
}

namespace {

// The points and axes of a contact region as its pieces are found.
struct Region {
    std::vector<dv> puntos;
    std::vector<dv> ejes;
    bool cruzan = false;

    // One region per thread, emptied for each pair: its buffers stay.
    static Region& deEsteHilo() {
        thread_local Region r;
        r.puntos.clear();
        r.ejes.clear();
        r.cruzan = false;
        return r;
    }

    void anadirEje(const dv& n) {
        // One sign for each direction: the width along n and -n is the same.
        const bool negar = n.x < 0 || (n.x == 0 && (n.y < 0 || (n.y == 0 && n.z < 0)));
        ejes.push_back(negar ? -n : n);
    }

    ContactoMallas cerrar() {
        ContactoMallas c;
        if (puntos.empty()) return c;
        c.chocan = true;
        c.min = c.max = puntos.front();
        for (const dv& p : puntos) {
            c.min = glm::min(c.min, p);
            c.max = glm::max(c.max, p);
        }
        const dv ext = c.max - c.min;
        double ancho = std::min({ext.x, ext.y, ext.z});
        // The same set of axes whatever order they came in.
        std::sort(ejes.begin(), ejes.end(), [](const dv& x, const dv& y) {
            return x.x != y.x ? x.x < y.x : (x.y != y.y ? x.y < y.y : x.z < y.z);
        });
        ejes.erase(std::unique(ejes.begin(), ejes.end()), ejes.end());
        for (const dv& e : ejes) {
            double lo = std::numeric_limits<double>::infinity(), hi = -lo;
            for (const dv& p : puntos) {
                const double s = glm::dot(e, p);
                lo = std::min(lo, s);
                hi = std::max(hi, s);
            }
            ancho = std::min(ancho, hi - lo);
        }
        c.profundidad = std::max(ancho, 0.0);
        return c;
    }
};

// Triangle i of a against triangle j of b (both with a surface): their boxes
// first, then the crossing.
void anadirCruce(Region& r, const MallaElemento& a, std::size_t i, const MallaElemento& b, std::size_t j) {
    const Triangulo& ta = a.triangulos()[i];
    const Triangulo& tb = b.triangulos()[j];
    for (int k = 0; k < 3; ++k) {
        if (std::max({ta.a[k], ta.b[k], ta.c[k]}) + epsPlano < std::min({tb.a[k], tb.b[k], tb.c[k]})) return;
        if (std::max({tb.a[k], tb.b[k], tb.c[k]}) + epsPlano < std::min({ta.a[k], ta.b[k], ta.c[k]})) return;
    }
    const CruceTriangulos c = cruzarConNormales(ta, tb, a.normales()[i], b.normales()[j]);
    if (!c.cruzan) return;
    r.cruzan = true;
    r.puntos.insert(r.puntos.end(), c.puntos.begin(), c.puntos.begin() + c.cuantos);
    r.anadirEje(a.normales()[i]);
    r.anadirEje(b.normales()[j]);
}

// The corners of `a` inside the closed mesh `b`, each corner tested once,
// with the normals of the triangles they belong to.
void anadirInteriores(Region& r, const MallaElemento& a, const MallaElemento& b, bool conArbol) {
    if (!b.cerrada()) return;
    thread_local std::vector<std::int8_t> estado;
    estado.assign(a.vertices().size(), -1);
    const auto& tri = a.triangulos();
    for (std::size_t i = 0; i < tri.size(); ++i) {
        bool alguno = false;
        for (std::int32_t v : a.indices()[i]) {
            auto& e = estado[static_cast<std::size_t>(v)];
            const dv& p = a.vertices()[static_cast<std::size_t>(v)];
            if (e < 0) {
                e = (conArbol ? b.contiene(p) : b.contieneDirecto(p)) ? 1 : 0;
                if (e == 1) r.puntos.push_back(p);
            }
            alguno = alguno || e == 1;
        }
        if (alguno) r.anadirEje(a.normales()[i]);
    }
}

} // namespace

ContactoMallas contactoMallas(const MallaElemento& a, const MallaElemento& b) {
    if (a.vacia() || b.vacia() || !cajasSeTocan(a.min(), a.max(), b.min(), b.max())) return {};
    Region& r = Region::deEsteHilo();
    const auto& na = a.arbol();
    const auto& nb = b.arbol();
    thread_local std::vector<std::pair<std::int32_t, std::int32_t>> pila;
    pila.assign(1, {0, 0});
    while (!pila.empty()) {
        const auto [i, j] = pila.back();
        pila.pop_back();
        const auto& x = na[static_cast<std::size_t>(i)];
        const auto& y = nb[static_cast<std::size_t>(j)];
        if (!cajasSeTocan(x.min, x.max, y.min, y.max)) continue;
        if (x.cuenta > 0 && y.cuenta > 0) {
            for (std::int32_t p = x.primero; p < x.primero + x.cuenta; ++p)
                for (std::int32_t q = y.primero; q < y.primero + y.cuenta; ++q)
                    anadirCruce(r, a, static_cast<std::size_t>(p), b, static_cast<std::size_t>(q));
            continue;
        }
        const dv ex = x.max - x.min, ey = y.max - y.min;
        if (y.cuenta > 0 || (x.cuenta == 0 && ex.x * ex.y * ex.z >= ey.x * ey.y * ey.z)) {
            pila.push_back({i + 1, j});
            pila.push_back({x.derecho, j});
        } else {
            pila.push_back({i, j + 1});
            pila.push_back({i, y.derecho});
        }
    }
    anadirInteriores(r, a, b, true);
    anadirInteriores(r, b, a, true);
    return r.cerrar();
}

ContactoMallas contactoMallasDirecto(const MallaElemento& a, const MallaElemento& b) {
    Region& r = Region::deEsteHilo();
    for (std::size_t i = 0; i < a.triangulos().size(); ++i)
        for (std::size_t j = 0; j < b.triangulos().size(); ++j) anadirCruce(r, a, i, b, j);
    anadirInteriores(r, a, b, false);
    anadirInteriores(r, b, a, false);
    return r.cerrar();
}

namespace {

// A surface distance below `limite` turns to 0 when one mesh lies inside the
// other; nothing when none was below it.
std::optional<SeparacionMallas> cerrarSeparacion(const MallaElemento& a, const MallaElemento& b, double mejor,
                                                  const SeparacionMallas& s, bool hallada, bool conArbol) {
    if (!hallada) return std::nullopt;
    SeparacionMallas r = s;
    r.distancia = mejor;
    if (mejor > 0) {
        const dv& pa = a.triangulos().front().a;
        const dv& pb = b.triangulos().front().a;
        const bool dentro = conArbol ? (b.contiene(pa) || a.contiene(pb)) : (b.contieneDirecto(pa) || a.contieneDirecto(pb));
        if (dentro) r.distancia = 0;
    }
    return r;
}

} // namespace

std::optional<SeparacionMallas> separacionMallas(const MallaElemento& a, const MallaElemento& b, double limite) {
    if (a.vacia() || b.vacia() || !(limite > 0)) return std::nullopt;
    double mejor = limite;
    SeparacionMallas s;
    bool hallada = false;
    const auto& na = a.arbol();
    const auto& nb = b.arbol();
    struct Par {
        std::int32_t i, j;
        double d2;
    };
    thread_local std::vector<Par> pila;
    pila.assign(1, {0, 0, distanciaCajas2(na[0].min, na[0].max, nb[0].min, nb[0].max)});
    while (!pila.empty() && mejor > 0) {
        const Par p = pila.back();
        pila.pop_back();
        if (p.d2 >= mejor * mejor) continue;
        const auto& x = na[static_cast<std::size_t>(p.i)];
        const auto& y = nb[static_cast<std::size_t>(p.j)];
        if (x.cuenta > 0 && y.cuenta > 0) {
            for (std::int32_t u = x.primero; u < x.primero + x.cuenta; ++u)
                for (std::int32_t v = y.primero; v < y.primero + y.cuenta; ++v) {
                    dv ea, eb;
                    const double d = distanciaTriangulos(a.triangulos()[static_cast<std::size_t>(u)],
                                                         b.triangulos()[static_cast<std::size_t>(v)], ea, eb);
                    if (d < mejor) {
                        mejor = d;
                        s.enA = ea;
                        s.enB = eb;
                        hallada = true;
                    }
                }
            continue;
        }
        Par h1, h2;
        const dv ex = x.max - x.min, ey = y.max - y.min;
        if (y.cuenta > 0 || (x.cuenta == 0 && ex.x * ex.y * ex.z >= ey.x * ey.y * ey.z)) {
            h1 = {p.i + 1, p.j, 0};
            h2 = {x.derecho, p.j, 0};
        } else {
            h1 = {p.i, p.j + 1, 0};
            h2 = {p.i, y.derecho, 0};
        }
        for (Par* h : {&h1, &h2}) {
            const auto& hx = na[static_cast<std::size_t>(h->i)];
            const auto& hy = nb[static_cast<std::size_t>(h->j)];
            h->d2 = distanciaCajas2(hx.min, hx.max, hy.min, hy.max);
        }
        // The nearer pair is taken first.
        if (h1.d2 < h2.d2) std::swap(h1, h2);
        pila.push_back(h1);
        pila.push_back(h2);
    }
    return cerrarSeparacion(a, b, mejor, s, hallada, true);
}

std::optional<SeparacionMallas> separacionMallasDirecta(const MallaElemento& a, const MallaElemento& b,
                                                         double limite) {
    if (a.vacia() || b.vacia() || !(limite > 0)) return std::nullopt;
    double mejor = limite;
    SeparacionMallas s;
    bool hallada = false;
    for (const auto& ta : a.triangulos())
        for (const auto& tb : b.triangulos()) {
            dv ea, eb;
            const double d = distanciaTriangulos(ta, tb, ea, eb);
            if (d < mejor) {
                mejor = d;
                s.enA = ea;
                s.enB = eb;
                hallada = true;
            }
        }
    return cerrarSeparacion(a, b, mejor, s, hallada, false);
}

} // namespace teskal
