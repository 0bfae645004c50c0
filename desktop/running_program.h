// One program for each user and display: who starts it again gives the running one the files instead.
#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>
#include <QStringList>

namespace melvane {

class RunningProgram : public QObject {
    Q_OBJECT

public:
    // `socket` is where programs meet.
    explicit RunningProgram(const QString& socket = defaultSocket());

    // Gives `files` (absolute paths) to the program that runs; true when it has taken them. Otherwise this one is the
    // running program from now on. Waits two seconds at most; one that does not answer by then stays where it is.
    bool handOver(const QStringList& files);

    // In the user's runtime directory.
    static QString defaultSocket();

Q_SIGNALS:
    // Another one was started with these files, which may be none.
    void startedAgain(const QStringList& files);

private:
    enum class Answer { none, silence, taken };
    Answer ask(const QStringList& files) const;
    void take();

    const QString socket_;
    QLocalServer server_;
};

}  // namespace melvane
