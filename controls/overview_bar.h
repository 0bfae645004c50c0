// How far the mix is, drawn over the shape of the song.
#pragma once

#include <QProgressBar>
#include <vector>

namespace melvane {

class OverviewBar : public QProgressBar {
    Q_OBJECT

public:
    static constexpr int kColumns = 176;  // units; the range of the progress

    OverviewBar(QWidget* window, const QRect& place);

    // The highest peaks of the song in its order, 0 to 1; none: the bar is plain.
    void setOverview(std::vector<float> peaks);
    // How much of the song has been mixed, 0 to kColumns.
    void setProgress(int width);
    // How much of the song has been looked at, 0 to 1.
    void setScanned(double part);

Q_SIGNALS:
    void clicked();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    double columnHeight(int column) const;

    std::vector<float> peaks_;
    double scanned_ = 1;
};

}  // namespace melvane
