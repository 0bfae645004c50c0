// One line of text that is shortened to its room, whole in its tooltip and to a screen reader.
#pragma once

#include <QLabel>

namespace melvane {

class ElidedLabel : public QLabel {
public:
    ElidedLabel(QWidget* parent, Qt::TextElideMode mode);

    // `label` says what the text is, as part of the accessible name; while the text is empty, `hint` is shown. `brief`
    // is what is to be seen of it; none: the text from its beginning.
    void setFullText(const QString& text, const QString& label = {}, const QString& hint = {},
                     const QString& brief = {});

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void elide();

    Qt::TextElideMode mode_;
    QString fullText_;
    QString label_;
    QString hint_;
    QString brief_;
};

}  // namespace melvane
