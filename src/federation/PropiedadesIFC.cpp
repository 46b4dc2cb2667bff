#include "federation/PropiedadesIFC.h"

#include "federation/ArchivoMapeado.h"
#include "federation/TablaEntidadesIFC.h"
#include "federation/TextoSTEP.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace teskal {

const std::string& PropiedadesElemento::at(std::string_view clave) const {
    const auto it = find(clave);
    if (it == end()) throw std::out_of_range("PropiedadesElemento::at");
    return it->second;
}

PropiedadesElemento::size_type PropiedadesElemento::erase(std::string_view clave) {
    if (find(clave) == end()) return 0;
    Pares& p = propios();
    p.erase(p.begin() + (posicion(p, clave) - p.cbegin()));
    return 1;
}

namespace {

bool tipoDelIndice(const ClaseIFC& c) {
    if (c.esProducto()) return true;
    switch (c.tipo) {
    case TipoIFC::ObjetoTipo:
    case TipoIFC::RelDefinesByType:
    case TipoIFC::RelDefinesByProperties:
    case TipoIFC::PropertySet:
    case TipoIFC::PropertySingleValue:
    case TipoIFC::ElementQuantity:
        return true;
    default:
        return esCantidad(c.tipo);
    }
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

using Pares = std::vector<std::pair<std::string, std::string>>;

// The entries that one element feeds: by its Name and by its GlobalId; none
// where that text is empty.
struct Entradas {
    PropiedadesElemento* porNombre = nullptr;
    PropiedadesElemento* porGlobalId = nullptr;
};

// One scan's reading of the file, with the buffers its passes reuse.
class LectorIndice {
public:
    LectorIndice(std::string_view texto, bool conGlobalId)
        : tabla_(texto, tipoDelIndice), conGlobalId_(conGlobalId) {}

    IndiceIFC leer();

private:
    void leerProductos();
    void leerRelacionesPropias();
    void leerRelacionesDeTipo();
    // The entries by GlobalId that share their storage with the entry by Name.
    void compartir();
    // Appends the (key, value) pairs of a property set's single values or of
    // a quantity set's quantities; nothing for any other definition.
    void leerDefinicion(std::int64_t id, Pares& pares);
    // The entries of the related objects that are products.
    void destinosDe(std::string_view relacionados);

    const TablaEntidadesIFC tabla_;
    const bool conGlobalId_;
    IndiceIFC indice_;
    std::vector<Entradas> entradaDe_; // by entity
    std::vector<std::uint32_t> relaciones_;
    std::vector<std::uint32_t> relacionesTipo_;
    std::vector<std::pair<std::string, std::uint32_t>> gids_; // GlobalId, product, in file order
    // Property definitions related to a type object rather than to an
    // element (IFC4): type entity, definition number, in file order.
    std::vector<std::pair<std::uint32_t, std::int64_t>> definicionesDeTipo_;

    std::vector<std::string_view> args_;
    std::vector<std::int64_t> relacionados_;
    std::vector<std::int64_t> referencias_;
    std::vector<const EntidadIFC*> propiedades_;
    std::vector<PropiedadesElemento*> destinos_;
};

IndiceIFC LectorIndice::leer() {
    leerProductos();
    // Own property sets first, overwriting in file order; then those of the
    // type objects, which fill only the keys still free, so an element's own
    // value wins whatever the order of the file.
    leerRelacionesPropias();
    leerRelacionesDeTipo();
    compartir();
    return std::move(indice_);
}

void LectorIndice::leerProductos() {
    const auto& entidades = tabla_.entidades();
    std::vector<std::uint32_t> productos;
    for (std::size_t i = 0; i < entidades.size(); ++i) {
        if (!tabla_.vigente(i)) continue;
        const EntidadIFC& e = entidades[i];
        if (e.esProducto())
            productos.push_back(static_cast<std::uint32_t>(i));
        else if (e.tipo == TipoIFC::RelDefinesByProperties)
            relaciones_.push_back(static_cast<std::uint32_t>(i));
        else if (e.tipo == TipoIFC::RelDefinesByType)
            relacionesTipo_.push_back(static_cast<std::uint32_t>(i));
    }
    indice_.porNombre.reserve(productos.size());
    if (conGlobalId_) indice_.porGlobalId.reserve(productos.size());
    entradaDe_.assign(entidades.size(), {});

    // The entries each product feeds are remembered by entity, so the
    // relation passes read each product's Name and GlobalId once.
    std::vector<std::pair<PropiedadesElemento*, std::uint32_t>> conNombre; // entry by Name, product
    for (std::size_t k = 0; k < productos.size(); ++k) {
        precargarLista(entidades, productos, k);
        const std::size_t i = productos[k];
        const EntidadIFC& e = entidades[i];
        separarArgumentosSTEP(e.args, args_, 3);
        if (args_.size() < 3) continue;
        const std::string_view tipo = nombreProductoIFC(e.producto);
        std::string nombre = limpiarTextoSTEP(args_[2]);
        if (!nombre.empty()) {
            PropiedadesElemento& entrada = indice_.porNombre[std::move(nombre)];
            entrada.insert_or_assign(std::string(claveTipoIFC), std::string(tipo));
            entradaDe_[i].porNombre = &entrada;
            conNombre.emplace_back(&entrada, static_cast<std::uint32_t>(i));
        }
        if (!conGlobalId_) continue;
        gids_.emplace_back(limpiarTextoSTEP(args_[0]), static_cast<std::uint32_t>(i));
        if (gids_.back().first.empty()) gids_.pop_back();
    }
    if (!conGlobalId_) return;

    // An element whose Name no other element bears gets, by GlobalId, the
    // same entry as by Name once the relations are read (see compartir);
    // every other element with a GlobalId has an entry of its own from now.
    std::sort(conNombre.begin(), conNombre.end(),
              [](const auto& a, const auto& b) { return std::less<>()(a.first, b.first); });
    std::vector<bool> nombreUnico(entidades.size(), false);
    for (std::size_t k = 0; k < conNombre.size(); ++k) {
        const bool igualAnterior = k > 0 && conNombre[k - 1].first == conNombre[k].first;
        const bool igualSiguiente = k + 1 < conNombre.size() && conNombre[k + 1].first == conNombre[k].first;
        nombreUnico[conNombre[k].second] = !igualAnterior && !igualSiguiente;
    }
    for (auto& [gid, i] : gids_) {
        if (nombreUnico[i]) continue;
        PropiedadesElemento& entrada = indice_.porGlobalId[gid];
        entrada.insert_or_assign(std::string(claveTipoIFC), std::string(nombreProductoIFC(entidades[i].producto)));
        entradaDe_[i].porGlobalId = &entrada;
    }
}

void LectorIndice::compartir() {
    // In file order, so that of two elements with one GlobalId the later
    // stands, as it would through its own entry.
    for (auto& [gid, i] : gids_) {
        if (entradaDe_[i].porGlobalId) continue; // an entry of its own
        indice_.porGlobalId.insert_or_assign(std::move(gid), *entradaDe_[i].porNombre);
    }
}

void LectorIndice::leerDefinicion(std::int64_t id, Pares& pares) {
    const EntidadIFC* definicion = tabla_.buscar(id);
    if (!definicion) return;
    // A property set lists its properties fifth, a quantity set its
    // quantities sixth; a property's value is its third argument, a
    // quantity's its fourth.
    std::size_t lista, valor;
    if (definicion->tipo == TipoIFC::PropertySet) {
        lista = 4;
        valor = 2;
    } else if (definicion->tipo == TipoIFC::ElementQuantity) {
        lista = 5;
        valor = 3;
    } else {
        return;
    }
    separarArgumentosSTEP(definicion->args, args_, lista + 1);
    if (args_.size() < lista + 1) return;
    const std::string nombreSet = limpiarTextoSTEP(args_[2]);
    leerListaReferencias(args_[lista], referencias_);

    // The properties first, so that their texts are fetched together.
    propiedades_.clear();
    for (const std::int64_t ref : referencias_) {
        const EntidadIFC* prop = tabla_.buscar(ref);
        if (!prop) continue;
        const bool leida = definicion->tipo == TipoIFC::PropertySet
                               ? prop->tipo == TipoIFC::PropertySingleValue
                               : esCantidad(prop->tipo);
        if (!leida) continue;
        precargarArgumentos(*prop);
        propiedades_.push_back(prop);
    }
    for (const EntidadIFC* prop : propiedades_) {
        separarArgumentosSTEP(prop->args, args_, valor + 1);
        if (args_.size() < valor + 1) continue;
        std::string nombre = limpiarTextoSTEP(args_[0]);
        if (nombre.empty()) continue;
        std::string clave;
        clave.reserve(nombreSet.size() + separadorPropiedad.size() + nombre.size());
        clave.append(nombreSet).append(separadorPropiedad).append(nombre);
        pares.emplace_back(std::move(clave), leerValorNominal(args_[valor]));
    }
}

void LectorIndice::destinosDe(std::string_view relacionados) {
    leerListaReferencias(relacionados, relacionados_);
    destinos_.clear();
    const auto& entidades = tabla_.entidades();
    for (const std::int64_t ref : relacionados_) {
        const EntidadIFC* objeto = tabla_.buscar(ref);
        if (!objeto || !objeto->esProducto()) continue;
        // None where the product has fewer than 3 arguments or an empty text.
        const Entradas& e = entradaDe_[static_cast<std::size_t>(objeto - entidades.data())];
        if (e.porNombre) destinos_.push_back(e.porNombre);
        if (e.porGlobalId) destinos_.push_back(e.porGlobalId);
    }
}

void LectorIndice::leerRelacionesPropias() {
    const auto& entidades = tabla_.entidades();
    const bool hayTipos = !relacionesTipo_.empty();
    Pares pares;
    for (std::size_t k = 0; k < relaciones_.size(); ++k) {
        precargarLista(entidades, relaciones_, k);
        const EntidadIFC& rel = entidades[relaciones_[k]];
        separarArgumentosSTEP(rel.args, args_, 6);
        if (args_.size() < 6) continue;
        const std::string_view relacionados = args_[4];
        const auto definicion = leerReferencia(args_[5]);
        if (!definicion) continue;
        if (hayTipos) {
            // A definition related to type objects applies to their elements.
            leerListaReferencias(relacionados, relacionados_);
            for (const std::int64_t ref : relacionados_) {
                const EntidadIFC* objeto = tabla_.buscar(ref);
                if (objeto && objeto->tipo == TipoIFC::ObjetoTipo)
                    definicionesDeTipo_.emplace_back(
                        static_cast<std::uint32_t>(objeto - entidades.data()), *definicion);
            }
        }
        pares.clear();
        leerDefinicion(*definicion, pares);
        if (pares.empty()) continue;
        destinosDe(relacionados);
        for (PropiedadesElemento* destino : destinos_) destino->reserve(destino->size() + pares.size());
        // Every entry but the last gets copies; the last takes the pairs.
        for (std::size_t d = 0; d + 1 < destinos_.size(); ++d)
            for (const auto& [clave, valor] : pares) destinos_[d]->insert_or_assign(clave, valor);
        if (!destinos_.empty())
            for (auto& [clave, valor] : pares)
                destinos_.back()->insert_or_assign(std::move(clave), std::move(valor));
    }
}

void LectorIndice::leerRelacionesDeTipo() {
    if (relacionesTipo_.empty()) return;
    const auto& entidades = tabla_.entidades();
    std::stable_sort(definicionesDeTipo_.begin(), definicionesDeTipo_.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    Pares pares;
    std::vector<std::int64_t> definiciones;
    for (const std::uint32_t i : relacionesTipo_) {
        separarArgumentosSTEP(entidades[i].args, args_, 6);
        if (args_.size() < 6) continue;
        const std::string_view relacionados = args_[4];
        const auto numeroTipo = leerReferencia(args_[5]);
        const EntidadIFC* tipo = numeroTipo ? tabla_.buscar(*numeroTipo) : nullptr;
        if (!tipo || tipo->tipo != TipoIFC::ObjetoTipo) continue;

        // The type's HasPropertySets, then the definitions related to it.
        definiciones.clear();
        separarArgumentosSTEP(tipo->args, args_, 6);
        if (args_.size() >= 6) leerListaReferencias(args_[5], definiciones);
        const auto posicion = static_cast<std::uint32_t>(tipo - entidades.data());
        const auto desde = std::lower_bound(
            definicionesDeTipo_.begin(), definicionesDeTipo_.end(), posicion,
            [](const auto& d, std::uint32_t p) { return d.first < p; });
        for (auto it = desde; it != definicionesDeTipo_.end() && it->first == posicion; ++it)
            definiciones.push_back(it->second);

        pares.clear();
        for (const std::int64_t d : definiciones) leerDefinicion(d, pares);
        if (pares.empty()) continue;
        destinosDe(relacionados);
        for (PropiedadesElemento* destino : destinos_) {
            destino->reserve(destino->size() + pares.size());
            for (const auto& [clave, valor] : pares) destino->try_emplace(clave, valor);
        }
    }
}

IndiceIFC leerIndice(std::string_view texto, bool conGlobalId) {
    return LectorIndice(texto, conGlobalId).leer();
}

} // namespace

IndiceIFC leerIndiceIFCTexto(std::string_view texto) { return leerIndice(texto, true); }

IndiceIFC leerIndiceIFC(const std::string& ruta) {
    const ArchivoMapeado archivo(ruta);
    return leerIndice(archivo.texto(), true);
}

PropiedadesModelo leerPropiedadesIFCTexto(std::string_view texto) {
    return leerIndice(texto, false).porNombre;
}

PropiedadesModelo leerPropiedadesIFC(const std::string& ruta) {
    const ArchivoMapeado archivo(ruta);
    return leerIndice(archivo.texto(), false).porNombre;
}

void fusionarPropiedades(PropiedadesModelo& destino, PropiedadesModelo nuevas) {
    for (auto& [nombre, propiedades] : nuevas) destino[nombre] = std::move(propiedades);
}

} // namespace teskal
