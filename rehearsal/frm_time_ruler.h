// The ruler of the timeline: a click goes there, a drag sets the loop.
#pragma once

#include <optional>

#include "rehearsal/frm_lanes.h"

namespace melvane {

class TimeRuler : public Lane {
    Q_OBJECT

public:
    TimeRuler(QWidget* window, const TimeView& view, const Rehearsal& rehearsal);

    Value value() const override;  // seconds
    void setValue(double seconds) override;

Q_SIGNALS:
    void loopWanted(std::int64_t begin, std::int64_t end);

protected:
    void drawPage(QPainter& painter) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    std::optional<double> pressed_;  // where
    bool dragged_ = false;
};

}  // namespace melvane
