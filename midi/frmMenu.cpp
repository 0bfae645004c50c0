#include "midi/frmMenu.h"

#include <algorithm>
#include <array>

#include "controls/window_layout.h"

namespace melvane {

namespace {

struct FileEntry {
    const char* name;
    LangEntry text;
    QKeyCombination shortcut;
};
const std::array kFiles = {FileEntry{"mnuKar0", LangEntry::menuBackground, Qt::CTRL | Qt::Key_1},
                           FileEntry{"mnuKar1", LangEntry::menuVocal, Qt::CTRL | Qt::Key_2},
                           FileEntry{"mnuKar3", LangEntry::menuDestination, Qt::CTRL | Qt::Key_3}};

// Marks the first letter that `taken` does not hold yet as the one that chooses the entry.
QString withMnemonic(const QString& text, QString& taken) {
    QString marked = text;
    marked.replace(u'&', QStringLiteral("&&"));
    for (qsizetype i = 0; i < marked.size(); ++i) {
        const QChar letter = marked[i].toLower();
        if (!letter.isLetter() || taken.contains(letter)) continue;
        taken += letter;
        return marked.insert(i, u'&');
    }
    return marked;
}

}  // namespace

frmMenu::frmMenu(const MidiState& state, const modLang& language, QWidget* owner)
    : QObject(owner), state_(state), language_(language), owner_(owner), mnuKar_(new QMenu(owner)) {
    setObjectName(QStringLiteral("frmMenu"));
    mnuKar_->setObjectName(QStringLiteral("mnuKar"));
    mnuKar_->setToolTipsVisible(true);
    addKaraoke();
    addMidi();
    SetMenuLanguage();
    setCanStop(false);
    setCanListen(false);
    setSteps(false, false);
}

void frmMenu::addKaraoke() {
    for (std::size_t i = 0; i < kFiles.size(); ++i) {
        if (i == 2) mnuKar_->addSeparator()->setObjectName(QStringLiteral("mnuKar2"));
        QAction* file = add(mnuKar_, QLatin1String(kFiles[i].name), entry(kFiles[i].text), kFiles[i].shortcut);
        connect(file, &QAction::triggered, this, [this, i] { Q_EMIT browse(static_cast<int>(i)); });
        idle_.push_back(file);
    }
    addRun();
    addSteps();
    mnuKar_->addSeparator()->setObjectName(QStringLiteral("mnuKar4"));
    addJobs();
    recent_ = addMenu(QStringLiteral("mnuKar5"), own(OwnText::recentFiles));
    recent_->setToolTipsVisible(true);
    idle_.push_back(recent_->menuAction());
    mnuMidi_ = addMenu(QStringLiteral("mnuMid"), own(OwnText::midiButton));
    connect(add(mnuKar_, QStringLiteral("mnuKar6"), entry(LangEntry::preferences), Qt::CTRL | Qt::Key_Comma),
            &QAction::triggered, this, &frmMenu::preferences);
    connect(add(mnuKar_, QStringLiteral("mnuKar7"), entry(LangEntry::menuHelp), Qt::Key_F1), &QAction::triggered, this,
            &frmMenu::help);
    mnuKar_->addSeparator()->setObjectName(QStringLiteral("mnuKar8"));
    connect(add(mnuKar_, QStringLiteral("mnuKar9"), entry(LangEntry::menuClose), Qt::CTRL | Qt::Key_Q),
            &QAction::triggered, this, &frmMenu::closeWanted);
    connect(add(mnuKar_, QStringLiteral("about"), own(OwnText::aboutProgram)), &QAction::triggered, this,
            &frmMenu::about);
}

void frmMenu::addRun() {
    mix_ = add(mnuKar_, QStringLiteral("mix"), own(OwnText::mix), Qt::CTRL | Qt::Key_M);
    connect(mix_, &QAction::triggered, this, &frmMenu::mix);
    mixFast_ = add(mnuKar_, QStringLiteral("mixFast"), own(OwnText::mixFast), Qt::CTRL | Qt::SHIFT | Qt::Key_M);
    connect(mixFast_, &QAction::triggered, this, &frmMenu::mixFast);
    matchLevels_ = add(mnuKar_, QStringLiteral("matchLevels"), own(OwnText::matchLevels), Qt::CTRL | Qt::Key_L);
    connect(matchLevels_, &QAction::triggered, this, &frmMenu::matchLevels);
    stop_ = add(mnuKar_, QStringLiteral("stop"), own(OwnText::stop), Qt::CTRL | Qt::Key_Period);
    connect(stop_, &QAction::triggered, this, &frmMenu::stop);
    listen_ = add(mnuKar_, QStringLiteral("listen"), own(OwnText::listenToLastMix), Qt::CTRL | Qt::Key_P);
    connect(listen_, &QAction::triggered, this, &frmMenu::listen);
    connect(add(mnuKar_, QStringLiteral("rehearse"), own(OwnText::rehearse), Qt::CTRL | Qt::Key_R), &QAction::triggered,
            this, &frmMenu::rehearse);
    connect(add(mnuKar_, QStringLiteral("tags"), own(OwnText::tags), Qt::CTRL | Qt::Key_T), &QAction::triggered, this,
            &frmMenu::tags);
}

void frmMenu::addSteps() {
    mnuKar_->addSeparator();
    const auto said = [this](const std::function<std::string()>& text, OwnText plain) {
        return [this, &text, plain] { return text ? text() : language_.ownText(plain); };
    };
    undo_ = add(mnuKar_, QStringLiteral("undo"), said(undoText, OwnText::undo), QKeySequence::Undo);
    connect(undo_, &QAction::triggered, this, &frmMenu::undo);
    redo_ = add(mnuKar_, QStringLiteral("redo"), said(redoText, OwnText::redo), Qt::CTRL | Qt::SHIFT | Qt::Key_Z);
    connect(redo_, &QAction::triggered, this, &frmMenu::redo);
}

void frmMenu::addJobs() {
    const struct {
        const char* name;
        OwnText text;
        QKeySequence shortcut;
        void (frmMenu::*chosen)();
    } entries[] = {
        {"openJob", OwnText::openJob, Qt::CTRL | Qt::Key_O, &frmMenu::openJob},
        {"saveJob", OwnText::saveJob, Qt::CTRL | Qt::Key_S, &frmMenu::saveJob},
        {"saveJobAs", OwnText::saveJobAs, Qt::CTRL | Qt::SHIFT | Qt::Key_S, &frmMenu::saveJobAs},
        {"lastJob", OwnText::lastJob, Qt::CTRL | Qt::SHIFT | Qt::Key_O, &frmMenu::lastJob},
    };
    for (const auto& entry : entries) {
        idle_.push_back(add(mnuKar_, QLatin1String(entry.name), own(entry.text), entry.shortcut));
        connect(idle_.back(), &QAction::triggered, this, entry.chosen);
    }
}

void frmMenu::addMidi() {
    mnuMidi_->setObjectName(QStringLiteral("mnuMidi"));
    restore_ = add(mnuMidi_, QStringLiteral("mnuMidi0"), entry(LangEntry::restoreMidi));
    restore_->setEnabled(false);
    connect(mnuMidi_, &QMenu::aboutToShow, this, [this] {
        if (state_.midiLoaded) restore_->setEnabled(true);
    });
    connect(restore_, &QAction::triggered, this, [this] {
        if (state_.midiLoaded) Q_EMIT restoreMidi();
    });
    connect(add(mnuMidi_, QStringLiteral("mnuMidi1"), own(OwnText::midiChannels), Qt::CTRL | Qt::Key_D),
            &QAction::triggered, this, &frmMenu::showChannels);
    add(mnuMidi_, QStringLiteral("mnuMidi2"), entry(LangEntry::menuClose));
}

QAction* frmMenu::add(QMenu* menu, const QString& name, Text text, const QKeySequence& shortcut) {
    QAction* action = menu->addAction(QString());
    action->setObjectName(name);
    action->setShortcut(shortcut);
    action->setShortcutContext(Qt::ApplicationShortcut);
    action->setShortcutVisibleInContextMenu(true);
    owner_->addAction(action);  // a menu that pops up gives its shortcuts to no window
    texts_.emplace_back(action, std::move(text));
    return action;
}

QMenu* frmMenu::addMenu(const QString& name, Text text) {
    QMenu* menu = mnuKar_->addMenu(QString());
    menu->menuAction()->setObjectName(name);
    texts_.emplace_back(menu->menuAction(), std::move(text));
    return menu;
}

frmMenu::Text frmMenu::entry(LangEntry text) const {
    return [this, text] { return language_.lang(text); };
}

frmMenu::Text frmMenu::own(OwnText text) const {
    return [this, text] { return language_.ownText(text); };
}

// Short texts choose their letters first, so that there are some left for them.
void frmMenu::SetMenuLanguage() {
    std::vector<std::pair<QString, QAction*>> entries;
    for (const auto& [action, text] : texts_) entries.emplace_back(toQt(text()), action);
    std::ranges::stable_sort(entries, {}, [](const auto& entry) { return entry.first.size(); });
    QString takenInKaraoke;
    QString takenInMidi;
    for (const auto& [text, action] : entries)
        action->setText(withMnemonic(text, mnuMidi_->actions().contains(action) ? takenInMidi : takenInKaraoke));
}

void frmMenu::setRunning(bool running) {
    for (QAction* file : idle_) file->setEnabled(!running);
}

void frmMenu::setCanMix(bool can) {
    mix_->setEnabled(can);
}

void frmMenu::setCanStop(bool can) {
    stop_->setEnabled(can);
}

void frmMenu::setCanMixFast(bool can, const QString& whyNot) {
    for (QAction* fast : {mixFast_, matchLevels_}) {
        fast->setEnabled(can);
        fast->setToolTip(whyNot);
    }
}

void frmMenu::setSteps(bool canUndo, bool canRedo) {
    undo_->setEnabled(canUndo);
    redo_->setEnabled(canRedo);
    SetMenuLanguage();
}

void frmMenu::setCanListen(bool can) {
    listen_->setEnabled(can);
}

}  // namespace melvane
