// Packs the demo building's three discipline models into a shareable
// package, with the workbench's own package writer: architecture, structure
// and services, each in its discipline with its default colour.
//
// Usage: empaquetar_demo CARPETA_IFC DESTINO.teskalpkg
#include "federation/Especialidades.h"
#include "persistence/GestorProyecto.h"

#include <QCoreApplication>
#include <cstdio>

using namespace teskal;

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "Uso: empaquetar_demo CARPETA_IFC DESTINO.teskalpkg\n");
        return 2;
    }
    const std::string carpeta = argv[1];
    const std::pair<const char*, const char*> modelos[] = {
        {"ARQ", "arquitectura.ifc"}, {"EST", "estructura.ifc"}, {"MEP", "mep.ifc"}};
    const auto porDefecto = especialidadesPorDefecto();
    ProyectoTESKAL p;
    p.ordenEspecialidades = ordenEspecialidadesPorDefecto();
    std::vector<std::vector<std::string>> rutas;
    for (const std::string& clave : p.ordenEspecialidades) {
        const EspecialidadBIM& e = porDefecto.at(clave);
        EspecialidadGuardada g{clave, e.nombre, e.icono, e.colorOriginal.r, e.colorOriginal.g, e.colorOriginal.b, true, {}};
        rutas.emplace_back();
        for (const auto& [k, archivo] : modelos)
            if (clave == k) {
                g.modelos.push_back({archivo, carpeta + "/" + archivo, std::nullopt, true, 0});
                rutas.back().push_back(carpeta + "/" + archivo);
            }
        p.especialidades.push_back(std::move(g));
    }
    const std::string error = exportarPaquete(argv[2], p, rutas);
    if (!error.empty()) {
        std::fprintf(stderr, "No se pudo empaquetar la demostración: %s\n", error.c_str());
        return 1;
    }
    return 0;
}
