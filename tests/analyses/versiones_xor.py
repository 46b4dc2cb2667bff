"""Writes IFC4 files of box-shaped elements for the version comparison tests.

Usage: versiones_xor.py descripcion.json

The JSON is a list of files: {"ruta": path, "elementos": [...]}, each element
{"nombre": Name, "gid": GlobalId, "min": [x, y, z], "tam": [dx, dy, dz],
"giroZ": degrees about the box's vertical axis (optional), "clase": IFC class
(optional, IfcWall), "pset": {name: value} (optional)}. Every element is a
rectangle extruded upwards, placed in world coordinates under one storey."""

import json
import math
import sys

import numpy as np

import ifcopenshell
import ifcopenshell.api.aggregate
import ifcopenshell.api.context
import ifcopenshell.api.geometry
import ifcopenshell.api.pset
import ifcopenshell.api.root
import ifcopenshell.api.spatial
import ifcopenshell.api.unit

api = ifcopenshell.api


def escribir(ruta, elementos):
    f = ifcopenshell.file(schema="IFC4")
    proyecto = api.root.create_entity(f, ifc_class="IfcProject", name="Versiones")
    api.unit.assign_unit(f, length={"is_metric": True, "raw": "METERS"})
    modelo = api.context.add_context(f, context_type="Model")
    cuerpo = api.context.add_context(f, context_type="Model", context_identifier="Body",
                                     target_view="MODEL_VIEW", parent=modelo)
    sitio = api.root.create_entity(f, ifc_class="IfcSite", name="Sitio")
    edificio = api.root.create_entity(f, ifc_class="IfcBuilding", name="Edificio")
    planta = api.root.create_entity(f, ifc_class="IfcBuildingStorey", name="Planta")
    api.aggregate.assign_object(f, products=[sitio], relating_object=proyecto)
    api.aggregate.assign_object(f, products=[edificio], relating_object=sitio)
    api.aggregate.assign_object(f, products=[planta], relating_object=edificio)
    for p in (sitio, edificio, planta):
        api.geometry.edit_object_placement(f, product=p, matrix=np.eye(4))

    for e in elementos:
        dx, dy, dz = e["tam"]
        x0, y0, z0 = e["min"]
        elemento = api.root.create_entity(f, ifc_class=e.get("clase", "IfcWall"), name=e["nombre"])
        elemento.GlobalId = e["gid"]
        api.spatial.assign_container(f, products=[elemento], relating_structure=planta)
        # The profile is centred on the local origin, which stands at the
        # box's centre in plan: a turn about Z keeps the centre in place.
        giro = math.radians(e.get("giroZ", 0.0))
        m = np.eye(4)
        m[0, 0], m[0, 1], m[1, 0], m[1, 1] = math.cos(giro), -math.sin(giro), math.sin(giro), math.cos(giro)
        m[:3, 3] = (x0 + dx / 2, y0 + dy / 2, z0)
        api.geometry.edit_object_placement(f, product=elemento, matrix=m)
        perfil = f.create_entity("IfcRectangleProfileDef", ProfileType="AREA", XDim=dx, YDim=dy)
        solido = f.create_entity(
            "IfcExtrudedAreaSolid", SweptArea=perfil,
            Position=f.create_entity("IfcAxis2Placement3D",
                                     Location=f.create_entity("IfcCartesianPoint", Coordinates=(0.0, 0.0, 0.0))),
            ExtrudedDirection=f.create_entity("IfcDirection", DirectionRatios=(0.0, 0.0, 1.0)), Depth=dz)
        forma = f.create_entity("IfcShapeRepresentation", ContextOfItems=cuerpo, RepresentationIdentifier="Body",
                                RepresentationType="SweptSolid", Items=[solido])
        api.geometry.assign_representation(f, product=elemento, representation=forma)
        if e.get("pset"):
            p = api.pset.add_pset(f, product=elemento, name="Pset_Prueba")
            api.pset.edit_pset(f, pset=p, properties=e["pset"])
    f.write(ruta)


def main():
    with open(sys.argv[1], encoding="utf-8") as fuente:
        for archivo in json.load(fuente):
            escribir(archivo["ruta"], archivo["elementos"])


if __name__ == "__main__":
    main()
