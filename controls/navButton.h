// A small button with one of three built-in symbols: onward, back, and a list.
#pragma once

#include <QPicture>
#include <array>
#include <functional>

#include "controls/hot_button.h"

namespace melvane {

class navButton : public HotButton {
    Q_OBJECT
    Q_PROPERTY(short ButtonType READ ButtonType WRITE setButtonType NOTIFY PropertyChanged)

public:
    explicit navButton(QWidget* parent = nullptr);

    short ButtonType() const { return type_; }
    // 0 onward, 1 back, 2 list; any other looks like 0 and has no hot picture.
    void setButtonType(short type);
    // `number` 1 to 6: a pair for each type, at rest and hot.
    const QPicture& Image(std::size_t number) const { return images_.at(number - 1); }
    std::size_t shownImage() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::array<QPicture, 6> images_;
    short type_ = 0;
};

// As large as its pictures.
navButton* addNavButton(QWidget* window, const char* name, const QPoint& place, short type,
                        std::function<void()> click);

}  // namespace melvane
