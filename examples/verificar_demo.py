#!/usr/bin/env python3
"""Checks the demo building written by generar_demo.py.

Usage: verificar_demo.py [CARPETA] [--conversor RUTA]

1. Runs generar_demo.py into CARPETA (a temporary folder when none is given)
   and reads its JSON summary; runs it a second time into another temporary
   folder and requires byte-identical files.
2. Converts each file with the project's converter (build/bin/IfcConvert by
   default) exactly as the workbench does:
   `IfcConvert in.ifc out.obj --use-world-coords --use-element-names`.
3. Reads each OBJ: one box per group ("g" or "o" line), over the vertices
   that the group's faces use. Every element of the IFC file (read back with
   IfcOpenShell) must be a group with faces, and the summary's counts must
   match the file.
4. Tests every pair of groups of different disciplines (ARQ-EST, ARQ-MEP,
   EST-MEP): two boxes clash when on each of x, y and z
   min(maxA, maxB) - max(minA, minB) > 0.02.
5. The clashes found must be exactly the designed ones of the summary. Each
   designed clash must overlap by at least 0.05 on all three axes, and every
   other pair must be apart by at least 0.05 on some axis, so that the result
   does not hang on the last digits of the tolerance.

Prints what it found; exit status 0 when all holds, 1 otherwise.
"""
import argparse
import json
import os
import subprocess
import sys
import tempfile
import time

AQUI = os.path.dirname(os.path.abspath(__file__))
RAIZ = os.path.dirname(AQUI)
GENERADOR = os.path.join(AQUI, "generar_demo.py")
TOLERANCIA = 0.02
MARGEN = 0.05
PARES = [("ARQ", "EST"), ("ARQ", "MEP"), ("EST", "MEP")]


def leer_obj(ruta):
    """{group name: (min xyz, max xyz)} over the vertices the group's faces
    use, and the list of repeated group names."""
    vertices = []
    usados = {}
    repetidos = []
    actual = None
    with open(ruta, encoding="utf-8", errors="replace") as archivo:
        for linea in archivo:
            if linea.startswith("v "):
                partes = linea.split()
                vertices.append((float(partes[1]), float(partes[2]), float(partes[3])))
            elif linea.startswith("f "):
                if actual is None:
                    actual = "default"
                    usados.setdefault(actual, set())
                for esquina in linea.split()[1:]:
                    i = int(esquina.split("/")[0])
                    usados[actual].add(i - 1 if i > 0 else len(vertices) + i)
            elif linea.startswith("g ") or linea.startswith("o "):
                actual = linea[2:].strip() or "default"
                if actual in usados:
                    repetidos.append(actual)
                usados.setdefault(actual, set())
    cajas = {}
    for nombre, indices in usados.items():
        if not indices:
            continue
        puntos = [vertices[i] for i in indices]
        cajas[nombre] = (tuple(min(p[k] for p in puntos) for k in range(3)),
                         tuple(max(p[k] for p in puntos) for k in range(3)))
    return cajas, repetidos


def solapes(a, b):
    """Overlap on x, y and z of two boxes; negative values are gaps."""
    return tuple(min(a[1][k], b[1][k]) - max(a[0][k], b[0][k]) for k in range(3))


def generar(python, carpeta):
    proceso = subprocess.run([python, GENERADOR, carpeta], capture_output=True)
    if proceso.returncode != 0:
        raise RuntimeError("generar_demo.py terminó con estado %d: %s"
                           % (proceso.returncode, proceso.stderr.decode("utf-8", "replace")))
    return json.loads(proceso.stdout.decode("utf-8"))


def nombres_elementos(ruta_ifc):
    """Names of the file's elements that carry geometry of their own
    (openings excepted)."""
    import ifcopenshell
    modelo = ifcopenshell.open(ruta_ifc)
    return [e.Name for e in modelo.by_type("IfcElement")
            if not e.is_a("IfcFeatureElementSubtraction") and e.Representation is not None]


