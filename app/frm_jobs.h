// The document that the job of the main window belongs to, and the jobs that were worked on before.
#pragma once

#include <QObject>
#include <string>
#include <vector>

#include "app/mixer.h"
#include "job/recent_jobs.h"
#include "mixing/environment.h"
#include "platform/documents.h"

namespace melvane {

class JobDesk : public QObject {
    Q_OBJECT

public:
    // Everything outlives it.
    JobDesk(QObject* owner, Mixer& mixer, const Environment& environment, const SettingsStore& store,
            Documents& documents);

    // These let window events run. What can't be done is told in a box, and so is what has gone of the files.
    void open();
    void openFile(const std::string& path);
    bool save();    // false: not saved; asks where while there is no document
    bool saveAs();  // asks
    // The job becomes one without a document.
    void restore(const Job& job);

    // Asks whether to save a document that holds something else by now. False when the user wants to go on instead.
    bool mayClose();

    // "" when there is none.
    const std::string& file() const { return file_; }
    bool changed() const;

    // The latest first.
    std::vector<Job> recent() const { return recent_.list(); }
    // What was worked on before this; nothing when that was nothing.
    void restoreLast();
    // Puts the job in front of the recent ones.
    void remember();
    // It has changed since.
    bool forgets() const;

Q_SIGNALS:
    // Every knob and file may be another.
    void restored();

private:
    void tell(const std::string& text, BoxIcon icon);
    bool write(const std::string& path);
    FileQuestion question(OwnText button, const std::string& start) const;

    Mixer& mixer_;
    Environment environment_;
    Documents& documents_;
    const RecentJobs recent_;
    Job remembered_;
    std::string file_;
    Job saved_;  // as the document has it
};

}  // namespace melvane
