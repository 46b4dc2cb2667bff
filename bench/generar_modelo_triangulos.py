#!/usr/bin/env python3
"""Writes a large IFC4 model for the obj-load benchmark, straight as STEP text:
tens of thousands of MEP and structural elements whose converted geometry
comes to over a million triangles.

Usage: generar_modelo_triangulos.py output.ifc [--elementos 20000] [--teselados 0.05]
                                    [--semilla 1]

Most elements are swept solids that the converter tessellates quickly and
finely: pipe segments and columns extruded from circular profiles (about a
hundred to three hundred triangles each), ducts from hollow rectangles, beams
and members from rectangles. A share of the elements (--teselados, 5 % by
default) are pipe fittings given as IFCTRIANGULATEDFACESET over an
IFCCARTESIANPOINTLIST3D: closed prisms of 8 or 12 sides with fanned caps.
The converter's OpenCASCADE path spends about half a millisecond per
triangle on tessellated sets (against some 30 microseconds per triangle on
extruded circles), so a model made of tessellated sets alone (--teselados 1)
takes many minutes to convert at this size; the default mix, some 1.7 million
triangles, converts in one to two minutes on two cores.

Elements are laid out on twelve storeys, each with its own local placement
under its storey, a name, a GlobalId and a small property set, and contained
in its storey. A summary (elementos, teselados, triangulos_teselados, bytes)
goes beside the file as output.ifc.resumen; the triangle count of the swept
solids depends on the converter's tessellation and is read from the OBJ. The
file is written under a temporary name first.
"""
import argparse
import math
import os
import random
import sys
import time

ALFABETO_GUID = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$"

CABECERA = """ISO-10303-21;
HEADER;
FILE_DESCRIPTION(('ViewDefinition [ReferenceView_V1.2]'),'2;1');
FILE_NAME('{nombre}','2024-05-14T09:30:00',('TESKAL'),('TESKAL'),'generar_modelo_triangulos.py','TESKAL bench','');
FILE_SCHEMA(('IFC4'));
ENDSEC;
DATA;
"""


class GeneradorGuid:
    """Unique GlobalIds: a random 14-character prefix per file followed by a
    counter in 8 base-64 digits."""

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


class Escritor:
    """Numbers statements and buffers them; flushes in large blocks."""

    def __init__(self, archivo):
        self.archivo = archivo
        self.siguiente = 1
        self.bufer = []

    def __call__(self, texto):
        i = self.siguiente
        self.siguiente += 1
        self.bufer.append("#%d=%s;\n" % (i, texto))
        if len(self.bufer) >= 20000:
            self.vaciar()
        return i

    def vaciar(self):
        self.archivo.write("".join(self.bufer).encode("ascii"))
        self.bufer.clear()


# Unit-circle points and the index lists of a closed k-sided prism, cached per k.
_prismas = {}


def prisma(k):
    """Ring points (cos, sin) and the one-based triangles of a closed prism of
    k sides: vertices 1..k at the start, k+1..2k at the end; sides as two
    triangles per quad, outward; caps fanned from their first vertex."""
    if k not in _prismas:
        anillo = [(math.cos(2 * math.pi * i / k), math.sin(2 * math.pi * i / k)) for i in range(k)]
        tri = []
        for i in range(k):
            a, b = i + 1, (i + 1) % k + 1
            tri.append((a, b, b + k))
            tri.append((a, b + k, a + k))
        for i in range(1, k - 1):
            tri.append((1, i + 2, i + 1))  # start cap, facing back
            tri.append((k + 1, k + i + 1, k + i + 2))  # end cap, facing forward
        indices = ",".join("(%d,%d,%d)" % t for t in tri)
        _prismas[k] = (anillo, len(tri), indices)
    return _prismas[k]


