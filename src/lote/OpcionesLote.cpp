#include "lote/OpcionesLote.h"

#include <QCommandLineParser>
#include <cmath>

namespace teskal {

namespace {

// Options that take two values ("--seccion Z 1.20", "--xor v1.ifc v2.ifc"):
// QCommandLineParser takes one, so the two are joined by a unit separator
// before it reads them.
constexpr QChar separadorPar(0x1F);

QStringList unirPares(const QStringList& argumentos, QString& error) {
    QStringList r;
    for (qsizetype i = 0; i < argumentos.size(); ++i) {
        const QString& a = argumentos[i];
        if (a == QLatin1String("--seccion") || a == QLatin1String("--xor")) {
            if (i + 2 >= argumentos.size()) {
                error = QStringLiteral("La opción %1 necesita dos valores.").arg(a);
                return {};
            }
            r << a << argumentos[i + 1] + separadorPar + argumentos[i + 2];
            i += 2;
            continue;
        }
        r << a;
    }
    return r;
}

std::optional<double> numero(const QString& texto) {
    bool ok = false;
    const double v = texto.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(v)) return std::nullopt;
    return v;
}

std::string u(const QString& s) { return s.toStdString(); }

} // namespace

const char* nombreMetodo(MetodoInterferencias metodo) {
    switch (metodo) {
    case MetodoInterferencias::cajas:
        return "cajas";
    case MetodoInterferencias::exacto:
        return "exacto";
    case MetodoInterferencias::holgura:
        return "holgura";
    }
    return "cajas";
}

