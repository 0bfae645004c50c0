// The preview player: a small window that plays one sound file.
#pragma once

#include <QLabel>
#include <QTimer>
#include <cstdint>
#include <future>
#include <string>

#include "controls/Ed_Button.h"
#include "controls/elided_label.h"
#include "controls/frameless_window.h"
#include "controls/navButton.h"
#include "mixing/file_loudness.h"
#include "platform/audio_library.h"
#include "platform/dialogs.h"
#include "player/frm_play_bar.h"
#include "settings/modLang.h"

namespace melvane {

class frmPlayer : public FramelessWindow {
    Q_OBJECT

public:
    // `playerFile` is UTF-8. What is passed by reference outlives the window, which lets no other window of the program
    // be used and is deleted when it is closed. The file is opened on a thread of its own, and given up when the window
    // goes before it is there.
    frmPlayer(AudioLibrary& library, const modLang& language, Dialogs& dialogs, std::string playerFile, QWidget* owner);
    ~frmPlayer() override;

    // Sets all texts from the current language.
    void GetPlayerLanguage();

Q_SIGNALS:
    // The program is to end; the player has closed.
    void quitWanted();

protected:
    void keyPressEvent(QKeyEvent* event) override;  // Space plays and pauses, Escape closes

private:
    void open();
    void lookWhetherOpened();
    void addBar();
    void addButtons();
    Ed_Button* addControl(const char* name, const QRect& place, ButtonLook look, Symbol symbol,
                          void (frmPlayer::*click)());
    void Ed_Button1_Click();
    void Ed_Button2_Click();
    void Ed_Button3_Click();
    void setPlaying(bool playing);
    void Timer1_Timer();
    void showPosition();
    void showLoudness();
    double ratio() const;
    // To this byte of the file, or the nearer end of it.
    void seek(double position);

    AudioLibrary& library_;
    const modLang& language_;
    Dialogs& dialogs_;
    const std::string playerFile_;
    std::future<Handle> opening_;
    Handle playerStream_ = 0;   // 0: the file can't be played, or not yet
    std::uint64_t length_ = 0;  // bytes
    bool playing_ = false;      // from play to pause, stop or the end

    FileLoudness measuring_{library_};
    std::optional<Loudness> loudness_;

    ElidedLabel* Label1_;
    QLabel* time_;
    ElidedLabel* loudnessLabel_;
    PlayBar* progress_;
    Ed_Button* Ed_Button1_;
    Ed_Button* Ed_Button2_;
    Ed_Button* Ed_Button3_;
    navButton* b_main_;
    Ed_Button* bClose_;
    QTimer opened_{this};  // runs while the file is being opened
    QTimer Timer1_;
};

}  // namespace melvane
