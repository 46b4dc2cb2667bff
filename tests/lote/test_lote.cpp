// vornel-lote as a pipeline runs it, with DISPLAY unset: on the demo package
// it writes every file it is asked for, each read back by an independent
// reader (bcf-client, Python's csv, ezdxf), and its summary; its exit status
// follows --max-interferencias, and bad input ends with status 2 and a
// sentence that names the file or the option.
#include "lector_bcf.h"
#include "lector_csv.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace teskal {
namespace {

const QString paqueteDemo = QStringLiteral(TESKAL_TESTS_DIR "/../examples/demo.teskalpkg");

struct Corrida {
    int estado = -1;
    QString error; // standard error
    QByteArray salida;
};

// The command with DISPLAY and WAYLAND_DISPLAY unset and its cache in `cache`.
Corrida correr(const QStringList& argumentos, const QString& cache) {
    QProcess p;
    QProcessEnvironment entorno = QProcessEnvironment::systemEnvironment();
    entorno.remove(QStringLiteral("DISPLAY"));
    entorno.remove(QStringLiteral("WAYLAND_DISPLAY"));
    entorno.remove(QStringLiteral("QT_QPA_PLATFORM"));
    entorno.insert(QStringLiteral("XDG_CACHE_HOME"), cache);
    p.setProcessEnvironment(entorno);
    p.start(QStringLiteral(TESKAL_LOTE), argumentos);
    if (!p.waitForFinished(600000)) return {};
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, QString::fromUtf8(p.readAllStandardError()),
            p.readAllStandardOutput()};
}

QJsonObject leerJSON(const QString& ruta) {
    QFile f(ruta);
    return f.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(f.readAll()).object() : QJsonObject();
}

// Two versions of a model for --xor: one element kept, one moved, one
// removed and one added.
bool escribirVersiones(const QDir& dir) {
    const QString descripcion = dir.filePath(QStringLiteral("versiones.json"));
    QFile f(descripcion);
    if (!f.open(QIODevice::WriteOnly)) return false;
    auto caja = [](const char* nombre, const char* gid, double x) {
        return QJsonObject{{QStringLiteral("nombre"), nombre}, {QStringLiteral("gid"), gid},
                           {QStringLiteral("min"), QJsonArray{x, 0, 0}}, {QStringLiteral("tam"), QJsonArray{1, 1, 1}}};
    };
    const QJsonArray versiones{
        QJsonObject{{QStringLiteral("ruta"), dir.filePath(QStringLiteral("v1.ifc"))},
                    {QStringLiteral("elementos"),
                     QJsonArray{caja("Igual", "0aaaaaaaaaaaaaaaaaaaa1", 0), caja("Movido", "0aaaaaaaaaaaaaaaaaaaa2", 3),
                                caja("Quitado", "0aaaaaaaaaaaaaaaaaaaa3", 6)}}},
        QJsonObject{{QStringLiteral("ruta"), dir.filePath(QStringLiteral("v2.ifc"))},
                    {QStringLiteral("elementos"),
                     QJsonArray{caja("Igual", "0aaaaaaaaaaaaaaaaaaaa1", 0), caja("Movido", "0aaaaaaaaaaaaaaaaaaaa2", 4),
                                caja("Nuevo", "0aaaaaaaaaaaaaaaaaaaa4", 9)}}}};
    f.write(QJsonDocument(versiones).toJson());
    f.close();
    QProcess p;
    p.start(QStringLiteral(TESKAL_PYTHON), {QStringLiteral(TESKAL_TESTS_DIR "/analyses/versiones_xor.py"), descripcion});
    return p.waitForFinished(120000) && p.exitCode() == 0;
}

