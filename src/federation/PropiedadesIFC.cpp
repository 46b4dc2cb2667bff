#include "federation/PropiedadesIFC.h"

#include "federation/ArchivoMapeado.h"
#include "federation/TablaEntidadesIFC.h"
#include "federation/TextoSTEP.h"

#include "scene/Paralelo.h"

#include <algorithm>
#include <optional>
#include <span>
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

// The buffers that one reading of relations reuses; one per thread.
struct Buferes {
    std::vector<std::string_view> args;
    std::vector<std::int64_t> relacionados;
    std::vector<std::int64_t> referencias;
    std::vector<const EntidadIFC*> propiedades;
    std::vector<PropiedadesElemento*> destinos;
};

// What a run of consecutive property relations gives, read on any thread
// and applied to the entries in file order: per relation, its pairs and the
// entries they go to, as ends into the flat lists.
struct LoteRelaciones {
    Pares pares;
    std::vector<std::uint32_t> finPares;
    std::vector<PropiedadesElemento*> destinos;
    std::vector<std::uint32_t> finDestinos;
    std::vector<std::pair<std::uint32_t, std::int64_t>> definicionesDeTipo; // as definicionesDeTipo_
};

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
    void leerDefinicion(std::int64_t id, Pares& pares, Buferes& b) const;
    // The entries of the related objects that are products, into b.destinos.
    void destinosDe(std::string_view relacionados, Buferes& b) const;
    // Reads the property relations [inicio, fin) of relaciones_.
    void leerLote(std::size_t inicio, std::size_t fin, LoteRelaciones& lote, Buferes& b) const;
    void aplicar(LoteRelaciones& lote);

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
    Buferes buferes_;
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
    // Names and GlobalIds are read on every core, then entered in file order.
    std::vector<std::string> nombres(productos.size());
    std::vector<std::string> gids(conGlobalId_ ? productos.size() : 0);
    std::vector<char> leidos(productos.size(), 0); // with the 3 arguments read
    enParalelo(productos.size(), 4096, [&](std::size_t inicio, std::size_t fin) {
        std::vector<std::string_view> args;
        for (std::size_t k = inicio; k < fin; ++k) {
            if (k + distanciaPrecarga < fin) precargarArgumentos(entidades[productos[k + distanciaPrecarga]]);
            separarArgumentosSTEP(entidades[productos[k]].args, args, 3);
            if (args.size() < 3) continue;
            leidos[k] = 1;
            nombres[k] = limpiarTextoSTEP(args[2]);
            if (conGlobalId_) gids[k] = limpiarTextoSTEP(args[0]);
        }
    });
    std::vector<std::pair<PropiedadesElemento*, std::uint32_t>> conNombre; // entry by Name, product
    for (std::size_t k = 0; k < productos.size(); ++k) {
        if (!leidos[k]) continue;
        const std::size_t i = productos[k];
        const EntidadIFC& e = entidades[i];
        const std::string_view tipo = nombreProductoIFC(e.producto);
        std::string& nombre = nombres[k];
        if (!nombre.empty()) {
            PropiedadesElemento& entrada = indice_.porNombre[std::move(nombre)];
            entrada.insert_or_assign(std::string(claveTipoIFC), std::string(tipo));
            entradaDe_[i].porNombre = &entrada;
            conNombre.emplace_back(&entrada, static_cast<std::uint32_t>(i));
        }
        if (!conGlobalId_) continue;
        if (!gids[k].empty()) gids_.emplace_back(std::move(gids[k]), static_cast<std::uint32_t>(i));
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

void LectorIndice::leerDefinicion(std::int64_t id, Pares& pares, Buferes& b) const {
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
    separarArgumentosSTEP(definicion->args, b.args, lista + 1);
    if (b.args.size() < lista + 1) return;
    const std::string nombreSet = limpiarTextoSTEP(b.args[2]);
    leerListaReferencias(b.args[lista], b.referencias);

    // The properties first, so that their texts are fetched together.
    b.propiedades.clear();
    for (const std::int64_t ref : b.referencias) {
        const EntidadIFC* prop = tabla_.buscar(ref);
        if (!prop) continue;
        const bool leida = definicion->tipo == TipoIFC::PropertySet
                               ? prop->tipo == TipoIFC::PropertySingleValue
                               : esCantidad(prop->tipo);
        if (!leida) continue;
        precargarArgumentos(*prop);
        b.propiedades.push_back(prop);
    }
    for (const EntidadIFC* prop : b.propiedades) {
        separarArgumentosSTEP(prop->args, b.args, valor + 1);
        if (b.args.size() < valor + 1) continue;
        std::string nombre = limpiarTextoSTEP(b.args[0]);
        if (nombre.empty()) continue;
        std::string clave;
        clave.reserve(nombreSet.size() + separadorPropiedad.size() + nombre.size());
        clave.append(nombreSet).append(separadorPropiedad).append(nombre);
        pares.emplace_back(std::move(clave), leerValorNominal(b.args[valor]));
    }
}

void LectorIndice::destinosDe(std::string_view relacionados, Buferes& b) const {
    leerListaReferencias(relacionados, b.relacionados);
    b.destinos.clear();
    const auto& entidades = tabla_.entidades();
    for (const std::int64_t ref : b.relacionados) {
        const EntidadIFC* objeto = tabla_.buscar(ref);
        if (!objeto || !objeto->esProducto()) continue;
        // None where the product has fewer than 3 arguments or an empty text.
        const Entradas& e = entradaDe_[static_cast<std::size_t>(objeto - entidades.data())];
        if (e.porNombre) b.destinos.push_back(e.porNombre);
        if (e.porGlobalId) b.destinos.push_back(e.porGlobalId);
    }
}

void LectorIndice::leerLote(std::size_t inicio, std::size_t fin, LoteRelaciones& lote, Buferes& b) const {
    const auto& entidades = tabla_.entidades();
    const bool hayTipos = !relacionesTipo_.empty();
    for (std::size_t k = inicio; k < fin; ++k) {
        precargarLista(entidades, relaciones_, k);
        const EntidadIFC& rel = entidades[relaciones_[k]];
        separarArgumentosSTEP(rel.args, b.args, 6);
        if (b.args.size() < 6) continue;
        const std::string_view relacionados = b.args[4];
        const auto definicion = leerReferencia(b.args[5]);
        if (!definicion) continue;
        if (hayTipos) {
            // A definition related to type objects applies to their elements.
            leerListaReferencias(relacionados, b.relacionados);
            for (const std::int64_t ref : b.relacionados) {
                const EntidadIFC* objeto = tabla_.buscar(ref);
                if (objeto && objeto->tipo == TipoIFC::ObjetoTipo)
                    lote.definicionesDeTipo.emplace_back(static_cast<std::uint32_t>(objeto - entidades.data()),
                                                         *definicion);
            }
        }
        const std::size_t antes = lote.pares.size();
        leerDefinicion(*definicion, lote.pares, b);
        if (lote.pares.size() == antes) continue;
        destinosDe(relacionados, b);
        lote.destinos.insert(lote.destinos.end(), b.destinos.begin(), b.destinos.end());
        lote.finPares.push_back(static_cast<std::uint32_t>(lote.pares.size()));
        lote.finDestinos.push_back(static_cast<std::uint32_t>(lote.destinos.size()));
    }
}

void LectorIndice::aplicar(LoteRelaciones& lote) {
    definicionesDeTipo_.insert(definicionesDeTipo_.end(), lote.definicionesDeTipo.begin(),
                               lote.definicionesDeTipo.end());
    std::size_t desdePar = 0, desdeDestino = 0;
    for (std::size_t r = 0; r < lote.finPares.size(); ++r) {
        const auto pares = std::span(lote.pares).subspan(desdePar, lote.finPares[r] - desdePar);
        const auto destinos = std::span(lote.destinos).subspan(desdeDestino, lote.finDestinos[r] - desdeDestino);
        desdePar = lote.finPares[r];
        desdeDestino = lote.finDestinos[r];
        for (PropiedadesElemento* destino : destinos) destino->reserve(destino->size() + pares.size());
        // Every entry but the last gets copies; the last takes the pairs.
        for (std::size_t d = 0; d + 1 < destinos.size(); ++d)
            for (const auto& [clave, valor] : pares) destinos[d]->insert_or_assign(clave, valor);
        if (!destinos.empty())
            for (auto& [clave, valor] : pares) destinos.back()->insert_or_assign(std::move(clave), std::move(valor));
    }
    lote = {};
}

void LectorIndice::leerRelacionesPropias() {
    // Runs of relations are read on every core; each run is applied to the
    // entries as soon as it and every run before it are read, by whichever
    // thread finds it so, so that values overwrite in file order.
    constexpr std::size_t porcion = 1024;
    const std::size_t lotes = (relaciones_.size() + porcion - 1) / porcion;
    std::vector<LoteRelaciones> leidos(lotes);
    enParaleloEnOrden(
        lotes,
        [&](std::size_t l) {
            Buferes b;
            leerLote(l * porcion, std::min(relaciones_.size(), (l + 1) * porcion), leidos[l], b);
        },
        [&](std::size_t l) { aplicar(leidos[l]); });
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
        for (const std::int64_t d : definiciones) leerDefinicion(d, pares, buferes_);
        if (pares.empty()) continue;
        destinosDe(relacionados, buferes_);
        for (PropiedadesElemento* destino : buferes_.destinos) {
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
