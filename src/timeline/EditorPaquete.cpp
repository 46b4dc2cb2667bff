#include "timeline/EditorPaquete.h"

#include "federation/Formato.h"

#include <QString>
#include <algorithm>
#include <cmath>

namespace teskal {

std::vector<const PaqueteAWP*> padresPosibles(const TimeLinerConfig& config, NivelAWP nivel) {
    const auto admite = [nivel](NivelAWP padre) {
        switch (nivel) {
        case NivelAWP::cwa:
            return false;
        case NivelAWP::cwp:
            return padre == NivelAWP::cwa;
        case NivelAWP::iwp:
            return padre == NivelAWP::cwa || padre == NivelAWP::cwp;
        case NivelAWP::pwp:
            return padre == NivelAWP::iwp;
        }
        return false;
    };
    std::vector<const PaqueteAWP*> r;
    for (const PaqueteAWP& p : config.paquetes)
        if (admite(p.nivel)) r.push_back(&p);
    return r;
}

bool formularioValido(const PaqueteAWP& p) {
    return !p.codigo.empty() && (p.nivel == NivelAWP::cwa || p.parentCodigo.has_value());
}

std::optional<std::string> errorValidacion(const PaqueteAWP& p, const TimeLinerConfig& config) {
    if (formularioValido(p)) return std::nullopt;
    if (p.codigo.empty()) return "El código es obligatorio";
    if (!padresPosibles(config, p.nivel).empty()) return "Selecciona un paquete padre";
    switch (p.nivel) {
    case NivelAWP::iwp:
        return "Crea primero un CWP (o CWA) para asignarlo como padre";
    case NivelAWP::pwp:
        return "Crea primero un IWP para asignarlo como padre";
    case NivelAWP::cwp:
        return "Crea primero un CWA para asignarlo como padre";
    case NivelAWP::cwa:
        break;
    }
    return std::nullopt;
}

std::optional<std::string> avisoFechas(const PaqueteAWP& p, const TimeLinerConfig& config, const QLocale& locale) {
    if (p.fechaInicio < config.fechaInicio || p.fechaFin > config.fechaFin) {
        const auto corta = [&](const QDateTime& f) {
            return locale.toString(f.toLocalTime().date(), QLocale::ShortFormat).toStdString();
        };
        return "Las fechas quedan fuera del rango del proyecto (" + corta(config.fechaInicio) + " – " +
               corta(config.fechaFin) + ")";
    }
    if (p.fechaInicioReal && p.fechaFinReal && *p.fechaFinReal < *p.fechaInicioReal)
        return "La fecha de fin real no puede ser anterior al inicio real.";
    return std::nullopt;
}

bool guardarPaquete(TimeLinerConfig& config, const PaqueteAWP& p) {
    if (!formularioValido(p)) return false;
    PaqueteAWP guardado = p;
    if (guardado.nivel == NivelAWP::cwa) guardado.parentCodigo.reset();
    const auto it = std::find_if(config.paquetes.begin(), config.paquetes.end(),
                                 [&](const PaqueteAWP& q) { return q.id == p.id; });
    if (it != config.paquetes.end())
        *it = std::move(guardado);
    else
        config.paquetes.push_back(std::move(guardado));
    // The axis follows the packages both ways: it widens to a new one and
    // narrows once the earliest or latest is gone.
    QDateTime inicio = config.paquetes.front().fechaInicio, fin = config.paquetes.front().fechaFin;
    for (const PaqueteAWP& q : config.paquetes) {
        inicio = std::min(inicio, q.fechaInicio);
        fin = std::max(fin, q.fechaFin);
    }
    config.fechaInicio = inicio;
    config.fechaFin = fin;
    return true;
}

bool eliminarPaquete(TimeLinerConfig& config, const std::string& id) {
    const auto antes = config.paquetes.size();
    std::erase_if(config.paquetes, [&](const PaqueteAWP& p) { return p.id == id; });
    return config.paquetes.size() != antes;
}

std::string textoCampoNumerico(double valor, int decimales) {
    if (decimales <= 0) return formato("%.0f", valor);
    return formato("%.*f", decimales, valor);
}

std::optional<double> valorCampoNumerico(const std::string& texto, double valorActual) {
    QString t = QString::fromStdString(texto).trimmed();
    t.replace(QLatin1Char(','), QLatin1Char('.'));
    bool ok = false;
    double v = t.toDouble(&ok); // the C locale: a point, whatever the machine's
    if (!ok || !std::isfinite(v)) v = -1;
    if (std::abs(v - valorActual) <= 0.001) return std::nullopt;
    return v;
}

std::vector<GrupoElementos> elementosDisponibles(const PropiedadesPorEspecialidad& propiedades,
                                                 const std::vector<std::string>& orden,
                                                 const std::string& busqueda) {
    const QString buscado = QString::fromStdString(busqueda).trimmed();
    std::vector<GrupoElementos> r;
    for (const std::string& clave : orden) {
        const auto it = propiedades.find(clave);
        if (it == propiedades.end()) continue;
        GrupoElementos g{clave, {}};
        for (const auto& [nombre, props] : it->second)
            if (buscado.isEmpty() || QString::fromStdString(nombre).contains(buscado, Qt::CaseInsensitive))
                g.nombres.push_back(nombre);
        if (g.nombres.empty()) continue;
        std::sort(g.nombres.begin(), g.nombres.end());
        r.push_back(std::move(g));
    }
    return r;
}

void alternarElemento(PaqueteAWP& p, const std::string& nombre) {
    auto& l = p.elementosNombre;
    const auto it = std::find(l.begin(), l.end(), nombre);
    if (it != l.end())
        l.erase(it);
    else
        l.push_back(nombre);
}

std::vector<std::string> nombresFicha(const ArbolAWP& arbol, const PaqueteAWP& p) {
    std::vector<std::string> r = p.elementosNombre;
    const auto anadir = [&](const ArbolAWP::Lista& l) {
        for (const PaqueteAWP* h : l) r.insert(r.end(), h->elementosNombre.begin(), h->elementosNombre.end());
    };
    if (p.nivel == NivelAWP::cwp) anadir(arbol.hijos(p.codigo, NivelAWP::iwp));
    if (p.nivel == NivelAWP::cwa) {
        anadir(arbol.iwpsDeCWA(p.codigo));
        anadir(arbol.hijos(p.codigo, NivelAWP::cwp));
    }
    std::sort(r.begin(), r.end());
    r.erase(std::unique(r.begin(), r.end()), r.end());
    return r;
}

std::string textoDesviacionEditor(int dias) {
    if (dias == 0) return "En plazo";
    return dias < 0 ? formato("%dd retraso", -dias) : formato("%dd adelanto", dias);
}

} // namespace teskal
