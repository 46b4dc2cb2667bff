#pragma once

#include "federation/NombresTiposIFC.h"

#include <cstdint>
#include <array>
#include <cstring>
#include <string_view>

// The IFC entity types that the text index reads, and their recognition from
// the type name of a statement.
namespace teskal {

// The entity types that a reader handles by their role. Products and type
// objects are recognised from the generated tables of every schema
// (NombresTiposIFC.h); a product keeps its own name as a code beside its role
// (see ClaseIFC), since IFCGRID is both a product and a grid.
enum class TipoIFC : std::uint8_t {
    Producto,   // any product without a role of its own below
    ObjetoTipo, // any type object (IFCWALLTYPE, IFCDOORSTYLE, ...)
    RelDefinesByType,
    ElementQuantity,
    QuantityLength,
    QuantityArea,
    QuantityVolume,
    QuantityCount,
    QuantityWeight,
    QuantityTime,
    QuantityNumber,
    RelDefinesByProperties,
    PropertySet,
    PropertySingleValue,
    CartesianPoint,
    Polyline,
    GridAxis,
    Grid,
    // The project's length unit and the placement of a grid.
    Project,
    UnitAssignment,
    SIUnit,
    ConversionBasedUnit,
    ConversionBasedUnitWithOffset,
    MeasureWithUnit,
    LocalPlacement,
    Axis2Placement2D,
    Axis2Placement3D,
    Direction,
    Otro = 255,
};

// No product: the code of every entity that is not one.
inline constexpr std::uint16_t sinProductoIFC = 0xFFFF;

// What a type name is: its role, and for a product the index of its name in
// nombresProductoIFC.
struct ClaseIFC {
    TipoIFC tipo = TipoIFC::Otro;
    std::uint16_t producto = sinProductoIFC;

    bool esProducto() const { return producto != sinProductoIFC; }
    friend bool operator==(const ClaseIFC&, const ClaseIFC&) = default;
};

inline bool esCantidad(TipoIFC t) {
    return t >= TipoIFC::QuantityLength && t <= TipoIFC::QuantityNumber;
}

// The upper-case name of a type with a role of its own ("IFCPROPERTYSET",
// "IFCGRID", ...); empty for Producto, ObjetoTipo and Otro.
std::string_view nombreTipoIFC(TipoIFC t);
// The upper-case name of a product code ("IFCWALL"); empty for sinProductoIFC.
std::string_view nombreProductoIFC(std::uint16_t producto);

// Trims the type name as written in a statement and tells what it is, in any
// case: Otro (and no product) for a type that no reader handles.
ClaseIFC clasificarTipoIFC(std::string_view tipoEscrito);

// clasificarTipoIFC with a memory of the type names met last: a file names a
// few dozen types over and over, so most statements are classified by one
// comparison of their type's text. One per scan.
class ClasificadorTiposIFC {
public:
    ClaseIFC operator()(std::string_view tipoEscrito) {
        const std::size_t n = tipoEscrito.size();
        if (n == 0 || n > largoMaximo) return clasificarTipoIFC(tipoEscrito);
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(tipoEscrito[i]); };
        Recordado& r = recordados_[(n * 31 + byte(n - 1) * 7 + byte(n / 2)) % recordados_.size()];
        if (r.largo == n && std::memcmp(r.texto.data(), tipoEscrito.data(), n) == 0) return r.clase;
        r.clase = clasificarTipoIFC(tipoEscrito);
        r.largo = n;
        std::memcpy(r.texto.data(), tipoEscrito.data(), n);
        return r.clase;
    }

private:
    static constexpr std::size_t largoMaximo = 48;
    struct Recordado {
        std::size_t largo = 0;
        std::array<char, largoMaximo> texto{};
        ClaseIFC clase;
    };
    std::array<Recordado, 64> recordados_{};
};

} // namespace teskal
