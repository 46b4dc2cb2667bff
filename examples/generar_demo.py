#!/usr/bin/env python3
"""Writes the demo building as three IFC4 files, one per discipline.

Usage: generar_demo.py CARPETA

Writes into CARPETA (created when missing):
- arquitectura.ifc  (ARQ): exterior walls, partitions, three slabs, doors and
  windows in openings of their walls;
- estructura.ifc    (EST): footings, columns and beams on a grid A-D / 1-5,
  and the grid itself (IfcGrid with polyline axes);
- mep.ifc           (MEP): supply and return ducts, cold and hot water pipes
  and a rain-water downpipe, with their segment types and systems.

The building is 20 x 12 m with two storeys of 3.5 m ("Planta baja" and
"Planta 1") and a roof at 7.0 m. The three files share one world frame
(metres, Z up, the building's south-west corner at the origin), so that they
federate without any transform.

The layout is drawn so that a clash test on the axis-aligned boxes of the
elements, with a tolerance of 0.02 m, finds exactly the clashes listed in
INTERFERENCIAS between elements of different disciplines: each of them
overlaps by 0.07 m or more on all three axes, and every other pair of
elements of different disciplines is at least 0.09 m apart on some axis.
This holds for the openings too (IfcOpeningElement, named "Abertura ..."),
should a converter export them as elements.
Elements of one discipline touch or overlap freely (columns sit on beams,
doors stand inside their walls, pipes cross ducts).

Every element has a unique, meaningful Name and its property sets (the
common set of its class and Pset_TESKAL_Demo). GlobalIds come from a random
generator seeded per discipline and the header carries a fixed date, so two
runs write byte-identical files.

At the end a JSON summary goes to standard output: the files written, the
element count of each, and the designed clashes as pairs of
[discipline key, element name].
"""
import json
import os
import random
import sys
import uuid

import numpy as np

import ifcopenshell
import ifcopenshell.api.aggregate
import ifcopenshell.api.context
import ifcopenshell.api.feature
import ifcopenshell.api.geometry
import ifcopenshell.api.grid
import ifcopenshell.api.pset
import ifcopenshell.api.root
import ifcopenshell.api.spatial
import ifcopenshell.api.system
import ifcopenshell.api.type
import ifcopenshell.api.unit
import ifcopenshell.guid

api = ifcopenshell.api

# --- The building -----------------------------------------------------------

LARGO = 20.0           # x extent of the footprint
ANCHO = 12.0           # y extent of the footprint
NIVELES = [0.0, 3.5, 7.0]  # finished floor of PB, of P1, and the roof
PLANTAS = ["PB", "P1"]
E_LOSA = 0.2           # slab depth; a slab's top is its level
E_EXT = 0.25           # exterior wall thickness
E_INT = 0.15           # partition thickness
HOLGURA = 0.1          # gap left between disciplines where they would touch

# Corridor along x between the two partitions y = [4.85, 5.0] and [7.0, 7.15].
PASILLO_SUR = 4.85 + E_INT / 2
PASILLO_NORTE = 7.0 + E_INT / 2

# Structural grid: lettered axes run along x (constant y), numbered axes
# along y (constant x). Columns stand 0.1 m clear of the exterior walls.
EJES_LETRA = {"A": 0.55, "B": 4.45, "C": 7.55, "D": 11.45}
EJES_NUMERO = {"1": 0.55, "2": 5.0, "3": 10.0, "4": 15.0, "5": 19.45}
PILAR = 0.4            # square column side
VIGA_B, VIGA_H = 0.3, 0.5
ZAPATA, ZAPATA_H = 1.2, 0.6


def losa_inferior(k):
    """Underside of the slab that closes storey k."""
    return NIVELES[k + 1] - E_LOSA


def viga_inferior(k):
    """Underside of the beams under the slab that closes storey k: the beams
    hang HOLGURA below that slab."""
    return losa_inferior(k) - HOLGURA - VIGA_H


