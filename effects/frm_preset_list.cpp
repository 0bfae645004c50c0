#include "effects/frm_preset_list.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include "effects/presets.h"

namespace melvane {

namespace {}  // namespace

PresetList::PresetList(QWidget* window) : QListWidget(window) {
    for (const Preset& preset : kPresets) {
        auto* row = new QListWidgetItem(this);
        row->setText(QString::fromUtf8(preset.name.data(), static_cast<qsizetype>(preset.name.size())));
    }
    setFlow(QListView::TopToBottom);
    setWrapping(true);
    setMouseTracking(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    hide();
}

void PresetList::open(int row) {
    opener_ = window()->focusWidget();
    setCurrentRow(row);
    show();
    raise();
    setFocus();
    viewport()->grabMouse();
}

void PresetList::leave() {
    if (opener_) opener_->setFocus();
    hide();
}

void PresetList::take(int row) {
    leave();
    if (row >= 0) Q_EMIT chosen(row);
}

void PresetList::mouseReleaseEvent(QMouseEvent* event) {
    QListWidget::mouseReleaseEvent(event);
    const QPoint point = event->position().toPoint();
    const QModelIndex hit = indexAt(point);
    if (!rect().contains(viewport()->mapTo(this, point)))
        leave();
    else if (hit.isValid() && event->button() == Qt::LeftButton)
        take(hit.row());
}

void PresetList::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Escape:
            return leave();
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            return take(currentRow());
        default:
            QListWidget::keyPressEvent(event);
    }
}

void PresetList::focusOutEvent(QFocusEvent* event) {
    QListWidget::focusOutEvent(event);
    hide();
}

void PresetList::hideEvent(QHideEvent* event) {
    QListWidget::hideEvent(event);
    viewport()->releaseMouse();
}

}  // namespace melvane
