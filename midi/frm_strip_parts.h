// What the strips of the channels window are made of, beside their knobs.
#pragma once

#include <QCheckBox>
#include <QPicture>
#include <QPushButton>

namespace melvane {

// Words that read upwards, from the bottom to the top of their place.
class UpwardText : public QWidget {
    Q_OBJECT

public:
    UpwardText(QWidget* window, const QRect& place);
    void setText(const QString& text);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString text_;
};

// Switches a channel on and off, and shows its number. A click with Ctrl, or Ctrl+Space, asks for it alone.
class ChannelToggle : public QCheckBox {
    Q_OBJECT

public:
    ChannelToggle(QWidget* window, const QRect& place, int number);

    void setSounding(bool sounds);  // its light
    bool sounds() const { return sounds_; }
    void setSolo(bool solo);

Q_SIGNALS:
    void soloWanted();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool hitButton(const QPoint& position) const override;
    void paintEvent(QPaintEvent* event) override;

private:
    QPicture pon_;
    QPicture off_;
    QPicture solo_;
    QString number_;
    bool sounds_ = false;
    bool alone_ = false;
};

// The name of a channel's instrument, reading upwards in one or two lines. A double click, Space, Enter or F2 is its
// clicked().
class InstrumentLabel : public QPushButton {
    Q_OBJECT

public:
    InstrumentLabel(QWidget* window, const QRect& place);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};

}  // namespace melvane
