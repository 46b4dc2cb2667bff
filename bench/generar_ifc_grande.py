#!/usr/bin/env python3
"""Writes a large IFC4 file for the ifc-index benchmark, straight as STEP text.

Usage: generar_ifc_grande.py output.ifc [--mb 210] [--semilla 1] [--awp]

Sizes are in MB of 10^6 bytes; the default, 210 MB, is also past 200 MiB.

The file has the make-up of an exported building model: a project with units
and representation contexts, a site, a building and storeys, and then walls,
slabs, beams and pipe segments, each with its own placement, an axis or body
representation built from cartesian points, polylines and extruded solids, a
name, a 22-character GlobalId and one property set of six single values tied
by IFCRELDEFINESBYPROPERTIES. Elements are contained in their storey and share
materials through IFCRELASSOCIATESMATERIAL, as real exporters write them.

With --awp every element also carries the work packages it belongs to, as
the planners of a project write them into the model: a second property set,
"Pset_AWP", with the single values CWA, CWP and IWP. Seven consecutive
elements make an IWP, 25 IWPs a CWP, 20 CWPs a CWA. The values take no draw
from the random sequence, so the elements, their geometry and their own
property sets are those of the file without the option (their GlobalIds and
statement numbers move on); without it the file is exactly what the
ifc-index benchmark reads.

Writing stops at the first element past the requested size. A summary of what
was written goes beside the file as output.ifc.resumen ("clave valor" lines),
so that a benchmark can check that a reader found every element. The file is
written under a temporary name and renamed at the end, so an interrupted run
never leaves a truncated file behind.
"""
import argparse
import os
import random
import sys
import time

# Characters of the IFC GlobalId encoding (base 64, 22 characters for 128 bits).
ALFABETO_GUID = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$"


class GeneradorGuid:
    """Unique GlobalIds: a random 14-character prefix per file (first character
    0 to 3, as 128 bits allow) followed by a counter in 8 base-64 digits."""

    def __init__(self, azar):
        self.prefijo = azar.choice("0123") + "".join(azar.choice(ALFABETO_GUID) for _ in range(13))
        self.n = 0

    def __call__(self):
        self.n += 1
        n = self.n
        digitos = []
        for _ in range(8):
            digitos.append(ALFABETO_GUID[n & 63])
            n >>= 6
        return self.prefijo + "".join(reversed(digitos))


def numero(x):
    """A STEP real: always with a decimal point."""
    return "%.4f" % x


class Escritor:
    """Numbers statements and buffers them; flushes in large blocks."""

    def __init__(self, archivo):
        self.archivo = archivo
        self.siguiente = 1
        self.bufer = []
        self.bytes = 0  # written and buffered; statements are ASCII, so characters are bytes

    def __call__(self, texto):
        i = self.siguiente
        self.siguiente += 1
        linea = "#%d=%s;\n" % (i, texto)
        self.bufer.append(linea)
        self.bytes += len(linea)
        if len(self.bufer) >= 20000:
            self.vaciar()
        return i

    def vaciar(self):
        self.archivo.write("".join(self.bufer).encode("ascii"))
        self.bufer.clear()


CABECERA = """ISO-10303-21;
HEADER;
FILE_DESCRIPTION(('ViewDefinition [ReferenceView_V1.2]'),'2;1');
FILE_NAME('{nombre}','2024-05-14T09:30:00',('Coordinaci\\X2\\00F3\\X0\\n BIM'),('TESKAL'),'generar_ifc_grande.py','TESKAL bench','');
FILE_SCHEMA(('IFC4'));
ENDSEC;
DATA;
"""

MATERIALES = [
    "Hormig\\X2\\00F3\\X0\\n armado HA-30",
    "Ladrillo perforado 24x11.5",
    "Acero S275JR",
    "Acero S355J2",
    "PVC-U presi\\X2\\00F3\\X0\\n PN10",
    "Cobre recocido",
    "Bloque de hormig\\X2\\00F3\\X0\\n 20",
    "Pladur 15 mm",
]

