#include "federation/GrillasIFC.h"

#include "federation/ArchivoMapeado.h"
#include "federation/TablaEntidadesIFC.h"
#include "federation/TextoSTEP.h"

#include <QUuid>
#include <charconv>
#include <cmath>
#include <glm/geometric.hpp>
#include <glm/mat4x4.hpp>
#include <limits>
#include <optional>
#include <unordered_set>

namespace teskal {

namespace {

bool tipoDeGrillas(TipoIFC t) {
    switch (t) {
    case TipoIFC::CartesianPoint:
    case TipoIFC::Polyline:
    case TipoIFC::GridAxis:
    case TipoIFC::Grid:
    case TipoIFC::Project:
    case TipoIFC::UnitAssignment:
    case TipoIFC::SIUnit:
    case TipoIFC::ConversionBasedUnit:
    case TipoIFC::ConversionBasedUnitWithOffset:
    case TipoIFC::MeasureWithUnit:
    case TipoIFC::LocalPlacement:
    case TipoIFC::Axis2Placement2D:
    case TipoIFC::Axis2Placement3D:
    case TipoIFC::Direction:
        return true;
    default:
        return false;
    }
}

// A STEP real in double precision, the whole text or nothing. Placements and
// unit factors are kept in double: a site placed kilometres away in
// millimetres needs more digits than a float holds.
std::optional<double> leerReal(std::string_view s) {
    if (!s.empty() && s.front() == '+') s.remove_prefix(1);
    if (s.empty() || s.front() == '+') return std::nullopt;
    double v = 0;
    const auto r = std::from_chars(s.data(), s.data() + s.size(), v);
    if (r.ec != std::errc() || r.ptr != s.data() + s.size() || !std::isfinite(v)) return std::nullopt;
    return v;
}

// The numbers of a coordinate list "((x,y,z))" that parse, the first three of
// them, and how many there were (the count stops at three: only "at least two"
// matters, and an int counting every number of a list over 4 GB would
// overflow).
template <class T, class Leer> int leerTerna(std::string_view args, T (&v)[3], Leer leer) {
    args = recortar(args);
    if (args.size() >= 2 && args.front() == '(' && args.back() == ')')
        args = args.substr(1, args.size() - 2);
    int n = 0;
    std::size_t inicio = 0;
    while (inicio <= args.size()) {
        std::size_t coma = args.find(',', inicio);
        if (coma == std::string_view::npos) coma = args.size();
        if (const auto x = leer(recortar(args.substr(inicio, coma - inicio))))
            if (n < 3) v[n++] = *x;
        inicio = coma + 1;
    }
    return n;
}

// The point of an axis's IFCCARTESIANPOINT: its numbers that parse, at least two.
std::optional<glm::vec3> leerPunto(std::string_view args) {
    float v[3] = {0, 0, 0};
    if (leerTerna(args, v, leerFloat) < 2) return std::nullopt;
    return glm::vec3(v[0], v[1], v[2]);
}

// A finite double that a float can hold; a larger one has no float to become.
bool cabeEnFloat(double v) {
    return std::isfinite(v) && std::abs(v) <= static_cast<double>(std::numeric_limits<float>::max());
}

std::string nuevoUUID() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
}

std::string claveEje(const EjeGrilla& e) { return e.tag + (e.esU ? "U" : "V"); }

// How far a placement chain is followed. Real chains (site, building, storey,
// grid) are a handful of levels; a longer one is taken for a cycle.
constexpr int profundidadMaxima = 64;

// Reads the units and placements of one scan's table.
class LectorUbicacion {
public:
    explicit LectorUbicacion(const TablaEntidadesIFC& tabla) : tabla_(tabla) {}

