#include "analyses/bcf/TextosBCF.h"

#include "analyses/bcf/CamaraBCF.h"
#include "federation/Formato.h"
#include "persistence/JsonRegistros.h"

#include <QString>
#include <QTextBoundaryFinder>
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace teskal {

namespace {

constexpr std::string_view xsins = "http://www.w3.org/2001/XMLSchema-instance";

} // namespace

namespace {

void anadirEscapado(std::string& r, char c) {
    switch (c) {
    case '&':
        r += "&amp;";
        break;
    case '<':
        r += "&lt;";
        break;
    case '>':
        r += "&gt;";
        break;
    case '"':
        r += "&quot;";
        break;
    default:
        r += c;
    }
}

// The length of the well-formed UTF-8 sequence at the start of `s`, 0 when it
// is not one (a stray continuation byte, a truncated or overlong sequence, a
// surrogate or a code point above U+10FFFF).
std::size_t secuenciaUTF8(std::string_view s) {
    const auto b = [&s](std::size_t k) { return static_cast<unsigned char>(s[k]); };
    const unsigned char c = b(0);
    if (c < 0x80) return 1;
    std::size_t n = 0;
    unsigned char min2 = 0x80, max2 = 0xBF; // the range the second byte may take
    if (c >= 0xC2 && c <= 0xDF) {
        n = 2;
    } else if (c >= 0xE0 && c <= 0xEF) {
        n = 3;
        if (c == 0xE0)
            min2 = 0xA0; // overlong
        else if (c == 0xED)
            max2 = 0x9F; // surrogates
    } else if (c >= 0xF0 && c <= 0xF4) {
        n = 4;
        if (c == 0xF0)
            min2 = 0x90; // overlong
        else if (c == 0xF4)
            max2 = 0x8F; // above U+10FFFF
    } else {
        return 0;
    }
    if (s.size() < n || b(1) < min2 || b(1) > max2) return 0;
    for (std::size_t k = 2; k < n; ++k)
        if ((b(k) & 0xC0) != 0x80) return 0;
    return n;
}

} // namespace

std::string escaparXML(std::string_view texto) {
    std::string r;
    r.reserve(texto.size());
    for (const char c : texto) anadirEscapado(r, c);
    return r;
}

std::string textoXML(std::string_view texto) {
    std::string r;
    r.reserve(texto.size());
    std::size_t k = 0;
    while (k < texto.size()) {
        const std::size_t n = secuenciaUTF8(texto.substr(k));
        if (n == 0) {
            r += "\xEF\xBF\xBD"; // U+FFFD for the byte that is not UTF-8
            ++k;
            continue;
        }
        const unsigned char c = static_cast<unsigned char>(texto[k]);
        if (n == 1) {
            if (c >= 0x20 || c == '\t' || c == '\n' || c == '\r') anadirEscapado(r, texto[k]);
        } else if (!(n == 3 && c == 0xEF && texto[k + 1] == '\xBF' &&
                     (texto[k + 2] == '\xBE' || texto[k + 2] == '\xBF'))) { // U+FFFE, U+FFFF
            r.append(texto.substr(k, n));
        }
        k += n;
    }
    return r;
}

std::string guidBCF(std::string_view id) {
    std::string r(id);
    for (char& c : r)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return r;
}

bool esIfcGuid(std::string_view globalId) {
    if (globalId.size() != 22) return false;
    for (const char c : globalId)
        if (!((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
              c == '_' || c == '$'))
            return false;
    return true;
}

std::string textoVersionBCF() {
    std::string t;
    t += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    t += "<Version VersionId=\"2.1\" xmlns:xsi=\"";
    t += xsins;
    t += "\" xsi:noNamespaceSchemaLocation=\"version.xsd\">\n";
    t += "    <DetailedVersion>2.1</DetailedVersion>\n";
    t += "</Version>";
    return t;
}

namespace {

// A value as the form writes text.
std::string texto(FormaBCF forma, std::string_view valor) {
    return forma == FormaBCF::estandar ? textoXML(valor) : escaparXML(valor);
}

} // namespace

std::string textoProyectoBCF(std::string_view projectId, std::string_view nombreProyecto,
                             FormaBCF forma) {
    std::string t;
    t += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    t += "<ProjectExtension xmlns:xsi=\"";
    t += xsins;
    t += "\" xsi:noNamespaceSchemaLocation=\"project.xsd\">\n";
    t += "    <Project ProjectId=\"";
    t += projectId;
    t += "\">\n        <Name>";
    t += texto(forma, nombreProyecto);
    t += "</Name>\n    </Project>\n";
    t += "    <ExtensionSchema>extensions.xsd</ExtensionSchema>\n";
    t += "</ProjectExtension>";
    return t;
}

std::string textoMarkupBCF(const AnalisisInterferencias& analisis, const Interferencia& i,
                           std::string_view viewpointGuid, FormaBCF forma) {
    const bool estandar = forma == FormaBCF::estandar;
    const std::string fecha = textoFechaJson(analisis.fecha).toStdString();
    const std::string titulo = i.nombreA + " ↔ " + i.nombreB;
    const std::string descripcion = "Interferencia entre " + i.especialidadA + " y " +
                                    i.especialidadB +
                                    ". Tolerancia: " + formato("%.3f", analisis.tolerancia) + " m.";
    std::string t;
    t += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    t += "<Markup xmlns:xsi=\"";
    t += xsins;
    t += "\" xsi:noNamespaceSchemaLocation=\"markup.xsd\">\n";
    t += "    <Topic Guid=\"";
    t += guidBCF(i.id);
    t += "\" TopicType=\"Clash\" TopicStatus=\"";
    t += estadoBCF(i.estado);
    t += "\">\n        <Title>";
    t += texto(forma, titulo);
    t += "</Title>\n";
    // The schema wants each label as an element of its own, right after the title.
    if (estandar) {
        t += "        <Labels>Clash</Labels>\n        <Labels>";
        t += texto(forma, i.especialidadA);
        t += "</Labels>\n        <Labels>";
        t += texto(forma, i.especialidadB);
        t += "</Labels>\n";
    }
    t += "        <CreationDate>";
    t += fecha;
    t += "</CreationDate>\n        <CreationAuthor>TESKAL</CreationAuthor>\n        <ModifiedDate>";
    t += fecha;
    t += "</ModifiedDate>\n        <ModifiedAuthor>TESKAL</ModifiedAuthor>\n        <Description>";
    t += texto(forma, descripcion);
    t += "</Description>\n";
    if (!estandar) {
        t += "        <Labels>\n            <Label>Clash</Label>\n            <Label>";
        t += escaparXML(i.especialidadA);
        t += "</Label>\n            <Label>";
        t += escaparXML(i.especialidadB);
        t += "</Label>\n        </Labels>\n";
    }
    t += "    </Topic>\n";
    if (estandar) {
        // Viewpoints is itself the viewpoint: its Guid, file, snapshot and index.
        t += "    <Viewpoints Guid=\"";
        t += viewpointGuid;
        t += "\">\n";
        t += "        <Viewpoint>viewpoint.bcfv</Viewpoint>\n";
        t += "        <Snapshot>snapshot.png</Snapshot>\n";
        t += "        <Index>0</Index>\n";
        t += "    </Viewpoints>\n";
    } else {
        t += "    <Viewpoints>\n        <ViewPoint Guid=\"";
        t += viewpointGuid;
        t += "\">\n";
        t += "            <Viewpoint>viewpoint.bcfv</Viewpoint>\n";
        t += "            <Snapshot>snapshot.png</Snapshot>\n";
        t += "            <Index>0</Index>\n";
        t += "        </ViewPoint>\n";
        t += "    </Viewpoints>\n";
    }
    t += "</Markup>";
    return t;
}

namespace {

// A coordinate as printf writes it: Qt's formatting drops the sign of a
// negative zero, which printf keeps ("-0.0000").
std::string numero(const char* formatoValor, float valor) {
    std::string r = formato(formatoValor, static_cast<double>(valor));
    if (std::signbit(valor) && r.front() != '-') r.insert(r.begin(), '-');
    return r;
}

// One vector of the camera: <X>, <Y>, <Z> in the given format, each value on
// its own line twelve blanks in.
void anadirVector(std::string& t, const char* formatoValor, const glm::vec3& v) {
    t += "            <X>" + numero(formatoValor, v.x) + "</X>\n";
    t += "            <Y>" + numero(formatoValor, v.y) + "</Y>\n";
    t += "            <Z>" + numero(formatoValor, v.z) + "</Z>\n";
}

bool esFinito(const glm::vec3& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

void anadirCamara(std::string& t, const CamaraBCF& c) {
    t += "    <PerspectiveCamera>\n";
    t += "        <CameraViewPoint>\n";
    anadirVector(t, "%.4f", c.posicion);
    t += "        </CameraViewPoint>\n";
    t += "        <CameraDirection>\n";
    anadirVector(t, "%.6f", c.direccion);
    t += "        </CameraDirection>\n";
    t += "        <CameraUpVector>\n";
    anadirVector(t, "%.6f", c.arriba);
    t += "        </CameraUpVector>\n";
    t += "        <FieldOfView>60.0</FieldOfView>\n";
    t += "    </PerspectiveCamera>\n";
}

void anadirComponente(std::string& t, std::string_view nombre, std::string_view globalId,
                      FormaBCF forma) {
    if (forma == FormaBCF::estandar && esIfcGuid(globalId)) {
        t += "            <Component IfcGuid=\"";
        t += globalId;
        t += "\">\n";
    } else {
        t += "            <Component>\n";
    }
    t += "                <OriginatingSystem>TESKAL</OriginatingSystem>\n";
    t += "                <AuthoringToolId>";
    t += texto(forma, nombre);
    t += "</AuthoringToolId>\n";
    t += "            </Component>\n";
}

void anadirComponentes(std::string& t, const Interferencia& i, FormaBCF forma) {
    t += "    <Components>\n";
    t += "        <Selection>\n";
    anadirComponente(t, i.nombreA, i.globalIdA, forma);
    anadirComponente(t, i.nombreB, i.globalIdB, forma);
    t += "        </Selection>\n";
    t += "        <Visibility DefaultVisibility=\"true\"/>\n";
    t += "    </Components>\n";
}

} // namespace

std::string textoViewpointBCF(const Interferencia& i, std::string_view viewpointGuid,
                              FormaBCF forma) {
    const bool estandar = forma == FormaBCF::estandar;
    const CamaraBCF c = estandar ? camaraBCF(i.viewpointPos, i.viewpointTarget)
                                 : camaraBCFLiteral(i.viewpointPos, i.viewpointTarget);
    std::string t;
    t += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    t += "<VisualizationInfo xmlns:xsi=\"";
    t += xsins;
    t += "\" Guid=\"";
    t += viewpointGuid;
    t += estandar ? "\" xsi:noNamespaceSchemaLocation=\"visinfo.xsd\">\n"
                  : "\" xsi:noNamespaceSchemaLocation=\"viewpoint.xsd\">\n";
    if (estandar) {
        // The schema's order: components, then the camera. A camera that is
        // not finite everywhere shows nothing, and the schema lets it be absent.
        anadirComponentes(t, i, forma);
        if (esFinito(c.posicion) && esFinito(c.direccion) && esFinito(c.arriba)) anadirCamara(t, c);
    } else {
        anadirCamara(t, c);
        anadirComponentes(t, i, forma);
    }
    t += "    <ClippingPlanes/>\n";
    t += "</VisualizationInfo>";
    return t;
}

std::string textoExtensionesBCF(const AnalisisInterferencias& analisis) {
    std::vector<std::string_view> etiquetas{"Clash"};
    for (const Interferencia& i : analisis.interferencias)
        for (const std::string* e : {&i.especialidadA, &i.especialidadB})
            if (std::find(etiquetas.begin(), etiquetas.end(), *e) == etiquetas.end())
                etiquetas.push_back(*e);
    std::vector<std::string_view> estados;
    for (const EstadoClash e : estadosClash) estados.push_back(estadoBCF(e));
    return textoExtensionesBCF({"Clash"}, estados, etiquetas);
}

std::string textoExtensionesBCF(const std::vector<std::string_view>& tipos,
                                const std::vector<std::string_view>& estados,
                                const std::vector<std::string_view>& etiquetas) {
    std::string t;
    const auto restriccion = [&t](std::string_view tipo, const auto& valores) {
        t += "        <xs:simpleType name=\"";
        t += tipo;
        t += "\">\n            <xs:restriction base=\"";
        t += tipo;
        t += "\">\n";
        for (const auto& v : valores) {
            t += "                <xs:enumeration value=\"";
            t += textoXML(v);
            t += "\"/>\n";
        }
        t += "            </xs:restriction>\n        </xs:simpleType>\n";
    };
    t += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    t += "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">\n";
    t += "    <xs:redefine schemaLocation=\"markup.xsd\">\n";
    restriccion("TopicType", tipos);
    restriccion("TopicStatus", estados);
    restriccion("TopicLabel", etiquetas);
    t += "    </xs:redefine>\n";
    t += "</xs:schema>";
    return t;
}

namespace {

bool caracterPermitido(char32_t c) {
    return QChar::isLetterOrNumber(c) || c == U'-' || c == U'_' || c == U' ';
}

// The first code point of a piece of UTF-16 text, pairing surrogates.
char32_t primerCodigo(QStringView s) {
    if (s.size() >= 2 && s[0].isHighSurrogate() && s[1].isLowSurrogate())
        return QChar::surrogateToUcs4(s[0], s[1]);
    return s.isEmpty() ? U'\0' : s[0].unicode();
}

} // namespace

std::string nombreArchivoBCF(std::string_view nombreAnalisis) {
    const QString nombre =
        QString::fromUtf8(nombreAnalisis.data(), static_cast<qsizetype>(nombreAnalisis.size()));
    QString limpio;
    QTextBoundaryFinder grafemas(QTextBoundaryFinder::Grapheme, nombre);
    qsizetype inicio = 0;
    while (grafemas.toNextBoundary() != -1) {
        const qsizetype fin = grafemas.position();
        const QStringView caracter = QStringView(nombre).mid(inicio, fin - inicio);
        if (caracterPermitido(primerCodigo(caracter))) limpio += caracter;
        inicio = fin;
    }
    return limpio.toStdString() + ".bcf";
}

} // namespace teskal
