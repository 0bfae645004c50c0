// What the user did to the knobs, and back. The windows are not asked: whenever something was shown anew, the job is
// compared with what it was. A drag is one step, and so are keys on one knob that follow each other within a second.
#pragma once

#include <QObject>
#include <QTimer>
#include <QUndoStack>
#include <functional>
#include <optional>
#include <string>

#include "app/mixer.h"
#include "job/job.h"

namespace melvane {

class UndoKeeper : public QObject {
    Q_OBJECT

public:
    // Both outlive it.
    UndoKeeper(QObject* owner, Mixer& mixer, const modLang& language);
    ~UndoKeeper() override { stack_.disconnect(this); }  // it is cleared when nobody is there any more

    // Nothing of what was done so far can be undone: the song or the voice is another.
    void clear();
    // What it does is a step of its own, whatever the user does before and behind it.
    void asOneStep(const std::function<void()>& change);
    void undo();
    void redo();
    bool canUndo() const { return stack_.canUndo(); }
    bool canRedo() const { return stack_.canRedo(); }
    // With what they do, in the language of the windows.
    std::string undoText() const;
    std::string redoText() const;

    void apply(const Job& job);

Q_SIGNALS:
    // Other steps can be undone or redone.
    void stepped();
    // Knobs stand otherwise than the windows show them.
    void applied();

private:
    bool eventFilter(QObject* object, QEvent* event) override;
    void look();

    Mixer& mixer_;
    const modLang& language_;
    QUndoStack stack_;
    std::optional<Job> known_;  // as it was when it was looked at last
    bool loaded_ = false;       // there was a MIDI song then
    bool dragging_ = false;
    bool byKeys_ = false;
    QTimer soon_;  // runs until the events that are under way are through
};

}  // namespace melvane
