"""Where the IFC geometry of walls says a horizontal plane cuts them: for
every wall whose Name no other product bears and whose geometry the plane
crosses, the box on the plan of the points where its triangle edges cross the
plane. Geometry from IfcOpenShell's own iterator in world coordinates.
Prints JSON: [{"nombre", "min": [x, y], "max": [x, y]}].

Usage: corte_muro.py FILE.ifc HEIGHT"""
import json
import sys

import ifcopenshell
import ifcopenshell.geom

modelo = ifcopenshell.open(sys.argv[1])
z = float(sys.argv[2])

nombres = {}
for p in modelo.by_type("IfcProduct"):
    if p.Name:
        nombres[p.Name] = nombres.get(p.Name, 0) + 1

ajustes = ifcopenshell.geom.settings()
ajustes.set("use-world-coords", True)
resultado = []
for muro in modelo.by_type("IfcWall"):
    if not muro.Name or nombres.get(muro.Name) != 1 or not muro.Representation:
        continue
    try:
        forma = ifcopenshell.geom.create_shape(ajustes, muro)
    except Exception:
        continue
    v = forma.geometry.verts
    f = forma.geometry.faces
    puntos = []
    for i in range(0, len(f), 3):
        tri = [(v[3 * k], v[3 * k + 1], v[3 * k + 2]) for k in f[i:i + 3]]
        for a, b in ((tri[0], tri[1]), (tri[1], tri[2]), (tri[2], tri[0])):
            da, db = a[2] - z, b[2] - z
            if (da > 0) != (db > 0):
                t = da / (da - db)
                puntos.append((a[0] + (b[0] - a[0]) * t, a[1] + (b[1] - a[1]) * t))
    if puntos:
        xs = [p[0] for p in puntos]
        ys = [p[1] for p in puntos]
        resultado.append({"nombre": muro.Name, "min": [min(xs), min(ys)], "max": [max(xs), max(ys)]})
json.dump(resultado, sys.stdout)
