// The button of every window: a picture for each of its states and a caption over it.
#pragma once

#include <QPicture>
#include <functional>

#include "controls/button_pictures.h"
#include "controls/hot_button.h"

namespace melvane {

// The left and right arrow keys move the focus to the neighbouring control.
class Ed_Button : public HotButton {
    Q_OBJECT
    Q_PROPERTY(QPicture Normal READ Normal WRITE setNormal NOTIFY PropertyChanged)
    Q_PROPERTY(QPicture Hot READ Hot WRITE setHot NOTIFY PropertyChanged)
    Q_PROPERTY(QPicture Dis READ Dis WRITE setDis NOTIFY PropertyChanged)
    Q_PROPERTY(bool Enabled READ Enabled WRITE setEnabled NOTIFY PropertyChanged)
    Q_PROPERTY(QString Caption READ Caption WRITE setCaption NOTIFY PropertyChanged)

public:
    explicit Ed_Button(QWidget* parent = nullptr);

    const QPicture& Normal() const { return normal_; }
    void setNormal(const QPicture& picture);
    const QPicture& Hot() const { return hot_; }  // shown while the mouse is over the button
    void setHot(const QPicture& picture);
    const QPicture& Dis() const { return dis_; }  // shown while disabled; when there is none, the normal one is
    void setDis(const QPicture& picture);
    bool Enabled() const { return isEnabled(); }
    const QString& Caption() const { return caption_; }
    void setCaption(const QString& caption);

    // Where the caption is drawn: its right end is in the middle of the button. In pixels.
    QRect captionPlace() const;

Q_SIGNALS:
    // `button`: 1 left, 2 right, 4 middle; `shift`: 1 Shift, 2 Ctrl, 4 Alt; sums of those held. In units of the
    // button.
    void MouseMove(int button, int shift, float x, float y);

protected:
    bool isLitBy(const QMouseEvent& move) const override;  // no button held
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void setPicture(QPicture& own, const QPicture& picture);

    QPicture normal_;
    QPicture hot_;
    QPicture dis_;
    QString caption_;
};

// A button with pictures of its own. Too narrow for a caption (see fitsCaption), it has its symbol in the middle.
Ed_Button* addButton(QWidget* window, const char* name, const QRect& place, ButtonLook look, Symbol symbol,
                     std::function<void()> click);

// Other pictures for a button that is in its place.
void setButtonLook(Ed_Button* button, ButtonLook look, Symbol symbol);

// The tooltip is the accessible name as well.
void setButtonText(Ed_Button* button, const QString& caption, const QString& tooltip);

}  // namespace melvane
