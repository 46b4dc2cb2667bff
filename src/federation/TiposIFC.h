#pragma once

#include <array>
#include <cstdint>
#include <string_view>

// The IFC entity types that the text index reads, and their recognition from
// the type name of a statement.
namespace teskal {

// The 26 product types: only elements of these types get an entry in the
// property index and in the GlobalId map.
inline constexpr std::array<std::string_view, 26> tiposProductoIFC = {
    "IFCWALL",           "IFCWALLSTANDARDCASE",  "IFCSLAB",          "IFCBEAM",
    "IFCCOLUMN",         "IFCDOOR",              "IFCWINDOW",        "IFCSTAIR",
    "IFCSTAIRFLIGHT",    "IFCROOF",              "IFCSPACE",         "IFCFURNISHINGELEMENT",
    "IFCMEMBER",         "IFCPLATE",             "IFCFLOWSEGMENT",   "IFCFLOWTERMINAL",
    "IFCFLOWFITTING",    "IFCPIPESEGMENT",       "IFCPIPEFITTING",   "IFCDUCTSEGMENT",
    "IFCDUCTFITTING",    "IFCBUILDINGELEMENTPROXY", "IFCCOVERING",   "IFCFOOTING",
    "IFCPILE",           "IFCRAILING"};

// Codes 0 to 25 are the product types, in the order above; the rest follow.
enum class TipoIFC : std::uint8_t {
    RelDefinesByProperties = 26,
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

inline bool esProducto(TipoIFC t) { return static_cast<std::uint8_t>(t) < tiposProductoIFC.size(); }

// The upper-case name of a recognised type ("IFCWALL", "IFCPROPERTYSET", ...).
std::string_view nombreTipoIFC(TipoIFC t);

// Trims and upper-cases the type name as written in a statement and tells
// which recognised type it is, or Otro.
TipoIFC clasificarTipoIFC(std::string_view tipoEscrito);

} // namespace teskal
