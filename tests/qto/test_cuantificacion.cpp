// The quantity takeoff without widgets: the engine over a hand-built
// federation, the table's values, order, rows and CSV (read back with
// Python's csv module), the command and its error channel, and the FZK
// sample through the real converter.
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "qto/TablaQTO.h"
#include "lector_csv.h"

#include <QFileInfo>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <set>

using namespace teskal;

namespace {

const std::string sep = " \xE2\x80\xBA ";
const std::string claveExterno = "Pset_WallCommon" + sep + "IsExternal";
const std::string claveRef = "Pset_WallCommon" + sep + "Reference";

std::shared_ptr<Node> caja(std::optional<std::string> nombre, glm::vec3 min, glm::vec3 max) {
    auto g = std::make_shared<Geometry>();
    g->vertices = {min, max, min};
    g->elementos.push_back({Primitiva::Triangulos, {0, 1, 2}});
    auto n = Node::crear(std::move(nombre));
    n->setGeometry(std::move(g));
    return n;
}

std::shared_ptr<Node> grupo(std::optional<std::string> nombre, std::initializer_list<std::shared_ptr<Node>> hijos) {
    auto n = Node::crear(std::move(nombre));
    for (const auto& h : hijos) n->addChildNode(h);
    return n;
}

PropiedadesElemento tipo(const std::string& t, std::initializer_list<std::pair<std::string, std::string>> mas = {}) {
    PropiedadesElemento p(mas);
    p.insert_or_assign(std::string(claveTipoIFC), t);
    return p;
}

// A workspace with two disciplines that holds every case the engine tells
// apart: the size floor, unnamed and named parents, a space, an unlisted
// class, a GlobalId entry that differs from the entry of its name, a node
// scaled on its own, and one class in two disciplines.
struct Federacion {
    ContentView cv{"/no/existe"};
    Federacion() {
        auto arq = Node::crear("esp_ARQ");
        auto conjunto = grupo("Conjunto", {caja("Pieza", {0, 0, 0}, {1, 1, 1})});
        conjunto->childNodes()[0]->setPosition({10, 0, 0});
        auto muro2 = caja("Muro 2", {0, 0, 0}, {0.2f, 5, 3});
        muro2->setScale({2, 2, 2});
        auto losa = caja("Muro 1", {0, 0, 0}, {6, 4, 0.25f});
        losa->setIdentidadIFC("0LosaGlobalId000000000", "IfcSlab");
        arq->addChildNode(grupo(std::nullopt, {
            caja("Muro 1", {0, 0, 0}, {4, 0.2f, 3}),
            muro2,
            caja("Diminuto", {0, 0, 0}, {0.001f, 0.001f, 0.001f}),
            caja("Hilo", {0, 0, 0}, {0.0011f, 0, 0}),
            grupo("", {caja("Ventana A", {0, 0, 1}, {1.2f, 0.1f, 2.2f}), caja("Ventana B", {0, 0, 1}, {1.2f, 0.1f, 2.2f})}),
            grupo(std::nullopt, {caja("Sala", {0, 0, 0}, {4, 5, 3})}),
            conjunto,
            losa,
        }));
        cv.especialidades["ARQ"].nodoRaiz = arq;
        auto est = Node::crear("esp_EST");
        est->addChildNode(grupo(std::nullopt, {caja("Muro E", {0, 0, 0}, {5, 0.3f, 3})}));
        cv.especialidades["EST"].nodoRaiz = est;

        auto& arqNombre = cv.propiedadesIFC["ARQ"];
        arqNombre["Muro 1"] = tipo("IFCWALL", {{claveExterno, "T"}, {claveRef, "M-01"}});
        arqNombre["Muro 2"] = tipo("IFCWALL", {{claveExterno, "T"}, {claveRef, "M-02"}});
        arqNombre["Ventana A"] = tipo("IFCWINDOW", {{claveExterno, "$"}});
        arqNombre["Ventana B"] = tipo("IFCWINDOW", {{claveExterno, ""}});
        arqNombre["Sala"] = tipo("IFCSPACE");
        arqNombre["Conjunto"] = tipo("IFCELEMENTASSEMBLY");
        cv.propiedadesPorGlobalId["ARQ"]["0LosaGlobalId000000000"] = tipo("IFCSLAB", {{"Dimensiones", "25 cm"}});
        cv.propiedadesIFC["EST"]["Muro E"] = tipo("IFCWALL", {{claveExterno, "F"}});
    }
    std::vector<GrupoQTO> grupos() const {
        return calcularGruposQTO(cv.especialidades, cv.ordenEspecialidades, cv.propiedadesIFC,
                                 cv.propiedadesPorGlobalId);
    }
};

const ItemQTO* buscarItem(const std::vector<GrupoQTO>& grupos, const std::string& nombre, const GrupoQTO** en = nullptr) {
    for (const GrupoQTO& g : grupos)
        for (const ItemQTO& i : g.items)
            if (i.nombre == nombre) {
                if (en) *en = &g;
                return &i;
            }
    return nullptr;
}

std::vector<std::string> nombresItems(const GrupoQTO& g) {
    std::vector<std::string> r;
    for (const ItemQTO& i : g.items) r.push_back(i.nombre);
    return r;
}

// The file's rows as Python's csv module reads them.
std::vector<std::vector<std::string>> leerCSV(const std::string& ruta) {
    std::vector<std::vector<std::string>> filas;
    for (const QStringList& f : pruebas::leerCSVConPython(QString::fromStdString(ruta))) {
        filas.emplace_back();
        for (const QString& c : f) filas.back().push_back(c.toStdString());
    }
    return filas;
}

const std::vector<std::string> cabecera{"Tipo IFC",         "Tipo (nombre)",   "Especialidad",     "Nombre",
                                        "Densidad (kg/m³)", "Ancho (m)",       "Alto (m)",         "Largo (m)",
                                        "Volumen (m³)",     "Área planta (m²)", "Área cara (m²)", "Peso (kg)"};

} // namespace

