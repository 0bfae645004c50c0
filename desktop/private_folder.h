// A folder for the song that was cut out of a karaoke file: of this process alone (0700), and gone with the object.
//
// A lock file in it tells folders in use from those that a process left behind when it was killed.
#pragma once

#include <QLockFile>
#include <QString>
#include <QTemporaryDir>
#include <optional>

namespace melvane {

class PrivateFolder {
public:
    PrivateFolder();

    // Where the song goes; empty when there is no place for the folder.
    QString song() const { return folder_ ? songIn(folder_->path()) : QString(); }

    static QString songIn(const QString& folder);
    // Removes the folders of processes that have gone.
    static void removeLeftovers();

private:
    bool makeIn(const QString& place);

    std::optional<QTemporaryDir> folder_;
    std::optional<QLockFile> lock_;  // goes first
};

}  // namespace melvane
