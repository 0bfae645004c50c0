#include "settings/mnuHelp_about.h"

#include <QEvent>
#include <QFile>
#include <QTextBlock>
#include <QTextList>

#include "controls/zoom.h"

// In no namespace: the macro declares what it calls.
static void initAboutResources() {
    Q_INIT_RESOURCE(about);
}

namespace melvane {

namespace {

constexpr int kAboveItem = 3;
constexpr int kAboveParagraph = 7;
constexpr int kIndent = 18;

}  // namespace

AboutText::AboutText(QWidget* page, const QRect& place) : QTextBrowser(page) {
    initAboutResources();
    setObjectName(QStringLiteral("about"));
    setOpenLinks(false);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    layOut(this, place);
}

void AboutText::useLanguage(const std::string& code) {
    QFile text(code == "pl" ? QStringLiteral(":/about/about.pl.md") : QStringLiteral(":/about/about.en.md"));
    if (text.open(QIODevice::ReadOnly)) setMarkdown(QString::fromUtf8(text.readAll()));
    layOutText();
}

void AboutText::changeEvent(QEvent* event) {
    QTextBrowser::changeEvent(event);
    if (event->type() == QEvent::StyleChange) layOutText();
}

// What comes of Markdown has no room between paragraphs, and headings that are large for a window.
void AboutText::layOutText() {
    document()->setIndentWidth(zoomed(kIndent));
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        QTextCursor cursor(block);
        QTextBlockFormat room;
        room.setTopMargin(zoomed(block.textList() ? kAboveItem : kAboveParagraph));
        cursor.mergeBlockFormat(room);
        if (block.blockFormat().headingLevel() == 0) continue;
        QTextCharFormat heading;
        heading.setProperty(QTextFormat::FontSizeAdjustment, 1);
        cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        cursor.mergeCharFormat(heading);
    }
}

}  // namespace melvane
