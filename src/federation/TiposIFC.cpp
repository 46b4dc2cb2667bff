#include "federation/TiposIFC.h"

#include "federation/TextoUTF8.h"

namespace teskal {

namespace {

constexpr std::array<std::string_view, 7> otrosTipos = {
    "IFCRELDEFINESBYPROPERTIES", "IFCPROPERTYSET", "IFCPROPERTYSINGLEVALUE", "IFCCARTESIANPOINT",
    "IFCPOLYLINE",               "IFCGRIDAXIS",    "IFCGRID"};

constexpr std::size_t largoMaximo = 25; // "IFCRELDEFINESBYPROPERTIES"

TipoIFC buscar(std::string_view mayus) {
    if (mayus.size() < 7 || mayus.size() > largoMaximo || mayus.substr(0, 3) != "IFC")
        return TipoIFC::Otro;
    for (std::size_t i = 0; i < tiposProductoIFC.size(); ++i)
        if (tiposProductoIFC[i] == mayus) return static_cast<TipoIFC>(i);
    for (std::size_t i = 0; i < otrosTipos.size(); ++i)
        if (otrosTipos[i] == mayus)
            return static_cast<TipoIFC>(tiposProductoIFC.size() + i);
    return TipoIFC::Otro;
}

} // namespace

std::string_view nombreTipoIFC(TipoIFC t) {
    const auto i = static_cast<std::size_t>(t);
    if (i < tiposProductoIFC.size()) return tiposProductoIFC[i];
    if (i - tiposProductoIFC.size() < otrosTipos.size()) return otrosTipos[i - tiposProductoIFC.size()];
    return {};
}

TipoIFC clasificarTipoIFC(std::string_view tipoEscrito) {
    const std::string_view t = recortar(tipoEscrito);
    // Fast path: short ASCII names, upper-cased on the stack.
    char buf[largoMaximo];
    if (t.size() > largoMaximo) {
        for (char c : t)
            if (static_cast<unsigned char>(c) >= 0x80) return buscar(aMayusculas(t));
        return TipoIFC::Otro;
    }
    for (std::size_t i = 0; i < t.size(); ++i) {
        const char c = t[i];
        if (static_cast<unsigned char>(c) >= 0x80) return buscar(aMayusculas(t));
        buf[i] = (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return buscar(std::string_view(buf, t.size()));
}

} // namespace teskal
