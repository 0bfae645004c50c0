#include "app/frm_undo.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <chrono>
#include <utility>

#include "app/change_names.h"
#include "app/mixer_job.h"

namespace melvane {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kTogether{1};
constexpr int kMost = 200;
constexpr int kAlone = -1;
constexpr int kMerges = 1;

class JobCommand : public QUndoCommand {
public:
    JobCommand(UndoKeeper& keeper, Job before, Job after, bool byKeys)
        : keeper_(keeper),
          before_(std::move(before)),
          after_(std::move(after)),
          changes_(changesBetween(before_, after_)),
          byKeys_(byKeys) {}

    const std::vector<JobChange>& changes() const { return changes_; }
    int id() const override { return byKeys_ ? kMerges : kAlone; }
    bool mergeWith(const QUndoCommand* other) override {
        const auto& next = static_cast<const JobCommand&>(*other);
        if (next.changes_ != changes_ || next.time_ - time_ > kTogether) return false;
        after_ = next.after_;
        time_ = next.time_;
        setObsolete(changesBetween(before_, after_).empty());
        return true;
    }
    void undo() override { keeper_.apply(before_); }
    // The user has done it the first time.
    void redo() override {
        if (std::exchange(done_, true)) keeper_.apply(after_);
    }

private:
    UndoKeeper& keeper_;
    Job before_;
    Job after_;
    std::vector<JobChange> changes_;
    bool byKeys_;
    bool done_ = false;
    Clock::time_point time_ = Clock::now();
};

std::string textOf(const modLang& language, const QUndoCommand* command, OwnText plain, OwnText named) {
    if (!command) return language.ownText(plain);
    return language.ownText(named, changeName(language, static_cast<const JobCommand*>(command)->changes()));
}

}  // namespace

UndoKeeper::UndoKeeper(QObject* owner, Mixer& mixer, const modLang& language)
    : QObject(owner), mixer_(mixer), language_(language) {
    stack_.setUndoLimit(kMost);
    soon_.setSingleShot(true);
    connect(&soon_, &QTimer::timeout, this, &UndoKeeper::look);
    connect(&stack_, &QUndoStack::indexChanged, this, &UndoKeeper::stepped);
    qApp->installEventFilter(this);
}

void UndoKeeper::clear() {
    known_.reset();
    stack_.clear();
}

void UndoKeeper::asOneStep(const std::function<void()>& change) {
    look();
    byKeys_ = false;
    change();
    look();
}

void UndoKeeper::undo() {
    look();
    stack_.undo();
}

void UndoKeeper::redo() {
    look();
    stack_.redo();
}

std::string UndoKeeper::undoText() const {
    return textOf(language_, stack_.command(stack_.index() - 1), OwnText::undo, OwnText::undoChange);
}

std::string UndoKeeper::redoText() const {
    return textOf(language_, stack_.command(stack_.index()), OwnText::redo, OwnText::redoChange);
}

void UndoKeeper::apply(const Job& job) {
    applyKnobs(job, mixer_);
    known_ = takeJob(mixer_);
    Q_EMIT applied();
}

// A value that changes is painted anew; a drag is looked at when it is over.
bool UndoKeeper::eventFilter(QObject*, QEvent* event) {
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseMove:
            dragging_ = static_cast<QMouseEvent*>(event)->buttons() != Qt::NoButton;
            if (dragging_) byKeys_ = false;
            break;
        case QEvent::KeyPress:
        case QEvent::Wheel:
            byKeys_ = true;
            break;
        case QEvent::UpdateRequest:
            break;
        default:
            return false;
    }
    if (!dragging_ && !soon_.isActive()) soon_.start();
    return false;
}

// While a song is being opened its channels are neither the old ones nor its own.
void UndoKeeper::look() {
    if (dragging_ || mixer_.sourceFiles().opening() || mixer_.mixingRun().busy()) return;
    Job now = takeJob(mixer_);
    const bool loaded = mixer_.midi().loaded();
    const bool same = known_ && known_->files.background == now.files.background &&
                      known_->files.vocal == now.files.vocal && loaded_ == loaded;
    if (!same) stack_.clear();
    if (same && !changesBetween(*known_, now).empty())
        stack_.push(new JobCommand(*this, *std::exchange(known_, now), now, byKeys_));
    known_ = std::move(now);
    loaded_ = loaded;
}

}  // namespace melvane