# Designed clashes between disciplines: (key, name) pairs.
INTERFERENCIAS = [
    (("ARQ", "Tabique pasillo sur PB"), ("MEP", "Conducto impulsión ramal sala 1 PB")),
    (("ARQ", "Losa nivel 1"), ("MEP", "Bajante pluviales BP-1")),
    (("ARQ", "Tabique salas 4-5 P1"), ("EST", "Pilar C3 P1")),
    (("ARQ", "Tabique salas 4-5 P1"), ("EST", "Pilar D3 P1")),
    (("EST", "Viga cubierta eje C"), ("MEP", "Tubería ramal ACS P1")),
    (("EST", "Pilar A4 PB"), ("MEP", "Tubería agua fría ramal sala 3 PB")),
]


# --- Helpers over IfcOpenShell's API ------------------------------------------

def matriz(origen, eje_x, eje_z=(0.0, 0.0, 1.0)):
    """A placement matrix: local X along eje_x, local Z along eje_z."""
    x = np.array(eje_x, dtype=float)
    x /= np.linalg.norm(x)
    z = np.array(eje_z, dtype=float)
    z /= np.linalg.norm(z)
    m = np.eye(4)
    m[:3, 0] = x
    m[:3, 1] = np.cross(z, x)
    m[:3, 2] = z
    m[:3, 3] = origen
    return m


class Modelo:
    """One discipline's file: project, units, contexts, site, building and
    storeys, plus the calls that place elements in it."""

    def __init__(self, clave, archivo, descripcion):
        self.clave = clave
        self.archivo = archivo
        self.f = f = ifcopenshell.file(schema="IFC4")
        self.elementos = []

        proyecto = api.root.create_entity(f, ifc_class="IfcProject", name="Edificio demo TESKAL")
        proyecto.Description = descripcion
        api.unit.assign_unit(
            f,
            length={"is_metric": True, "raw": "METERS"},
            area={"is_metric": True, "raw": "SQUARE_METERS"},
            volume={"is_metric": True, "raw": "CUBIC_METERS"},
        )
        modelo = api.context.add_context(f, context_type="Model")
        self.cuerpo = api.context.add_context(
            f, context_type="Model", context_identifier="Body", target_view="MODEL_VIEW", parent=modelo)
        self.eje = api.context.add_context(
            f, context_type="Model", context_identifier="Axis", target_view="GRAPH_VIEW", parent=modelo)

        sitio = api.root.create_entity(f, ifc_class="IfcSite", name="Terreno demo")
        edificio = api.root.create_entity(f, ifc_class="IfcBuilding", name="Edificio demo")
        api.aggregate.assign_object(f, products=[sitio], relating_object=proyecto)
        api.aggregate.assign_object(f, products=[edificio], relating_object=sitio)
        api.geometry.edit_object_placement(f, product=sitio, matrix=np.eye(4))
        api.geometry.edit_object_placement(f, product=edificio, matrix=np.eye(4))
        self.plantas = {}
        for clave_planta, nombre, z in (("PB", "Planta baja", NIVELES[0]), ("P1", "Planta 1", NIVELES[1]),
                                        ("CU", "Cubierta", NIVELES[2])):
            planta = api.root.create_entity(f, ifc_class="IfcBuildingStorey", name=nombre)
            planta.Elevation = z
            api.aggregate.assign_object(f, products=[planta], relating_object=edificio)
            api.geometry.edit_object_placement(f, product=planta, matrix=matriz((0.0, 0.0, z), (1, 0, 0)))
            self.plantas[clave_planta] = planta

    # Elements

    def elemento(self, clase, nombre, planta, m, tipo_predefinido=None):
        """Creates an element, contains it in its storey and places it with the
        world matrix m."""
        e = api.root.create_entity(self.f, ifc_class=clase, name=nombre, predefined_type=tipo_predefinido)
        api.spatial.assign_container(self.f, products=[e], relating_structure=self.plantas[planta])
        api.geometry.edit_object_placement(self.f, product=e, matrix=m)
        if clase != "IfcOpeningElement":
            self.elementos.append(e)
        return e

    def representar(self, e, *representaciones):
        for r in representaciones:
            api.geometry.assign_representation(self.f, product=e, representation=r)

    def propiedades(self, e, pset, valores):
        p = api.pset.add_pset(self.f, product=e, name=pset)
        api.pset.edit_pset(self.f, pset=p, properties=valores)
        return p

    def perfil_rectangulo(self, nombre, b, h):
        return self.f.create_entity("IfcRectangleProfileDef", ProfileType="AREA", ProfileName=nombre,
                                    XDim=b, YDim=h)

    def perfil_tubo(self, nombre, diametro, espesor):
        return self.f.create_entity("IfcCircleHollowProfileDef", ProfileType="AREA", ProfileName=nombre,
                                    Radius=diametro / 2, WallThickness=espesor)

    def lineal(self, clase, nombre, planta, p0, p1, perfil, tipo_predefinido=None):
        """A member swept along the segment p0-p1 (beams, pipes, ducts,
        columns): the profile's centre lies on the segment. A horizontal
        member keeps its local Z up, so that the profile's Y dimension is its
        height; a vertical one keeps the profile's axes on world X and Y."""
        p0 = np.array(p0, dtype=float)
        p1 = np.array(p1, dtype=float)
        largo = float(np.linalg.norm(p1 - p0))
        direccion = (p1 - p0) / largo
        if abs(direccion[2]) > 0.999:
            m = matriz(p0, (1, 0, 0), direccion)
            zx = (None, None)
            eje = [(0.0, 0.0, 0.0), (0.0, 0.0, largo)]
        else:
            m = matriz(p0, direccion)
            zx = ((1.0, 0.0, 0.0), (0.0, 1.0, 0.0))
            eje = [(0.0, 0.0, 0.0), (largo, 0.0, 0.0)]
        e = self.elemento(clase, nombre, planta, m, tipo_predefinido)
        cuerpo = api.geometry.add_profile_representation(
            self.f, context=self.cuerpo, profile=perfil, depth=largo, cardinal_point=5, placement_zx_axes=zx)
        self.representar(e, cuerpo, api.geometry.add_axis_representation(self.f, context=self.eje, axis=eje))
        return e

    def escribir(self, carpeta, semilla):
        # Fixed GlobalIds, in file order, from a generator seeded per file.
        azar = random.Random(semilla)
        for raiz in self.f.by_type("IfcRoot"):
            raiz.GlobalId = ifcopenshell.guid.compress(uuid.UUID(int=azar.getrandbits(128), version=4).hex)
        cabecera = self.f.header
        cabecera.file_description.description = ("ViewDefinition [DesignTransferView]",)
        cabecera.file_name.name = self.archivo
        cabecera.file_name.time_stamp = "2025-03-03T09:00:00"
        cabecera.file_name.author = ("Equipo TESKAL",)
        cabecera.file_name.organization = ("TESKAL",)
        cabecera.file_name.originating_system = "TESKAL generar_demo.py"
        cabecera.file_name.authorization = ""
        ruta = os.path.join(carpeta, self.archivo)
        temporal = ruta + ".parcial"
        self.f.write(temporal)
        os.replace(temporal, ruta)
        return ruta


