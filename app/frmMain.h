// The main window: three files, the sliders, the buttons of a mix, progress, levels and status. It shows the mixer's
// state and calls its operations; it decides nothing.
#pragma once

#include <QTimer>
#include <array>
#include <functional>
#include <future>
#include <optional>
#include <string>
#include <vector>

#include "app/fast_mix.h"
#include "app/frm_device_watch.h"
#include "app/frm_jobs.h"
#include "app/frm_level_panel.h"
#include "app/frm_line_up.h"
#include "app/frm_settings_keeper.h"
#include "app/frm_slider_panel.h"
#include "app/frm_status_row.h"
#include "app/frm_undo.h"
#include "app/frm_windows.h"
#include "app/mixer.h"
#include "controls/Ed_Button.h"
#include "controls/elided_label.h"
#include "controls/frameless_window.h"
#include "controls/navButton.h"
#include "midi/frmMenu.h"
#include "mixing/file_loudness.h"
#include "settings/recent_files.h"

namespace melvane {

class frmMain : public FramelessWindow {
    Q_OBJECT

public:
    // Everything passed in outlives the window.
    frmMain(Mixer& mixer, const Environment& environment, const SettingsStore& store, Documents& documents,
            const Workshop& workshop);

    // The remainder of set-up, once the mixer has its settings: position, texts, state.
    void DoRest();
    // Sets all texts from the current language, also those of the other windows.
    void SetMainLanguage();
    // Takes songs, voices, folders and jobs as if they were dropped on the window. UTF-8 paths. In a run, or while a
    // file is being opened, they are taken afterwards. `pointedAt` is the field that they were dropped on.
    void takeFiles(const std::vector<std::string>& paths, std::optional<int> pointedAt = {});

    // Keeps what mixes had recorded that were cut off, and tells where it is.
    void bringBackMixes();

    // Makes the mix of what is set now, unheard, while the windows go on. The stop button cancels it.
    void mixFast();
    // Looks for the levels with which song and voice fit each other, unheard too, and sets them.
    void matchLevels();
    // Why these can't be done now, in the language of the windows; "" when it can.
    std::string whyNoFastMix() const;

    // Ends a run, so that its file can be played, and writes the settings: the program is about to end.
    void endSession();

    // Lets pending window events run, for a few milliseconds at most.
    static void processWindowEvents();

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;  // windows that were open come along
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void addRow(int index);
    void addButtons();
    void addStatus();
    void addMenu();
    // A button whose click is guarded and followed by a refresh.
    Ed_Button* add(const char* name, const QRect& place, ButtonLook look, Symbol symbol, std::function<void()> click);
    // What an action throws is told in a box, in the language of the window.
    void attempt(const std::function<void()>& action);
    void tell(const std::string& text, BoxIcon icon);
    void openHelp();
    void perform(const std::function<void()>& action);

    void BR_Click(int index);
    void mi_button_Click();
    void b_STOP_Click();
    MainCalls calls();
    LineUp::Calls lineUpCalls();
    void followLineUp();
    void listen();
    void Timer1_Timer();
    void addJobs();
    std::vector<std::string> openJobsAmong(std::vector<std::string> paths);
    void showSettings();
    void showSteps();
    void startFast(FastMix::Task task);
    void followFastMix();
    void takeLevels(const FastMix::Result& result);
    void measureMix();
    void followMeasuring();
    FastMixNews fastMixNews() const;
    void endFastMix();
    void showTitle();
    double doneShare() const;
    void Form_Unload();
    void noteTaken(int index);
    void rememberFiles();
    void keepPlace();
    void keepSettings();
    void fillRecentJobs();
    void useLanguage(const std::string& code);
    void takeWaiting(bool running);
    // Opens the song on the MIDI port that was chosen, unless a run or an opening uses the old one.
    void usePort(bool running);
    // Runs what lets window events run while sources are opened: no other button may be pressed meanwhile.
    void withButtonsOff(const std::function<void()>& action);

    void refresh();
    void showSound(bool running);
    void showFiles(bool running);
    void refreshPaths();
    void refreshButtons(bool running);
    void switchButton(Ed_Button* button, bool on);
    void refreshStatus(bool running);
    StatusLine statusLine() const;
    bool canListen() const;
    void tellUnusable(const std::vector<std::string>& paths);
    // Song and voice that come together are told apart by themselves.
    static std::optional<int> fieldMeant(const std::vector<std::string>& paths, std::optional<int> pointedAt);
    std::optional<int> fieldAt(const QPoint& place) const;
    using FieldSet = std::array<bool, 3>;
    // The fields that take what is dragged, when it is dropped on one of the three, or last beside them.
    using Takers = std::array<FieldSet, 4>;
    static Takers takersOf(const std::vector<std::string>& paths, const PathFields& chosen);
    // Lights the fields that take what is dragged, dropped on the field `pointedAt`.
    void showTakers(std::optional<int> pointedAt);
    void light(const FieldSet& fields);
    // What was dropped here or on another window.
    void takeDropped(const QList<QUrl>& files, std::optional<int> field);

    Mixer& mixer_;
    Environment environment_;
    const SettingsStore& store_;
    RecentFiles recent_;
    SettingsKeeper keeper_;
    Waveforms waveforms_;  // of song and voice, for all windows
    RunReport report_;

    // What is being chosen, and what is to be done once nothing is.
    struct Choosing {
        bool choosing = false;             // a file is being chosen or opened
        bool otherPort = false;            // was chosen, and not used yet
        bool toRemember = false;           // sources were taken: to be kept among the recent ones,
        bool toShow = false;               // to be shown on the timeline,
        bool toLineUp = false;             // and the voice to be lined up
        std::vector<std::string> waiting;  // files that are to be taken
    };
    Choosing files_;
    bool wasRunning_ = false;
    bool unloaded_ = false;

    Takers takers_;  // of what is dragged, once the disk has told
    std::future<Takers> takersSearch_;

    std::array<ElidedLabel*, 3> path_{};
    std::array<Ed_Button*, 3> BR_{};
    ElidedLabel* caption_;
    SliderPanel* sliders_;
    Ed_Button* mi_button_;
    Ed_Button* b_STOP_;
    Ed_Button* b_midi_;
    Ed_Button* b_eff_;
    Ed_Button* b_listen_;
    navButton* b_menu_;
    Ed_Button* bMinimise_;
    Ed_Button* bHelp_;
    Ed_Button* bClose_;
    LevelPanel levels_;
    DeviceWatch watch_;
    StatusRow* status_;
    frmMenu* menu_;
    JobDesk* jobs_;
    UndoKeeper* steps_;
    LineUp* lineUp_;
    FastMix fast_;
    Job fastJob_;             // of the one that goes on, or of the last
    FileLoudness measuring_;  // of a mix that was heard
    SecondaryWindows* windows_;
    QTimer Timer1_{this};
};

}  // namespace melvane
