#pragma once

#include <initializer_list>
#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace teskal {

// The separator between a property set's name and a property's name in a
// property key: blank, U+203A, blank.
inline constexpr std::string_view separadorPropiedad = " \u203A ";
// The one pseudo-property: the element's STEP type in upper case.
inline constexpr std::string_view claveTipoIFC = "__tipoIFC";

// Property key ("Pset_WallCommon › IsExternal" or "__tipoIFC") to value, in
// ascending key order. The pairs lie in one sorted buffer: an element holds a
// handful of properties, so a binary search over one allocation is quicker to
// build, read and free than a tree of nodes. Copies share one storage until
// one of them is written, so the index by Name and the index by GlobalId hold
// the entry of an element whose Name no other element bears once.
class PropiedadesElemento {
public:
    using key_type = std::string;
    using mapped_type = std::string;
    using value_type = std::pair<std::string, std::string>;
    using Pares = std::vector<value_type>;
    using size_type = Pares::size_type;
    using const_iterator = Pares::const_iterator;
    using iterator = const_iterator; // values change through the writers below

    PropiedadesElemento() = default;
    // Of repeated keys the last stands, as in successive assignments.
    PropiedadesElemento(std::initializer_list<value_type> pares) {
        for (const auto& [clave, valor] : pares) insert_or_assign(clave, valor);
    }

    const Pares& pares() const { return pares_ ? *pares_ : vacio(); }
    const_iterator begin() const { return pares().begin(); }
    const_iterator end() const { return pares().end(); }
    size_type size() const { return pares_ ? pares_->size() : 0; }
    bool empty() const { return size() == 0; }
    const_iterator find(std::string_view clave) const {
        const auto it = posicion(pares(), clave);
        return it != end() && it->first == clave ? it : end();
    }
    size_type count(std::string_view clave) const { return find(clave) != end() ? 1 : 0; }
    bool contains(std::string_view clave) const { return find(clave) != end(); }
    // Throws std::out_of_range where the key is not there.
    const std::string& at(std::string_view clave) const;

    std::string& operator[](std::string_view clave) { return escribir(clave, clave).first->second; }
    template <class K, class V> void insert_or_assign(K&& clave, V&& valor) {
        const std::string_view vista(clave);
        escribir(vista, std::forward<K>(clave)).first->second = std::forward<V>(valor);
    }
    // Sets the value only where the key is not there yet.
    template <class K, class V> void try_emplace(K&& clave, V&& valor) {
        const std::string_view vista(clave);
        auto [it, nuevo] = escribir(vista, std::forward<K>(clave));
        if (nuevo) it->second = std::forward<V>(valor);
    }
    size_type erase(std::string_view clave);
    void clear() { pares_.reset(); }
    // Room for n pairs in this copy's own storage.
    void reserve(size_type n) { propios().reserve(n); }

    friend bool operator==(const PropiedadesElemento& a, const PropiedadesElemento& b) {
        return a.pares_ == b.pares_ || a.pares() == b.pares();
    }

private:
    static const Pares& vacio() {
        static const Pares pares;
        return pares;
    }
    static Pares::const_iterator posicion(const Pares& p, std::string_view clave) {
        return std::lower_bound(p.begin(), p.end(), clave,
                                [](const value_type& par, std::string_view c) { return par.first < c; });
    }
    // The storage of this copy alone, taken apart from the others first.
    Pares& propios() {
        if (!pares_)
            pares_ = std::make_shared<Pares>();
        else if (pares_.use_count() > 1)
            pares_ = std::make_shared<Pares>(*pares_);
        return *pares_;
    }
    // The pair of the key in this copy's storage, made with an empty value
    // where the key is not there (second: whether it was made); a new pair
    // takes its key from nueva, moved when it is a string.
    template <class K>
    std::pair<Pares::iterator, bool> escribir(std::string_view clave, K&& nueva) {
        Pares& p = propios();
        const auto i = posicion(p, clave) - p.cbegin();
        const auto it = p.begin() + i;
        if (it != p.end() && it->first == clave) return {it, false};
        if constexpr (std::is_same_v<std::remove_cvref_t<K>, std::string>)
            return {p.emplace(it, std::forward<K>(nueva), std::string()), true};
        else
            return {p.emplace(it, std::string(clave), std::string()), true};
    }

    std::shared_ptr<Pares> pares_; // none while empty
};
// Element name to its properties: what one IFC file yields.
using PropiedadesModelo = std::unordered_map<std::string, PropiedadesElemento>;
// Discipline key to the properties of its elements: the workspace's index.
using PropiedadesPorEspecialidad = std::unordered_map<std::string, PropiedadesModelo>;

// What the index reads of one IFC file, in one scan: every product's type,
// the single values of its property sets and the quantities of its quantity
// sets, its own and those of its type object (its own value wins).
struct IndiceIFC {
    // By element Name: elements that share a Name share one entry.
    PropiedadesModelo porNombre;
    // By GlobalId: each element's own entry, the same storage as its entry
    // by Name when no other element bears its Name.
    PropiedadesModelo porGlobalId;
};

// Never fails: an unreadable file gives an empty index, a malformed item is
// skipped.
IndiceIFC leerIndiceIFC(const std::string& ruta);
// The same over text already in memory.
IndiceIFC leerIndiceIFCTexto(std::string_view texto);

// The index by Name alone.
PropiedadesModelo leerPropiedadesIFC(const std::string& ruta);
PropiedadesModelo leerPropiedadesIFCTexto(std::string_view texto);

// Merges a model's properties into a discipline's: an element name that is
// there already gets the new inner dictionary whole, not key by key.
void fusionarPropiedades(PropiedadesModelo& destino, PropiedadesModelo nuevas);

} // namespace teskal