    // The factor from the file's length unit to metres, as the converter
    // takes it: the unit assignment of the file's one IFCPROJECT (with none
    // or several, metres), the last LENGTHUNIT in it whose factor can be read.
    // An IFCSIUNIT counts by its prefix; a conversion-based unit by its
    // IFCMEASUREWITHUNIT's value times the prefix of that measure's unit,
    // which must be an IFCSIUNIT: the converter follows one step to an SI
    // unit and no further, so a unit defined on another conversion-based unit
    // (an inch made of feet) leaves the file in metres there, and here too.
    double factorLongitud() const {
        const EntidadIFC* proyecto = nullptr;
        const auto& entidades = tabla_.entidades();
        for (std::size_t i = 0; i < entidades.size(); ++i) {
            if (entidades[i].tipo != TipoIFC::Project || !tabla_.vigente(i)) continue;
            if (proyecto) return 1.0;
            proyecto = &entidades[i];
        }
        if (!proyecto) return 1.0;
        std::vector<std::string_view> args;
        separarArgumentosSTEP(proyecto->args, args, 9);
        if (args.size() < 9) return 1.0;
        const EntidadIFC* asignacion = entidad(args[8], TipoIFC::UnitAssignment);
        if (!asignacion) return 1.0;
        separarArgumentosSTEP(asignacion->args, args, 1);
        if (args.empty()) return 1.0;
        double factor = 1.0;
        for (const std::int64_t unidad : leerListaReferencias(args[0]))
            if (const auto f = factorUnidadLongitud(tabla_.buscar(unidad))) factor = *f;
        return factor;
    }

    // The transform of an ObjectPlacement, from the object's coordinates to
    // the world's, in the file's unit: "$" is the identity; otherwise an
    // IFCLOCALPLACEMENT whose chain of PlacementRelTo ends in "$". A chain
    // that dangles, meets another kind of placement, loops or reads wrong
    // gives none.
    std::optional<glm::dmat4> colocacion(std::string_view arg) const {
        glm::dmat4 m(1.0);
        std::vector<std::string_view> args;
        for (int nivel = 0; nivel < profundidadMaxima; ++nivel) {
            if (recortar(arg) == "$") return m;
            const EntidadIFC* local = entidad(arg, TipoIFC::LocalPlacement);
            if (!local) return std::nullopt;
            separarArgumentosSTEP(local->args, args, 2);
            if (args.size() < 2) return std::nullopt;
            const auto relativa = ejes(args[1]);
            if (!relativa) return std::nullopt;
            m = *relativa * m;
            arg = args[0];
        }
        return std::nullopt;
    }

private:
    // The entity a reference argument names, if it has this type.
    const EntidadIFC* entidad(std::string_view arg, TipoIFC tipo) const {
        const auto ref = leerReferencia(arg);
        const EntidadIFC* e = ref ? tabla_.buscar(*ref) : nullptr;
        return e && e->tipo == tipo ? e : nullptr;
    }

    static double factorPrefijo(std::string_view prefijo) {
        static constexpr std::pair<std::string_view, double> prefijos[] = {
            {".EXA.", 1e18},  {".PETA.", 1e15}, {".TERA.", 1e12},  {".GIGA.", 1e9},
            {".MEGA.", 1e6},  {".KILO.", 1e3},  {".HECTO.", 1e2},  {".DECA.", 1e1},
            {".DECI.", 1e-1}, {".CENTI.", 1e-2}, {".MILLI.", 1e-3}, {".MICRO.", 1e-6},
            {".NANO.", 1e-9}, {".PICO.", 1e-12}, {".FEMTO.", 1e-15}, {".ATTO.", 1e-18}};
        prefijo = recortar(prefijo);
        for (const auto& [nombre, valor] : prefijos)
            if (prefijo == nombre) return valor;
        return 1.0; // "$": no prefix
    }

    // The factor of one unit of the assignment, if it is a length unit that
    // the converter can read; none for other units.
    std::optional<double> factorUnidadLongitud(const EntidadIFC* unidad) const {
        if (!unidad) return std::nullopt;
        std::vector<std::string_view> args;
        if (unidad->tipo == TipoIFC::SIUnit) {
            separarArgumentosSTEP(unidad->args, args, 4);
            if (args.size() < 4 || args[1] != ".LENGTHUNIT.") return std::nullopt;
            return factorPrefijo(args[2]);
        }
        if (unidad->tipo != TipoIFC::ConversionBasedUnit &&
            unidad->tipo != TipoIFC::ConversionBasedUnitWithOffset)
            return std::nullopt;
        separarArgumentosSTEP(unidad->args, args, 4);
        if (args.size() < 4 || args[1] != ".LENGTHUNIT.") return std::nullopt;
        const EntidadIFC* medida = entidad(args[3], TipoIFC::MeasureWithUnit);
        if (!medida) return std::nullopt;
        separarArgumentosSTEP(medida->args, args, 2);
        if (args.size() < 2) return std::nullopt;
        const EntidadIFC* si = entidad(args[1], TipoIFC::SIUnit);
        // The value is typed, IFCLENGTHMEASURE(0.3048) or IFCREAL(0.3048).
        std::string_view valor = args[0];
        const std::size_t abre = valor.find('('), cierra = valor.rfind(')');
        if (abre != std::string_view::npos && cierra != std::string_view::npos && cierra > abre)
            valor = valor.substr(abre + 1, cierra - abre - 1);
        const auto escala = leerReal(recortar(valor));
        if (!si || !escala) return std::nullopt;
        separarArgumentosSTEP(si->args, args, 4);
        if (args.size() < 4) return std::nullopt;
        const double factor = *escala * factorPrefijo(args[2]);
        if (factor == 0.0) return std::nullopt; // the converter passes over a zero factor
        return factor;
    }

