"""Reads a DXF with ezdxf, audits it and prints JSON: the number of audit
errors, the DXF version, and the count of entities per layer in the model
space. Exits with 3 when ezdxf is not installed.

Usage: leer_dxf.py FILE.dxf [PNG]  (with PNG, also draws it with ezdxf's
drawing add-on and matplotlib)"""
import json
import sys

try:
    import ezdxf
except ImportError:
    sys.exit(3)

doc = ezdxf.readfile(sys.argv[1])
auditoria = doc.audit()
capas = {}
for e in doc.modelspace():
    capas[e.dxf.layer] = capas.get(e.dxf.layer, 0) + 1
if len(sys.argv) > 2:
    import matplotlib
    matplotlib.use("Agg")
    from ezdxf.addons.drawing import matplotlib as dibujo
    dibujo.qsave(doc.modelspace(), sys.argv[2], bg="#FFFFFF")
json.dump({"errores": len(auditoria.errors), "version": doc.dxfversion, "capas": capas,
           "textos": [e.dxf.text for e in doc.modelspace().query("TEXT")]}, sys.stdout)