# --- Architecture -------------------------------------------------------------

class Muro:
    """A straight wall from p0 to p1 (plan points on its axis), with its foot
    at z0; remembers its frame to cut openings in it."""

    def __init__(self, modelo, nombre, planta, p0, p1, z0, alto, espesor, externo, resistencia):
        self.modelo = modelo
        self.planta = planta
        self.p0 = np.array((p0[0], p0[1], z0), dtype=float)
        d = np.array((p1[0] - p0[0], p1[1] - p0[1], 0.0))
        self.largo = float(np.linalg.norm(d))
        self.dir = d / self.largo
        self.normal = np.cross((0.0, 0.0, 1.0), self.dir)
        self.espesor = espesor
        f = modelo.f
        e = modelo.elemento("IfcWall", nombre, planta, matriz(self.p0, self.dir), "STANDARD")
        modelo.representar(
            e,
            api.geometry.add_axis_representation(f, context=modelo.eje, axis=[(0.0, 0.0), (self.largo, 0.0)]),
            api.geometry.add_wall_representation(
                f, context=modelo.cuerpo, length=self.largo, height=alto, offset=-espesor / 2,
                thickness=espesor))
        modelo.propiedades(e, "Pset_WallCommon", {
            "Reference": "Muro exterior 25 cm" if externo else "Tabique 15 cm",
            "IsExternal": externo,
            "LoadBearing": False,
            "FireRating": resistencia,
        })
        modelo.propiedades(e, "Pset_TESKAL_Demo", {
            "Fase": "Obra gruesa" if externo else "Terminaciones",
            "Nivel": planta,
            "Material": "Albañilería de ladrillo" if externo else "Tabique de yeso cartón",
        })
        self.elemento = e

    def hueco(self, clase, nombre, s, antepecho, ancho, alto, externo):
        """A door or window at distance s along the wall and antepecho above
        its foot, filling an opening that crosses the whole wall."""
        modelo = self.modelo
        f = modelo.f
        base = self.p0 + self.dir * s + np.array((0.0, 0.0, antepecho))
        # The opening passes 0.01 m beyond both faces of the wall, for a clean cut.
        abertura = modelo.elemento("IfcOpeningElement", "Abertura " + nombre, self.planta,
                                   matriz(base, self.dir), "OPENING")
        modelo.representar(abertura, api.geometry.add_wall_representation(
            f, context=modelo.cuerpo, length=ancho, height=alto, offset=-self.espesor / 2 - 0.01,
            thickness=self.espesor + 0.02))
        api.feature.add_feature(f, feature=abertura, element=self.elemento)

        # The lining and panel of IfcOpenShell's doors and windows start
        # 0.015 m behind their local origin: set it that much inside the face.
        origen = base - self.normal * (self.espesor / 2 - 0.015)
        e = modelo.elemento(clase, nombre, self.planta, matriz(origen, self.dir),
                            "DOOR" if clase == "IfcDoor" else "WINDOW")
        if clase == "IfcDoor":
            r = api.geometry.add_door_representation(f, context=modelo.cuerpo, overall_height=alto,
                                                     overall_width=ancho)
            modelo.propiedades(e, "Pset_DoorCommon", {
                "Reference": "Puerta %d cm" % round(ancho * 100), "IsExternal": externo,
                "FireRating": "EI30" if not externo else "Sin exigencia", "HandicapAccessible": ancho >= 0.9})
        else:
            r = api.geometry.add_window_representation(f, context=modelo.cuerpo, overall_height=alto,
                                                       overall_width=ancho)
            modelo.propiedades(e, "Pset_WindowCommon", {
                "Reference": "Ventana %dx%d" % (round(ancho * 100), round(alto * 100)),
                "IsExternal": externo, "ThermalTransmittance": 2.8})
        modelo.representar(e, r)
        modelo.propiedades(e, "Pset_TESKAL_Demo", {"Fase": "Terminaciones", "Nivel": self.planta})
        api.feature.add_filling(f, opening=abertura, element=e)
        return e


