#include "federation/GrillasIFC.h"

#include "federation/ArchivoMapeado.h"
#include "federation/TablaEntidadesIFC.h"
#include "federation/TextoSTEP.h"

#include <QUuid>
#include <optional>
#include <unordered_set>

namespace teskal {

namespace {

bool tipoDeGrillas(TipoIFC t) {
    return t == TipoIFC::CartesianPoint || t == TipoIFC::Polyline || t == TipoIFC::GridAxis ||
           t == TipoIFC::Grid;
}

// The point of an IFCCARTESIANPOINT: its numbers that parse, at least two.
std::optional<glm::vec3> leerPunto(std::string_view args) {
    args = recortar(args);
    if (args.size() >= 2 && args.front() == '(' && args.back() == ')')
        args = args.substr(1, args.size() - 2);
    float v[3] = {0, 0, 0};
    int n = 0;
    std::size_t inicio = 0;
    while (inicio <= args.size()) {
        std::size_t coma = args.find(',', inicio);
        if (coma == std::string_view::npos) coma = args.size();
        // The count stops at three: only "at least two" matters, and an int
        // counting every number of a point over 4 GB would overflow.
        if (const auto f = leerFloat(recortar(args.substr(inicio, coma - inicio))))
            if (n < 3) v[n++] = *f;
        inicio = coma + 1;
    }
    if (n < 2) return std::nullopt;
    return glm::vec3(v[0], v[1], v[2]);
}

std::string nuevoUUID() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
}

std::string claveEje(const EjeGrilla& e) { return e.tag + (e.esU ? "U" : "V"); }

} // namespace

std::vector<EjeGrilla> leerGrillasIFCTexto(std::string_view texto) {
    std::vector<EjeGrilla> ejes;
    const TablaEntidadesIFC tabla(texto, tipoDeGrillas);
    const auto& entidades = tabla.entidades();
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
