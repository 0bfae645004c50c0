#include "desktop/running_program.h"

#include <QDataStream>
#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QLocalSocket>
#include <QLockFile>
#include <QRegularExpression>
#include <QStandardPaths>

namespace melvane {

namespace {

constexpr int kPatienceMs = 2000;
constexpr char kTaken = '!';
constexpr const char* kActivation = "XDG_ACTIVATION_TOKEN";

}  // namespace

RunningProgram::RunningProgram(const QString& socket) : socket_(socket) {
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server_, &QLocalServer::newConnection, this, &RunningProgram::take);
}

// A window can be brought forward on its own display alone.
QString RunningProgram::defaultSocket() {
    QString display = QGuiApplication::platformName();
    for (const char* variable : {"WAYLAND_DISPLAY", "DISPLAY"}) display += u'-' + qEnvironmentVariable(variable);
    display.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9]+")), QStringLiteral("_"));
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QStringLiteral("/melvane-") + display;
}

// Of two that start at once, one asks the other.
bool RunningProgram::handOver(const QStringList& files) {
    QLockFile turn(socket_ + QStringLiteral(".lock"));
    turn.tryLock(kPatienceMs);
    const Answer answer = ask(files);
    // What a program left that has ended would keep the place for ever.
    if (answer == Answer::none && !server_.listen(socket_) && QLocalServer::removeServer(socket_))
        server_.listen(socket_);
    return answer == Answer::taken;
}

RunningProgram::Answer RunningProgram::ask(const QStringList& files) const {
    const QDeadlineTimer deadline(kPatienceMs);
    const auto left = [&] { return static_cast<int>(deadline.remainingTime()); };
    QLocalSocket socket;
    socket.connectToServer(socket_);
    if (!socket.waitForConnected(left())) return Answer::none;
    QDataStream stream(&socket);
    stream << files << qgetenv(kActivation);
    char answer = 0;
    while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(left())) continue;
    while (socket.bytesAvailable() == 0 && socket.waitForReadyRead(left())) continue;
    return socket.getChar(&answer) && answer == kTaken ? Answer::taken : Answer::silence;
}

void RunningProgram::take() {
    while (QLocalSocket* socket = server_.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        const auto read = [this, socket] {
            QDataStream stream(socket);
            stream.startTransaction();
            QStringList files;
            QByteArray activation;
            stream >> files >> activation;
            if (!stream.commitTransaction()) return;
            // What the desktop gave the other one to come forward with; the toolkit looks for it there.
            if (!activation.isEmpty()) qputenv(kActivation, activation);
            socket->putChar(kTaken);
            socket->flush();
            // Who hears it may let events run until this socket has gone.
            QMetaObject::invokeMethod(
                this, [this, files] { Q_EMIT startedAgain(files); }, Qt::QueuedConnection);
        };
        connect(socket, &QLocalSocket::readyRead, this, read);
        read();
    }
}

}  // namespace melvane