TEST(Lote, DemoSinPantallaEscribeCadaArchivoYElResumen) {
    if (!QFile::exists(paqueteDemo)) GTEST_SKIP() << "sin el paquete de demostración";
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QDir d(dir.path());
    ASSERT_TRUE(escribirVersiones(d));
    auto ruta = [&](const char* nombre) { return d.filePath(QString::fromUtf8(nombre)); };
    const QString cache = ruta("cache");
    const QStringList argumentos{paqueteDemo,
                                 QStringLiteral("--interferencias"), QStringLiteral("ARQ:EST,ARQ:MEP"),
                                 QStringLiteral("--tolerancia"), QStringLiteral("0.02"),
                                 QStringLiteral("--bcf"), ruta("choques.bcf"),
                                 QStringLiteral("--html"), ruta("choques.html"),
                                 QStringLiteral("--qto"), ruta("cantidades.csv"),
                                 QStringLiteral("--metodo"), QStringLiteral("exacto"),
                                 QStringLiteral("--seccion"), QStringLiteral("Z"), QStringLiteral("1.20"),
                                 QStringLiteral("--profundidad"), QStringLiteral("0"),
                                 QStringLiteral("--dxf"), ruta("planta.dxf"),
                                 QStringLiteral("--xor"), ruta("v1.ifc"), ruta("v2.ifc"),
                                 QStringLiteral("--json"), ruta("resumen.json")};
    const Corrida c = correr(argumentos, cache);
    ASSERT_EQ(c.estado, 0) << c.error.toStdString();
    EXPECT_TRUE(c.error.contains(QStringLiteral("vornel-lote: 4 interferencias"))) << c.error.toStdString();

    // The summary: three models, the designed clashes of the two pairs, all
    // open, and the comparison's four kinds.
    const QJsonObject resumen = leerJSON(ruta("resumen.json"));
    const QJsonArray modelos = resumen[QStringLiteral("modelos")].toArray();
    ASSERT_EQ(modelos.size(), 3);
    int elementos = 0;
    for (const auto& m : modelos) elementos += m.toObject()[QStringLiteral("elementos")].toInt();
    EXPECT_GT(elementos, 100);
    EXPECT_EQ(resumen[QStringLiteral("elementos")].toInt(), elementos);
    const QJsonObject choques = resumen[QStringLiteral("interferencias")].toObject();
    EXPECT_EQ(choques[QStringLiteral("total")].toInt(), 4);
    const QJsonObject porPar = choques[QStringLiteral("porPar")].toObject();
    EXPECT_EQ(porPar.keys(), (QStringList{QStringLiteral("ARQ|EST"), QStringLiteral("ARQ|MEP")}));
    for (const QString& par : porPar.keys()) {
        const QJsonObject p = porPar[par].toObject();
        EXPECT_EQ(p[QStringLiteral("total")].toInt(), 2) << par.toStdString();
        EXPECT_EQ(p[QStringLiteral("Abierto")].toInt(), 2) << par.toStdString();
    }
    EXPECT_EQ(choques[QStringLiteral("porEstado")].toObject()[QStringLiteral("Abierto")].toInt(), 4);
    const QJsonObject xorConteos = resumen[QStringLiteral("xor")].toObject();
    for (const char* clave : {"agregados", "eliminados", "modificados", "iguales"})
        EXPECT_EQ(xorConteos[QString::fromUtf8(clave)].toInt(), 1) << clave;

    // BCF: four topics, each with the two elements and a snapshot drawn
    // through the display-less context.
    const pruebas::LecturaBCF bcf = pruebas::leerConBcfClient(ruta("choques.bcf"));
    ASSERT_TRUE(bcf.error.isEmpty()) << bcf.error.toStdString();
    const QJsonArray temas = bcf.datos[QStringLiteral("temas")].toArray();
    ASSERT_EQ(temas.size(), 4);
    for (const auto& t : temas) {
        const QJsonObject vista = t.toObject()[QStringLiteral("vistas")].toArray().first().toObject();
        EXPECT_EQ(vista[QStringLiteral("componentes")].toArray().size(), 2);
        EXPECT_TRUE(vista[QStringLiteral("snapshot")].isString());
    }

    // HTML: the report with an image per clash.
    QFile html(ruta("choques.html"));
    ASSERT_TRUE(html.open(QIODevice::ReadOnly));
    const QByteArray documento = html.readAll();
    EXPECT_TRUE(documento.contains("Informe de Interferencias BIM"));
    EXPECT_EQ(documento.count("data:image/png;base64,"), 4);

    // CSV: the header and one row per element of the three models.
    const QList<QStringList> filas = pruebas::leerCSVConPython(ruta("cantidades.csv"));
    ASSERT_FALSE(filas.isEmpty());
    EXPECT_EQ(filas.front().value(0), QStringLiteral("Tipo IFC"));
    EXPECT_EQ(filas.size() - 1, elementos);

    // DXF: R12, clean under ezdxf's audit, with the disciplines' layers.
    QProcess dxf;
    dxf.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral(TESKAL_TESTS_DIR "/sections/leer_dxf.py"),
                                                   ruta("planta.dxf")});
    ASSERT_TRUE(dxf.waitForFinished(120000));
    if (dxf.exitCode() == 3) GTEST_SKIP() << "ezdxf no está instalado";
    const QJsonObject leido = QJsonDocument::fromJson(dxf.readAllStandardOutput()).object();
    EXPECT_EQ(leido[QStringLiteral("errores")].toInt(), 0);
    EXPECT_EQ(leido[QStringLiteral("version")].toString(), QStringLiteral("AC1009"));
    for (const char* capa : {"ARQ", "EST", "MEP"})
        EXPECT_GT(leido[QStringLiteral("capas")].toObject()[QString::fromUtf8(capa)].toInt(), 0) << capa;

    // The bound on clashes, on the warm cache: above it status 1, with the
    // files written all the same; at it, 0.
    struct Caso {
        QString maximo;
        int estado;
    };
    for (const Caso& caso : {Caso{QStringLiteral("3"), 1}, Caso{QStringLiteral("4"), 0}}) {
        QFile::remove(ruta("choques.html"));
        const Corrida r = correr({paqueteDemo, QStringLiteral("--interferencias"), QStringLiteral("ARQ:EST,ARQ:MEP"),
                                  QStringLiteral("--max-interferencias"), caso.maximo, QStringLiteral("--html"),
                                  ruta("choques.html")},
                                 cache);
        EXPECT_EQ(r.estado, caso.estado) << caso.maximo.toStdString() << r.error.toStdString();
        EXPECT_TRUE(QFile::exists(ruta("choques.html")));
        EXPECT_EQ(QJsonDocument::fromJson(r.salida).object()[QStringLiteral("interferencias")]
                      .toObject()[QStringLiteral("excedido")]
                      .toBool(),
                  caso.estado == 1);
    }
}