def arquitectura():
    m = Modelo("ARQ", "arquitectura.ifc", "Arquitectura: muros, tabiques, losas, puertas y ventanas")
    f = m.f
    t = E_EXT / 2
    for k, planta in enumerate(PLANTAS):
        z0 = NIVELES[k]
        alto_ext = losa_inferior(k) - z0
        # Partitions stop HOLGURA under the beams.
        alto_int = viga_inferior(k) - HOLGURA - z0

        sur = Muro(m, "Muro exterior sur " + planta, planta, (0.0, t), (LARGO, t), z0, alto_ext, E_EXT,
                   True, "REI60")
        norte = Muro(m, "Muro exterior norte " + planta, planta, (0.0, ANCHO - t), (LARGO, ANCHO - t), z0,
                     alto_ext, E_EXT, True, "REI60")
        oeste = Muro(m, "Muro exterior oeste " + planta, planta, (t, E_EXT), (t, ANCHO - E_EXT), z0,
                     alto_ext, E_EXT, True, "REI60")
        Muro(m, "Muro exterior este " + planta, planta, (LARGO - t, E_EXT), (LARGO - t, ANCHO - E_EXT), z0,
             alto_ext, E_EXT, True, "REI60")

        pasillo_sur = Muro(m, "Tabique pasillo sur " + planta, planta, (E_EXT, PASILLO_SUR),
                           (LARGO - E_EXT, PASILLO_SUR), z0, alto_int, E_INT, False, "EI60")
        pasillo_norte = Muro(m, "Tabique pasillo norte " + planta, planta, (E_EXT, PASILLO_NORTE),
                             (LARGO - E_EXT, PASILLO_NORTE), z0, alto_int, E_INT, False, "EI60")
        y_sur = (E_EXT, PASILLO_SUR - E_INT / 2)
        y_norte = (PASILLO_NORTE + E_INT / 2, ANCHO - E_EXT)

        # Rooms: south side 1-2-3 split at x = 7 and 13 on both storeys; north
        # side 4-5-6 split the same way on PB, and in two rooms 4-5 on P1,
        # whose partition stands on axis 3 of the structure.
        Muro(m, "Tabique salas 1-2 " + planta, planta, (7.0, y_sur[0]), (7.0, y_sur[1]), z0, alto_int, E_INT,
             False, "EI30")
        Muro(m, "Tabique salas 2-3 " + planta, planta, (13.0, y_sur[0]), (13.0, y_sur[1]), z0, alto_int,
             E_INT, False, "EI30")
        if planta == "PB":
            Muro(m, "Tabique salas 4-5 PB", planta, (7.0, y_norte[0]), (7.0, y_norte[1]), z0, alto_int, E_INT,
                 False, "EI30")
            Muro(m, "Tabique salas 5-6 PB", planta, (13.0, y_norte[0]), (13.0, y_norte[1]), z0, alto_int,
                 E_INT, False, "EI30")
            puertas_norte = [(4, 4.5), (5, 9.5), (6, 16.0)]
        else:
            Muro(m, "Tabique salas 4-5 P1", planta, (EJES_NUMERO["3"], y_norte[0]),
                 (EJES_NUMERO["3"], y_norte[1]), z0, alto_int, E_INT, False, "EI30")
            puertas_norte = [(4, 4.5), (5, 16.0)]

        # Doors from the corridor (s is measured from the corridor's west end).
        for sala, x in [(1, 5.6), (2, 9.5), (3, 16.0)]:
            pasillo_sur.hueco("IfcDoor", "Puerta sala %d %s" % (sala, planta), x - E_EXT, 0.0, 0.9, 2.1, False)
        for sala, x in puertas_norte:
            pasillo_norte.hueco("IfcDoor", "Puerta sala %d %s" % (sala, planta), x - E_EXT, 0.0, 0.9, 2.1,
                                False)
        if planta == "PB":
            oeste.hueco("IfcDoor", "Puerta acceso principal", 5.55 - E_EXT, 0.0, 0.9, 2.1, True)

        # Windows on both long façades.
        for i, x in enumerate((2.5, 9.25, 16.0), start=1):
            sur.hueco("IfcWindow", "Ventana sur %d %s" % (i, planta), x, 0.9, 1.5, 1.2, True)
            norte.hueco("IfcWindow", "Ventana norte %d %s" % (i, planta), x, 0.9, 1.5, 1.2, True)

    # Slabs: each one's top at its level, over the whole footprint.
    contorno = [(0.0, 0.0), (LARGO, 0.0), (LARGO, ANCHO), (0.0, ANCHO), (0.0, 0.0)]
    for nombre, planta, z, externo in (("Losa nivel 0", "PB", NIVELES[0], False),
                                       ("Losa nivel 1", "P1", NIVELES[1], False),
                                       ("Losa cubierta", "CU", NIVELES[2], True)):
        e = m.elemento("IfcSlab", nombre, planta, matriz((0.0, 0.0, z - E_LOSA), (1, 0, 0)),
                       "ROOF" if externo else "FLOOR")
        m.representar(e, api.geometry.add_slab_representation(
            f, context=m.cuerpo, depth=E_LOSA, polyline=contorno))
        m.propiedades(e, "Pset_SlabCommon", {
            "Reference": "Losa hormigón armado 20 cm",
            "IsExternal": externo,
            "LoadBearing": True,
            "FireRating": "REI90",
        })
        m.propiedades(e, "Pset_TESKAL_Demo", {"Fase": "Obra gruesa", "Nivel": planta,
                                              "Material": "Hormigón armado H30"})
    return m


