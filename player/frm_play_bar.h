// How far a file has played, as a bar that grows; and where it is to play on.
#pragma once

#include <QProgressBar>

namespace melvane {

class PlayBar : public QProgressBar {
    Q_OBJECT

public:
    static constexpr int kUnits = 206;  // the bar's length at the end of the file; in units too
    static constexpr int kMargin = 3;   // around it, for the focus ring

    explicit PlayBar(QWidget* window);

Q_SIGNALS:
    // The user pointed at this part of the file, 0..1.
    void pointedAt(double ratio);
    void stepped(int seconds);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    // Left and right arrow: five seconds.
    void keyPressEvent(QKeyEvent* event) override;
};

}  // namespace melvane
