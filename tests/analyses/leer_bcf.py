"""Opens a BCF 2.1 archive with bcf-client, as another coordination tool would,
and prints what it read as JSON on standard output.

Usage: leer_bcf.py archivo.bcf

{"version": VersionId, "proyecto": project name,
 "extensiones": {"tipos": [...], "estados": [...], "etiquetas": [...]},
 "temas": [{"guid", "titulo", "tipo", "estado", "etiquetas": [...], "fecha",
            "autor", "descripcion", "vistas": [{"guid", "archivo",
            "camara": {"posicion", "direccion", "arriba", "campo"} or null,
            "componentes": [{"ifcGuid", "sistema", "herramienta"}],
            "snapshot": MD5 of its bytes or null}]}]}
Topics are sorted by their folder. Any archive the reader cannot parse ends
the script with the reader's error and a non-zero status."""

import hashlib
import json
import sys

from bcf.v2.bcfxml import BcfXml


def vector(v):
    return [v.x, v.y, v.z]


def vista(handler):
    info = handler.visualization_info
    camara = None
    if info.perspective_camera is not None:
        c = info.perspective_camera
        camara = {
            "posicion": vector(c.camera_view_point),
            "direccion": vector(c.camera_direction),
            "arriba": vector(c.camera_up_vector),
            "campo": c.field_of_view,
        }
    componentes = []
    if info.components is not None and info.components.selection is not None:
        for k in info.components.selection.component:
            componentes.append(
                {"ifcGuid": k.ifc_guid, "sistema": k.originating_system, "herramienta": k.authoring_tool_id}
            )
    return {
        "guid": info.guid,
        "camara": camara,
        "componentes": componentes,
        "snapshot": hashlib.md5(handler.snapshot).hexdigest() if handler.snapshot is not None else None,
    }


def lista(grupo, campo):
    return list(getattr(grupo, campo)) if grupo is not None else []


def main(ruta):
    with BcfXml.load(ruta) as bcf:
        ext = bcf.extensions
        resultado = {
            "version": bcf.version.version_id,
            "proyecto": bcf.project.name if bcf.project else None,
            "extensiones": {
                "tipos": lista(ext.topic_types, "topic_type") if ext else [],
                "estados": lista(ext.topic_statuses, "topic_status") if ext else [],
                "etiquetas": lista(ext.topic_labels, "topic_label") if ext else [],
            },
            "temas": [],
        }
        for carpeta in sorted(bcf.topics):
            tema = bcf.topics[carpeta]
            t = tema.topic
            vistas = []
            for archivo, handler in tema.viewpoints.items():
                v = vista(handler)
                v["archivo"] = archivo
                vistas.append(v)
            resultado["temas"].append(
                {
                    "carpeta": carpeta,
                    "guid": t.guid,
                    "titulo": t.title,
                    "tipo": t.topic_type,
                    "estado": t.topic_status,
                    "etiquetas": list(t.labels),
                    "fecha": t.creation_date.to_datetime().isoformat(),
                    "autor": t.creation_author,
                    "descripcion": t.description,
                    "vistas": vistas,
                }
            )
    json.dump(resultado, sys.stdout, ensure_ascii=False)


if __name__ == "__main__":
    main(sys.argv[1])