TEST(MotorQTO, agrupaPorClaseYEspecialidadEnSuOrden) {
    const Federacion f;
    const auto grupos = f.grupos();
    struct Esperado {
        std::string especialidad, tipoIFC, tipoNombre;
        float densidad;
        std::vector<std::string> items;
    };
    // "Diminuto" (0.001 on every axis) and the unnamed parents are no items;
    // the named parent "Conjunto" is one beside its child.
    const std::vector<Esperado> esperados{
        {"Arquitectura", "IFCBUILDINGELEMENTPROXY", "Elemento genérico", 1000, {"Hilo", "Pieza"}},
        {"Arquitectura", "IFCSPACE", "Espacio", 0, {"Sala"}},
        {"Arquitectura", "IFCELEMENTASSEMBLY", "IFCELEMENTASSEMBLY", 1000, {"Conjunto"}},
        {"Arquitectura", "IFCSLAB", "Losa", 2400, {"Muro 1"}},
        {"Arquitectura", "IFCWALL", "Muro", 1800, {"Muro 1", "Muro 2"}},
        {"Arquitectura", "IFCWINDOW", "Ventana", 100, {"Ventana A", "Ventana B"}},
        {"Estructura", "IFCWALL", "Muro", 1800, {"Muro E"}},
    };
    ASSERT_EQ(grupos.size(), esperados.size());
    std::set<QUuid> ids;
    for (std::size_t k = 0; k < grupos.size(); ++k) {
        SCOPED_TRACE(esperados[k].tipoIFC + "|" + esperados[k].especialidad);
        EXPECT_EQ(grupos[k].especialidad, esperados[k].especialidad);
        EXPECT_EQ(grupos[k].tipoIFC, esperados[k].tipoIFC);
        EXPECT_EQ(grupos[k].tipoNombre, esperados[k].tipoNombre);
        EXPECT_EQ(grupos[k].densidad, esperados[k].densidad);
        EXPECT_EQ(nombresItems(grupos[k]), esperados[k].items);
        ids.insert(grupos[k].id);
        for (const ItemQTO& i : grupos[k].items) {
            EXPECT_EQ(i.densidad, grupos[k].densidad);
            ids.insert(i.id);
        }
    }
    EXPECT_EQ(ids.size(), grupos.size() + 10) << "ids distintos";
    EXPECT_NE(f.grupos()[0].id, grupos[0].id) << "ids nuevos en cada cálculo";
}

