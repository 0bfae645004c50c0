#include "desktop/desktop_dialogs.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QStringList>
#include <algorithm>
#include <vector>

namespace melvane {

namespace {

QMessageBox::Icon iconOf(BoxIcon icon) {
    switch (icon) {
        case BoxIcon::none:
            return QMessageBox::NoIcon;
        case BoxIcon::information:
            return QMessageBox::Information;
        case BoxIcon::question:
            return QMessageBox::Question;
        case BoxIcon::critical:
            return QMessageBox::Critical;
    }
    return QMessageBox::NoIcon;
}

// A box that was closed without a button, as by the end of the program, counts as cancelled.
BoxAnswer answerOf(int button) {
    switch (button) {
        case QMessageBox::Yes:
            return BoxAnswer::yes;
        case QMessageBox::No:
            return BoxAnswer::no;
        default:
            return BoxAnswer::cancel;
    }
}

QString musicFolder() {
    const QString music = QStandardPaths::writableLocation(QStandardPaths::MusicLocation);
    return QFileInfo(music).isDir() ? music : QDir::homePath();
}

std::string answerTo(const FileQuestion& question, QFileDialog& dialog) {
    dialog.setWindowTitle(QString::fromStdString(question.title));
    dialog.setSupportedSchemes({QStringLiteral("file")});
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    QStringList filters{nameFilter(question.filter)};
    if (!question.wider.empty()) filters << nameFilter(question.wider);
    dialog.setNameFilters(filters + QStringList{QString::fromStdString(question.allFiles) + QStringLiteral(" (*)")});
    dialog.selectNameFilter(filters.last());
    dialog.setLabelText(QFileDialog::Accept, QString::fromStdString(question.button));
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0).toStdString() : std::string();
}

// The window that a box belongs to, also while another program has the focus: it could come up behind all else
// otherwise.
QWidget* owner() {
    for (QWidget* window : {QApplication::activeModalWidget(), QApplication::activeWindow()})
        if (window) return window;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->windowType() == Qt::Window) return window;
    return nullptr;
}

}  // namespace

QString nameFilter(const std::string& filter) {
    const QString text = QString::fromStdString(filter);
    const auto bar = text.indexOf(u'|');
    // The label may repeat the patterns; the dialog does not show them.
    QString label = text.left(bar);
    label.truncate(label.indexOf(u'*') < 0 ? label.size() : label.indexOf(u'*'));
    if (label.endsWith(u'(')) label.chop(1);

    QStringList patterns;
    for (QString pattern : text.mid(bar + 1).split(u';', Qt::SkipEmptyParts)) {
        while (pattern.startsWith(QLatin1String("**"))) pattern.remove(0, 1);
        patterns << pattern.toLower() << pattern.toUpper();
    }
    patterns.removeDuplicates();
    return label.trimmed() + QLatin1String(" (") + patterns.join(u' ') + u')';
}

void DesktopDialogs::tell(const std::string& text, const std::string& title, BoxIcon icon) {
    auto* box = new QMessageBox(iconOf(icon), QString::fromStdString(title), QString::fromStdString(text),
                                QMessageBox::Ok, owner());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);  // file names are no markup
    box->open();
}

BoxAnswer DesktopDialogs::messageBox(const std::string& text, const std::string& title, BoxIcon icon,
                                     BoxButtons buttons) {
    const bool question = buttons == BoxButtons::yesNoCancel;
    QMessageBox box(iconOf(icon), QString::fromStdString(title), QString::fromStdString(text),
                    question ? QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel : QMessageBox::Ok, owner());
    box.setTextFormat(Qt::PlainText);  // file names are no markup
    if (question) box.setDefaultButton(QMessageBox::No);
    const int button = box.exec();
    return question ? answerOf(button) : BoxAnswer::ok;
}

std::optional<std::size_t> DesktopDialogs::choose(const std::string& text, const std::string& title,
                                                  const std::vector<std::string>& answers) {
    QMessageBox box(QMessageBox::Question, QString::fromStdString(title), QString::fromStdString(text),
                    QMessageBox::Cancel, owner());
    box.setTextFormat(Qt::PlainText);  // file names are no markup
    std::vector<QAbstractButton*> buttons;
    for (const std::string& answer : answers)
        buttons.push_back(box.addButton(QString::fromStdString(answer), QMessageBox::AcceptRole));
    box.exec();
    const auto clicked = std::ranges::find(buttons, box.clickedButton());
    if (clicked == buttons.end()) return std::nullopt;
    return static_cast<std::size_t>(clicked - buttons.begin());
}

std::string DesktopDialogs::openFile(const FileQuestion& question) {
    QFileDialog dialog(owner());
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setDirectory(question.start.empty() ? musicFolder() : QString::fromStdString(question.start));
    return answerTo(question, dialog);
}

std::string DesktopDialogs::saveFile(const FileQuestion& question) {
    const QFileInfo proposed(QString::fromStdString(question.start));
    QFileDialog dialog(owner());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setDirectory(proposed.path());
    dialog.selectFile(proposed.fileName());
    return answerTo(question, dialog);
}

}  // namespace melvane
