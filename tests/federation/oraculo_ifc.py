"""Lists, with IfcOpenShell, what the IFC text index must find in a file: for
every product, its Name, type, GlobalId and the keys of its single-value
properties and quantities, its own and those of its type object (its own value
wins), with the text values of labels, texts and identifiers. Prints JSON to
stdout."""
import json
import sys

import ifcopenshell

SEPARADOR = " \u203a "
TEXTOS = ("IfcLabel", "IfcText", "IfcIdentifier")
CANTIDADES = ("IfcQuantityLength", "IfcQuantityArea", "IfcQuantityVolume", "IfcQuantityCount",
              "IfcQuantityWeight", "IfcQuantityTime", "IfcQuantityNumber")


def pares(definicion):
    """Key to text value (None where the value is not text) of one property
    set or quantity set; nothing for other definitions."""
    r = {}
    if not isinstance(definicion, ifcopenshell.entity_instance):
        return r  # an IFC4 set of definitions
    conjunto = definicion.Name or ""
    if definicion.is_a() == "IfcPropertySet":
        for prop in definicion.HasProperties or []:
            if prop.is_a() != "IfcPropertySingleValue" or not prop.Name:
                continue
            valor = prop.NominalValue
            if valor is None:
                texto = ""
            elif valor.is_a() in TEXTOS and isinstance(valor.wrappedValue, str):
                texto = valor.wrappedValue
            else:
                texto = None
            r[conjunto + SEPARADOR + prop.Name] = texto
    elif definicion.is_a() == "IfcElementQuantity":
        for cantidad in definicion.Quantities or []:
            if cantidad.is_a() in CANTIDADES and cantidad.Name:
                r[conjunto + SEPARADOR + cantidad.Name] = None
    return r


modelo = ifcopenshell.open(sys.argv[1])

# Definitions related to type objects (IFC4), by type.
de_tipo = {}
propios = {}
for rel in modelo.by_type("IfcRelDefinesByProperties"):
    for objeto in rel.RelatedObjects or []:
        if objeto.is_a("IfcTypeObject"):
            de_tipo.setdefault(objeto.id(), []).append(rel.RelatingPropertyDefinition)
        elif objeto.is_a("IfcProduct"):
            propios.setdefault(objeto.id(), {}).update(pares(rel.RelatingPropertyDefinition))

por_tipo = {}
for rel in modelo.by_type("IfcRelDefinesByType"):
    tipo = rel.RelatingType
    definiciones = list(tipo.HasPropertySets or []) + de_tipo.get(tipo.id(), [])
    for objeto in rel.RelatedObjects or []:
        heredadas = por_tipo.setdefault(objeto.id(), {})
        for definicion in definiciones:
            for clave, valor in pares(definicion).items():
                heredadas.setdefault(clave, valor)

elementos = []
for producto in modelo.by_type("IfcProduct"):
    propiedades = dict(por_tipo.get(producto.id(), {}))
    propiedades.update(propios.get(producto.id(), {}))
    elementos.append({"nombre": producto.Name or "", "tipo": producto.is_a().upper(),
                      "gid": producto.GlobalId or "", "propiedades": propiedades})
json.dump(elementos, sys.stdout, ensure_ascii=False)
