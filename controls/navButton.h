// A small button with one of three built-in symbols: onward, back, and a list.
#pragma once

#include <QAbstractButton>
#include <QPicture>
#include <QTimer>
#include <array>
#include <functional>

namespace melvane {

class navButton : public QAbstractButton {
    Q_OBJECT
    Q_PROPERTY(short ButtonType READ ButtonType WRITE setButtonType NOTIFY PropertyChanged)

public:
    // As large as its pictures, whatever room it is given.
    explicit navButton(QWidget* parent = nullptr);

    short ButtonType() const { return type_; }
    // 0 onward, 1 back, 2 list; any other looks like 0 and has no hot picture.
    void setButtonType(short type);
    // `number` 1 to 6: a pair for each type, at rest and hot.
    const QPicture& Image(std::size_t number) const { return images_.at(number - 1); }
    std::size_t shownImage() const { return shown_; }

    QSize sizeHint() const override;

Q_SIGNALS:
    void Click();
    void PropertyChanged();

protected:
    bool event(QEvent* event) override;  // the menu of the window comes over a disabled button too
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void Timer1_Timer();
    void lightDown();
    void showImage(bool hot);

    std::array<QPicture, 6> images_;
    short type_ = 0;
    std::size_t shown_ = 1;
    bool hover_ = false;
    QTimer Timer1_;
};

navButton* addNavButton(QWidget* window, const char* name, const QPoint& place, short type,
                        std::function<void()> click);

}  // namespace melvane
