#include "viewport/ui/VisorEscena.h"

#include "federation/ContentView.h"
#include "scene/Orientacion.h"
#include "viewport/ui/EtiquetasMedicion.h"

#include <QMouseEvent>
#include <QShortcut>
#include <QWheelEvent>
#include <glm/gtc/quaternion.hpp>

namespace teskal {

VisorEscena::VisorEscena(ContentView& cv, QWidget* parent) : QOpenGLWidget(parent), cv_(cv) {
    setObjectName(QStringLiteral("visorEscena"));
    QSurfaceFormat f = format();
    f.setVersion(3, 3);
    f.setProfile(QSurfaceFormat::CoreProfile);
    f.setDepthBufferSize(24);
    f.setSamples(4);
    setFormat(f);
    setMinimumSize(200, 150);
    setFocusPolicy(Qt::ClickFocus);
    // Hovering while a measuring tool is on shows the snap ring.
    setMouseTracking(true);
    cv_.medicion.pintorEtiquetas = pintarEtiquetaMedicion;

    // The view's own perspective camera, until the first framing moves it.
    camara_ = Node::crear("_TESKAL_Camara");
    camara_->setCamera(Camera{60.0f, 0.1f, 1000.0f, false, 1.0f});
    camara_->setPosition({20, -20, 20});
    camara_->setEulerAngles(eulerMirandoA({-20, 20, -20}, {0, 0, 1}));
    cv_.viewport.vincularPuntoDeVista(camara_);
    connect(&cv_.viewport, &ViewportController::camaraCambiada, this, qOverload<>(&QWidget::update));
    connect(&cv_, &ContentView::changed, this, &VisorEscena::alCambiarEspacio);

    // Changes made straight on nodes and materials show up in the counters.
    sondeo_.setInterval(33);
    connect(&sondeo_, &QTimer::timeout, this, [this] {
        const auto& c = cv_.scene.contadores();
        if (c.estructura != estructuraVista_ || c.apariencia != aparienciaVista_) update();
    });
    sondeo_.start();

    // Escape ends a clash's ghosted focus, wherever the window's focus is.
    escape_ = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    escape_->setContext(Qt::WindowShortcut);
    escape_->setEnabled(false);
    connect(escape_, &QShortcut::activated, this, [this] { cv_.terminarFocoFantasma(); });
}

VisorEscena::~VisorEscena() {
    if (context()) {
        makeCurrent();
        render_.liberar();
        doneCurrent();
    }
}

void VisorEscena::alCambiarEspacio() {
    // The camera cut rules the near plane; when it goes, the scene's size does.
    const std::optional<double> ahora = cv_.nearClipOverride();
    cv_.viewport.actualizarCercano(cercanoAnterior_, ahora, *cv_.scene.rootNode());
    cercanoAnterior_ = ahora;
    escape_->setEnabled(cv_.modoFocoFantasma);
    update();
}

void VisorEscena::initializeGL() { render_.inicializar(); }

void VisorEscena::paintGL() {
    const qreal dpr = devicePixelRatioF();
    const int w = static_cast<int>(width() * dpr), h = static_cast<int>(height() * dpr);
    const auto cam = CamaraRender::desdeNodo(*camara_, static_cast<float>(w) / std::max(h, 1));
    if (cv_.modoFocoFantasma)
        render_.revelados = cv_.nodosDestacadosHistorial;
    else
        render_.revelados.clear();
    render_.dibujar(cv_.scene, cam, w, h, defaultFramebufferObject());
    estructuraVista_ = cv_.scene.contadores().estructura;
    aparienciaVista_ = cv_.scene.contadores().apariencia;
}

std::optional<ResultadoPick> VisorEscena::elegirEn(QPoint punto, bool incluirPiso) {
    if (!isValid()) return std::nullopt;
    makeCurrent();
    const qreal dpr = devicePixelRatioF();
    const int w = static_cast<int>(width() * dpr), h = static_cast<int>(height() * dpr);
    const auto cam = CamaraRender::desdeNodo(*camara_, static_cast<float>(w) / std::max(h, 1));
    auto r = render_.elegir(cv_.scene, cam, w, h, static_cast<int>(punto.x() * dpr),
                            static_cast<int>(punto.y() * dpr), incluirPiso, defaultFramebufferObject());
    doneCurrent();
    return r;
}

VistaRaton VisorEscena::vistaRaton(QPointF punto) const {
    const float w = static_cast<float>(std::max(width(), 1)), h = static_cast<float>(std::max(height(), 1));
    const auto cam = CamaraRender::desdeNodo(*camara_, w / h);
    return {cam.proyeccion * cam.vista, cam.posicion, {w, h},
            {static_cast<float>(punto.x()), static_cast<float>(punto.y())}};
}

void VisorEscena::alClicar(QPoint punto) {
    if (cv_.medicion.modoMedicion3D != ModoMedicion3D::inactivo) {
        cv_.clicMedicion(vistaRaton(punto));
        update();
        return;
    }
    const auto hit = elegirEn(punto, false);
    cv_.seleccionarNodo(hit ? hit->nodo : nullptr);
}

void VisorEscena::mousePressEvent(QMouseEvent* e) {
    pulsado_ = ultimo_ = e->position().toPoint();
    boton_ = e->button();
    movido_ = false;
    // A move of the user takes over from any animated one; it turns about the
    // point under the mouse, when there is one.
    cv_.viewport.detenerAnimacion();
    if (const auto hit = elegirEn(pulsado_, true)) pivote_ = hit->punto;
}

void VisorEscena::mouseMoveEvent(QMouseEvent* e) {
    if (boton_ == Qt::NoButton) {
        if (cv_.medicion.modoMedicion3D != ModoMedicion3D::inactivo) {
            cv_.moverRatonMedicion(vistaRaton(e->position()));
            update();
        }
        return;
    }
    const QPoint p = e->position().toPoint();
    if ((p - pulsado_).manhattanLength() > 3) movido_ = true;
    const QPoint d = p - ultimo_;
    ultimo_ = p;
    if (!movido_) return;
    if (boton_ == Qt::LeftButton && !(e->modifiers() & Qt::ShiftModifier))
        orbitar(static_cast<float>(d.x()), static_cast<float>(d.y()));
    else
        desplazar(static_cast<float>(d.x()), static_cast<float>(d.y()));
    update();
}

void VisorEscena::mouseReleaseEvent(QMouseEvent* e) {
    if (e->button() == Qt::LeftButton && !movido_) alClicar(e->position().toPoint());
    boton_ = Qt::NoButton;
}

void VisorEscena::wheelEvent(QWheelEvent* e) {
    cv_.viewport.detenerAnimacion();
    acercar(static_cast<float>(e->angleDelta().y()) / 120.0f);
    update();
}

void VisorEscena::orbitar(float dx, float dy) {
    // Turntable: about the world's Z through the pivot, then about the
    // camera's own horizontal axis.
    const glm::quat giro = cuaternionDeEuler(camara_->eulerAngles());
    const glm::vec3 derecha = giro * glm::vec3(1, 0, 0);
    const glm::quat r = glm::angleAxis(-dx * 0.008f, glm::vec3(0, 0, 1)) * glm::angleAxis(-dy * 0.008f, derecha);
    camara_->setPosition(pivote_ + r * (camara_->position() - pivote_));
    camara_->setEulerAngles(eulerDeCuaternion(r * giro));
}

void VisorEscena::desplazar(float dx, float dy) {
    const glm::quat giro = cuaternionDeEuler(camara_->eulerAngles());
    const float distancia = std::max(glm::length(camara_->position() - pivote_), 0.5f);
    const float escala = distancia * 2.0f * std::tan(glm::radians(camara_->camera()->fieldOfView) / 2) /
                         std::max(height(), 1);
    const glm::vec3 mover = giro * glm::vec3(-dx * escala, dy * escala, 0);
    camara_->setPosition(camara_->position() + mover);
    pivote_ += mover;
}

void VisorEscena::acercar(float pasos) {
    const glm::vec3 haciaPivote = pivote_ - camara_->position();
    const float distancia = glm::length(haciaPivote);
    const glm::quat giro = cuaternionDeEuler(camara_->eulerAngles());
    const glm::vec3 frente = giro * glm::vec3(0, 0, -1);
    // Each notch covers a fifth of the way to the pivot, never less than 5 cm.
    const float paso = std::max(distancia * 0.2f, 0.05f) * pasos;
    camara_->setPosition(camara_->position() + frente * paso);
}

} // namespace teskal
