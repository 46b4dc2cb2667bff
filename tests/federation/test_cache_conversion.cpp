// The conversion cache: a hit gives the uncached model element by element
// without running the converter, a changed byte or a damaged entry converts
// again, the bound evicts the least recently used entry, and two conversions
// of one file at once both come through and leave one entry.
#include "federation/CacheConversion.h"
#include "federation/ConversionIFC.h"
#include "utilidades_prueba.h"

#include <QFile>
#include <QThreadPool>
#include <algorithm>
#include <utility>
#include <filesystem>
#include <gtest/gtest.h>

namespace teskal {
namespace {

namespace fs = std::filesystem;

const std::string muestra = TESKAL_SAMPLES_DIR "/IfcOpenHouse_IFC4.ifc";

// The same tree: names, identities, transforms and every geometry's numbers
// and material colours. The converter writes its elements in the order its
// threads finish them, so children are paired by GlobalId and name.
void compararNodos(const Node& a, const Node& b, const std::string& ruta) {
    SCOPED_TRACE(ruta);
    ASSERT_EQ(a.name(), b.name());
    ASSERT_EQ(a.globalId(), b.globalId());
    ASSERT_EQ(a.claseIFC(), b.claseIFC());
    ASSERT_EQ(a.position(), b.position());
    ASSERT_EQ(static_cast<bool>(a.geometry()), static_cast<bool>(b.geometry()));
    if (a.geometry()) {
        const Geometry& ga = *a.geometry();
        const Geometry& gb = *b.geometry();
        ASSERT_EQ(ga.vertices, gb.vertices);
        ASSERT_EQ(ga.normales, gb.normales);
        ASSERT_EQ(ga.elementos.size(), gb.elementos.size());
        for (std::size_t i = 0; i < ga.elementos.size(); ++i)
            ASSERT_EQ(ga.elementos[i].indices, gb.elementos[i].indices);
        ASSERT_EQ(ga.materiales.size(), gb.materiales.size());
        for (std::size_t i = 0; i < ga.materiales.size(); ++i)
            ASSERT_EQ(ga.materiales[i]->diffuse(), gb.materiales[i]->diffuse());
    }
    ASSERT_EQ(a.childNodes().size(), b.childNodes().size());
    auto ordenados = [](const Node& n) {
        std::vector<const Node*> hijos;
        for (const auto& h : n.childNodes()) hijos.push_back(h.get());
        std::stable_sort(hijos.begin(), hijos.end(), [](const Node* x, const Node* y) {
            return std::make_pair(x->globalId(), x->name().value_or("")) <
                   std::make_pair(y->globalId(), y->name().value_or(""));
        });
        return hijos;
    };
    const auto ha = ordenados(a), hb = ordenados(b);
    for (std::size_t i = 0; i < ha.size(); ++i) compararNodos(*ha[i], *hb[i], ruta + "/" + ha[i]->name().value_or("?"));
}

void compararModelos(const ModeloConvertido& a, const ModeloConvertido& b) {
    ASSERT_TRUE(a.modelo && b.modelo);
    compararNodos(*a.modelo, *b.modelo, "modelo");
    EXPECT_EQ(a.propiedades, b.propiedades);
    EXPECT_EQ(a.propiedadesPorGlobalId, b.propiedadesPorGlobalId);
    EXPECT_EQ(a.globalIds, b.globalIds);
    ASSERT_EQ(a.grillas.size(), b.grillas.size());
    for (std::size_t i = 0; i < a.grillas.size(); ++i) {
        EXPECT_EQ(a.grillas[i].tag, b.grillas[i].tag);
        EXPECT_EQ(a.grillas[i].esU, b.grillas[i].esU);
        EXPECT_EQ(a.grillas[i].puntos, b.grillas[i].puntos);
    }
}

class CacheConversion : public ::testing::Test {
protected:
    void SetUp() override {
        if (!fs::exists(muestra)) GTEST_SKIP() << "no está la muestra " << muestra;
        // The real converter behind a script that counts its runs: the
        // cache's key follows the script, and the count tells a hit.
        conversor = dir.escribir("IfcConvert", "#!/bin/sh\necho x >> '" + dir.ruta() + "/corridas'\nexec '" +
                                                   std::string(TESKAL_IFCCONVERT) + "' \"$@\"\n");
        fs::permissions(conversor, fs::perms::owner_all);
        cache = dir.ruta() + "/cache";
    }

    ModeloConvertido convertir(const std::string& ifc, const std::string& carpeta) {
        TrabajoConversion t;
        t.rutaOrigen = ifc;
        t.rutaConversor = conversor;
        t.rutaSalida = rutaTemporalNueva(".obj");
        t.leerGlobalIds = true;
        t.carpetaCache = carpeta;
        ResultadoConversion r = convertirIFC(t);
        if (auto* fallo = std::get_if<FalloConversion>(&r)) {
            ADD_FAILURE() << "la conversión falló: " << fallo->descripcion;
            return {};
        }
        return std::move(std::get<ModeloConvertido>(r));
    }

    int corridas() const {
        QFile f(QString::fromStdString(dir.ruta() + "/corridas"));
        return f.open(QIODevice::ReadOnly) ? static_cast<int>(f.readAll().count('\n')) : 0;
    }

    std::vector<fs::path> archivosCache() const {
        std::vector<fs::path> r;
        std::error_code ec;
        for (const auto& e : fs::directory_iterator(cache, ec)) r.push_back(e.path());
        return r;
    }

