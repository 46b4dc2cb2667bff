// Benchmark qto: the quantity engine (calcularGruposQTO) over the render
// benchmark's generated federation, about 108,000 element nodes in nine
// models of three disciplines, with a property index of the same names:
// each element its IFC class and twelve properties.
//
// Printed first: the CSV of every element with the twelve properties as
// extra columns (TablaQTO::textoCSV), in MB/s. Then the engine, median of
// its runs in ms, against the literal form: every node's box read with
// Node::boundingBox (its subtree walked again), every item's properties
// copied into a map of its own through full lookups of discipline and name,
// groups kept in a map by the text key "tipo|especialidad". Both must give
// the same groups, counts and sums; the benchmark stops if they differ.
//
// Usage: bench_qto [--elementos N] [--repeticiones N] [--solo motor|csv]
// (--solo runs one part alone, for a profiler.)

#include "FederacionGenerada.h"
#include "Medicion.h"
#include "qto/TablaQTO.h"

#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <thread>

using namespace teskal;
using namespace teskal::bench;

namespace {

// The class the index gives an element, by the family its name begins with.
std::string tipoDeNombre(const std::string& nombre) {
    static const std::pair<const char*, const char*> familias[] = {
        {"Muro", "IFCWALL"},           {"Suelo", "IFCSLAB"},
        {"Mobiliario", "IFCFURNISHINGELEMENT"}, {"Pilar", "IFCCOLUMN"},
        {"Viga", "IFCBEAM"},           {"Tubería", "IFCPIPESEGMENT"},
        {"Conducto", "IFCDUCTSEGMENT"}, {"Terminal", "IFCFLOWTERMINAL"}};
    for (const auto& [prefijo, tipo] : familias)
        if (nombre.starts_with(prefijo)) return tipo;
    return "IFCBUILDINGELEMENTPROXY";
}

const std::string sep(separadorPropiedad);

std::vector<std::string> clavesPropiedades() {
    std::vector<std::string> c;
    for (const char* p : {"Referencia", "EsExterno", "Resistencia al fuego", "Acústica"})
        c.push_back("Pset_Comun" + sep + p);
    for (const char* p : {"Material", "Acabado", "Fabricante", "Modelo"})
        c.push_back("Pset_Fabricante" + sep + p);
    for (const char* p : {"Longitud", "Área", "Volumen neto", "Peso"})
        c.push_back("Qto_Base" + sep + p);
    return c;
}

// The index as the text index leaves it: by discipline and element name.
PropiedadesPorEspecialidad indicePara(const ContentView& cv, const std::vector<std::string>& claves) {
    PropiedadesPorEspecialidad indice;
    std::size_t k = 0;
    for (const char* clave : disciplinas) {
        auto& modelo = indice[clave];
        cv.especialidades.at(clave).nodoRaiz->enumerateChildNodes([&](Node& n, bool&) {
            if (!n.name() || !n.geometry()) return;
            PropiedadesElemento p;
            p.insert_or_assign(std::string(claveTipoIFC), tipoDeNombre(*n.name()));
            for (std::size_t j = 0; j < claves.size(); ++j)
                p.insert_or_assign(claves[j], j == 0 ? "R-" + std::to_string(++k) : "valor " + std::to_string(j % 5));
            modelo.emplace(*n.name(), std::move(p));
        });
    }
    return indice;
}

// The literal form, step by step.
struct GrupoLiteral {
    std::string tipoIFC, tipoNombre, especialidad;
    float densidad = 0;
    struct Item {
        std::string nombre;
        float dx, dy, dz;
        std::map<std::string, std::string> propiedades;
    };
    std::vector<Item> items;
};

std::vector<GrupoLiteral> calcularLiteral(const ContentView& cv) {
    std::map<std::string, GrupoLiteral> grupos;
    for (const std::string& clave : cv.ordenEspecialidades) {
        const auto esp = cv.especialidades.find(clave);
        if (esp == cv.especialidades.end() || !esp->second.nodoRaiz) continue;
        esp->second.nodoRaiz->enumerateChildNodes([&](Node& n, bool&) {
            if (!n.name() || n.name()->empty()) return;
            const Box b = n.boundingBox();
            const double ex = double(b.max.x) - double(b.min.x), ey = double(b.max.y) - double(b.min.y),
                         ez = double(b.max.z) - double(b.min.z);
            if (!(std::fabs(float(ex)) > 0.001f) && !(std::fabs(float(ey)) > 0.001f) &&
                !(std::fabs(float(ez)) > 0.001f))
                return;
            std::map<std::string, std::string> propiedades;
            const auto indice = cv.propiedadesIFC.find(clave);
            if (indice != cv.propiedadesIFC.end() && indice->second.contains(*n.name()))
                propiedades = std::map<std::string, std::string>(indice->second.at(*n.name()).begin(),
                                                                 indice->second.at(*n.name()).end());
            const std::string tipo = propiedades.contains(std::string(claveTipoIFC))
                                         ? propiedades.at(std::string(claveTipoIFC))
                                         : std::string("IFCBUILDINGELEMENTPROXY");
            const std::string llave = tipo + "|" + esp->second.nombre;
            if (!grupos.contains(llave))
                grupos[llave] = {tipo, nombreTipoQTO(tipo), esp->second.nombre, densidadTipoQTO(tipo), {}};
            grupos[llave].items.push_back({*n.name(), std::fabs(float(ex)), std::fabs(float(ey)),
                                           std::fabs(float(ez)), propiedades});
        });
    }
    std::vector<GrupoLiteral> r;
    for (auto& [llave, g] : grupos) r.push_back(std::move(g));
    std::stable_sort(r.begin(), r.end(), [](const GrupoLiteral& a, const GrupoLiteral& b) {
        return a.especialidad != b.especialidad ? a.especialidad < b.especialidad : a.tipoNombre < b.tipoNombre;
    });
    return r;
}

bool iguales(const std::vector<GrupoQTO>& a, const std::vector<GrupoLiteral>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t k = 0; k < a.size(); ++k) {
        if (a[k].tipoIFC != b[k].tipoIFC || a[k].especialidad != b[k].especialidad ||
            a[k].items.size() != b[k].items.size())
            return false;
        for (std::size_t i = 0; i < a[k].items.size(); ++i) {
            const ItemQTO& x = a[k].items[i];
            const auto& y = b[k].items[i];
            if (x.nombre != y.nombre || x.dx != y.dx || x.dy != y.dy || x.dz != y.dz ||
                std::map<std::string, std::string>(x.propiedades.begin(), x.propiedades.end()) !=
                    y.propiedades)
                return false;
        }
    }
    return true;
}