    // The coordinate list "(x,y,z)" at the head of a point's or direction's
    // arguments, without what may follow its ")": the file's closing lines
    // stick to its last statement, and a placement's point or direction
    // written last must read all the same.
    static std::string_view lista(std::string_view args) {
        args = recortar(args);
        const std::size_t cierra = args.find(')');
        return !args.empty() && args.front() == '(' && cierra != std::string_view::npos
                   ? args.substr(0, cierra + 1)
                   : args;
    }

    // A reference to an IFCCARTESIANPOINT used as a location: two or three
    // numbers, the third 0 when missing.
    std::optional<glm::dvec3> ubicacion(std::string_view arg) const {
        const EntidadIFC* p = entidad(arg, TipoIFC::CartesianPoint);
        double v[3] = {0, 0, 0};
        if (!p || leerTerna(lista(p->args), v, leerReal) < 2) return std::nullopt;
        return glm::dvec3(v[0], v[1], v[2]);
    }

    // A direction argument: "$" gives the default; otherwise an IFCDIRECTION
    // of two or three ratios, normalised. A zero direction gives none.
    std::optional<glm::dvec3> direccion(std::string_view arg, const glm::dvec3& omision) const {
        if (recortar(arg) == "$") return omision;
        const EntidadIFC* d = entidad(arg, TipoIFC::Direction);
        double v[3] = {0, 0, 0};
        if (!d || leerTerna(lista(d->args), v, leerReal) < 2) return std::nullopt;
        const glm::dvec3 r(v[0], v[1], v[2]);
        const double largo = glm::length(r);
        if (!(largo > 0) || !std::isfinite(largo)) return std::nullopt;
        return r / largo;
    }

    // The transform of an IFCAXIS2PLACEMENT3D or IFCAXIS2PLACEMENT2D: the
    // origin at Location, Z along Axis (default up), X along RefDirection
    // made square to Z, Y = Z x X. Without a RefDirection X is taken from
    // the world's X, or from the world's Z when the Axis lies along X, as the
    // converter takes it. An X along the Axis gives none.
    std::optional<glm::dmat4> ejes(std::string_view arg) const {
        const auto ref = leerReferencia(arg);
        const EntidadIFC* e = ref ? tabla_.buscar(*ref) : nullptr;
        if (!e || (e->tipo != TipoIFC::Axis2Placement3D && e->tipo != TipoIFC::Axis2Placement2D))
            return std::nullopt;
        const bool tresD = e->tipo == TipoIFC::Axis2Placement3D;
        std::vector<std::string_view> args;
        separarArgumentosSTEP(e->args, args, tresD ? 3 : 2);
        if (args.size() < (tresD ? 3u : 2u)) return std::nullopt;
        auto origen = ubicacion(args[0]);
        const auto z = tresD ? direccion(args[1], {0, 0, 1}) : std::optional<glm::dvec3>(glm::dvec3(0, 0, 1));
        if (!origen || !z) return std::nullopt;
        const bool ejeSobreX = !(std::acos(glm::dot(*z, glm::dvec3(1, 0, 0))) > 1e-5);
        auto x = direccion(args[tresD ? 2 : 1], ejeSobreX ? glm::dvec3(0, 0, 1) : glm::dvec3(1, 0, 0));
        if (!x) return std::nullopt;
        if (!tresD) {
            origen->z = 0;
            x->z = 0;
        }
        glm::dvec3 xs = *x - glm::dot(*x, *z) * *z;
        const double largo = glm::length(xs);
        if (!(largo > 1e-12)) return std::nullopt;
        xs /= largo;
        const glm::dvec3 y = glm::cross(*z, xs);
        glm::dmat4 m(1.0);
        m[0] = glm::dvec4(xs, 0);
        m[1] = glm::dvec4(y, 0);
        m[2] = glm::dvec4(*z, 0);
        m[3] = glm::dvec4(*origen, 1);
        return m;
    }

