// Benchmark obj-load: teskal::cargarOBJ over the OBJ that the converter
// writes for a large model (bench/generar_modelo_triangulos.py, converted by
// IfcConvert --use-world-coords --use-element-names), against tinyobjloader
// loading the same file in the same process.
//
// Usage: bench_obj_load FILE.obj [--repeticiones N]
//
// One untimed warm-up load puts the file in the page cache; then N timed
// loads with each reader. The figure is the best wall-clock time of each;
// CPU times are printed beside them, as they vary less on a shared machine.
// Both readers must find the same number of triangles. The memory the loaded
// model holds is reported two ways: an estimate from the capacities of its
// vectors plus the node, geometry and material objects, and the growth of
// the process's resident set while the model is held.

#include "Medicion.h"
#include "federation/CargaOBJ.h"

#include <tiny_obj_loader.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>

using namespace teskal;
using namespace teskal::bench;

namespace {

// Estimated cost of one heap block beyond its payload (glibc's header and
// rounding), and of a shared_ptr control block of a plain new.
constexpr std::size_t cabeceraMalloc = 16;
constexpr std::size_t bloqueControl = 24 + cabeceraMalloc;

std::size_t heapCadena(const std::string& s) {
    // Short strings live inside the object.
    return s.capacity() > 15 ? s.capacity() + 1 + cabeceraMalloc : 0;
}

template <class T> std::size_t heapVector(const std::vector<T>& v) {
    return v.capacity() ? v.capacity() * sizeof(T) + cabeceraMalloc : 0;
}

// What a loaded model holds, in bytes: arrays, indices and the objects around them.
struct Huella {
    std::size_t triangulos = 0;
    std::size_t nodos = 0;
    std::size_t vertices = 0; // vertex and normal arrays
    std::size_t indices = 0;
    std::size_t estructura = 0; // nodes, geometries, materials, names, child lists

    std::size_t total() const { return vertices + indices + estructura; }
};

void medir(const Node& n, Huella& h) {
    ++h.nodos;
    // Node::crear uses a plain new: the node and its control block are two blocks.
    h.estructura += sizeof(Node) + cabeceraMalloc + bloqueControl;
    if (n.name()) h.estructura += heapCadena(*n.name());
    h.estructura += heapVector(n.childNodes());
    if (const Geometry* g = n.geometry().get()) {
        // make_shared: object and control block in one block.
        h.estructura += sizeof(Geometry) + 16 + cabeceraMalloc + heapCadena(g->name);
        h.vertices += heapVector(g->vertices) + heapVector(g->normales);
        h.estructura += heapVector(g->elementos) + heapVector(g->materiales);
        for (const auto& e : g->elementos) {
            h.indices += heapVector(e.indices);
            if (e.primitiva == Primitiva::Triangulos) h.triangulos += e.indices.size() / 3;
        }
        for (const auto& m : g->materiales)
            if (m) h.estructura += sizeof(Material) + 16 + cabeceraMalloc;
    }
    for (const auto& hijo : n.childNodes()) medir(*hijo, h);
}

struct ResultadoTinyobj {
    bool ok = false;
    std::size_t triangulos = 0;
    std::size_t formas = 0;
    std::size_t bytes = 0; // capacities of its arrays
};

ResultadoTinyobj cargarTinyobj(const std::string& ruta) {
    tinyobj::attrib_t attrib;
    std::vector<tinyobj::shape_t> formas;
    std::vector<tinyobj::material_t> materiales;
    std::string avisos, error;
    std::ifstream archivo(ruta);
    ResultadoTinyobj r;
    // No material reader: the MTL is never read, as cargarOBJ never reads it.
    // No fallback vertex colours: nothing the file doesn't have is built.
    r.ok = tinyobj::LoadObj(&attrib, &formas, &materiales, &avisos, &error, &archivo, nullptr, true,
                            false);
    r.formas = formas.size();
    r.bytes =
        attrib.vertices.capacity() * sizeof(float) + attrib.normals.capacity() * sizeof(float) +
        attrib.texcoords.capacity() * sizeof(float) + attrib.colors.capacity() * sizeof(float);
    for (const auto& f : formas) {
        r.triangulos += f.mesh.num_face_vertices.size();
        r.bytes += f.mesh.indices.capacity() * sizeof(tinyobj::index_t) +
                   f.mesh.num_face_vertices.capacity() +
                   f.mesh.material_ids.capacity() * sizeof(int) +
                   f.mesh.smoothing_group_ids.capacity() * sizeof(unsigned) + sizeof(f) +
                   f.name.capacity();
    }
    return r;
}

[[noreturn]] void uso() {
    std::fprintf(stderr, "Uso: bench_obj_load ARCHIVO.obj [--repeticiones N]\n");
    std::exit(2);
}

} // namespace

