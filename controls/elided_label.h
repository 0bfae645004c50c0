// One line of text that is shortened to its room, whole in its tooltip.
#pragma once

#include <QLabel>

namespace melvane {

class ElidedLabel : public QLabel {
public:
    ElidedLabel(QWidget* parent, Qt::TextElideMode mode);

    // `label` says what the text is: shown in its stead while it is empty, and part of the accessible name.
    void setFullText(const QString& text, const QString& label = {});

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void elide();

    Qt::TextElideMode mode_;
    QString fullText_;
    QString label_;
};

}  // namespace melvane