TEST(MotorQTO, sinElementosNoHayGruposYElComandoLoDice) {
    ContentView cv("/no/existe");
    cv.abrirQTO();
    EXPECT_TRUE(cv.showError);
    EXPECT_EQ(cv.errorMessage, "No hay elementos cargados para cuantificar. Vincula al menos un archivo IFC.");
    EXPECT_TRUE(cv.qto.ventanasPendientes.empty());

    // A root with nodes under the floor only counts as nothing too.
    cv.cerrarError();
    cv.especialidades["MEP"].nodoRaiz = grupo("esp_MEP", {caja("Punto", {0, 0, 0}, {0, 0, 0})});
    cv.recibirNotificacion(notificaciones::abrirQTO);
    EXPECT_TRUE(cv.showError);
    EXPECT_TRUE(cv.qto.ventanasPendientes.empty());

    // Each use opens one more snapshot, taken now.
    Federacion f;
    const QDateTime antes = QDateTime::currentDateTime();
    f.cv.recibirNotificacion(notificaciones::abrirQTO);
    f.cv.abrirQTO();
    ASSERT_EQ(f.cv.qto.ventanasPendientes.size(), 2u);
    EXPECT_FALSE(f.cv.showError);
    EXPECT_EQ(f.cv.qto.ventanasPendientes[0].grupos.size(), 7u);
    EXPECT_GE(f.cv.qto.ventanasPendientes[1].fecha, antes);
}

TEST(MotorQTO, valorParametroDeUnGrupo) {
    struct Caso {
        std::vector<std::optional<std::string>> valores; // none: the item lacks the key
        std::string esperado;
    };
    const std::vector<Caso> casos{
        {{"T", "T", std::nullopt}, "T"},
        {{"T", "F", "T"}, "varios"},
        {{"", "$", std::nullopt}, "—"},
        {{"$", "M-01", ""}, "M-01"},
        {{}, "—"},
    };
    for (const Caso& c : casos) {
        GrupoQTO g;
        for (const auto& v : c.valores) {
            ItemQTO& i = g.items.emplace_back();
            if (v) i.propiedades.insert_or_assign(claveExterno, *v);
        }
        EXPECT_EQ(g.valorParametro(claveExterno), c.esperado) << c.valores.size();
    }
}

TEST(TablaQTO, ordenTolerantePorCadaColumnaEnAmbosSentidos) {
    // Three groups of equal weight and volume and one heavier: every column,
    // both directions, must give the groups once each in the column's order.
    auto g = [](std::string esp, std::string nombre, int items, float lado) {
        GrupoQTO r;
        r.id = QUuid::createUuid();
        r.especialidad = std::move(esp);
        r.tipoNombre = std::move(nombre);
        r.densidad = 1000;
        for (int k = 0; k < items; ++k) {
            ItemQTO& i = r.items.emplace_back();
            i.dx = i.dy = i.dz = lado;
            i.densidad = 1000;
        }
        return r;
    };
    TablaQTO t;
    t.grupos = {g("MEP", "Ducto", 1, 1), g("Arquitectura", "Muro", 1, 1), g("Arquitectura", "Losa", 1, 1),
                g("Estructura", "Viga", 2, 1), g("MEP", "Ducto", 1, 2)};
    for (OrdenQTO columna : ordenesQTO) {
        for (bool ascendente : {true, false}) {
            SCOPED_TRACE(std::string(textoOrdenQTO(columna)) + (ascendente ? " asc" : " desc"));
            t.ordenColumna = columna;
            t.ordenAscendente = ascendente;
            const auto r = t.gruposFiltradosOrdenados();
            ASSERT_EQ(r.size(), t.grupos.size());
            EXPECT_EQ(std::set<const GrupoQTO*>(r.begin(), r.end()).size(), r.size());
            for (std::size_t k = 1; k < r.size(); ++k) {
                const GrupoQTO& a = ascendente ? *r[k - 1] : *r[k];
                const GrupoQTO& b = ascendente ? *r[k] : *r[k - 1];
                // a may not be greater than b in the column's order.
                const TablaQTO par{{a, b}, {}, "Todas", {}, columna, true, {}};
                EXPECT_EQ(par.gruposFiltradosOrdenados()[0]->id, a.id) << k;
            }
        }
    }
    // Titles: a new column sorts ascending, the same one flips.
    t.ordenColumna = OrdenQTO::tipoNombre;
    for (bool ascendente : {true, false}) {
        t.pulsarColumna(OrdenQTO::peso);
        EXPECT_TRUE(t.ordenColumna == OrdenQTO::peso && t.ordenAscendente == ascendente);
    }
}