def escribir(ruta, total_elementos, fraccion_teselados, semilla):
    azar = random.Random(semilla)
    guid = GeneradorGuid(azar)
    temporal = ruta + ".parcial"
    elementos = 0
    teselados = 0
    triangulos_teselados = 0
    with open(temporal, "wb") as archivo:
        archivo.write(CABECERA.format(nombre=os.path.basename(ruta)).encode("ascii"))
        e = Escritor(archivo)
        persona = e("IFCPERSON($,'Bench',$,$,$,$,$,$)")
        org = e("IFCORGANIZATION($,'TESKAL',$,$,$)")
        pyo = e("IFCPERSONANDORGANIZATION(#%d,#%d,$)" % (persona, org))
        app = e("IFCAPPLICATION(#%d,'1.0','TESKAL bench','TESKALBENCH')" % org)
        oh = e("IFCOWNERHISTORY(#%d,#%d,$,.ADDED.,$,$,$,1715678400)" % (pyo, app))
        unidades = e("IFCUNITASSIGNMENT((#%d,#%d))" % (e("IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.)"),
                                                       e("IFCSIUNIT(*,.PLANEANGLEUNIT.,$,.RADIAN.)")))
        origen = e("IFCCARTESIANPOINT((0.,0.,0.))")
        ejes_mundo = e("IFCAXIS2PLACEMENT3D(#%d,$,$)" % origen)
        contexto = e("IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-05,#%d,$)" % ejes_mundo)
        ctx_cuerpo = e("IFCGEOMETRICREPRESENTATIONSUBCONTEXT('Body','Model',*,*,*,*,#%d,$,.MODEL_VIEW.,$)"
                       % contexto)
        proyecto = e("IFCPROJECT('%s',#%d,'Planta industrial',$,$,$,$,(#%d),#%d)"
                     % (guid(), oh, contexto, unidades))
        lp_sitio = e("IFCLOCALPLACEMENT($,#%d)" % ejes_mundo)
        sitio = e("IFCSITE('%s',#%d,'Parcela',$,$,#%d,$,$,.ELEMENT.,$,$,$,$,$)" % (guid(), oh, lp_sitio))
        lp_edificio = e("IFCLOCALPLACEMENT(#%d,#%d)" % (lp_sitio, ejes_mundo))
        edificio = e("IFCBUILDING('%s',#%d,'Nave',$,$,#%d,$,$,.ELEMENT.,$,$,$)" % (guid(), oh, lp_edificio))
        e("IFCRELAGGREGATES('%s',#%d,$,$,#%d,(#%d))" % (guid(), oh, proyecto, sitio))
        e("IFCRELAGGREGATES('%s',#%d,$,$,#%d,(#%d))" % (guid(), oh, sitio, edificio))
        plantas, lp_plantas = [], []
        for k in range(12):
            ejes = e("IFCAXIS2PLACEMENT3D(#%d,$,$)" % e("IFCCARTESIANPOINT((0.,0.,%.1f))" % (4.0 * k)))
            lp = e("IFCLOCALPLACEMENT(#%d,#%d)" % (lp_edificio, ejes))
            plantas.append(e("IFCBUILDINGSTOREY('%s',#%d,'Nivel %02d',$,$,#%d,$,$,.ELEMENT.,%.1f)"
                             % (guid(), oh, k, lp, 4.0 * k)))
            lp_plantas.append(lp)
        e("IFCRELAGGREGATES('%s',#%d,$,$,#%d,(%s))"
          % (guid(), oh, edificio, ",".join("#%d" % p for p in plantas)))
        contenidos = [[] for _ in plantas]

        # Profiles sit at the origin of their plane; solids run along X or Y at
        # a height of their own, or stand upright from the storey's origin.
        origen2d = e("IFCCARTESIANPOINT((0.,0.))")
        ejes2d = e("IFCAXIS2PLACEMENT2D(#%d,$)" % origen2d)
        dir_x = e("IFCDIRECTION((1.,0.,0.))")
        dir_y = e("IFCDIRECTION((0.,1.,0.))")
        dir_z = e("IFCDIRECTION((0.,0.,1.))")

        def extrusion(perfil, eje, largo, altura):
            if eje == "z":
                posicion = ejes_mundo
            else:
                punto = e("IFCCARTESIANPOINT((0.,0.,%.3f))" % altura)
                posicion = e("IFCAXIS2PLACEMENT3D(#%d,#%d,#%d)"
                             % (punto, dir_x if eje == "x" else dir_y, dir_y if eje == "x" else dir_x))
            solido = e("IFCEXTRUDEDAREASOLID(#%d,#%d,#%d,%.3f)" % (perfil, posicion, dir_z, largo))
            return e("IFCSHAPEREPRESENTATION(#%d,'Body','SweptSolid',(#%d))" % (ctx_cuerpo, solido))

        def tuberia():
            largo = azar.uniform(1.0, 6.0)
            if azar.random() < 0.5:
                radio = azar.uniform(0.02, 0.08)
                perfil = e("IFCCIRCLEPROFILEDEF(.AREA.,'DN%d',#%d,%.4f)" % (radio * 2000, ejes2d, radio))
            else:
                radio = azar.uniform(0.05, 0.15)
                perfil = e("IFCCIRCLEHOLLOWPROFILEDEF(.AREA.,'DN%d',#%d,%.4f,%.4f)"
                           % (radio * 2000, ejes2d, radio, radio * 0.08))
            return ("IFCPIPESEGMENT", "Tuber\\X2\\00ED\\X0\\a", ".RIGIDSEGMENT.",
                    extrusion(perfil, azar.choice("xy"), largo, 2.8), largo)

        def conducto():
            largo = azar.uniform(1.0, 4.0)
            ancho, alto = azar.choice(((0.3, 0.2), (0.4, 0.25), (0.6, 0.3), (0.8, 0.4)))
            perfil = e("IFCRECTANGLEHOLLOWPROFILEDEF(.AREA.,'%dx%d',#%d,%.3f,%.3f,0.001,$,$)"
                       % (ancho * 1000, alto * 1000, ejes2d, ancho, alto))
            return ("IFCDUCTSEGMENT", "Conducto", ".RIGIDSEGMENT.",
                    extrusion(perfil, azar.choice("xy"), largo, 3.2), largo)

        def barra(tipo, nombre, predefinido):
            largo = azar.uniform(2.0, 8.0)
            ancho, canto = azar.choice(((0.2, 0.3), (0.25, 0.4), (0.3, 0.5), (0.1, 0.1)))
            perfil = e("IFCRECTANGLEPROFILEDEF(.AREA.,'%dx%d',#%d,%.3f,%.3f)"
                       % (ancho * 100, canto * 100, ejes2d, ancho, canto))
            return (tipo, nombre, predefinido, extrusion(perfil, azar.choice("xy"), largo, 3.7), largo)

        def pilar():
            radio = azar.uniform(0.15, 0.3)
            perfil = e("IFCCIRCLEPROFILEDEF(.AREA.,'D%d',#%d,%.4f)" % (radio * 2000, ejes2d, radio))
            return ("IFCCOLUMN", "Pilar", ".COLUMN.", extrusion(perfil, "z", 3.7, 0.0), 3.7)

        def accesorio():
            """A pipe fitting as a tessellated closed prism; counts its triangles."""
            nonlocal teselados, triangulos_teselados
            k = azar.choice((8, 12))
            anillo, ntri, indices = prisma(k)
            radio = azar.uniform(0.03, 0.12)
            largo = azar.uniform(0.1, 0.4)
            puntos = ",".join("(%.4f,%.4f,%.4f)" % (extremo, radio * c, radio * s + 2.8)
                              for extremo in (0.0, largo) for c, s in anillo)
            lista = e("IFCCARTESIANPOINTLIST3D((%s))" % puntos)
            malla = e("IFCTRIANGULATEDFACESET(#%d,$,.T.,(%s),$)" % (lista, indices))
            teselados += 1
            triangulos_teselados += ntri
            return ("IFCPIPEFITTING", "Accesorio", ".JUNCTION.",
                    e("IFCSHAPEREPRESENTATION(#%d,'Body','Tessellation',(#%d))" % (ctx_cuerpo, malla)),
                    largo)

        # Mix of an installations and structure model: pipes dominate the triangle count,
        # beams and members the element count.
        mezcla = [(tuberia, 0.40), (conducto, 0.15), (pilar, 0.05),
                  (lambda: barra("IFCBEAM", "Viga", ".BEAM."), 0.18),
                  (lambda: barra("IFCMEMBER", "Barra", ".MEMBER."), 0.17)]
        total_mezcla = sum(p for _, p in mezcla)
        while elementos < total_elementos:
            elementos += 1
            n = elementos
            planta = n % len(plantas)
            if azar.random() < fraccion_teselados:
                hacer = accesorio
            else:
                x = azar.random() * total_mezcla
                for hacer, p in mezcla:
                    x -= p
                    if x < 0:
                        break
            tipo, nombre, predefinido, rep, largo = hacer()
            forma = e("IFCPRODUCTDEFINITIONSHAPE($,$,(#%d))" % rep)
            x = (n // len(plantas)) % 150 * 2.0
            y = (n // (len(plantas) * 150)) * 2.0
            punto = e("IFCCARTESIANPOINT((%.1f,%.1f,0.))" % (x, y))
            lp = e("IFCLOCALPLACEMENT(#%d,#%d)" % (lp_plantas[planta], e("IFCAXIS2PLACEMENT3D(#%d,$,$)" % punto)))
            elemento = e("%s('%s',#%d,'%s %06d',$,$,#%d,#%d,'%d',%s)"
                         % (tipo, guid(), oh, nombre, n, lp, forma, n, predefinido))
            props = (e("IFCPROPERTYSINGLEVALUE('Reference',$,IFCIDENTIFIER('%s-%d'),$)" % (tipo[3:6], n)),
                     e("IFCPROPERTYSINGLEVALUE('Length',$,IFCLENGTHMEASURE(%.3f),$)" % largo),
                     e("IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.F.),$)"))
            pset = e("IFCPROPERTYSET('%s',#%d,'Pset_Bench',$,(%s))"
                     % (guid(), oh, ",".join("#%d" % p for p in props)))
            e("IFCRELDEFINESBYPROPERTIES('%s',#%d,$,$,(#%d),#%d)" % (guid(), oh, elemento, pset))
            contenidos[planta].append(elemento)

        for planta, elems in zip(plantas, contenidos):
            if elems:
                e("IFCRELCONTAINEDINSPATIALSTRUCTURE('%s',#%d,$,$,(%s),#%d)"
                  % (guid(), oh, ",".join("#%d" % x for x in elems), planta))
        e.vaciar()
        archivo.write(b"ENDSEC;\nEND-ISO-10303-21;\n")
    # The summary first: a file under its final name always has its summary.
    cuentas = {"elementos": elementos, "teselados": teselados,
               "triangulos_teselados": triangulos_teselados, "bytes": os.path.getsize(temporal)}
    with open(ruta + ".resumen", "w") as resumen:
        for clave, valor in cuentas.items():
            resumen.write("%s %d\n" % (clave, valor))
    os.replace(temporal, ruta)
    return cuentas


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("salida", help="path of the IFC file to write")
    parser.add_argument("--elementos", type=int, default=20000, help="number of elements (default 20000)")
    parser.add_argument("--teselados", type=float, default=0.05,
                        help="share of elements given as triangulated face sets (default 0.05)")
    parser.add_argument("--semilla", type=int, default=1, help="random seed (default 1)")
    args = parser.parse_args()
    inicio = time.perf_counter()
    cuentas = escribir(args.salida, args.elementos, args.teselados, args.semilla)
    sys.stderr.write("generar_modelo_triangulos: %s, %.1f MB, %d elements (%d tessellated), %.1f s\n"
                     % (args.salida, cuentas["bytes"] / 1e6, cuentas["elementos"], cuentas["teselados"],
                        time.perf_counter() - inicio))
    return 0


if __name__ == "__main__":
    sys.exit(main())