# --- Structure -----------------------------------------------------------------

def estructura():
    m = Modelo("EST", "estructura.ifc", "Estructura: zapatas, pilares y vigas de hormigón armado")
    f = m.f
    perfil_pilar = m.perfil_rectangulo("Pilar 40x40", PILAR, PILAR)
    perfil_viga = m.perfil_rectangulo("Viga 30x50", VIGA_B, VIGA_H)
    perfil_zapata = m.perfil_rectangulo("Zapata 120x120", ZAPATA, ZAPATA)

    def comunes(e, pset, referencia, planta):
        m.propiedades(e, pset, {"Reference": referencia, "LoadBearing": True, "IsExternal": False})
        m.propiedades(e, "Pset_TESKAL_Demo", {"Fase": "Obra gruesa", "Nivel": planta,
                                              "Material": "Hormigón armado H30"})

    # Footings with their top 0.2 m under the ground slab.
    z_zapata = NIVELES[0] - E_LOSA - 0.2
    for letra, y in EJES_LETRA.items():
        for numero, x in EJES_NUMERO.items():
            e = m.lineal("IfcFooting", "Zapata %s%s" % (letra, numero), "PB", (x, y, z_zapata - ZAPATA_H),
                         (x, y, z_zapata), perfil_zapata, "PAD_FOOTING")
            m.propiedades(e, "Pset_FootingCommon", {"Reference": "Zapata aislada 120x120x60",
                                                    "LoadBearing": True})
            m.propiedades(e, "Pset_TESKAL_Demo", {"Fase": "Fundaciones", "Nivel": "PB", "Material": "Hormigón H25"})

    for k, planta in enumerate(PLANTAS):
        # Columns from HOLGURA over the floor slab to the underside of the beams.
        z0 = NIVELES[k] + HOLGURA
        z1 = viga_inferior(k)
        for letra, y in EJES_LETRA.items():
            for numero, x in EJES_NUMERO.items():
                e = m.lineal("IfcColumn", "Pilar %s%s %s" % (letra, numero, planta), planta, (x, y, z0),
                             (x, y, z1), perfil_pilar, "COLUMN")
                comunes(e, "Pset_ColumnCommon", "P-%s%s-%s" % (letra, numero, planta), planta)

        # Beams between the outer column faces, their top HOLGURA under the slab.
        nivel = "N1" if k == 0 else "cubierta"
        zc = viga_inferior(k) + VIGA_H / 2
        x0 = min(EJES_NUMERO.values()) - PILAR / 2
        x1 = max(EJES_NUMERO.values()) + PILAR / 2
        y0 = min(EJES_LETRA.values()) - PILAR / 2
        y1 = max(EJES_LETRA.values()) + PILAR / 2
        for letra, y in EJES_LETRA.items():
            e = m.lineal("IfcBeam", "Viga %s eje %s" % (nivel, letra), planta, (x0, y, zc), (x1, y, zc),
                         perfil_viga, "BEAM")
            comunes(e, "Pset_BeamCommon", "V-%s-%s" % (nivel, letra), planta)
        for numero, x in EJES_NUMERO.items():
            e = m.lineal("IfcBeam", "Viga %s eje %s" % (nivel, numero), planta, (x, y0, zc), (x, y1, zc),
                         perfil_viga, "BEAM")
            comunes(e, "Pset_BeamCommon", "V-%s-%s" % (nivel, numero), planta)

    # The grid, at the world origin, with axes 1.5 m past the footprint.
    grilla = api.root.create_entity(f, ifc_class="IfcGrid", name="Grilla estructural")
    api.spatial.assign_container(f, products=[grilla], relating_structure=m.plantas["PB"])
    api.geometry.edit_object_placement(f, product=grilla, matrix=np.eye(4))
    for letra, y in EJES_LETRA.items():
        eje = api.grid.create_grid_axis(f, grid=grilla, axis_tag=letra, uvw_axes="UAxes")
        api.grid.create_axis_curve(f, p1=np.array((-1.5, y, 0.0)), p2=np.array((LARGO + 1.5, y, 0.0)),
                                   grid_axis=eje)
    for numero, x in EJES_NUMERO.items():
        eje = api.grid.create_grid_axis(f, grid=grilla, axis_tag=numero, uvw_axes="VAxes")
        api.grid.create_axis_curve(f, p1=np.array((x, -1.5, 0.0)), p2=np.array((x, ANCHO + 1.5, 0.0)),
                                   grid_axis=eje)
    return m


