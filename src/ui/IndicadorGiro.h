#pragma once

#include <QWidget>

class QTimer;

namespace teskal {

// A small spinning busy indicator: twelve spokes, the bright one going round.
// It turns only while it is shown.
class IndicadorGiro : public QWidget {
public:
    explicit IndicadorGiro(int lado = 16, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent*) override;
    void showEvent(QShowEvent*) override;
    void hideEvent(QHideEvent*) override;

private:
    QTimer* temporizador_ = nullptr;
    int paso_ = 0;
};

} // namespace teskal
