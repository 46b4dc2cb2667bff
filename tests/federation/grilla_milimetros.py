"""Writes an IFC4 model authored in millimetres for the grid tests.

Usage: grilla_milimetros.py salida.ifc

A site placed 100 m by 50 m from the origin and turned 30 degrees, a building
on it, a storey raised 3 m, and on the storey a grid moved (2 m, 1 m) and
turned 15 degrees more. Its U axes A, B, C stand at x = 0, 6, 12 m and its V
axes 1, 2 at y = 0, 8 m of the grid, each 140 m long. A column of 400 by 400
mm and 3 m high, named "Pilar " + U tag + V tag, stands on every
intersection, placed relative to the grid."""

import math
import sys

import ifcopenshell
import ifcopenshell.api.aggregate
import ifcopenshell.api.context
import ifcopenshell.api.geometry
import ifcopenshell.api.root
import ifcopenshell.api.spatial
import ifcopenshell.api.unit

api = ifcopenshell.api


def main(ruta):
    f = ifcopenshell.file(schema="IFC4")
    proyecto = api.root.create_entity(f, ifc_class="IfcProject", name="Grilla")
    api.unit.assign_unit(f, length={"is_metric": True, "raw": "MILLIMETERS"})
    modelo = api.context.add_context(f, context_type="Model")
    cuerpo = api.context.add_context(f, context_type="Model", context_identifier="Body",
                                     target_view="MODEL_VIEW", parent=modelo)

    def colocacion(relativa_a, origen, giro_grados=0.0):
        g = math.radians(giro_grados)
        ejes = f.createIfcAxis2Placement3D(f.createIfcCartesianPoint(origen), f.createIfcDirection((0.0, 0.0, 1.0)),
                                           f.createIfcDirection((math.cos(g), math.sin(g), 0.0)))
        return f.createIfcLocalPlacement(relativa_a, ejes)

    sitio = api.root.create_entity(f, ifc_class="IfcSite", name="Sitio")
    edificio = api.root.create_entity(f, ifc_class="IfcBuilding", name="Edificio")
    planta = api.root.create_entity(f, ifc_class="IfcBuildingStorey", name="Planta")
    api.aggregate.assign_object(f, products=[sitio], relating_object=proyecto)
    api.aggregate.assign_object(f, products=[edificio], relating_object=sitio)
    api.aggregate.assign_object(f, products=[planta], relating_object=edificio)
    sitio.ObjectPlacement = colocacion(None, (100000.0, 50000.0, 0.0), 30.0)
    edificio.ObjectPlacement = colocacion(sitio.ObjectPlacement, (0.0, 0.0, 0.0))
    planta.ObjectPlacement = colocacion(edificio.ObjectPlacement, (0.0, 0.0, 3000.0))

    grilla = api.root.create_entity(f, ifc_class="IfcGrid", name="Grilla")
    grilla.ObjectPlacement = colocacion(planta.ObjectPlacement, (2000.0, 1000.0, 0.0), 15.0)
    api.spatial.assign_container(f, products=[grilla], relating_structure=planta)

    def eje(tag, desde, hasta):
        curva = f.createIfcPolyline([f.createIfcCartesianPoint(desde), f.createIfcCartesianPoint(hasta)])
        return f.createIfcGridAxis(tag, curva, True)

    usos = {"A": 0.0, "B": 6000.0, "C": 12000.0}
    vs = {"1": 0.0, "2": 8000.0}
    grilla.UAxes = [eje(t, (x, -60000.0), (x, 80000.0)) for t, x in usos.items()]
    grilla.VAxes = [eje(t, (-60000.0, y), (80000.0, y)) for t, y in vs.items()]

    for tu, x in usos.items():
        for tv, y in vs.items():
            pilar = api.root.create_entity(f, ifc_class="IfcColumn", name="Pilar " + tu + tv)
            api.spatial.assign_container(f, products=[pilar], relating_structure=planta)
            pilar.ObjectPlacement = colocacion(grilla.ObjectPlacement, (x, y, 0.0))
            perfil = f.create_entity("IfcRectangleProfileDef", ProfileType="AREA", XDim=400.0, YDim=400.0)
            solido = f.create_entity(
                "IfcExtrudedAreaSolid", SweptArea=perfil,
                Position=f.createIfcAxis2Placement3D(f.createIfcCartesianPoint((0.0, 0.0, 0.0))),
                ExtrudedDirection=f.createIfcDirection((0.0, 0.0, 1.0)), Depth=3000.0)
            forma = f.create_entity("IfcShapeRepresentation", ContextOfItems=cuerpo, RepresentationIdentifier="Body",
                                    RepresentationType="SweptSolid", Items=[solido])
            api.geometry.assign_representation(f, product=pilar, representation=forma)
    f.write(ruta)


if __name__ == "__main__":
    main(sys.argv[1])
