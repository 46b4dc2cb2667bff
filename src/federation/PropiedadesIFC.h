#pragma once

#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace teskal {

// The separator between a property set's name and a property's name in a
// property key: blank, U+203A, blank.
inline constexpr std::string_view separadorPropiedad = " \u203A ";
// The one pseudo-property: the element's STEP type in upper case.
inline constexpr std::string_view claveTipoIFC = "__tipoIFC";

// Property key ("Pset_WallCommon › IsExternal" or "__tipoIFC") to value, in
// key order. Copies share one storage until one of them is written, so the
// index by Name and the index by GlobalId hold the entry of an element whose
// Name no other element bears once.
class PropiedadesElemento {
public:
    using Mapa = std::map<std::string, std::string>;
    using key_type = Mapa::key_type;
    using mapped_type = Mapa::mapped_type;
    using value_type = Mapa::value_type;
    using size_type = Mapa::size_type;
    using const_iterator = Mapa::const_iterator;
    using iterator = const_iterator; // values change through the writers below

    PropiedadesElemento() = default;
    PropiedadesElemento(std::initializer_list<value_type> pares)
        : mapa_(std::make_shared<Mapa>(pares)) {}

    const Mapa& mapa() const { return mapa_ ? *mapa_ : vacio(); }
    const_iterator begin() const { return mapa().begin(); }
    const_iterator end() const { return mapa().end(); }
    size_type size() const { return mapa_ ? mapa_->size() : 0; }
    bool empty() const { return size() == 0; }
    const_iterator find(const std::string& clave) const { return mapa().find(clave); }
    size_type count(const std::string& clave) const { return mapa().count(clave); }
    bool contains(const std::string& clave) const { return mapa().contains(clave); }
    const std::string& at(const std::string& clave) const { return mapa().at(clave); }

    std::string& operator[](const std::string& clave) { return escribir()[clave]; }
    std::string& operator[](std::string&& clave) { return escribir()[std::move(clave)]; }
    template <class K, class V> void insert_or_assign(K&& clave, V&& valor) {
        escribir().insert_or_assign(std::forward<K>(clave), std::forward<V>(valor));
    }
    // Sets the value only where the key is not there yet.
    template <class K, class V> void try_emplace(K&& clave, V&& valor) {
        escribir().try_emplace(std::forward<K>(clave), std::forward<V>(valor));
    }
    size_type erase(const std::string& clave) { return mapa_ ? escribir().erase(clave) : 0; }
    void clear() { mapa_.reset(); }

    friend bool operator==(const PropiedadesElemento& a, const PropiedadesElemento& b) {
        return a.mapa_ == b.mapa_ || a.mapa() == b.mapa();
    }

private:
    static const Mapa& vacio() {
        static const Mapa mapa;
        return mapa;
    }
    // The storage of this copy alone, taken apart from the others first.
    Mapa& escribir() {
        if (!mapa_)
            mapa_ = std::make_shared<Mapa>();
        else if (mapa_.use_count() > 1)
            mapa_ = std::make_shared<Mapa>(*mapa_);
        return *mapa_;
    }

    std::shared_ptr<Mapa> mapa_; // none while empty
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
