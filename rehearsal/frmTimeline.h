// The timeline: song and voice below each other on the song's time, to be listened to from anywhere, and the voice to
// be put in its place.
#pragma once

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QScrollBar>
#include <QTimer>
#include <QUrl>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "controls/Ed_Button.h"
#include "controls/elided_label.h"
#include "controls/resizable_window.h"
#include "platform/dialogs.h"
#include "rehearsal/frm_song_lane.h"
#include "rehearsal/frm_time_ruler.h"
#include "rehearsal/frm_voice_lane.h"
#include "rehearsal/waveforms.h"
#include "settings/modLang.h"
#include "state/mix_state.h"

namespace melvane {

// How a mix without listening gets on, or how it ended; nothing when there was none.
struct FastMixNews {
    bool going = false;
    std::string text;
    std::string brief;  // where there is little room; "": the text's beginning
    bool failed = false;
};

// What the timeline asks of others.
struct TimelineCalls {
    // Runs what opens files, while no other may be chosen.
    std::function<void(const std::function<void()>& opens)> whileOpening = [](const auto& opens) { opens(); };
    // Begins to look for the voice's place, and gives it up; showLiningUp() and the like tell of it. None: it can't.
    std::function<void()> lineUp = {};
    std::function<void()> giveUpLineUp = [] {};
    // Begins to look for the levels with which song and voice fit each other; fastMix() tells of it, mixFast() cancels
    // it. None: it can't.
    std::function<void()> matchLevels = {};
    // The loudness that a mix without listening is brought to, LUFS; none: as it is.
    std::function<void(std::optional<float>)> setLoudness = [](auto) {};
    // Begins a mix without listening, or cancels the one that goes on. None: it can't.
    std::function<void()> mixFast = {};
    // Why there can be no such mix of what was chosen, in the current language; "" when there can.
    std::function<std::string()> fastMixRefusal = [] { return std::string(); };
    std::function<FastMixNews()> fastMix = [] { return FastMixNews(); };
    // That files are being opened, and how far that is, in the current language.
    std::function<std::string()> opening = [] { return std::string(); };
    // How far one of them is decoded, in the current language; "" when none is being.
    std::function<std::string()> decoding = [] { return std::string(); };
};

QString lufsText(double lufs);

class frmTimeline : public ResizableWindow {
    Q_OBJECT

public:
    // Everything passed in outlives the window; `owner` owns it.
    frmTimeline(Rehearsal& rehearsal, const MixState& state, const MidiState& midi, Waveforms& waveforms,
                const modLang& language, Dialogs& dialogs, TimelineCalls calls, QWidget* owner);

    // Shows everything as it is now.
    void refresh();
    // A file was chosen, perhaps the same that has changed.
    void takeFiles();
    // Sets all texts from the current language.
    void GetTimelineLanguage();

    // How far it is with looking for the voice's place, 0 to 1, and how it ended: with the place where the voice is
    // now, and how sure that is, 0 to 1.
    void showLiningUp(double done);
    void showLinedUp(double certainty);
    void showNoTrace();
    // "": it was given up.
    void showNotLinedUp(const std::string& failure);

    enum class FileLane { song, voice, none };

Q_SIGNALS:
    // Where they were dropped: on the lane of song or voice, or beside both.
    void filesDropped(const QList<QUrl>& files, FileLane lane);
    // What it plays or where the voice is, for other windows.
    void changed();

protected:
    void arrange(const QSize& units) override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;  // Space plays and pauses
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    using Action = std::function<void()>;
    static constexpr std::int64_t kScrollFrames = 64;  // one step of the scroll bar

    // What of the state the lanes show.
    struct Shown {
        std::int64_t earlier = 0;
        VoicePlace place;
        Rehearsal::Loop loop;
        std::uint16_t heard = 0;  // channels
        std::int64_t begin = 0;
        std::int64_t end = 0;
        std::int64_t song = 0;
        bool operator==(const Shown&) const = default;
    };
    struct Note {
        std::string text;
        std::string brief = {};  // "": the text's beginning
        bool failed = false;
    };
    struct NamedButton {
        Ed_Button* button;
        OwnText name;
    };

    void addTransport();
    void addLanes();
    void addBottom();
    void addKeys();
    Ed_Button* addControl(const char* name, Symbol symbol, OwnText text, const Action& action);
    void addKey(const QKeySequence& key, Action action);
    // What it throws is told in a box.
    void perform(const Action& action);

    void play();
    void seek(std::int64_t frame);
    void setLoop(std::int64_t begin, std::int64_t end);
    void zoomBy(double factor, double x);
    void zoomAtHead(double factor);
    void scrollBy(double pixels);
    void showAll();
    void lineUp();
    void addTrim();
    void addLoudness();
    void arrangeBottom(int right, int bottomY);
    void refreshLevels(bool can);

    void tick();
    void showPosition();
    void followHead();
    void lookAtWaveforms();
    void showView();
    void refreshButtons();
    void refreshLineUp();
    void refreshFastMix(bool can);
    void refreshNote();
    Note noteNow() const;
    void followFastMix();
    void updateRange();
    Shown shownNow() const;
    std::int64_t songFrames() const;
    bool stillReading() const;

    Rehearsal& rehearsal_;
    const MixState& state_;
    const MidiState& midi_;
    Waveforms& waveforms_;
    const modLang& language_;
    Dialogs& dialogs_;
    const TimelineCalls calls_;

    TimeView view_;
    Shown shown_;
    std::shared_ptr<Waveform> song_;
    std::shared_ptr<Waveform> voice_;
    std::int64_t headBefore_ = 0;
    bool dragged_ = false;  // the voice is
    bool readBefore_ = false;
    int ticks_ = 0;
    double liningUp_ = -1;  // how far; -1: nobody is at it
    bool mixesFast_ = false;
    std::function<Note()> note_ = [] { return Note(); };  // of what was done last

    Ed_Button* play_;
    std::vector<Ed_Button*> transport_;  // the others, from left to right
    std::vector<Ed_Button*> zooms_;
    std::vector<NamedButton> names_;
    ElidedLabel* position_;
    TimeRuler* ruler_;
    SongLane* songLane_;
    VoiceLane* voiceLane_;
    QScrollBar* scroll_;
    ElidedLabel* placeLabel_;
    ElidedLabel* noteLabel_;
    Ed_Button* lineUp_;
    Ed_Button* matchLevels_;
    QDoubleSpinBox* trim_;
    QComboBox* loudness_;
    Ed_Button* mixFast_;
    Ed_Button* bClose_;
    QTimer timer_{this};
};

}  // namespace melvane