TEST(Lote, LaEntradaMalaTerminaConEstadoDosYNombraLaCausa) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString basura = dir.filePath(QStringLiteral("roto.ifc"));
    {
        QFile f(basura);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("esto no es un archivo IFC\n");
    }
    const QString falta = dir.filePath(QStringLiteral("no_esta.ifc"));
    struct Caso {
        QStringList argumentos;
        QString mensaje;
    };
    const std::vector<Caso> casos = {
        {{QStringLiteral("--inventada")}, QStringLiteral("Opción desconocida: --inventada.")},
        {{QStringLiteral("--vincular"), QStringLiteral("ARQ=") + basura},
         QStringLiteral("No se pudo convertir «") + basura + QStringLiteral("» (ARQ): IfcConvert falló")},
        {{QStringLiteral("--vincular"), QStringLiteral("ARQ=") + falta},
         QStringLiteral("No se encontró el modelo «") + falta + QStringLiteral("».")},
        {{falta}, QStringLiteral("No se encontró el proyecto «") + falta + QStringLiteral("».")},
        {{QStringLiteral("--vincular"), QStringLiteral("ARQ=a.ifc"), QStringLiteral("--metodo"),
          QStringLiteral("esferas")},
         QStringLiteral("--metodo espera cajas, exacto u holgura; se recibió «esferas».")},
        {{QStringLiteral("--vincular"), QStringLiteral("ARQ=a.ifc"), QStringLiteral("--dxf"), QStringLiteral("x.dxf")},
         QStringLiteral("--dxf necesita una sección")},
    };
    for (const Caso& c : casos) {
        const Corrida r = correr(c.argumentos, dir.filePath(QStringLiteral("cache")));
        EXPECT_EQ(r.estado, 2) << c.argumentos.join(u' ').toStdString();
        EXPECT_TRUE(r.error.contains(QStringLiteral("vornel-lote: error: ") + c.mensaje)) << r.error.toStdString();
        EXPECT_TRUE(r.salida.isEmpty());
    }
    const Corrida ayuda = correr({QStringLiteral("--ayuda")}, dir.filePath(QStringLiteral("cache")));
    EXPECT_EQ(ayuda.estado, 0);
    for (const char* opcion : {"--vincular", "--interferencias", "--tolerancia", "--metodo", "--holgura",
                               "--max-interferencias", "--bcf", "--html", "--qto", "--seccion", "--profundidad",
                               "--dxf", "--xor", "--json", "--sin-cache", "ESTADO DE SALIDA"})
        EXPECT_TRUE(ayuda.salida.contains(opcion)) << opcion;
}

} // namespace
} // namespace teskal