std::variant<OpcionesLote, std::string> leerOpcionesLote(const QStringList& argumentos) {
    QString error;
    const QStringList unidos = unirPares(argumentos, error);
    if (!error.isEmpty()) return u(error);

    QCommandLineParser p;
    p.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption ayuda({QStringLiteral("ayuda"), QStringLiteral("h")}, {});
    const QCommandLineOption vincular(QStringLiteral("vincular"), {}, QStringLiteral("CLAVE=ARCHIVO"));
    const QCommandLineOption interferencias(QStringLiteral("interferencias"), {}, QStringLiteral("PARES"));
    const QCommandLineOption tolerancia(QStringLiteral("tolerancia"), {}, QStringLiteral("M"));
    const QCommandLineOption metodo(QStringLiteral("metodo"), {}, QStringLiteral("METODO"));
    const QCommandLineOption holgura(QStringLiteral("holgura"), {}, QStringLiteral("M"));
    const QCommandLineOption maximo(QStringLiteral("max-interferencias"), {}, QStringLiteral("N"));
    const QCommandLineOption bcf(QStringLiteral("bcf"), {}, QStringLiteral("ARCHIVO"));
    const QCommandLineOption html(QStringLiteral("html"), {}, QStringLiteral("ARCHIVO"));
    const QCommandLineOption qto(QStringLiteral("qto"), {}, QStringLiteral("ARCHIVO"));
    const QCommandLineOption seccion(QStringLiteral("seccion"), {}, QStringLiteral("EJE POS"));
    const QCommandLineOption profundidad(QStringLiteral("profundidad"), {}, QStringLiteral("M"));
    const QCommandLineOption dxf(QStringLiteral("dxf"), {}, QStringLiteral("ARCHIVO"));
    const QCommandLineOption xorOpcion(QStringLiteral("xor"), {}, QStringLiteral("BASE NUEVA"));
    const QCommandLineOption json(QStringLiteral("json"), {}, QStringLiteral("ARCHIVO"));
    const QCommandLineOption sinCache(QStringLiteral("sin-cache"), {});
    p.addOptions({ayuda, vincular, interferencias, tolerancia, metodo, holgura, maximo, bcf, html, qto, seccion,
                  profundidad, dxf, xorOpcion, json, sinCache});
    if (!p.parse(unidos)) {
        // Qt's own sentence is English: the option is named in ours.
        const QStringList desconocidas = p.unknownOptionNames();
        if (!desconocidas.isEmpty())
            return "Opción desconocida: " + u(desconocidas.first().size() == 1 ? "-" : "--") +
                   u(desconocidas.first()) + ".";
        // The other failure is a missing value: Qt names the option between
        // apostrophes.
        const QString texto = p.errorText();
        const qsizetype desde = texto.indexOf(u'\''), hasta = texto.lastIndexOf(u'\'');
        const QString opcion = desde >= 0 && hasta > desde ? texto.mid(desde + 1, hasta - desde - 1) : texto;
        return "Falta el valor de la opción " + u(opcion) + ".";
    }

    OpcionesLote o;
    o.ayuda = p.isSet(ayuda);
    if (o.ayuda) return o;
    const QStringList posicionales = p.positionalArguments();
    if (posicionales.size() > 1)
        return "Sobra el argumento «" + u(posicionales[1]) + "»: se abre un solo proyecto o paquete.";
    if (!posicionales.isEmpty()) o.proyecto = u(posicionales.front());

    for (const QString& v : p.values(vincular)) {
        const qsizetype igual = v.indexOf(u'=');
        if (igual <= 0 || igual == v.size() - 1)
            return "--vincular espera CLAVE=ARCHIVO, como ARQ=arq.ifc; se recibió «" + u(v) + "».";
        o.vinculos.emplace_back(u(v.left(igual).trimmed()), u(v.mid(igual + 1)));
    }
    if (o.proyecto.empty() && o.vinculos.empty())
        return "Falta el proyecto: indica un archivo .teskal o .teskalpkg, o modelos con --vincular.";

    if (p.isSet(interferencias)) {
        for (const QString& par : p.value(interferencias).split(u',', Qt::SkipEmptyParts)) {
            const QStringList lados = par.split(u':');
            if (lados.size() != 2 || lados[0].trimmed().isEmpty() || lados[1].trimmed().isEmpty() ||
                lados[0].trimmed() == lados[1].trimmed())
                return "--interferencias espera pares de especialidades distintas como ARQ:EST,ARQ:MEP; se "
                       "recibió «" +
                       u(par) + "».";
            o.pares.emplace_back(u(lados[0].trimmed()), u(lados[1].trimmed()));
        }
        if (o.pares.empty()) return "--interferencias no nombra ningún par de especialidades.";
    }
    auto metros = [&](const QCommandLineOption& opcion, const char* nombre, double& destino,
                      bool ceroValido) -> std::optional<std::string> {
        if (!p.isSet(opcion)) return std::nullopt;
        const auto v = numero(p.value(opcion));
        if (!v || *v < 0 || (!ceroValido && *v == 0))
            return std::string("--") + nombre + " espera una longitud en metros" +
                   (ceroValido ? " no negativa" : " positiva") + "; se recibió «" + u(p.value(opcion)) + "».";
        destino = *v;
        return std::nullopt;
    };
    if (auto e = metros(tolerancia, "tolerancia", o.tolerancia, true)) return *e;
    if (auto e = metros(holgura, "holgura", o.holgura, false)) return *e;
    if (p.isSet(metodo)) {
        const QString m = p.value(metodo).trimmed().toLower();
        if (m == QLatin1String("cajas"))
            o.metodo = MetodoInterferencias::cajas;
        else if (m == QLatin1String("exacto"))
            o.metodo = MetodoInterferencias::exacto;
        else if (m == QLatin1String("holgura"))
            o.metodo = MetodoInterferencias::holgura;
        else
            return "--metodo espera cajas, exacto u holgura; se recibió «" + u(p.value(metodo)) + "».";
    }
    if (p.isSet(holgura) && o.metodo != MetodoInterferencias::holgura)
        return "--holgura solo vale con --metodo holgura.";
    if (p.isSet(maximo)) {
        bool ok = false;
        const long long n = p.value(maximo).trimmed().toLongLong(&ok);
        if (!ok || n < 0)
            return "--max-interferencias espera un número entero no negativo; se recibió «" + u(p.value(maximo)) +
                   "».";
        o.maxInterferencias = n;
    }
    o.bcf = u(p.value(bcf));
    o.html = u(p.value(html));
    o.qto = u(p.value(qto));
    o.dxf = u(p.value(dxf));
    o.json = u(p.value(json));
    o.sinCache = p.isSet(sinCache);
    o.analizar = !o.pares.empty() || !o.bcf.empty() || !o.html.empty() || o.maxInterferencias ||
                 p.isSet(metodo) || p.isSet(tolerancia);

    if (p.isSet(seccion)) {
        const QStringList partes = p.value(seccion).split(separadorPar);
        const QString eje = partes.value(0).trimmed().toUpper();
        const int codigo = eje == QLatin1String("X") ? 0 : eje == QLatin1String("Y") ? 1 : eje == QLatin1String("Z") ? 2 : -1;
        const auto posicion = numero(partes.value(1));
        if (codigo < 0 || !posicion)
            return "--seccion espera un eje (X, Y o Z) y una posición en metros, como --seccion Z 1.20; se "
                   "recibió «" +
                   u(partes.join(u' ')) + "».";
        o.ejeSeccion = codigo;
        o.posicionSeccion = *posicion;
    }
    if (p.isSet(profundidad)) {
        // 0 is the exact cut, a length the cut with that depth behind the
        // plane, "ilimitada" everything behind it.
        const QString v = p.value(profundidad).trimmed().toLower();
        if (v == QLatin1String("ilimitada")) {
            o.modoProfundidad = 2;
        } else {
            const auto d = numero(v);
            if (!d || *d < 0)
                return "--profundidad espera 0, una longitud en metros o «ilimitada»; se recibió «" +
                       u(p.value(profundidad)) + "».";
            o.modoProfundidad = *d == 0 ? 0 : 1;
            if (*d > 0) o.profundidad = *d;
        }
    }
    if (!o.dxf.empty() && !o.ejeSeccion) return "--dxf necesita una sección: añade --seccion EJE POSICION.";
    if (p.isSet(xorOpcion)) {
        const QStringList partes = p.value(xorOpcion).split(separadorPar);
        o.xor_ = std::make_pair(u(partes.value(0)), u(partes.value(1)));
    }
    return o;
}

