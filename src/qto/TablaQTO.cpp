// The takeoff table's state: filter, order, open groups, extra columns, the
// rows and totals it draws, and the CSV of its element list.
#include "qto/TablaQTO.h"

#include <QString>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>

namespace teskal {

namespace {

constexpr std::string_view guion = "—";

std::string fijo(float v, int decimales) {
    std::string s;
    agregarFijo(s, v, decimales);
    return s;
}

// The table's one rule: a quantity above 0.0001 with its format, else "—".
std::string celda(float v, int decimales) {
    return v > 0.0001f ? fijo(v, decimales) : std::string(guion);
}

void agregarCitado(std::string& s, std::string_view texto) {
    s.push_back('"');
    for (auto p = texto.find('"'); p != std::string_view::npos; p = texto.find('"')) {
        s.append(texto.substr(0, p + 1)).push_back('"');
        texto.remove_prefix(p + 1);
    }
    s.append(texto).push_back('"');
}

void agregarNumeroCitado(std::string& s, float v, int decimales) {
    s.push_back('"');
    agregarFijo(s, v, decimales);
    s.push_back('"');
}

// A stable merge sort that asks only `antes(derecha, izquierda)` and stays in
// bounds whatever the predicate answers, so a predicate that is true for
// equal keys (the descending negation) is safe.
template <class T, class P> void ordenarTolerante(std::vector<T>& v, P antes) {
    std::vector<T> tmp(v.size());
    for (std::size_t ancho = 1; ancho < v.size(); ancho *= 2) {
        for (std::size_t i = 0; i < v.size(); i += 2 * ancho) {
            const std::size_t medio = std::min(i + ancho, v.size());
            const std::size_t fin = std::min(i + 2 * ancho, v.size());
            std::size_t a = i, b = medio, k = i;
            while (a < medio && b < fin) tmp[k++] = antes(v[b], v[a]) ? v[b++] : v[a++];
            while (a < medio) tmp[k++] = v[a++];
            while (b < fin) tmp[k++] = v[b++];
        }
        v.swap(tmp);
    }
}

bool menorPor(OrdenQTO columna, const GrupoQTO& a, const GrupoQTO& b) {
    switch (columna) {
    case OrdenQTO::tipoNombre:
        return a.tipoNombre < b.tipoNombre;
    case OrdenQTO::especialidad:
        return a.especialidad < b.especialidad;
    case OrdenQTO::cantidad:
        return a.cantidad() < b.cantidad();
    case OrdenQTO::volumen:
        return a.volumen() < b.volumen();
    case OrdenQTO::areaPlanta:
        return a.areaPlanta() < b.areaPlanta();
    case OrdenQTO::areaCara:
        return a.areaCara() < b.areaCara();
    case OrdenQTO::peso:
        return a.peso() < b.peso();
    }
    return false;
}

// The value an item row or a CSV field shows for an extra key: nothing for
// an absent, empty or "$" value.
std::string_view valorExtra(const ItemQTO& item, const std::string& clave) {
    const std::string& v = item.valor(clave);
    return valorVacioQTO(v) ? std::string_view() : std::string_view(v);
}

// The `nombre` part of a key: what follows the first " › ".
std::string nombreDeClave(const std::string& clave) {
    const auto p = clave.find(separadorPropiedad);
    return p == std::string::npos ? std::string() : clave.substr(p + separadorPropiedad.size());
}

constexpr std::string_view cabeceraCSV =
    "\"Tipo IFC\",\"Tipo (nombre)\",\"Especialidad\",\"Nombre\",\"Densidad (kg/m³)\",\"Ancho (m)\",\"Alto (m)\","
    "\"Largo (m)\",\"Volumen (m³)\",\"Área planta (m²)\",\"Área cara (m²)\",\"Peso (kg)\"";

} // namespace

std::string_view textoOrdenQTO(OrdenQTO orden) {
    switch (orden) {
    case OrdenQTO::tipoNombre:
        return "Tipo IFC";
    case OrdenQTO::especialidad:
        return "Especialidad";
    case OrdenQTO::cantidad:
        return "Cant.";
    case OrdenQTO::volumen:
        return "Vol. (m³)";
    case OrdenQTO::areaPlanta:
        return "Área planta (m²)";
    case OrdenQTO::areaCara:
        return "Área cara (m²)";
    case OrdenQTO::peso:
        return "Peso (kg)";
    }
    return {};
}

void agregarFijo(std::string& s, float v, int decimales) {
    // A float times 10^d (d <= 4) needs at most 24 + 14 bits: the product is
    // exact in a double, and rounding it to an integer, ties to even, is
    // what printf does with the exact value. Larger or stranger values go
    // the long way.
    static constexpr double escalas[] = {1, 10, 100, 1000, 10000};
    static constexpr std::uint64_t potencias[] = {1, 10, 100, 1000, 10000};
    const double x = std::fabs(static_cast<double>(v)) * escalas[std::clamp(decimales, 0, 4)];
    char buf[64];
    if (decimales < 0 || decimales > 4 || !(x < 9.0e15)) {
        const auto r = std::to_chars(buf, buf + sizeof buf, static_cast<double>(v), std::chars_format::fixed, decimales);
        if (r.ec == std::errc()) s.append(buf, r.ptr);
        return;
    }
    if (std::signbit(v)) s.push_back('-');
    const auto n = static_cast<std::uint64_t>(std::nearbyint(x));
    const std::uint64_t p = potencias[decimales];
    char* fin = std::to_chars(buf, buf + sizeof buf, n / p).ptr;
    if (decimales > 0) {
        *fin++ = '.';
        std::uint64_t fraccion = n % p;
        for (int k = decimales - 1; k >= 0; --k) {
            fin[k] = static_cast<char>('0' + fraccion % 10);
            fraccion /= 10;
        }
        fin += decimales;
    }
    s.append(buf, fin);
}

std::string citarCSV(std::string_view texto) {
    std::string s;
    s.reserve(texto.size() + 2);
    agregarCitado(s, texto);
    return s;
}

std::string nombreArchivoCSVQTO(std::int64_t segundos) {
    return "TESKAL_QTO_" + std::to_string(segundos) + ".csv";
}

std::vector<std::string> TablaQTO::opcionesFiltro() const {
    std::vector<std::string> opciones{std::string(todas)};
    for (const GrupoQTO& g : grupos)
        if (std::find(opciones.begin() + 1, opciones.end(), g.especialidad) == opciones.end())
            opciones.push_back(g.especialidad);
    return opciones;
}

std::vector<const GrupoQTO*> TablaQTO::gruposFiltradosOrdenados() const {
    std::vector<const GrupoQTO*> r;
    for (const GrupoQTO& g : grupos)
        if (filtroEsp == todas || g.especialidad == filtroEsp) r.push_back(&g);
    const OrdenQTO columna = ordenColumna;
    const bool ascendente = ordenAscendente;
    ordenarTolerante(r, [columna, ascendente](const GrupoQTO* a, const GrupoQTO* b) {
        const bool menor = menorPor(columna, *a, *b);
        return ascendente ? menor : !menor;
    });
    return r;
}

void TablaQTO::pulsarColumna(OrdenQTO columna) {
    if (columna == ordenColumna) {
        ordenAscendente = !ordenAscendente;
    } else {
        ordenColumna = columna;
        ordenAscendente = true;
    }
}

void TablaQTO::alternarExpandido(const QUuid& grupo) {
    if (!expandidos.erase(grupo)) expandidos.insert(grupo);
}

void TablaQTO::expandirTodo() {
    for (const GrupoQTO* g : gruposFiltradosOrdenados()) expandidos.insert(g->id);
}

void TablaQTO::contraerTodo() { expandidos.clear(); }

std::vector<ParamDisponible> TablaQTO::parametrosDisponibles() const {
    std::map<std::string, std::size_t> cuentas;
    for (const GrupoQTO& g : grupos)
        for (const ItemQTO& i : g.items)
            for (const auto& [clave, valor] : i.propiedades)
                if (clave != claveTipoIFC) ++cuentas[clave];
    std::vector<ParamDisponible> r;
    r.reserve(cuentas.size());
    for (const auto& [clave, cuenta] : cuentas) {
        ParamDisponible p;
        p.id = QUuid::createUuid();
        p.clave = clave;
        const auto corte = clave.find(separadorPropiedad);
        p.pset = clave.substr(0, corte);
        p.nombre = nombreDeClave(clave);
        p.cuenta = cuenta;
        r.push_back(std::move(p));
    }
    // Ties keep key order.
    std::stable_sort(r.begin(), r.end(),
                     [](const ParamDisponible& a, const ParamDisponible& b) { return a.cuenta > b.cuenta; });
    return r;
}

TotalesQTO TablaQTO::totales() const {
    TotalesQTO t;
    for (const GrupoQTO* g : gruposFiltradosOrdenados()) {
        ++t.tipos;
        t.cantidad += g->cantidad();
        t.volumen += g->volumen();
        t.areaPlanta += g->areaPlanta();
        t.peso += g->peso();
    }
    return t;
}

std::vector<std::string> TablaQTO::titulosColumnas() const {
    std::vector<std::string> t{"Tipo IFC",          "Especialidad",       "Cant.",
                               "Dens.\n(kg/m³)",    "Largo (m)",          "Alto (m)",
                               "Largo (m)",         "Vol. total\n(m³)",   "Área planta\n(m²)",
                               "Área cara\n(m²)",   "Peso total\n(kg)"};
    for (const std::string& clave : parametrosExtra) t.push_back(nombreDeClave(clave));
    return t;
}

std::vector<FilaQTO> TablaQTO::filas() const {
    std::vector<FilaQTO> filas;
    const auto filtrados = gruposFiltradosOrdenados();
    if (filtrados.empty()) return filas;
    for (const GrupoQTO* g : filtrados) {
        FilaQTO f{FilaQTO::Clase::grupo, g->id, {}};
        float sx = 0, sy = 0, sz = 0;
        for (const ItemQTO& i : g->items) {
            sx += i.dx;
            sy += i.dy;
            sz += i.dz;
        }
        const float n = static_cast<float>(std::max<std::size_t>(g->cantidad(), 1));
        // Dimension columns: width, height (Z), length (Y).
        f.celdas = {g->tipoNombre,
                    g->especialidad,
                    std::to_string(g->cantidad()),
                    celda(g->densidad, 0),
                    celda(sx / n, 3),
                    celda(sz / n, 3),
                    celda(sy / n, 3),
                    celda(g->volumen(), 3),
                    celda(g->areaPlanta(), 3),
                    celda(g->areaCara(), 3),
                    celda(g->peso(), 1)};
        for (const std::string& clave : parametrosExtra) f.celdas.push_back(g->valorParametro(clave));
        filas.push_back(std::move(f));
        if (!expandidos.contains(g->id)) continue;
        for (const ItemQTO& i : g->items) {
            FilaQTO fi{FilaQTO::Clase::item, g->id, {}};
            fi.celdas = {i.nombre,
                         std::string(),
                         std::string(),
                         celda(i.densidad, 0),
                         celda(i.dx, 3),
                         celda(i.dz, 3),
                         celda(i.dy, 3),
                         celda(i.volumen(), 3),
                         celda(i.areaPlanta(), 3),
                         celda(i.areaCara(), 3),
                         celda(i.peso(), 1)};
            for (const std::string& clave : parametrosExtra) {
                const std::string_view v = valorExtra(i, clave);
                fi.celdas.push_back(v.empty() ? std::string(guion) : std::string(v));
            }
            filas.push_back(std::move(fi));
        }
    }
    const TotalesQTO t = totales();
    FilaQTO total{FilaQTO::Clase::total, {}, {}};
    const std::string g(guion);
    total.celdas = {"TOTAL", "", std::to_string(t.cantidad), g, g, g, g, celda(t.volumen, 3),
                    celda(t.areaPlanta, 3), g, celda(t.peso, 1)};
    total.celdas.resize(total.celdas.size() + parametrosExtra.size(), g);
    filas.push_back(std::move(total));
    return filas;
}

std::string TablaQTO::textoToneladas() const { return "≈ " + fijo(totales().peso / 1000.0f, 1) + " t"; }

std::string TablaQTO::textoPie() const {
    const TotalesQTO t = totales();
    return "Vol.: " + fijo(t.volumen, 3) + " m³  ·  Área planta: " + fijo(t.areaPlanta, 3) +
           " m²  ·  Peso estimado: " + fijo(t.peso / 1000.0f, 1) + " t";
}

std::string TablaQTO::textoCSV() const {
    const auto filtrados = gruposFiltradosOrdenados();
    std::size_t items = 0;
    for (const GrupoQTO* g : filtrados) items += g->cantidad();
    std::string s;
    s.reserve(cabeceraCSV.size() + items * (200 + 24 * parametrosExtra.size()));
    s.append(cabeceraCSV);
    if (!parametrosExtra.empty()) {
        s.push_back(',');
        for (std::size_t k = 0; k < parametrosExtra.size(); ++k) {
            if (k) s.push_back(',');
            agregarCitado(s, parametrosExtra[k]);
        }
    }
    // The extra keys in key order, so that each item's properties are read
    // in one pass along its map instead of one search per column.
    std::vector<std::size_t> porClave(parametrosExtra.size());
    for (std::size_t k = 0; k < porClave.size(); ++k) porClave[k] = k;
    std::sort(porClave.begin(), porClave.end(),
              [this](std::size_t a, std::size_t b) { return parametrosExtra[a] < parametrosExtra[b]; });
    std::vector<std::string_view> valores(parametrosExtra.size());
    for (const GrupoQTO* g : filtrados) {
        for (const ItemQTO& i : g->items) {
            if (!valores.empty()) {
                auto it = i.propiedades.begin();
                const auto fin = i.propiedades.end();
                for (const std::size_t k : porClave) {
                    const std::string& clave = parametrosExtra[k];
                    while (it != fin && it->first < clave) ++it;
                    valores[k] = it != fin && it->first == clave && !valorVacioQTO(it->second)
                                     ? std::string_view(it->second)
                                     : std::string_view();
                }
            }
            s.push_back('\n');
            agregarCitado(s, g->tipoIFC);
            s.push_back(',');
            agregarCitado(s, g->tipoNombre);
            s.push_back(',');
            agregarCitado(s, g->especialidad);
            s.push_back(',');
            agregarCitado(s, i.nombre);
            s.push_back(',');
            agregarNumeroCitado(s, i.densidad, 0);
            s.push_back(',');
            agregarNumeroCitado(s, i.dx, 4);
            s.push_back(',');
            agregarNumeroCitado(s, i.dz, 4); // "Alto": the height is along Z
            s.push_back(',');
            agregarNumeroCitado(s, i.dy, 4);
            s.push_back(',');
            agregarNumeroCitado(s, i.volumen(), 4);
            s.push_back(',');
            agregarNumeroCitado(s, i.areaPlanta(), 4);
            s.push_back(',');
            agregarNumeroCitado(s, i.areaCara(), 4);
            s.push_back(',');
            agregarNumeroCitado(s, i.peso(), 2);
            for (const std::string_view v : valores) {
                s.push_back(',');
                agregarCitado(s, v);
            }
        }
    }
    return s;
}

std::vector<PsetDisponible> agruparParametros(const std::vector<ParamDisponible>& disponibles,
                                              const std::string& busqueda) {
    const QString buscado = QString::fromStdString(busqueda).trimmed();
    std::map<std::string, std::vector<ParamDisponible>> porPset;
    for (const ParamDisponible& p : disponibles)
        if (buscado.isEmpty() || QString::fromStdString(p.clave).contains(buscado, Qt::CaseInsensitive))
            porPset[p.pset].push_back(p);
    std::vector<PsetDisponible> r;
    r.reserve(porPset.size());
    for (auto& [pset, parametros] : porPset) r.push_back({pset, std::move(parametros)});
    return r;
}

} // namespace teskal
