#include "federation/PropiedadesIFC.h"

#include "federation/ArchivoMapeado.h"
#include "federation/TablaEntidadesIFC.h"
#include "federation/TextoSTEP.h"

#include <optional>

namespace teskal {

namespace {

bool tipoDePropiedades(TipoIFC t) {
    return esProducto(t) || t == TipoIFC::RelDefinesByProperties || t == TipoIFC::PropertySet ||
           t == TipoIFC::PropertySingleValue;
}

} // namespace

PropiedadesModelo leerPropiedadesIFCTexto(std::string_view texto) {
    PropiedadesModelo resultado;
    if (!esUTF8Valido(texto)) return resultado;
    const TablaEntidadesIFC tabla(texto, tipoDePropiedades);
    const auto& entidades = tabla.entidades();
    std::vector<std::string_view> args;

    // Product pass. The entry each product feeds is remembered by entity, so
    // the relation pass reads each product's Name once.
    std::vector<PropiedadesElemento*> entradaDe(entidades.size(), nullptr);
    for (std::size_t i = 0; i < entidades.size(); ++i) {
        const EntidadIFC& e = entidades[i];
        if (!esProducto(e.tipo) || !tabla.vigente(i)) continue;
        separarArgumentosSTEP(e.args, args);
        if (args.size() < 3) continue;
        std::string nombre = limpiarTextoSTEP(args[2]);
        if (nombre.empty()) continue;
        PropiedadesElemento& entrada = resultado[std::move(nombre)];
        entrada[std::string(claveTipoIFC)] = std::string(nombreTipoIFC(e.tipo));
        entradaDe[i] = &entrada;
    }

    // Relation pass, in file order: a later relation overwrites an earlier one.
    std::vector<std::pair<std::string, std::string>> pares;
    for (std::size_t i = 0; i < entidades.size(); ++i) {
        const EntidadIFC& rel = entidades[i];
        if (rel.tipo != TipoIFC::RelDefinesByProperties || !tabla.vigente(i)) continue;
        separarArgumentosSTEP(rel.args, args);
        if (args.size() < 6) continue;
        const auto relacionados = leerListaReferencias(args[4]);
        const auto definicion = leerReferencia(args[5]);
        if (!definicion) continue;
        const EntidadIFC* pset = tabla.buscar(*definicion);
        if (!pset || pset->tipo != TipoIFC::PropertySet) continue;
        separarArgumentosSTEP(pset->args, args);
        if (args.size() < 5) continue;
        const std::string nombrePset = limpiarTextoSTEP(args[2]);
        const auto referencias = leerListaReferencias(args[4]);

        pares.clear();
        for (const std::int64_t ref : referencias) {
            const EntidadIFC* prop = tabla.buscar(ref);
            if (!prop || prop->tipo != TipoIFC::PropertySingleValue) continue;
            separarArgumentosSTEP(prop->args, args);
            if (args.size() < 3) continue;
            std::string nombre = limpiarTextoSTEP(args[0]);
            if (nombre.empty()) continue;
            std::string clave;
            clave.reserve(nombrePset.size() + separadorPropiedad.size() + nombre.size());
            clave.append(nombrePset).append(separadorPropiedad).append(nombre);
            pares.emplace_back(std::move(clave), leerValorNominal(args[2]));
        }

        for (const std::int64_t ref : relacionados) {
            const EntidadIFC* objeto = tabla.buscar(ref);
            if (!objeto || !esProducto(objeto->tipo)) continue;
            PropiedadesElemento* entrada = entradaDe[static_cast<std::size_t>(objeto - entidades.data())];
            if (!entrada) continue; // fewer than 3 arguments or an empty Name
            for (const auto& [clave, valor] : pares) (*entrada)[clave] = valor;
        }
    }
    return resultado;
}

PropiedadesModelo leerPropiedadesIFC(const std::string& ruta) {
    const ArchivoMapeado archivo(ruta);
    return leerPropiedadesIFCTexto(archivo.texto());
}

void fusionarPropiedades(PropiedadesModelo& destino, PropiedadesModelo nuevas) {
    for (auto& [nombre, propiedades] : nuevas) destino[nombre] = std::move(propiedades);
}

} // namespace teskal
