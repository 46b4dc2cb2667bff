#include "ui/IndicadorGiro.h"

#include <QPainter>
#include <QTimer>

namespace teskal {

namespace {
constexpr int radios = 12;
}

IndicadorGiro::IndicadorGiro(int lado, QWidget* parent) : QWidget(parent) {
    setFixedSize(lado, lado);
    setAttribute(Qt::WA_TranslucentBackground);
    temporizador_ = new QTimer(this);
    temporizador_->setInterval(80);
    connect(temporizador_, &QTimer::timeout, this, [this] {
        paso_ = (paso_ + 1) % radios;
        update();
    });
}

void IndicadorGiro::showEvent(QShowEvent*) {
    temporizador_->start();
}
void IndicadorGiro::hideEvent(QHideEvent*) {
    temporizador_->stop();
}

void IndicadorGiro::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    p.translate(width() / 2.0, height() / 2.0);
    const double r = std::min(width(), height()) / 2.0;
    QColor color = palette().color(QPalette::WindowText);
    QPen pluma(color, std::max(1.5, r / 5.0), Qt::SolidLine, Qt::RoundCap);
    for (int k = 0; k < radios; ++k) {
        // The spoke of this step is the brightest, the ones behind it fade.
        const int atras = (paso_ - k + radios) % radios;
        color.setAlphaF(1.0f - 0.8f * static_cast<float>(atras) / radios);
        pluma.setColor(color);
        p.setPen(pluma);
        p.save();
        p.rotate(k * 360.0 / radios);
        p.drawLine(QPointF(0, -r * 0.45), QPointF(0, -r * 0.9));
        p.restore();
    }
}

} // namespace teskal