int main(int argc, char** argv) {
    std::string ruta;
    int repeticiones = 3;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--repeticiones" && i + 1 < argc)
            repeticiones = std::max(1, std::atoi(argv[++i]));
        else if (!a.starts_with("--") && ruta.empty())
            ruta = a;
        else
            uso();
    }
    if (ruta.empty()) uso();
    const long long bytes = tamanoArchivo(ruta);
    if (bytes <= 0) {
        std::fprintf(stderr, "obj-load: no se puede leer %s\n", ruta.c_str());
        return 1;
    }
    std::printf("obj-load: %s, %.1f MB\n", ruta.c_str(), megabytes(bytes));

    // Warm-up: page cache, and the model's footprint against the resident set.
    const long long rssAntes = memoriaProceso("VmRSS");
    Huella huella;
    long long rssConModelo = 0;
    {
        std::shared_ptr<Node> modelo;
        const double s = cronometrar([&] { modelo = cargarOBJ(ruta); }).pared;
        if (!modelo) {
            std::fprintf(stderr, "obj-load: cargarOBJ gave no model for %s\n", ruta.c_str());
            return 1;
        }
        medir(*modelo, huella);
        rssConModelo = memoriaProceso("VmRSS");
        std::printf("warm-up: %.3f s, %zu element nodes, %zu triangles\n", s, huella.nodos - 1,
                    huella.triangulos);
    }
    if (huella.triangulos == 0) {
        std::fprintf(stderr, "obj-load: the model has no triangles\n");
        return 1;
    }

    Tiempos propio;
    for (int i = 0; i < repeticiones; ++i) {
        std::shared_ptr<Node> modelo;
        const Medida m = cronometrar([&] { modelo = cargarOBJ(ruta); });
        propio.anadir(m);
        std::printf("cargarOBJ run %d: %.1f ms (CPU %.1f ms)\n", i + 1, m.pared * 1e3, m.cpu * 1e3);
        if (!modelo) return 1;
    }

    Tiempos tiny;
    ResultadoTinyobj rt;
    for (int i = 0; i < repeticiones; ++i) {
        const Medida m = cronometrar([&] { rt = cargarTinyobj(ruta); });
        tiny.anadir(m);
        std::printf("tinyobjloader run %d: %.1f ms (CPU %.1f ms)\n", i + 1, m.pared * 1e3,
                    m.cpu * 1e3);
        if (!rt.ok) {
            std::fprintf(stderr, "obj-load: tinyobjloader could not read %s\n", ruta.c_str());
            return 1;
        }
    }
    if (rt.triangulos != huella.triangulos) {
        std::fprintf(stderr, "obj-load: cargarOBJ found %zu triangles, tinyobjloader %zu\n",
                     huella.triangulos, rt.triangulos);
        return 1;
    }

    const double t = static_cast<double>(huella.triangulos);
    std::printf("triangles: %zu (both readers), %zu groups (tinyobjloader shapes: %zu)\n",
                huella.triangulos, huella.nodos - 1, rt.formas);
    std::printf("cargarOBJ: best %.1f ms, median %.1f ms, %.1f MB/s, %.2f M triangles/s\n",
                propio.mejor() * 1e3, propio.mediana() * 1e3, megabytes(bytes) / propio.mejor(),
                t / propio.mejor() / 1e6);
    std::printf("tinyobjloader: best %.1f ms, median %.1f ms, %.1f MB/s\n", tiny.mejor() * 1e3,
                tiny.mediana() * 1e3, megabytes(bytes) / tiny.mejor());
    std::printf("by CPU time: cargarOBJ best %.1f ms, tinyobjloader best %.1f ms, ratio %.2f\n",
                propio.mejorCPU() * 1e3, tiny.mejorCPU() * 1e3,
                tiny.mejorCPU() / propio.mejorCPU());
    std::printf("model held by cargarOBJ: %.1f bytes/triangle (vertices and normals %.1f, indices "
                "%.1f, nodes/geometries/materials %.1f), %.0f MiB in all\n",
                huella.total() / t, huella.vertices / t, huella.indices / t, huella.estructura / t,
                mebibytes(static_cast<long long>(huella.total())));
    std::printf("resident set: %.0f MiB before loading, %.0f MiB with the model held (%.1f "
                "bytes/triangle), peak %.0f MiB\n",
                mebibytes(rssAntes), mebibytes(rssConModelo),
                static_cast<double>(rssConModelo - rssAntes) / t,
                mebibytes(memoriaProceso("VmHWM")));
    std::printf("tinyobjloader's arrays, for comparison: %.1f bytes/triangle (shared vertices, "
                "not yet unrolled for drawing)\n",
                static_cast<double>(rt.bytes) / t);
    const double razon = tiny.mejor() / propio.mejor();
    std::printf("target: cargarOBJ at least 3x as fast as tinyobjloader: %s\n",
                razon >= 3 ? "met" : "NOT met");
    imprimirFigura("obj-load", propio.mejor() * 1e3, "ms", razon, "tinyobjloader");
    return 0;
}
