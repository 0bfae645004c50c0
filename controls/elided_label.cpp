#include "controls/elided_label.h"

#include <QEvent>
#include <QTextDocument>
#include <algorithm>

#include "controls/skin.h"

namespace melvane {

ElidedLabel::ElidedLabel(QWidget* parent, Qt::TextElideMode mode) : QLabel(parent), mode_(mode) {
    setTextFormat(Qt::PlainText);
    setIndent(0);  // otherwise the text is moved, but not its room
}

void ElidedLabel::setFullText(const QString& text, const QString& label, const QString& hint, const QString& brief) {
    if (text == fullText_ && label == label_ && hint == hint_ && brief == brief_) return;
    fullText_ = text;
    label_ = label;
    hint_ = hint;
    brief_ = brief;
    const QString said = text.isEmpty() ? hint : text;
    // File names are no markup.
    setToolTip(Qt::mightBeRichText(said) ? said.toHtmlEscaped() : said);
    setAccessibleName(label.isEmpty() || said.isEmpty() ? label + said : label + QStringLiteral(": ") + said);
    setStyleState(*this, "empty", text.isEmpty());
    elide();
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    elide();
}

void ElidedLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::StyleChange || event->type() == QEvent::FontChange) elide();
}

void ElidedLabel::elide() {
    QString line = fullText_.isEmpty() ? hint_ : brief_.isEmpty() ? fullText_ : brief_;
    std::replace_if(
        line.begin(), line.end(), [](QChar c) { return c.category() == QChar::Other_Control; }, u' ');
    setText(fontMetrics().elidedText(line, mode_, contentsRect().width()));
}

}  // namespace melvane