std::string textoAyudaLote() {
    return R"(NOMBRE
    vornel-lote - coordinación BIM sin pantalla: interferencias, BCF, reportes,
    cuantificación, secciones y comparación de versiones en un solo paso

SINOPSIS
    vornel-lote [PROYECTO] [--vincular CLAVE=ARCHIVO]... [OPCIONES]

DESCRIPCIÓN
    Abre un proyecto (.teskal) o un paquete (.teskalpkg), o los modelos dados
    con --vincular, convierte cada modelo, ejecuta los análisis pedidos con el
    mismo código que el banco de trabajo y escribe cada archivo pedido tal como
    el banco de trabajo lo escribe. Las vistas de las interferencias se dibujan
    fuera de pantalla: sin DISPLAY, el contexto OpenGL se crea con EGL sobre la
    plataforma sin superficie de Mesa. El progreso va a la salida de error; el
    resumen, en JSON, a la salida estándar o al archivo de --json.

    Las conversiones se guardan en la caché del usuario
    ($XDG_CACHE_HOME/vornel, por omisión ~/.cache/vornel): abrir de nuevo los
    mismos archivos no vuelve a ejecutar el conversor.

OPCIONES
    PROYECTO
        Un proyecto .teskal o un paquete .teskalpkg. Los modelos cuyo archivo
        no se encuentra son un error.

    --vincular CLAVE=ARCHIVO
        Vincula un archivo IFC (o .ifczip) a la especialidad CLAVE (ARQ, EST,
        MEP, ...). Se puede repetir; se suma a los modelos del proyecto.

    --interferencias PARES
        Detecta interferencias entre los pares de especialidades dados, como
        ARQ:EST,ARQ:MEP, en un solo análisis. Sin esta opción, un análisis
        pedido por otra opción (--bcf, --html, --max-interferencias,
        --tolerancia, --metodo) compara todos los pares de especialidades con
        modelos.

    --tolerancia M
        Solape mínimo en metros para contar una interferencia (0.02).

    --metodo cajas|exacto|holgura
        exacto (por omisión): la geometría de los elementos se cruza con una
        penetración mayor que la tolerancia. cajas: las cajas de los
        elementos se solapan más que la tolerancia. holgura: la geometría no
        se toca pero se acerca a menos de --holgura metros.

    --holgura M
        La distancia libre exigida con --metodo holgura (0.05).

    --max-interferencias N
        Termina con estado 1 cuando el análisis da más de N interferencias.

    --bcf ARCHIVO
        Escribe el archivo BCF 2.1 del análisis (un tema por interferencia,
        con su punto de vista y su vista).

    --html ARCHIVO
        Escribe el reporte HTML del análisis, con la vista de cada
        interferencia.

    --qto ARCHIVO
        Escribe la cuantificación de todos los elementos como CSV (UTF-8,
        cada campo entre comillas).

    --seccion EJE POSICION
        Corta la federación con el plano perpendicular a X, Y o Z en POSICION
        metros.

    --profundidad M
        0: corte exacto (por omisión); una longitud: corte con esa
        profundidad; «ilimitada»: todo lo que queda detrás del plano.

    --dxf ARCHIVO
        Escribe la hoja de la sección como DXF R12.

    --xor BASE NUEVA
        Compara dos versiones de un modelo por GlobalId y cuenta los
        elementos agregados, eliminados, modificados e iguales.

    --json ARCHIVO
        Escribe el resumen en ARCHIVO en vez de la salida estándar: modelos,
        elementos, interferencias por par y por estado, conteos XOR.

    --sin-cache
        Convierte cada modelo sin leer ni escribir la caché de conversiones.

    --ayuda, -h
        Muestra esta ayuda.

ESTADO DE SALIDA
    0   todo salió bien.
    1   el análisis superó --max-interferencias (los archivos se escriben igual).
    2   cualquier error: una opción mal dada, un archivo que no se puede leer o
        escribir, una conversión que falla. El mensaje nombra el archivo y la
        causa.

EJEMPLO
    vornel-lote proyecto.teskal --interferencias ARQ:EST,ARQ:MEP --tolerancia 0.02 \
        --bcf choques.bcf --html choques.html --qto cantidades.csv \
        --seccion Z 1.20 --profundidad 0 --dxf planta.dxf \
        --xor v1.ifc v2.ifc --json resumen.json
)";
}

} // namespace teskal
