// What lights up under the mouse: the common part of the program's buttons.
#pragma once

#include <QAbstractButton>
#include <QTimer>

namespace melvane {

// Lit from the first move of the mouse over it until a tick finds the mouse gone, or until it is pressed, disabled or
// hidden. Space and Enter press it.
class HotButton : public QAbstractButton {
    Q_OBJECT

public:
    bool isHot() const { return hover_; }

Q_SIGNALS:
    void Click();
    void PropertyChanged();

protected:
    HotButton(QWidget* parent, int tickMs);

    // Whether a move of the mouse lights the button.
    virtual bool isLitBy(const QMouseEvent&) const { return true; }

    bool event(QEvent* event) override;  // the menu of the window comes over a disabled button too
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void Timer1_Timer();
    void lightDown();

    bool hover_ = false;
    QTimer Timer1_;  // runs while the button is lit
};

}  // namespace melvane