void uso() {
    std::fprintf(stderr, "uso: bench_qto [--elementos N] [--repeticiones N] [--solo motor|csv]\n");
    std::exit(2);
}

} // namespace

int main(int argc, char** argv) {
    int elementosPorModelo = 12000;
    int repeticiones = 7;
    std::string solo;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--elementos" && i + 1 < argc)
            elementosPorModelo = std::max(1, std::atoi(argv[++i]));
        else if (a == "--repeticiones" && i + 1 < argc)
            repeticiones = std::max(1, std::atoi(argv[++i]));
        else if (a == "--solo" && i + 1 < argc)
            solo = argv[++i];
        else
            uso();
    }
    QCoreApplication app(argc, argv);
    imprimirCargaMaquina();

    ContentView cv("/no/existe");
    Conteo conteo;
    construirFederacion(cv, elementosPorModelo, conteo);
    const auto claves = clavesPropiedades();
    cv.propiedadesIFC = indicePara(cv, claves);
    std::printf("qto: %zu element nodes in 9 models of 3 disciplines, %zu properties each and the class\n",
                conteo.nodos, claves.size());

    if (solo == "motor") {
        Tiempos motor;
        std::vector<GrupoQTO> a;
        for (int r = 0; r < repeticiones; ++r) {
            a.clear();
            motor.anadir(cronometrar([&] {
                a = calcularGruposQTO(cv.especialidades, cv.ordenEspecialidades, cv.propiedadesIFC);
            }));
        }
        std::printf("engine: median %.1f ms (CPU %.1f)\n", motor.mediana() * 1e3, motor.medianaCPU() * 1e3);
        return 0;
    }

    // The CSV of every element, the twelve properties as extra columns.
    TablaQTO tabla;
    tabla.grupos = calcularGruposQTO(cv.especialidades, cv.ordenEspecialidades, cv.propiedadesIFC);
    tabla.parametrosExtra = claves;
    std::size_t bytes = 0;
    Tiempos csv;
    for (int r = 0; r < repeticiones; ++r)
        csv.anadir(cronometrar([&] { bytes = tabla.textoCSV().size(); }));
    std::printf("csv: %.1f MB of %zu rows in %.1f ms (median of %d): %.0f MB/s (%.0f MB/s of CPU time)\n",
                megabytes(bytes), conteo.nodos, csv.mediana() * 1e3, repeticiones, megabytes(bytes) / csv.mediana(),
                megabytes(bytes) / csv.medianaCPU());
    if (solo == "csv") return 0;

    // The engine's runs, then the literal form's, so that neither pays for
    // the memory the other freed.
    Tiempos motor, literal;
    std::vector<GrupoQTO> a;
    std::vector<GrupoLiteral> b;
    for (int r = 0; r < repeticiones; ++r) {
        a.clear();
        motor.anadir(cronometrar([&] {
            a = calcularGruposQTO(cv.especialidades, cv.ordenEspecialidades, cv.propiedadesIFC);
        }));
    }
    for (int r = 0; r < repeticiones; ++r) {
        b.clear();
        literal.anadir(cronometrar([&] { b = calcularLiteral(cv); }));
    }
    const std::size_t grupos = a.size();
    if (!iguales(a, b)) {
        std::fprintf(stderr, "qto: the engine and the literal form differ\n");
        return 1;
    }
    std::printf("engine: %zu groups, median %.1f ms (best %.1f, CPU %.1f) of %d runs\n", grupos,
                motor.mediana() * 1e3, motor.mejor() * 1e3, motor.medianaCPU() * 1e3, repeticiones);
    std::printf("literal: median %.1f ms (best %.1f, CPU %.1f), same groups and items\n", literal.mediana() * 1e3,
                literal.mejor() * 1e3, literal.medianaCPU() * 1e3);
    imprimirFigura("qto", motor.mediana() * 1e3, "ms", literal.mediana() / motor.mediana(), "literal");
    return 0;
}
