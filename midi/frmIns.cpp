#include "midi/frmIns.h"

#include <QKeyEvent>

#include "controls/window_layout.h"
#include "controls/window_region.h"
#include "controls/zoom.h"
#include "settings/guarded.h"
#include "settings/instrument_names.h"

namespace melvane {

namespace {

constexpr QRect kTitle(kLeft, 4, 214, 22);
constexpr QRect kCloseButton(274 - kLeft - 24, 4, 24, 22);
constexpr int kRowHeight = 18;
constexpr QRect kList(kLeft, 33, 250, 7 * kRowHeight + 2);  // whole rows and a frame

}  // namespace

frmIns::frmIns(MidiBackground& midi, const modLang& language, Dialogs& dialogs, FramelessWindow* owner)
    : FramelessWindow(kStartRegion, kGripHeight, owner),
      midi_(midi),
      language_(language),
      dialogs_(dialogs),
      List3_(new QListWidget(this)),
      Command1_(addButton(this, "Command1", kCloseButton, ButtonLook::close, Symbol::close, [this] { close(); })) {
    setObjectName(QStringLiteral("frmIns"));
    addTitle(kTitle);
    List3_->setObjectName(QStringLiteral("List3"));
    layOut(List3_, kList);
    for (int program = 0; program <= kPercussionInstrument; ++program)
        List3_->addItem(toQt(GetInstrumentName(program)));
    connect(List3_, &QListWidget::itemClicked, this, &frmIns::List3_Click);
    connect(List3_, &QListWidget::itemSelectionChanged, this, &frmIns::List3_Click);
    connect(List3_, &QListWidget::itemDoubleClicked, this, [this] {
        List3_Click();
        close();
    });
    GetInstrumentsLanguage();
    List3_->setFocus();
}

void frmIns::SelectInstrument(const QString& name) {
    const QSignalBlocker shownOnly(List3_);
    for (int row = 0; row < List3_->count(); ++row)
        if (List3_->item(row)->text() == name) List3_->setCurrentRow(row);
}

void frmIns::List3_Click() {
    // The current entry follows the selection, and is moved by the focus as well.
    const QList<QListWidgetItem*> selected = List3_->selectedItems();
    if (selected.isEmpty()) return;
    const QListWidgetItem* item = selected.first();
    guarded(dialogs_, language_, [&] {
        midi_.setChannelInstrument(editedChannel, static_cast<std::int16_t>(List3_->row(item)));
        Q_EMIT picked(editedChannel, item->text());
    });
    showTitle();
}

// Whole, as there is no room for it in the strip.
void frmIns::showTitle() {
    const QListWidgetItem* item = List3_->currentItem();
    const QString channel = toQt(language_.ownText(OwnText::instrumentPicker, std::to_string(editedChannel + 1)));
    setTitle(item ? channel + QStringLiteral(": ") + item->text() : channel);
}

void frmIns::GetInstrumentsLanguage() {
    showTitle();
    List3_->setAccessibleName(toQt(language_.ownText(OwnText::instruments)));
    setButtonText(Command1_, {}, toQt(language_.lang(LangEntry::close)));
}

void frmIns::open() {
    GetInstrumentsLanguage();
    if (!isVisible()) moveBesideOwner(Qt::RightEdge);
    List3_->setFocus();
    bringUp();
    List3_->scrollToItem(List3_->currentItem(), QAbstractItemView::PositionAtCenter);
}

void frmIns::keyPressEvent(QKeyEvent* event) {
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!enter || !List3_->hasFocus()) return FramelessWindow::keyPressEvent(event);
    List3_Click();
    close();
}

}  // namespace melvane