TEST(TablaQTO, numerosComoPrintf) {
    // Ties to even on the exact value, negative zero, large and odd values,
    // then a wide random sample: all as printf writes them.
    std::vector<float> valores{0.125f, 0.375f, 2.5f, 3.5f, 0.00005f, 0.00015f, -0.0f, -0.4f, 1e-9f,
                               123456.789f, 9.99995f, 1e12f, 3e38f, std::numeric_limits<float>::infinity()};
    std::mt19937 azar(17);
    std::uniform_real_distribution<float> mantisa(0.0f, 1.0f);
    std::uniform_int_distribution<int> exponente(-12, 20);
    for (int k = 0; k < 20000; ++k) valores.push_back(std::ldexp(mantisa(azar), exponente(azar)));
    for (const float v : valores)
        for (int d = 0; d <= 4; ++d) {
            char esperado[128];
            std::snprintf(esperado, sizeof esperado, "%.*f", d, static_cast<double>(v));
            std::string s;
            agregarFijo(s, v, d);
            ASSERT_EQ(s, esperado) << v << " con " << d;
        }
}

TEST(TablaQTO, filasTotalesYParametros) {
    TablaQTO t{Federacion().grupos(), QDateTime::currentDateTime(), "Todas", {}, OrdenQTO::tipoNombre, true, {}};
    // The catalogue: every key but the type, the most frequent first; a key
    // without " › " has an empty name.
    const auto disponibles = t.parametrosDisponibles();
    ASSERT_EQ(disponibles.size(), 3u);
    auto campos = [](const ParamDisponible& p) { return std::tuple(p.clave, p.cuenta, p.pset, p.nombre); };
    EXPECT_EQ(campos(disponibles[0]), std::tuple(claveExterno, std::size_t{5}, "Pset_WallCommon", "IsExternal"));
    EXPECT_EQ(campos(disponibles[2]), std::tuple("Dimensiones", std::size_t{1}, "Dimensiones", ""));
    const auto psets = agruparParametros(disponibles, "isext");
    ASSERT_EQ(psets.size(), 1u);
    EXPECT_EQ(psets[0].pset, "Pset_WallCommon");
    EXPECT_EQ(agruparParametros(disponibles, "").size(), 2u);

    t.parametrosExtra = {claveExterno, "Dimensiones"};
    const auto titulos = t.titulosColumnas();
    EXPECT_EQ(std::vector<std::string>(titulos.begin() + 10, titulos.end()),
              (std::vector<std::string>{"Peso total\n(kg)", "IsExternal", ""}));
    t.filtroEsp = "Arquitectura";
    t.expandidos.insert(t.grupos[5].id); // the windows, one "$" and one empty value
    t.expandidos.insert(t.grupos[0].id); // "Hilo" and "Pieza"
    const auto filas = t.filas();
    auto fila = [&](const std::string& primera) -> const std::vector<std::string>& {
        for (const FilaQTO& f : filas)
            if (f.celdas[0] == primera) return f.celdas;
        ADD_FAILURE() << "sin fila " << primera;
        static const std::vector<std::string> vacia(13);
        return vacia;
    };
    using V = std::vector<std::string>;
    // Each element measured by its local box: its own scale does not count
    // ("Muro 2"), a space weighs nothing, a named parent takes its child's box
    // placed by the child's position ("Conjunto", in the total).
    // Group rows: counts, density, mean dimensions (width, height along Z,
    // length), sums; "—" for quantities of 0.0001 or less; the extra columns.
    EXPECT_EQ(fila("Muro"), (V{"Muro", "Arquitectura", "2", "1800", "2.100", "3.000", "2.600", "5.400", "1.800",
                                "60.000", "9720.0", "T", "—"}));
    EXPECT_EQ(fila("Espacio"), (V{"Espacio", "Arquitectura", "1", "—", "4.000", "3.000", "5.000", "60.000",
                                   "20.000", "94.000", "—", "—", "—"}));
    // Item rows: their own values; "$" and empty read "—".
    EXPECT_EQ(fila("Ventana A"), (V{"Ventana A", "", "", "100", "1.200", "1.200", "0.100", "0.144", "0.120",
                                     "3.360", "14.4", "—", "—"}));
    EXPECT_EQ(fila("Hilo"), (V{"Hilo", "", "", "1000", "0.001", "—", "—", "—", "—", "—", "—", "—", "—"}));
    EXPECT_EQ(filas.back().clase, FilaQTO::Clase::total);
    // The 9 elements of the filter: volumes 1 + 60 + 1 + 6 + 5.4 + 0.288.
    EXPECT_EQ(filas.back().celdas, (V{"TOTAL", "", "9", "—", "—", "—", "—", "73.688", "48.040", "—",
                                      "26148.8", "—", "—"}));
    EXPECT_EQ(t.textoToneladas(), "≈ 26.1 t");
    EXPECT_EQ(t.textoPie(), "Vol.: 73.688 m³  ·  Área planta: 48.040 m²  ·  Peso estimado: 26.1 t");
    EXPECT_EQ(filas.size(), 6u + 4u + 1u);

    // Open groups: all of the filter, then none; a filter that matches
    // nothing leaves the body empty.
    t.expandirTodo();
    EXPECT_EQ(t.expandidos.size(), 6u);
    t.contraerTodo();
    EXPECT_EQ(t.filas().size(), 7u);
    EXPECT_EQ(t.opcionesFiltro(), (V{"Todas", "Arquitectura", "Estructura"}));
    t.filtroEsp = "Topografía";
    EXPECT_TRUE(t.filas().empty());
}

