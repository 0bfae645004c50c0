// The list that opens over the effects window to choose an equaliser preset.
#pragma once

#include <QListWidget>
#include <QPointer>

namespace melvane {

class PresetList : public QListWidget {
    Q_OBJECT

public:
    // Hidden until it is opened.
    explicit PresetList(QWidget* window);

    // Shows the list with `row` selected, and captures the mouse. The focus goes back to where it was.
    void open(int row);

Q_SIGNALS:
    // A row was taken; the list is hidden already.
    void chosen(int row);

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void leave();
    void take(int row);

    QPointer<QWidget> opener_;
};

}  // namespace melvane