    pruebas::DirectorioTemporal dir;
    std::string conversor, cache;
};

TEST_F(CacheConversion, UnaEntradaDaElModeloSinCacheSinConvertirYUnDanoSeReconstruye) {
    const ModeloConvertido sinCache = convertir(muestra, "");
    ASSERT_FALSE(sinCache.propiedades.empty());
    const ModeloConvertido primero = convertir(muestra, cache);
    ASSERT_EQ(corridas(), 2);
    ASSERT_EQ(archivosCache().size(), 1u);
    const fs::path entrada = archivosCache().front();
    const auto tamano = fs::file_size(entrada);

    // Each damage is read as a miss: the converter runs once more, and the
    // entry it leaves is whole again. Nothing stays behind in the folder.
    struct Caso {
        const char* nombre;
        std::function<void()> danar;
        int corridasDespues;
    };
    const std::vector<Caso> casos = {
        {"intacta", [] {}, 2},
        {"truncada", [&] { fs::resize_file(entrada, tamano / 2); }, 3},
        {"un byte cambiado", [&] {
             std::fstream f(entrada, std::ios::in | std::ios::out | std::ios::binary);
             f.seekp(static_cast<std::streamoff>(tamano / 3));
             f.put('\x7f');
         }, 4},
        {"vacía", [&] { fs::resize_file(entrada, 0); }, 5},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        c.danar();
        const ModeloConvertido m = convertir(muestra, cache);
        compararModelos(sinCache, m);
        EXPECT_EQ(corridas(), c.corridasDespues);
        ASSERT_EQ(archivosCache().size(), 1u);
        EXPECT_EQ(fs::file_size(archivosCache().front()), tamano);
    }
    compararModelos(sinCache, primero);
}

TEST_F(CacheConversion, UnByteCambiadoDelIFCEsOtraEntrada) {
    convertir(muestra, cache);
    std::string texto;
    {
        std::ifstream f(muestra, std::ios::binary);
        texto.assign(std::istreambuf_iterator<char>(f), {});
    }
    // One character of the header's time stamp: the model is the same.
    const auto pos = texto.find("FILE_NAME");
    ASSERT_NE(pos, std::string::npos);
    texto[texto.find('2', pos)] = '1';
    const std::string otro = dir.escribir("otro.ifc", texto);
    convertir(otro, cache);
    EXPECT_EQ(corridas(), 2);
    EXPECT_EQ(archivosCache().size(), 2u);
    convertir(otro, cache);
    EXPECT_EQ(corridas(), 2);
}

TEST_F(CacheConversion, DosConversionesALaVezDejanUnaEntrada) {
    ModeloConvertido a, b;
    QThreadPool pool;
    pool.start([&] { a = convertir(muestra, cache); });
    pool.start([&] { b = convertir(muestra, cache); });
    pool.waitForDone();
    compararModelos(a, b);
    const auto archivos = archivosCache();
    ASSERT_EQ(archivos.size(), 1u);
    EXPECT_EQ(archivos.front().extension(), ".entrada");
    EXPECT_EQ(corridas(), 2);
    compararModelos(a, convertir(muestra, cache));
    EXPECT_EQ(corridas(), 2);
}

TEST(CacheConversionLimite, ElExcesoSacaLaEntradaMenosUsadaYLasGrillasVuelvenIguales) {
    pruebas::DirectorioTemporal dir;
    const std::string cache = dir.ruta() + "/cache";
    const std::string obj(4000, 'v');
    const std::vector<EjeGrilla> grillas = {{"id", "A", true, {{0, 1, 2}, {3.5f, -4, 5}}},
                                            {"id", "1", false, {{1, 1, 0}, {1, 9, 0}}}};
    const PropiedadesModelo propiedades = {{"Muro", {{"__tipoIFC", "IFCWALL"}, {"Pset › A", "1"}}}};
    auto escribir = [&](const std::string& clave, std::uint64_t limite) {
        ASSERT_TRUE(escribirEntradaCache(cache, clave, obj, "ids", propiedades, {}, grillas, {{"Muro", "G"}},
                                         limite));
    };
    const auto marca = fs::file_time_type::clock::now();
    escribir("a", 1u << 20);
    escribir("b", 1u << 20);
    const std::uint64_t una = tamanoCache(cache).bytes / 2;
    // "a" used last: the older "b" goes when "c" makes three.
    fs::last_write_time(dir.ruta() + "/cache/a.entrada", marca - std::chrono::hours(2));
    fs::last_write_time(dir.ruta() + "/cache/b.entrada", marca - std::chrono::hours(3));
    ASSERT_TRUE(leerEntradaCache(cache, "a"));
    escribir("c", 2 * una + una / 2);
    EXPECT_EQ(tamanoCache(cache).entradas, 2u);
    EXPECT_FALSE(leerEntradaCache(cache, "b"));
    const auto a = leerEntradaCache(cache, "a");
    ASSERT_TRUE(a);
    EXPECT_EQ(a->obj, obj);
    EXPECT_EQ(a->identidades, "ids");
    EXPECT_EQ(a->propiedades, propiedades);
    EXPECT_EQ(a->globalIds.at("Muro"), "G");
    ASSERT_EQ(a->grillas.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(a->grillas[i].tag, grillas[i].tag);
        EXPECT_EQ(a->grillas[i].esU, grillas[i].esU);
        EXPECT_EQ(a->grillas[i].puntos, grillas[i].puntos);
        EXPECT_NE(a->grillas[i].id, "id"); // a new UUID at each read
    }
    EXPECT_EQ(vaciarCache(cache), "");
    EXPECT_EQ(tamanoCache(cache).entradas, 0u);
}

} // namespace
} // namespace teskal
