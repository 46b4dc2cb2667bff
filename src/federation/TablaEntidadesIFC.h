#pragma once

#include "federation/TiposIFC.h"

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace teskal {

// One entity of the table: its instance number, recognised type and the text
// between its outer parentheses.
struct EntidadIFC {
    std::int64_t id = 0;
    std::string_view args;
    TipoIFC tipo = TipoIFC::Otro;
    std::uint16_t producto = sinProductoIFC; // the product's name, for every product

    bool esProducto() const { return producto != sinProductoIFC; }
};

// Hash of the instance numbers in the sparse map. The numbers come from the
// file, and with the identity hash a file of numbers that are all multiples of
// the bucket count would put them in one bucket; mixed with a key drawn once
// per process, no file can aim at a bucket.
struct HashNumeroIFC {
    std::size_t operator()(std::int64_t id) const noexcept;
};

// The table of one scan: instance number to entity, private to one reader
// call. Only entities of the types a reader asks for are kept (conservar is
// asked with the ClaseIFC of the type, or with its TipoIFC alone), but every
// numbered statement claims its number, so a statement that repeats a number
// replaces the earlier one whether or not it is kept. Argument texts point
// into the scanned text, or into the table for statements that spanned lines.
class TablaEntidadesIFC {
public:
    // A text of `minimoParaDividir` bytes or more is read in two parts at
    // once; the table is the same either way.
    template <class Conservar>
    TablaEntidadesIFC(std::string_view texto, Conservar conservar, std::size_t minimoParaDividir = 8u << 20);

    // Kept entities in file order, replaced ones included: see vigente().
    const std::vector<EntidadIFC>& entidades() const { return entidades_; }
    // False for an entity whose number a later statement took.
    bool vigente(std::size_t i) const { return indice(entidades_[i].id) == static_cast<std::int32_t>(i); }
    const EntidadIFC* buscar(std::int64_t id) const {
        const std::int32_t i = indice(id);
        return i >= 0 ? &entidades_[static_cast<std::size_t>(i)] : nullptr;
    }

private:
    void registrar(std::int64_t id, std::int32_t valor);
    std::int32_t indice(std::int64_t id) const {
        if (id >= 0 && static_cast<std::uint64_t>(id) < denso_.size())
            return denso_[static_cast<std::size_t>(id)];
        if (disperso_.empty()) return -1;
        const auto it = disperso_.find(id);
        return it == disperso_.end() ? -1 : it->second;
    }

    std::vector<EntidadIFC> entidades_;
    std::vector<std::int32_t> denso_; // by number, for the numbers most files use
    std::size_t limiteDenso_ = 0;
    std::unordered_map<std::int64_t, std::int32_t, HashNumeroIFC> disperso_;
    std::deque<std::string> unidas_; // kept statements that spanned lines
    std::deque<std::string> unidasSegunda_; // the same, of a second part read at once
};

} // namespace teskal

#include "federation/TextoSTEP.h"

namespace teskal {

template <class Conservar>
TablaEntidadesIFC::TablaEntidadesIFC(std::string_view texto, Conservar conservar, std::size_t minimoParaDividir) {
    // Real files number their statements densely from 1; a number beyond this
    // goes to the sparse map so that a stray huge number costs no memory.
    limiteDenso_ = texto.size() / 4 + 1024;

    // One statement read: its number claimed, and the entity kept when the
    // reader asks for its type. `anotar(id, entidad)` records it, the entity
    // null when it is not kept; arguments outside the text go to `unidas`.
    const auto leer = [&conservar](LectorSentenciasSTEP& lector, std::deque<std::string>& unidas, auto anotar) {
        PartesEntidad partes;
        ClasificadorTiposIFC clasificar;
        std::string_view sentencia;
        bool estable = true;
        while (lector.siguiente(sentencia, estable)) {
            if (!partirEntidadSTEP(sentencia, partes)) continue;
            const auto id = leerEntero(recortar(partes.numero));
            if (!id) continue;
            const ClaseIFC clase = clasificar(partes.tipo);
            bool conservada;
            if constexpr (std::is_invocable_v<Conservar&, const ClaseIFC&>)
                conservada = conservar(clase);
            else
                conservada = clase.tipo != TipoIFC::Otro && conservar(clase.tipo);
            if (!conservada) {
                anotar(*id, nullptr);
                continue;
            }
            std::string_view args = partes.args;
            if (!estable) {
                // Re-anchor the arguments in a copy that outlives the scan buffer.
                const std::size_t desde = static_cast<std::size_t>(args.data() - sentencia.data());
                unidas.emplace_back(sentencia);
                args = std::string_view(unidas.back()).substr(desde, args.size());
            }
            const EntidadIFC e{*id, args, clase.tipo, clase.producto};
            anotar(*id, &e);
        }
    };
    const auto anotarAqui = [this](std::int64_t id, const EntidadIFC* e) {
        if (!e) {
            registrar(id, -1);
        } else if (entidades_.size() < static_cast<std::size_t>(INT32_MAX)) {
            registrar(id, static_cast<std::int32_t>(entidades_.size()));
            entidades_.push_back(*e);
        }
    };

    // A large text is read in two parts at once: the second part from a
    // likely statement start near the middle, on a thread of its own, into
    // lists of its own; the first part straight into the table. When the
    // first part's reader ends exactly there, the second part's lists are
    // appended in order; when a statement ran across it (the ";" was inside
    // a string or a comment), the second part is thrown away and the first
    // reader goes on to the end.
    const std::size_t corte = texto.size() >= minimoParaDividir && std::thread::hardware_concurrency() >= 2
                                  ? puntoDeCorteSTEP(texto)
                                  : std::string_view::npos;
    LectorSentenciasSTEP lector(texto);
    if (corte == std::string_view::npos) {
        leer(lector, unidas_, anotarAqui);
        return;
    }
    std::vector<EntidadIFC> entidadesSegunda;
    std::vector<std::pair<std::int64_t, std::int32_t>> numerosSegunda; // number, entity or -1, in order
    std::thread segunda([&] {
        LectorSentenciasSTEP lectorSegunda(texto.substr(corte));
        leer(lectorSegunda, unidasSegunda_, [&](std::int64_t id, const EntidadIFC* e) {
            numerosSegunda.emplace_back(id, e ? static_cast<std::int32_t>(entidadesSegunda.size()) : -1);
            if (e) entidadesSegunda.push_back(*e);
        });
    });
    lector.detenerEn(texto.data() + corte);
    leer(lector, unidas_, anotarAqui);
    const bool justo = lector.posicion() == texto.data() + corte;
    segunda.join();
    if (!justo) {
        unidasSegunda_.clear();
        lector.detenerEn(texto.data() + texto.size());
        leer(lector, unidas_, anotarAqui);
        return;
    }
    for (const auto& [id, k] : numerosSegunda) anotarAqui(id, k < 0 ? nullptr : &entidadesSegunda[static_cast<std::size_t>(k)]);
}

} // namespace teskal
