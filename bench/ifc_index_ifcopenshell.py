#!/usr/bin/env python3
"""Baseline of the ifc-index benchmark: IfcOpenShell opening an IFC file and
reading the property sets of every product with
ifcopenshell.util.element.get_psets, the usual way a Python tool builds the
same index that teskal::leerIndiceIFC builds by Name.

Usage: ifc_index_ifcopenshell.py file.ifc [--repeticiones 1]

Prints the time of the open and of the property walk, the counts it found and,
as its last line, "baseline: ifcopenshell-get_psets MBS MB/s cpu MBS MB/s":
the best run's throughput in MB (10^6 bytes) per second over the whole file,
by wall-clock and by CPU time.
"""
import argparse
import gc
import os
import sys
import time

import ifcopenshell
import ifcopenshell.util.element


def una_pasada(ruta):
    cpu = time.process_time()
    inicio = time.perf_counter()
    modelo = ifcopenshell.open(ruta)
    abierto = time.perf_counter()
    productos = 0
    propiedades = 0
    for producto in modelo.by_type("IfcProduct"):
        psets = ifcopenshell.util.element.get_psets(producto)
        productos += 1
        for pset in psets.values():
            propiedades += len(pset) - 1  # every dictionary carries its "id"
    fin = time.perf_counter()
    cpu = time.process_time() - cpu
    del modelo
    gc.collect()
    return abierto - inicio, fin - abierto, cpu, productos, propiedades


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("ruta")
    parser.add_argument("--repeticiones", type=int, default=1)
    args = parser.parse_args()
    tamano = os.path.getsize(args.ruta)
    mejor = None
    mejor_cpu = None
    for i in range(max(1, args.repeticiones)):
        abrir, recorrer, cpu, productos, propiedades = una_pasada(args.ruta)
        total = abrir + recorrer
        print("ifcopenshell %s: run %d: open %.2f s + get_psets %.2f s = %.2f s (CPU %.2f s), "
              "%d products, %d properties"
              % (ifcopenshell.version, i + 1, abrir, recorrer, total, cpu, productos, propiedades), flush=True)
        mejor = total if mejor is None else min(mejor, total)
        mejor_cpu = cpu if mejor_cpu is None else min(mejor_cpu, cpu)
    print("ifcopenshell: %.1f MB in %.2f s (best; CPU %.2f s)" % (tamano / 1e6, mejor, mejor_cpu))
    print("baseline: ifcopenshell-get_psets %.3f MB/s cpu %.3f MB/s"
          % (tamano / 1e6 / mejor, tamano / 1e6 / mejor_cpu))
    return 0


if __name__ == "__main__":
    sys.exit(main())
