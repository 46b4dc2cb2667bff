"""Lists, with IfcOpenShell, what the IFC text index must find in a file: for
every product of the indexed types with a Name, its type, GlobalId and the keys
and text values of its single-value properties. Prints JSON to stdout."""
import json
import sys

import ifcopenshell

TIPOS = {
    "IFCWALL", "IFCWALLSTANDARDCASE", "IFCSLAB", "IFCBEAM", "IFCCOLUMN", "IFCDOOR", "IFCWINDOW",
    "IFCSTAIR", "IFCSTAIRFLIGHT", "IFCROOF", "IFCSPACE", "IFCFURNISHINGELEMENT", "IFCMEMBER",
    "IFCPLATE", "IFCFLOWSEGMENT", "IFCFLOWTERMINAL", "IFCFLOWFITTING", "IFCPIPESEGMENT",
    "IFCPIPEFITTING", "IFCDUCTSEGMENT", "IFCDUCTFITTING", "IFCBUILDINGELEMENTPROXY", "IFCCOVERING",
    "IFCFOOTING", "IFCPILE", "IFCRAILING",
}

modelo = ifcopenshell.open(sys.argv[1])
elementos = []
for producto in modelo.by_type("IfcProduct"):
    tipo = producto.is_a().upper()
    if tipo not in TIPOS or not producto.Name:
        continue
    propiedades = {}
    for rel in getattr(producto, "IsDefinedBy", []) or []:
        if not rel.is_a("IfcRelDefinesByProperties"):
            continue
        pset = rel.RelatingPropertyDefinition
        if pset.is_a() != "IfcPropertySet":
            continue
        for prop in pset.HasProperties or []:
            if prop.is_a() != "IfcPropertySingleValue" or not prop.Name:
                continue
            valor = prop.NominalValue.wrappedValue if prop.NominalValue is not None else ""
            texto = valor if isinstance(valor, str) and prop.NominalValue.is_a() in (
                "IfcLabel", "IfcText", "IfcIdentifier") else None
            propiedades[(pset.Name or "") + " \u203a " + prop.Name] = texto
    elementos.append({"nombre": producto.Name, "tipo": tipo, "gid": producto.GlobalId,
                      "propiedades": propiedades})
json.dump(elementos, sys.stdout, ensure_ascii=False)