TEST(TablaQTO, csvLeidoPorPython) {
    Federacion f;
    auto grupos = f.grupos();
    // A quotation mark in a name, a comma and a "$" value.
    grupos[4].items[0].nombre = "Muro \"norte\", planta 1";
    grupos[4].items[0].propiedades.insert_or_assign(claveRef, "$");
    TablaQTO t{std::move(grupos), QDateTime::currentDateTime(), "Estructura", {}, OrdenQTO::tipoNombre, true, {}};
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());

    struct Caso {
        std::string filtro;
        std::vector<std::string> extra;
        std::size_t filas; // the header included
        std::string nombre; // of the first element row
        std::vector<std::string> valores; // its fields from the density on
    };
    const std::vector<Caso> casos{
        // One discipline exported alone.
        {"Estructura", {}, 2, "Muro E", {"1800", "5.0000", "3.0000", "0.3000", "4.5000", "1.5000", "34.8000", "8100.00"}},
        // Zero weight reads "0.00"; the extra columns follow the fixed ones.
        {"Todas", {claveExterno, claveRef}, 11, "Hilo",
         {"1000", "0.0011", "0.0000", "0.0000", "0.0000", "0.0000", "0.0000", "0.00", "", ""}},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.filtro);
        t.filtroEsp = c.filtro;
        t.parametrosExtra = c.extra;
        const std::string ruta = dir.filePath(QString::fromStdString(c.filtro + ".csv")).toStdString();
        ASSERT_TRUE(f.cv.guardarCSVQTO(ruta, t.textoCSV()));
        QFile archivo(QString::fromStdString(ruta));
        ASSERT_TRUE(archivo.open(QIODevice::ReadOnly));
        const QByteArray bytes = archivo.readAll();
        EXPECT_FALSE(bytes.startsWith("\xEF\xBB\xBF")) << "sin BOM";
        EXPECT_FALSE(bytes.endsWith('\n')) << "sin salto final";
        const auto filas = leerCSV(ruta);
        ASSERT_EQ(filas.size(), c.filas);
        std::vector<std::string> esperada = cabecera;
        esperada.insert(esperada.end(), c.extra.begin(), c.extra.end());
        EXPECT_EQ(filas[0], esperada);
        for (const auto& fila : filas) ASSERT_EQ(fila.size(), esperada.size());
        EXPECT_EQ(filas[1][3], c.nombre);
        EXPECT_EQ(std::vector<std::string>(filas[1].begin() + 4, filas[1].end()), c.valores);
    }
    // The quotation mark and the comma come back whole; "$" as an empty field.
    const auto filas = leerCSV(dir.filePath(QStringLiteral("Todas.csv")).toStdString());
    const auto muro = std::find_if(filas.begin(), filas.end(), [](const auto& r) { return r[3].starts_with("Muro \""); });
    ASSERT_NE(muro, filas.end());
    EXPECT_EQ((*muro)[3], "Muro \"norte\", planta 1");
    EXPECT_EQ((*muro)[12], "T");
    EXPECT_EQ((*muro)[13], "");
    EXPECT_EQ(nombreArchivoCSVQTO(1700000000), "TESKAL_QTO_1700000000.csv");

    // A write that fails says so through the error channel.
    EXPECT_FALSE(f.cv.guardarCSVQTO(dir.filePath(QStringLiteral("no/existe.csv")).toStdString(), "x"));
    EXPECT_TRUE(f.cv.showError);
    EXPECT_TRUE(f.cv.errorMessage->starts_with("No se pudo guardar el CSV")) << *f.cv.errorMessage;
}