# --- MEP -------------------------------------------------------------------------

def mep():
    m = Modelo("MEP", "mep.ifc", "Instalaciones: climatización, agua fría, agua caliente y aguas lluvias")
    f = m.f

    def tipo(clase, nombre, pset, valores):
        t = api.root.create_entity(f, ifc_class=clase, name=nombre, predefined_type="RIGIDSEGMENT")
        m.propiedades(t, pset, valores)
        return t

    def sistema(nombre, tipo_sistema):
        s = api.system.add_system(f, ifc_class="IfcDistributionSystem")
        s.Name = nombre
        s.PredefinedType = tipo_sistema
        return s

    tipos = {
        "impulsion": tipo("IfcDuctSegmentType", "Conducto rectangular 600x400", "Pset_DuctSegmentTypeCommon",
                          {"Reference": "CR-600x400", "Shape": "RECTANGULAR", "WorkingPressure": 500.0}),
        "retorno": tipo("IfcDuctSegmentType", "Conducto rectangular 500x400", "Pset_DuctSegmentTypeCommon",
                        {"Reference": "CR-500x400", "Shape": "RECTANGULAR", "WorkingPressure": 500.0}),
        "ramal": tipo("IfcDuctSegmentType", "Conducto rectangular 400x300", "Pset_DuctSegmentTypeCommon",
                      {"Reference": "CR-400x300", "Shape": "RECTANGULAR", "WorkingPressure": 500.0}),
        "ppr90": tipo("IfcPipeSegmentType", "Tubería PPR 90", "Pset_PipeSegmentTypeCommon",
                      {"Reference": "PPR-90", "NominalDiameter": 0.09, "OuterDiameter": 0.09,
                       "InnerDiameter": 0.0736, "WorkingPressure": 1000000.0}),
        "ppr75": tipo("IfcPipeSegmentType", "Tubería PPR 75", "Pset_PipeSegmentTypeCommon",
                      {"Reference": "PPR-75", "NominalDiameter": 0.075, "OuterDiameter": 0.075,
                       "InnerDiameter": 0.0614, "WorkingPressure": 1000000.0}),
        "pvc110": tipo("IfcPipeSegmentType", "Tubería PVC 110", "Pset_PipeSegmentTypeCommon",
                       {"Reference": "PVC-110", "NominalDiameter": 0.11, "OuterDiameter": 0.11,
                        "InnerDiameter": 0.1034, "WorkingPressure": 0.0}),
    }
    perfiles = {
        "impulsion": m.perfil_rectangulo("Conducto 600x400", 0.6, 0.4),
        "retorno": m.perfil_rectangulo("Conducto 500x400", 0.5, 0.4),
        "ramal": m.perfil_rectangulo("Conducto 400x300", 0.4, 0.3),
        "ppr90": m.perfil_tubo("PPR 90", 0.09, 0.0082),
        "ppr75": m.perfil_tubo("PPR 75", 0.075, 0.0068),
        "pvc110": m.perfil_tubo("PVC 110", 0.11, 0.0032),
    }
    sistemas = {
        "Impulsión": sistema("Climatización impulsión", "AIRCONDITIONING"),
        "Retorno": sistema("Climatización retorno", "AIRCONDITIONING"),
        "Agua fría": sistema("Agua fría", "DOMESTICCOLDWATER"),
        "Agua caliente": sistema("Agua caliente sanitaria", "DOMESTICHOTWATER"),
        "Aguas lluvias": sistema("Aguas lluvias", "STORMWATER"),
    }
    miembros = {s: [] for s in sistemas}

    colores = {"Impulsión": "Azul claro", "Retorno": "Gris", "Agua fría": "Azul", "Agua caliente": "Rojo",
               "Aguas lluvias": "Verde"}

    def tramo(clase, nombre, planta, p0, p1, clave_tipo, nombre_sistema):
        e = m.lineal(clase, nombre, planta, p0, p1, perfiles[clave_tipo], "RIGIDSEGMENT")
        ocurrencia = "Pset_PipeSegmentOccurrence" if clase == "IfcPipeSegment" else "Pset_DuctSegmentOccurrence"
        m.propiedades(e, ocurrencia, {"Color": colores[nombre_sistema]})
        miembros[nombre_sistema].append(e)
        api.type.assign_type(f, related_objects=[e], relating_type=tipos[clave_tipo],
                             should_map_representations=False)
        m.propiedades(e, "Pset_TESKAL_Demo", {
            "Fase": "Instalaciones",
            "Nivel": planta,
            "Sistema": nombre_sistema,
            "Dimension": tipos[clave_tipo].Name,
            "Largo": round(float(np.linalg.norm(np.subtract(p1, p0))), 3),
        })
        return e

    # Main runs along the corridor, between the corridor partitions and under
    # the beams that cross it (bottoms at 2.7 and 6.2).
    for k, planta in enumerate(PLANTAS):
        zc = viga_inferior(k) - 0.15 - 0.2        # ducts: 0.4 high, top 0.15 under the beams
        tramo("IfcDuctSegment", "Conducto impulsión principal " + planta, planta, (1.0, 5.5, zc), (19.0, 5.5, zc),
              "impulsion", "Impulsión")
        tramo("IfcDuctSegment", "Conducto retorno principal " + planta, planta, (1.0, 6.45, zc),
              (19.0, 6.45, zc), "retorno", "Retorno")
        agua = "Agua fría" if planta == "PB" else "Agua caliente"
        nombre = "Tubería agua fría principal PB" if planta == "PB" else "Tubería agua caliente principal P1"
        tramo("IfcPipeSegment", nombre, planta, (1.0, 6.85, zc + 0.05), (19.0, 6.85, zc + 0.05), "ppr90", agua)

    # Designed clashes.
    # A supply branch into room 1 that crosses the corridor's south partition.
    tramo("IfcDuctSegment", "Conducto impulsión ramal sala 1 PB", "PB", (3.0, 5.5, 2.35), (3.0, 2.0, 2.35),
          "ramal", "Impulsión")
    # A downpipe through the first-floor slab, from 0.1 over the ground slab
    # to 0.2 under the roof slab.
    tramo("IfcPipeSegment", "Bajante pluviales BP-1", "PB", (12.0, 6.0, 0.1), (12.0, 6.0, 6.6), "pvc110",
          "Aguas lluvias")
    # A hot-water branch at beam height across the roof beam on axis C.
    tramo("IfcPipeSegment", "Tubería ramal ACS P1", "P1", (12.5, 6.85, 6.45), (12.5, 9.5, 6.45), "ppr75",
          "Agua caliente")
    # A cold-water branch along the south façade through column A4.
    tramo("IfcPipeSegment", "Tubería agua fría ramal sala 3 PB", "PB", (13.5, EJES_LETRA["A"], 1.0),
          (18.5, EJES_LETRA["A"], 1.0), "ppr75", "Agua fría")

    for nombre, s in sistemas.items():
        api.system.assign_system(f, products=miembros[nombre], system=s)
    return m