    const TablaEntidadesIFC& tabla_;
};

} // namespace

std::vector<EjeGrilla> leerGrillasIFCTexto(std::string_view texto) {
    std::vector<EjeGrilla> ejes;
    const TablaEntidadesIFC tabla(texto, tipoDeGrillas);
    const auto& entidades = tabla.entidades();
    const LectorUbicacion ubicacion(tabla);
    std::optional<double> factor; // read at the first grid
    std::vector<std::string_view> args;

    // The chain grid → axis → polyline → point is followed from the grids, so
    // only the points that a grid reaches are read; the result is the same as
    // reading every point first.
    auto puntosDePolilinea = [&](std::int64_t curva) {
        std::vector<glm::vec3> puntos;
        const EntidadIFC* poli = tabla.buscar(curva);
        if (!poli || poli->tipo != TipoIFC::Polyline) return puntos;
        for (const std::int64_t ref : leerListaReferencias(poli->args)) {
            const EntidadIFC* punto = tabla.buscar(ref);
            if (!punto || punto->tipo != TipoIFC::CartesianPoint) continue;
            if (const auto p = leerPunto(punto->args)) puntos.push_back(*p);
        }
        if (puntos.size() < 2) puntos.clear();
        return puntos;
    };

    for (std::size_t i = 0; i < entidades.size(); ++i) {
        if (entidades[i].tipo != TipoIFC::Grid || !tabla.vigente(i)) continue;
        separarArgumentosSTEP(entidades[i].args, args, 9);
        if (args.size() < 9) continue;
        // The axes stand where the converter puts the geometry: through the
        // grid's ObjectPlacement, in metres. A grid whose placement can't be
        // read is left out rather than drawn somewhere else.
        const auto colocacion = ubicacion.colocacion(args[5]);
        if (!colocacion) continue;
        if (!factor) factor = ubicacion.factorLongitud();
        const std::vector<std::int64_t> listas[2] = {leerListaReferencias(args[7]),
                                                     leerListaReferencias(args[8])};
        for (int lista = 0; lista < 2; ++lista) {
            for (const std::int64_t numeroEje : listas[lista]) {
                const EntidadIFC* eje = tabla.buscar(numeroEje);
                if (!eje || eje->tipo != TipoIFC::GridAxis) continue;
                std::vector<std::string_view> argsEje;
                separarArgumentosSTEP(eje->args, argsEje, 2);
                if (argsEje.size() < 2) continue;
                const auto curva = leerReferencia(argsEje[1]);
                if (!curva) continue;
                auto puntos = puntosDePolilinea(*curva);
                if (puntos.empty()) continue;
                bool enRango = true;
                for (glm::vec3& p : puntos) {
                    const glm::dvec3 m = glm::dvec3(*colocacion * glm::dvec4(glm::dvec3(p), 1.0)) * *factor;
                    enRango = enRango && cabeEnFloat(m.x) && cabeEnFloat(m.y) && cabeEnFloat(m.z);
                    if (!enRango) break;
                    p = glm::vec3(m);
                }
                if (!enRango) continue; // not a number, or out of range once in metres
                ejes.push_back({nuevoUUID(), limpiarTextoSTEP(argsEje[0]), lista == 0, std::move(puntos)});
            }
        }
    }
    return ejes;
}

std::vector<EjeGrilla> leerGrillasIFC(const std::string& ruta) {
    const ArchivoMapeado archivo(ruta);
    return leerGrillasIFCTexto(archivo.texto());
}

void fusionarGrillas(std::vector<EjeGrilla>& grillas, std::vector<EjeGrilla> nuevas) {
    std::unordered_set<std::string> existentes;
    for (const auto& e : grillas) existentes.insert(claveEje(e));
    for (auto& e : nuevas)
        if (!existentes.contains(claveEje(e))) grillas.push_back(std::move(e));
}

} // namespace teskal
