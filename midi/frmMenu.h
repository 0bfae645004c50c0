// The program's menus: the main one and that of the MIDI song, which is also a sub-menu of the main one. What is chosen
// is told by signals; shortcuts work in every window unless a dialog is in front.
#pragma once

#include <QAction>
#include <QMenu>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "settings/modLang.h"
#include "state/midi_state.h"

namespace melvane {

class frmMenu : public QObject {
    Q_OBJECT

public:
    // Everything passed in outlives the menus; `owner` owns them.
    frmMenu(const MidiState& state, const modLang& language, QWidget* owner);

    // Entries are named mnuKar0..9 and mnuMidi0..2.
    QMenu* mnuKar() const { return mnuKar_; }
    QMenu* mnuMidi() const { return mnuMidi_; }
    QMenu* recentMenu() const { return recent_; }  // entry 5 of the main menu

    // Sets all texts from the current language.
    void SetMenuLanguage();
    // During a run no files can be chosen, and no other one begins.
    void setRunning(bool running);
    void setCanMix(bool can);
    void setCanStop(bool can);    // the run
    void setCanListen(bool can);  // to the last mix
    void setCanMixFast(bool can, const QString& whyNot);
    void setSteps(bool canUndo, bool canRedo);  // and shows undoText() and redoText() as they are now

    std::function<std::string()> undoText;
    std::function<std::string()> redoText;

Q_SIGNALS:
    void browse(int index);  // 0 background, 1 vocal, 2 destination
    void mix();
    void mixFast();
    void matchLevels();
    void undo();
    void redo();
    void openJob();
    void saveJob();
    void saveJobAs();
    void lastJob();
    void stop();
    void listen();
    void rehearse();
    void tags();
    void preferences();
    void help();
    void closeWanted();
    void about();
    void restoreMidi();
    void showChannels();

private:
    using Text = std::function<std::string()>;

    void addKaraoke();
    void addRun();
    void addSteps();
    void addJobs();
    void addMidi();
    QAction* add(QMenu* menu, const QString& name, Text text, const QKeySequence& shortcut = {});
    QMenu* addMenu(const QString& name, Text text);
    Text entry(LangEntry text) const;
    Text own(OwnText text) const;

    const MidiState& state_;
    const modLang& language_;
    QWidget* owner_;
    QMenu* mnuKar_;
    QMenu* mnuMidi_ = nullptr;
    QMenu* recent_ = nullptr;
    QAction* mix_ = nullptr;
    QAction* mixFast_ = nullptr;
    QAction* matchLevels_ = nullptr;
    QAction* stop_ = nullptr;
    QAction* undo_ = nullptr;
    QAction* redo_ = nullptr;
    QAction* listen_ = nullptr;
    QAction* restore_ = nullptr;
    std::vector<QAction*> idle_;  // that wait for the end of a run
    std::vector<std::pair<QAction*, Text>> texts_;
};

}  // namespace melvane