# --- Main ----------------------------------------------------------------------

def main(argv):
    if len(argv) != 1:
        sys.stderr.write("Uso: generar_demo.py CARPETA\n")
        return 2
    carpeta = os.path.abspath(argv[0])
    os.makedirs(carpeta, exist_ok=True)

    archivos = []
    for construir in (arquitectura, estructura, mep):
        modelo = construir()
        nombres = [e.Name for e in modelo.elementos]
        if len(set(nombres)) != len(nombres):
            repetidos = sorted({n for n in nombres if nombres.count(n) > 1})
            sys.stderr.write("Nombres repetidos en %s: %s\n" % (modelo.archivo, ", ".join(repetidos)))
            return 1
        ruta = modelo.escribir(carpeta, "TESKAL-demo-" + modelo.clave)
        porClase = {}
        for e in modelo.elementos:
            porClase[e.is_a()] = porClase.get(e.is_a(), 0) + 1
        archivos.append({"clave": modelo.clave, "archivo": modelo.archivo, "ruta": ruta,
                         "elementos": len(modelo.elementos), "porClase": dict(sorted(porClase.items()))})

    resumen = {
        "carpeta": carpeta,
        "archivos": archivos,
        "tolerancia": 0.02,
        "interferencias": [[list(a), list(b)] for a, b in INTERFERENCIAS],
    }
    sys.stdout.reconfigure(encoding="utf-8")
    print(json.dumps(resumen, ensure_ascii=False, indent=2))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