TEST(MotorQTO, muestraFZKPorElConversorReal) {
    const std::string ifc = TESKAL_SAMPLES_DIR "/AC20-FZK-Haus.ifc";
    if (!QFileInfo::exists(QString::fromStdString(ifc))) GTEST_SKIP() << "no está la muestra " << ifc;
    ContentView cv(QFileInfo(QStringLiteral(TESKAL_IFCCONVERT)).absolutePath().toStdString());
    TrabajoConversion trabajo;
    trabajo.rutaOrigen = ifc;
    trabajo.rutaConversor = TESKAL_IFCCONVERT;
    trabajo.rutaSalida = rutaTemporalNueva(".obj");
    auto resultado = convertirIFC(trabajo);
    ASSERT_TRUE(std::holds_alternative<ModeloConvertido>(resultado));
    cv.integrarModelo(std::get<ModeloConvertido>(std::move(resultado)), ifc, trabajo.rutaSalida, "ARQ");
    cv.abrirQTO();
    ASSERT_EQ(cv.qto.ventanasPendientes.size(), 1u);
    const auto& grupos = cv.qto.ventanasPendientes[0].grupos;
    // The house is 12 x 10 m: 13 walls, 4 slabs (the two roof planes among
    // them, measured by their enclosing boxes) and 11 windows in the IFC
    // text, each class in its group with the discipline's name and weight.
    struct Clase {
        std::string tipo, nombre;
        std::size_t cantidad;
        float densidad;
    };
    for (const Clase& c : std::vector<Clase>{{"IFCWALLSTANDARDCASE", "Muro estándar", 13, 1800},
                                            {"IFCSLAB", "Losa", 4, 2400},
                                            {"IFCWINDOW", "Ventana", 11, 100}}) {
        SCOPED_TRACE(c.tipo);
        const auto g =
            std::find_if(grupos.begin(), grupos.end(), [&](const GrupoQTO& x) { return x.tipoIFC == c.tipo; });
        ASSERT_NE(g, grupos.end());
        EXPECT_EQ(g->tipoNombre, c.nombre);
        EXPECT_EQ(g->especialidad, "Arquitectura");
        EXPECT_EQ(g->cantidad(), c.cantidad);
        EXPECT_NEAR(g->peso(), g->volumen() * c.densidad, g->peso() * 1e-5f);
    }
    // Elements of known size: an exterior wall of the ground floor (12 m,
    // 0.30 m thick, 2.70 m high), the floor slab and a ground floor window;
    // each with the properties of its GlobalId.
    struct Elemento {
        std::string nombre, tipo;
        float dx, dy, dz, volumen;
    };
    for (const Elemento& e : std::vector<Elemento>{{"Wand-Ext-ERDG-4", "IFCWALLSTANDARDCASE", 12, 0.3f, 2.7f, 9.72f},
                                                   {"Bodenplatte", "IFCSLAB", 12, 10, 0.2f, 24},
                                                   {"EG-Fenster-1", "IFCWINDOW", 2, 0.075f, 1.2f, 0.18f}}) {
        SCOPED_TRACE(e.nombre);
        const GrupoQTO* g = nullptr;
        const ItemQTO* i = buscarItem(grupos, e.nombre, &g);
        ASSERT_NE(i, nullptr);
        EXPECT_EQ(g->tipoIFC, e.tipo);
        EXPECT_LT(glm::distance(glm::vec3(i->dx, i->dy, i->dz), glm::vec3(e.dx, e.dy, e.dz)), 0.01f);
        EXPECT_NEAR(i->volumen(), e.volumen, e.volumen * 0.01);
        EXPECT_EQ(i->valor(std::string(claveTipoIFC)), e.tipo);
    }
}
