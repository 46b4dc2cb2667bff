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

// Asks for the memory at p ahead of its use. The passes below read the
// arguments of entities that lie far apart in a text much larger than the
// caches; asking some entities ahead lets those reads overlap.
inline void precargar(const void* p) {
#if defined(__GNUC__)
    __builtin_prefetch(p);
#else
    (void)p;
#endif
}

// The arguments' text of an entity: its first and last cache lines.
inline void precargarArgumentos(const EntidadIFC& e) {
    precargar(e.args.data());
    if (!e.args.empty()) precargar(e.args.data() + e.args.size() - 1);
}

// How many entities ahead a pass over a list of entities asks for their
// arguments.
constexpr std::size_t distanciaPrecarga = 8;

void precargarLista(const std::vector<EntidadIFC>& entidades,
                    const std::vector<std::uint32_t>& lista, std::size_t k) {
    if (k + distanciaPrecarga < lista.size())
        precargarArgumentos(entidades[lista[k + distanciaPrecarga]]);
}

} // namespace

PropiedadesModelo leerPropiedadesIFCTexto(std::string_view texto) {
    PropiedadesModelo resultado;
    if (!esUTF8Valido(texto)) return resultado;
    const TablaEntidadesIFC tabla(texto, tipoDePropiedades);
    const auto& entidades = tabla.entidades();
    std::vector<std::string_view> args;

    // The current products and relations, in file order.
    std::vector<std::uint32_t> productos;
    std::vector<std::uint32_t> relaciones;
    for (std::size_t i = 0; i < entidades.size(); ++i) {
        const TipoIFC t = entidades[i].tipo;
        if (esProducto(t) && tabla.vigente(i))
            productos.push_back(static_cast<std::uint32_t>(i));
        else if (t == TipoIFC::RelDefinesByProperties && tabla.vigente(i))
            relaciones.push_back(static_cast<std::uint32_t>(i));
    }
    resultado.reserve(productos.size());

    // Product pass. The entry each product feeds is remembered by entity, so
    // the relation pass reads each product's Name once.
    std::vector<PropiedadesElemento*> entradaDe(entidades.size(), nullptr);
    for (std::size_t k = 0; k < productos.size(); ++k) {
        precargarLista(entidades, productos, k);
        const std::size_t i = productos[k];
        const EntidadIFC& e = entidades[i];
        separarArgumentosSTEP(e.args, args, 3);
        if (args.size() < 3) continue;
        std::string nombre = limpiarTextoSTEP(args[2]);
        if (nombre.empty()) continue;
        PropiedadesElemento& entrada = resultado[std::move(nombre)];
        entrada.insert_or_assign(std::string(claveTipoIFC), std::string(nombreTipoIFC(e.tipo)));
        entradaDe[i] = &entrada;
    }

    // Relation pass, in file order: a later relation overwrites an earlier one.
    std::vector<std::pair<std::string, std::string>> pares;
    std::vector<std::int64_t> relacionados;
    std::vector<std::int64_t> referencias;
    std::vector<const EntidadIFC*> propiedades;
    std::vector<PropiedadesElemento*> destinos;
    for (std::size_t k = 0; k < relaciones.size(); ++k) {
        precargarLista(entidades, relaciones, k);
        const EntidadIFC& rel = entidades[relaciones[k]];
        separarArgumentosSTEP(rel.args, args, 6);
        if (args.size() < 6) continue;
        leerListaReferencias(args[4], relacionados);
        const auto definicion = leerReferencia(args[5]);
        if (!definicion) continue;
        const EntidadIFC* pset = tabla.buscar(*definicion);
        if (!pset || pset->tipo != TipoIFC::PropertySet) continue;
        separarArgumentosSTEP(pset->args, args, 5);
        if (args.size() < 5) continue;
        const std::string nombrePset = limpiarTextoSTEP(args[2]);
        leerListaReferencias(args[4], referencias);

        // The single values first, so that their texts are fetched together.
        propiedades.clear();
        for (const std::int64_t ref : referencias) {
            const EntidadIFC* prop = tabla.buscar(ref);
            if (!prop || prop->tipo != TipoIFC::PropertySingleValue) continue;
            precargarArgumentos(*prop);
            propiedades.push_back(prop);
        }
        pares.clear();
        for (const EntidadIFC* prop : propiedades) {
            separarArgumentosSTEP(prop->args, args, 3);
            if (args.size() < 3) continue;
            std::string nombre = limpiarTextoSTEP(args[0]);
            if (nombre.empty()) continue;
            std::string clave;
            clave.reserve(nombrePset.size() + separadorPropiedad.size() + nombre.size());
            clave.append(nombrePset).append(separadorPropiedad).append(nombre);
            pares.emplace_back(std::move(clave), leerValorNominal(args[2]));
        }

        destinos.clear();
        for (const std::int64_t ref : relacionados) {
            const EntidadIFC* objeto = tabla.buscar(ref);
            if (!objeto || !esProducto(objeto->tipo)) continue;
            PropiedadesElemento* entrada =
                entradaDe[static_cast<std::size_t>(objeto - entidades.data())];
            if (entrada)
                destinos.push_back(entrada); // none: fewer than 3 arguments or an empty Name
        }
        // Every element but the last gets copies; the last takes the pairs.
        for (std::size_t d = 0; d + 1 < destinos.size(); ++d)
            for (const auto& [clave, valor] : pares) destinos[d]->insert_or_assign(clave, valor);
        if (!destinos.empty())
            for (auto& [clave, valor] : pares)
                destinos.back()->insert_or_assign(std::move(clave), std::move(valor));
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