def main(argv):
    parser = argparse.ArgumentParser(description="Verifica el edificio de demostración.")
    parser.add_argument("carpeta", nargs="?")
    parser.add_argument("--conversor", default=os.path.join(RAIZ, "build", "bin", "IfcConvert"))
    args = parser.parse_args(argv)
    sys.stdout.reconfigure(encoding="utf-8")
    fallos = []

    if not os.access(args.conversor, os.X_OK):
        print("No se encuentra el conversor %s (se construye con: cmake --build build --target IfcConvert)"
              % args.conversor)
        return 1

    temporal = tempfile.TemporaryDirectory(prefix="teskal-demo-")
    carpeta = os.path.abspath(args.carpeta or os.path.join(temporal.name, "demo"))
    python = sys.executable

    t0 = time.monotonic()
    resumen = generar(python, carpeta)
    segundos = time.monotonic() - t0
    print("Generación: %.2f s en %s" % (segundos, carpeta))

    # Determinism: a second run writes the same bytes.
    otra = os.path.join(temporal.name, "segunda")
    generar(python, otra)
    for a in resumen["archivos"]:
        with open(a["ruta"], "rb") as uno, open(os.path.join(otra, a["archivo"]), "rb") as dos:
            if uno.read() != dos.read():
                fallos.append("%s cambia de una ejecución a otra" % a["archivo"])

    # Conversion and boxes.
    cajas = {}
    for a in resumen["archivos"]:
        obj = os.path.join(temporal.name, a["clave"] + ".obj")
        t1 = time.monotonic()
        proceso = subprocess.run([args.conversor, a["ruta"], obj, "--use-world-coords", "--use-element-names"],
                                 capture_output=True)
        if proceso.returncode != 0:
            fallos.append("IfcConvert falló con %s: %s"
                          % (a["archivo"], proceso.stderr.decode("utf-8", "replace").strip()))
            continue
        grupos, repetidos = leer_obj(obj)
        cajas[a["clave"]] = grupos
        nombres = nombres_elementos(a["ruta"])
        faltan = [n for n in nombres if n not in grupos]
        extra = sorted(set(grupos) - set(nombres))
        print("%s %s: %d elementos, %d grupos en el OBJ (conversión %.2f s)%s"
              % (a["clave"], a["archivo"], len(nombres), len(grupos), time.monotonic() - t1,
                 "; además %d grupos que no son elementos: %s" % (len(extra), ", ".join(extra[:3]) +
                                                                   (", ..." if len(extra) > 3 else ""))
                 if extra else ""))
        if len(nombres) != a["elementos"]:
            fallos.append("%s: el resumen dice %d elementos y el archivo tiene %d"
                          % (a["archivo"], a["elementos"], len(nombres)))
        if len(set(nombres)) != len(nombres):
            fallos.append("%s: hay nombres de elemento repetidos" % a["archivo"])
        if faltan:
            fallos.append("%s: elementos sin geometría en el OBJ: %s" % (a["archivo"], ", ".join(faltan)))
        if repetidos:
            fallos.append("%s: grupos repetidos en el OBJ: %s" % (a["archivo"], ", ".join(repetidos)))

    # Clashes between disciplines.
    encontradas = {}
    peor_separacion = {}   # per pair of disciplines: the non-clashing pair closest to clashing
    for ka, kb in PARES:
        if ka not in cajas or kb not in cajas:
            continue
        for na, ca in cajas[ka].items():
            for nb, cb in cajas[kb].items():
                s = solapes(ca, cb)
                if all(v > TOLERANCIA for v in s):
                    encontradas[((ka, na), (kb, nb))] = s
                else:
                    # Ties go to the first names in code-point order: the
                    # converter writes groups in whatever order its threads end.
                    candidato = (min(s), na, nb)
                    actual = peor_separacion.get(ka + kb)
                    if actual is None or (candidato[0], actual[1], actual[2]) > (actual[0], na, nb):
                        peor_separacion[ka + kb] = candidato

    def clave(par):
        a, b = (tuple(par[0]), tuple(par[1]))
        return (a, b) if a <= b else (b, a)

    disenadas = {clave(p) for p in resumen["interferencias"]}
    halladas = {clave(p): s for p, s in encontradas.items()}

    print()
    print("Interferencias encontradas (tolerancia %.3f m):" % TOLERANCIA)
    for (a, b), s in sorted(halladas.items()):
        marca = "" if (a, b) in disenadas else "   <- no diseñada"
        print("  %s «%s» × %s «%s»: solape x %.3f  y %.3f  z %.3f%s" % (a[0], a[1], b[0], b[1], *s, marca))
        if (a, b) in disenadas and min(s) < MARGEN:
            fallos.append("la interferencia %s × %s solapa sólo %.3f m en un eje" % (a[1], b[1], min(s)))
    for a, b in sorted(disenadas - set(halladas)):
        print("  FALTA %s «%s» × %s «%s»" % (a[0], a[1], b[0], b[1]))
    for par in sorted(set(halladas) - disenadas):
        fallos.append("interferencia no diseñada: %s «%s» × %s «%s»" % (par[0][0], par[0][1], par[1][0], par[1][1]))
    for par in sorted(disenadas - set(halladas)):
        fallos.append("interferencia diseñada no encontrada: %s «%s» × %s «%s»"
                      % (par[0][0], par[0][1], par[1][0], par[1][1]))
    print("Diseñadas %d, encontradas %d" % (len(disenadas), len(halladas)))

    print()
    print("Separación mínima entre elementos de especialidades distintas que no interfieren:")
    for ka, kb in PARES:
        if ka + kb in peor_separacion:
            v, na, nb = peor_separacion[ka + kb]
            print("  %s-%s: %.3f m entre «%s» y «%s»" % (ka, kb, -v, na, nb))
            if -v < MARGEN - 1e-9:
                fallos.append("%s «%s» y %s «%s» están separados sólo %.3f m" % (ka, na, kb, nb, -v))

    print()
    if fallos:
        for f in fallos:
            print("FALLO: " + f)
        return 1
    print("OK: el edificio de demostración tiene exactamente las %d interferencias diseñadas." % len(disenadas))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