FASES = ["Fase 1", "Fase 2", "Fase 3", "Existente", "Demolici\\X2\\00F3\\X0\\n"]


def escribir(ruta, mb, semilla, awp=False):
    azar = random.Random(semilla)
    guid = GeneradorGuid(azar)
    objetivo = int(mb * 1000 * 1000)
    temporal = ruta + ".parcial"
    # "espaciales": the site, the building and the storeys, products too but
    # without property sets.
    cuentas = {"productos": 0, "propiedades": 0, "espaciales": 0, "IFCWALL": 0, "IFCSLAB": 0,
               "IFCBEAM": 0, "IFCPIPESEGMENT": 0}
    if awp:
        cuentas.update({"awp_cwa": 0, "awp_cwp": 0, "awp_iwp": 0})

    with open(temporal, "wb") as archivo:
        archivo.write(CABECERA.format(nombre=os.path.basename(ruta)).encode("ascii"))
        e = Escritor(archivo)

        # Project, owner history, units and contexts.
        persona = e("IFCPERSON($,'Garc\\X2\\00ED\\X0\\a','Luc\\X2\\00ED\\X0\\a',$,$,$,$,$)")
        org = e("IFCORGANIZATION($,'Estudio de Arquitectura',$,$,$)")
        pyo = e("IFCPERSONANDORGANIZATION(#%d,#%d,$)" % (persona, org))
        app = e("IFCAPPLICATION(#%d,'1.0','TESKAL bench','TESKALBENCH')" % org)
        oh = e("IFCOWNERHISTORY(#%d,#%d,$,.ADDED.,$,$,$,1715678400)" % (pyo, app))
        u_largo = e("IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.)")
        u_area = e("IFCSIUNIT(*,.AREAUNIT.,$,.SQUARE_METRE.)")
        u_vol = e("IFCSIUNIT(*,.VOLUMEUNIT.,$,.CUBIC_METRE.)")
        u_ang = e("IFCSIUNIT(*,.PLANEANGLEUNIT.,$,.RADIAN.)")
        unidades = e("IFCUNITASSIGNMENT((#%d,#%d,#%d,#%d))" % (u_largo, u_area, u_vol, u_ang))
        origen = e("IFCCARTESIANPOINT((0.,0.,0.))")
        origen2d = e("IFCCARTESIANPOINT((0.,0.))")
        dir_z = e("IFCDIRECTION((0.,0.,1.))")
        dir_x = e("IFCDIRECTION((1.,0.,0.))")
        dir_y = e("IFCDIRECTION((0.,1.,0.))")
        dir_x2d = e("IFCDIRECTION((1.,0.))")
        ejes_mundo = e("IFCAXIS2PLACEMENT3D(#%d,#%d,#%d)" % (origen, dir_z, dir_x))
        ejes2d = e("IFCAXIS2PLACEMENT2D(#%d,#%d)" % (origen2d, dir_x2d))
        # Extrusion placement that turns the profile plane to face X (pipes).
        ejes_a_x = e("IFCAXIS2PLACEMENT3D(#%d,#%d,#%d)" % (origen, dir_x, dir_y))
        contexto = e("IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-05,#%d,$)" % ejes_mundo)
        ctx_cuerpo = e("IFCGEOMETRICREPRESENTATIONSUBCONTEXT('Body','Model',*,*,*,*,#%d,$,.MODEL_VIEW.,$)"
                       % contexto)
        ctx_eje = e("IFCGEOMETRICREPRESENTATIONSUBCONTEXT('Axis','Model',*,*,*,*,#%d,$,.GRAPH_VIEW.,$)"
                    % contexto)
        proyecto = e("IFCPROJECT('%s',#%d,'Hospital Comarcal','Modelo federado de prueba',$,$,$,(#%d),#%d)"
                     % (guid(), oh, contexto, unidades))

        # Spatial structure: site, building, storeys.
        lp_sitio = e("IFCLOCALPLACEMENT($,#%d)" % ejes_mundo)
        sitio = e("IFCSITE('%s',#%d,'Parcela 12',$,$,#%d,$,$,.ELEMENT.,(40,25,0,0),(-3,-42,0,0),120.,$,$)"
                  % (guid(), oh, lp_sitio))
        lp_edificio = e("IFCLOCALPLACEMENT(#%d,#%d)" % (lp_sitio, ejes_mundo))
        edificio = e("IFCBUILDING('%s',#%d,'Edificio A',$,$,#%d,$,$,.ELEMENT.,$,$,$)"
                     % (guid(), oh, lp_edificio))
        e("IFCRELAGGREGATES('%s',#%d,$,$,#%d,(#%d))" % (guid(), oh, proyecto, sitio))
        e("IFCRELAGGREGATES('%s',#%d,$,$,#%d,(#%d))" % (guid(), oh, sitio, edificio))
        plantas = []
        lp_plantas = []
        for k in range(12):
            punto = e("IFCCARTESIANPOINT((0.,0.,%s))" % numero(3.5 * k))
            ejes = e("IFCAXIS2PLACEMENT3D(#%d,$,$)" % punto)
            lp = e("IFCLOCALPLACEMENT(#%d,#%d)" % (lp_edificio, ejes))
            planta = e("IFCBUILDINGSTOREY('%s',#%d,'Planta %02d',$,$,#%d,$,'P%02d',.ELEMENT.,%s)"
                       % (guid(), oh, k, lp, k, numero(3.5 * k)))
            plantas.append(planta)
            lp_plantas.append(lp)
        e("IFCRELAGGREGATES('%s',#%d,$,$,#%d,(%s))"
          % (guid(), oh, edificio, ",".join("#%d" % p for p in plantas)))
        cuentas["espaciales"] = 2 + len(plantas)

        materiales = [e("IFCMATERIAL('%s',$,$)" % m) for m in MATERIALES]
        contenidos = [[] for _ in plantas]
        por_material = [[] for _ in materiales]

        def colocar(planta, x, y):
            punto = e("IFCCARTESIANPOINT((%s,%s,0.))" % (numero(x), numero(y)))
            ejes = e("IFCAXIS2PLACEMENT3D(#%d,#%d,#%d)" % (punto, dir_z, dir_x))
            return e("IFCLOCALPLACEMENT(#%d,#%d)" % (lp_plantas[planta], ejes))

        def poligono(puntos):
            refs = [e("IFCCARTESIANPOINT((%s,%s))" % (numero(px), numero(py))) for px, py in puntos]
            refs.append(refs[0])
            return e("IFCPOLYLINE((%s))" % ",".join("#%d" % r for r in refs))

        def cuerpo(solido):
            rep = e("IFCSHAPEREPRESENTATION(#%d,'Body','SweptSolid',(#%d))" % (ctx_cuerpo, solido))
            return rep

        def muro(planta, n, x, y):
            largo = azar.uniform(2.0, 9.0)
            espesor = azar.choice((0.115, 0.15, 0.2, 0.25, 0.3))
            alto = 3.5 - 0.25
            p1 = e("IFCCARTESIANPOINT((0.,0.))")
            p2 = e("IFCCARTESIANPOINT((%s,0.))" % numero(largo))
            eje = e("IFCPOLYLINE((#%d,#%d))" % (p1, p2))
            rep_eje = e("IFCSHAPEREPRESENTATION(#%d,'Axis','Curve2D',(#%d))" % (ctx_eje, eje))
            perfil = e("IFCARBITRARYCLOSEDPROFILEDEF(.AREA.,$,#%d)" % poligono(
                [(0.0, -espesor / 2), (largo, -espesor / 2), (largo, espesor / 2), (0.0, espesor / 2)]))
            solido = e("IFCEXTRUDEDAREASOLID(#%d,#%d,#%d,%s)" % (perfil, ejes_mundo, dir_z, numero(alto)))
            forma = e("IFCPRODUCTDEFINITIONSHAPE($,$,(#%d,#%d))" % (rep_eje, cuerpo(solido)))
            elemento = e("IFCWALL('%s',#%d,'Muro %07d','Muro b\\X2\\00E1\\X0\\sico %d mm',"
                         "'Muro:Gen\\X2\\00E9\\X0\\rico',#%d,#%d,'M-%d',.STANDARD.)"
                         % (guid(), oh, n, int(espesor * 1000), colocar(planta, x, y), forma, n))
            props = [
                ("Reference", "IFCIDENTIFIER('Muro b\\X2\\00E1\\X0\\sico %d mm')" % int(espesor * 1000)),
                ("IsExternal", "IFCBOOLEAN(%s)" % azar.choice((".T.", ".F."))),
                ("LoadBearing", "IFCBOOLEAN(%s)" % azar.choice((".T.", ".F."))),
                ("Width", "IFCLENGTHMEASURE(%s)" % numero(espesor)),
                ("ThermalTransmittance", "IFCTHERMALTRANSMITTANCEMEASURE(%s)" % numero(azar.uniform(0.2, 1.5))),
                ("Status", "IFCLABEL('%s')" % azar.choice(FASES)),
            ]
            return elemento, "Pset_WallCommon", props

        def losa(planta, n, x, y):
            ancho = azar.uniform(4.0, 12.0)
            fondo = azar.uniform(4.0, 12.0)
            espesor = azar.choice((0.2, 0.25, 0.3, 0.35))
            esquina = azar.uniform(0.5, 2.0)
            perfil = e("IFCARBITRARYCLOSEDPROFILEDEF(.AREA.,$,#%d)" % poligono(
                [(0.0, 0.0), (ancho, 0.0), (ancho, fondo - esquina), (ancho - esquina, fondo), (0.0, fondo)]))
            punto = e("IFCCARTESIANPOINT((0.,0.,%s))" % numero(-espesor))
            ejes = e("IFCAXIS2PLACEMENT3D(#%d,$,$)" % punto)
            solido = e("IFCEXTRUDEDAREASOLID(#%d,#%d,#%d,%s)" % (perfil, ejes, dir_z, numero(espesor)))
            forma = e("IFCPRODUCTDEFINITIONSHAPE($,$,(#%d))" % cuerpo(solido))
            elemento = e("IFCSLAB('%s',#%d,'Losa %07d','Forjado %d cm','Losa:Forjado',#%d,#%d,'L-%d',.FLOOR.)"
                         % (guid(), oh, n, int(espesor * 100), colocar(planta, x, y), forma, n))
            props = [
                ("Reference", "IFCIDENTIFIER('Forjado %d cm')" % int(espesor * 100)),
                ("IsExternal", "IFCBOOLEAN(.F.)"),
                ("LoadBearing", "IFCBOOLEAN(.T.)"),
                ("Thickness", "IFCLENGTHMEASURE(%s)" % numero(espesor)),
                ("FireRating", "IFCLABEL('REI %d')" % azar.choice((60, 90, 120))),
                ("PitchAngle", "IFCPLANEANGLEMEASURE(0.)"),
            ]
            return elemento, "Pset_SlabCommon", props

        def viga(planta, n, x, y):
            largo = azar.uniform(3.0, 12.0)
            canto = azar.choice((0.2, 0.27, 0.3, 0.36, 0.4, 0.5))
            ala = canto / 2
            perfil = e("IFCISHAPEPROFILEDEF(.AREA.,'IPE%d',#%d,%s,%s,%s,%s,%s,$,$)"
                       % (int(canto * 1000), ejes2d, numero(ala), numero(canto), numero(canto * 0.025),
                          numero(canto * 0.04), numero(canto * 0.05)))
            punto = e("IFCCARTESIANPOINT((0.,0.,%s))" % numero(3.5 - canto / 2))
            ejes = e("IFCAXIS2PLACEMENT3D(#%d,#%d,#%d)" % (punto, dir_x, dir_y))
            solido = e("IFCEXTRUDEDAREASOLID(#%d,#%d,#%d,%s)" % (perfil, ejes, dir_z, numero(largo)))
            p1 = e("IFCCARTESIANPOINT((0.,0.,0.))")
            p2 = e("IFCCARTESIANPOINT((%s,0.,0.))" % numero(largo))
            eje = e("IFCPOLYLINE((#%d,#%d))" % (p1, p2))
            rep_eje = e("IFCSHAPEREPRESENTATION(#%d,'Axis','Curve3D',(#%d))" % (ctx_eje, eje))
            forma = e("IFCPRODUCTDEFINITIONSHAPE($,$,(#%d,#%d))" % (rep_eje, cuerpo(solido)))
            elemento = e("IFCBEAM('%s',#%d,'Viga %07d','IPE%d','Viga:IPE',#%d,#%d,'V-%d',.BEAM.)"
                         % (guid(), oh, n, int(canto * 1000), colocar(planta, x, y), forma, n))
            props = [
                ("Reference", "IFCIDENTIFIER('IPE%d')" % int(canto * 1000)),
                ("IsExternal", "IFCBOOLEAN(.F.)"),
                ("LoadBearing", "IFCBOOLEAN(.T.)"),
                ("Span", "IFCLENGTHMEASURE(%s)" % numero(largo)),
                ("Slope", "IFCPLANEANGLEMEASURE(0.)"),
                ("FireRating", "IFCLABEL('R %d')" % azar.choice((30, 60, 90))),
            ]
            return elemento, "Pset_BeamCommon", props

        def tubo(planta, n, x, y):
            largo = azar.uniform(1.0, 6.0)
            diametro = azar.choice((0.02, 0.032, 0.05, 0.075, 0.11, 0.16))
            perfil = e("IFCCIRCLEHOLLOWPROFILEDEF(.AREA.,'DN%d',#%d,%s,%s)"
                       % (int(diametro * 1000), ejes2d, numero(diametro / 2), numero(diametro * 0.08)))
            solido = e("IFCEXTRUDEDAREASOLID(#%d,#%d,#%d,%s)" % (perfil, ejes_a_x, dir_z, numero(largo)))
            forma = e("IFCPRODUCTDEFINITIONSHAPE($,$,(#%d))" % cuerpo(solido))
            elemento = e("IFCPIPESEGMENT('%s',#%d,'Tuber\\X2\\00ED\\X0\\a %07d','DN%d',"
                         "'Tuber\\X2\\00ED\\X0\\a:Agua fr\\X2\\00ED\\X0\\a',#%d,#%d,'T-%d',.RIGIDSEGMENT.)"
                         % (guid(), oh, n, int(diametro * 1000), colocar(planta, x, y), forma, n))
            props = [
                ("Reference", "IFCIDENTIFIER('DN%d')" % int(diametro * 1000)),
                ("NominalDiameter", "IFCPOSITIVELENGTHMEASURE(%s)" % numero(diametro)),
                ("Length", "IFCLENGTHMEASURE(%s)" % numero(largo)),
                ("WorkingPressure", "IFCPRESSUREMEASURE(%s)" % numero(azar.choice((600000.0, 1000000.0)))),
                ("Sistema", "IFCLABEL('Agua fr\\X2\\00ED\\X0\\a sanitaria')"),
                ("Aislado", "IFCBOOLEAN(%s)" % azar.choice((".T.", ".F."))),
            ]
            return elemento, "Pset_PipeSegmentOccurrence", props

        # Mix close to a structural and MEP federated model: many walls and pipes.
        tipos = [(muro, "IFCWALL")] * 4 + [(losa, "IFCSLAB")] + [(viga, "IFCBEAM")] * 2 + \
                [(tubo, "IFCPIPESEGMENT")] * 3
        n = 0
        while e.bytes < objetivo:
            n += 1
            planta = n % len(plantas)
            x = (n // len(plantas)) % 400 * 7.5
            y = (n // (len(plantas) * 400)) * 7.5
            hacer, tipo = tipos[n % len(tipos)]
            elemento, nombre_pset, props = hacer(planta, n, x, y)
            refs = [e("IFCPROPERTYSINGLEVALUE('%s',$,%s,$)" % (nombre, valor)) for nombre, valor in props]
            pset = e("IFCPROPERTYSET('%s',#%d,'%s',$,(%s))"
                     % (guid(), oh, nombre_pset, ",".join("#%d" % r for r in refs)))
            e("IFCRELDEFINESBYPROPERTIES('%s',#%d,$,$,(#%d),#%d)" % (guid(), oh, elemento, pset))
            if awp:
                iwp = (n - 1) // 7
                cwp = iwp // 25
                cwa = cwp // 20
                valores = [e("IFCPROPERTYSINGLEVALUE('%s',$,IFCLABEL('%s'),$)" % (nivel, codigo))
                           for nivel, codigo in (("CWA", "CWA-%03d" % cwa), ("CWP", "CWP-%04d" % cwp),
                                                 ("IWP", "IWP-%05d" % iwp))]
                pset_awp = e("IFCPROPERTYSET('%s',#%d,'Pset_AWP',$,(%s))"
                             % (guid(), oh, ",".join("#%d" % r for r in valores)))
                e("IFCRELDEFINESBYPROPERTIES('%s',#%d,$,$,(#%d),#%d)" % (guid(), oh, elemento, pset_awp))
                cuentas["propiedades"] += len(valores)
                cuentas["awp_cwa"] = cwa + 1
                cuentas["awp_cwp"] = cwp + 1
                cuentas["awp_iwp"] = iwp + 1
            contenidos[planta].append(elemento)
            por_material[azar.randrange(len(materiales))].append(elemento)
            cuentas["productos"] += 1
            cuentas["propiedades"] += len(props)
            cuentas[tipo] += 1

        for planta, elementos in zip(plantas, contenidos):
            if elementos:
                e("IFCRELCONTAINEDINSPATIALSTRUCTURE('%s',#%d,$,$,(%s),#%d)"
                  % (guid(), oh, ",".join("#%d" % x for x in elementos), planta))
        for material, elementos in zip(materiales, por_material):
            if elementos:
                e("IFCRELASSOCIATESMATERIAL('%s',#%d,$,$,(%s),#%d)"
                  % (guid(), oh, ",".join("#%d" % x for x in elementos), material))
        e.vaciar()
        archivo.write(b"ENDSEC;\nEND-ISO-10303-21;\n")

    # The summary first: a file under its final name always has its summary.
    cuentas["bytes"] = os.path.getsize(temporal)
    with open(ruta + ".resumen", "w") as resumen:
        for clave, valor in cuentas.items():
            resumen.write("%s %d\n" % (clave, valor))
    os.replace(temporal, ruta)
    return cuentas


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("salida", help="path of the IFC file to write")
    parser.add_argument("--mb", type=float, default=210.0, help="target size in MB (default 210)")
    parser.add_argument("--semilla", type=int, default=1, help="random seed (default 1)")
    parser.add_argument("--awp", action="store_true",
                        help="give every element its CWA, CWP and IWP in a property set Pset_AWP")
    args = parser.parse_args()
    inicio = time.perf_counter()
    cuentas = escribir(args.salida, args.mb, args.semilla, args.awp)
    sys.stderr.write("generar_ifc_grande: %s, %.1f MB, %d products, %d properties, %.1f s\n"
                     % (args.salida, cuentas["bytes"] / 1e6, cuentas["productos"], cuentas["propiedades"],
                        time.perf_counter() - inicio))
    return 0


if __name__ == "__main__":
    sys.exit(main())
