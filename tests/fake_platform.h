// Dialogs, a shell and file names that a test sets and looks at.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/dialogs.h"
#include "platform/file_names.h"
#include "platform/shell.h"

namespace melvane::test {

class FakeDialogs : public Dialogs {
public:
    BoxAnswer nextAnswer = BoxAnswer::ok;
    std::optional<std::size_t> nextChoice;
    std::string nextFile;                    // "": cancelled
    std::function<void()> onBox = [] {};     // while one is open
    std::function<void()> onDialog = [] {};  // while one for files is

    std::vector<std::string> boxes;  // "title: text"
    BoxIcon lastIcon = BoxIcon::none;
    FileQuestion lastQuestion;

    void tell(const std::string& text, const std::string& title, BoxIcon icon) override {
        messageBox(text, title, icon, BoxButtons::ok);
    }
    BoxAnswer messageBox(const std::string& text, const std::string& title, BoxIcon icon, BoxButtons) override {
        boxes.push_back(title + ": " + text);
        lastIcon = icon;
        onBox();
        return nextAnswer;
    }
    std::optional<std::size_t> choose(const std::string& text, const std::string& title,
                                      const std::vector<std::string>& answers) override {
        std::string buttons;
        for (const std::string& answer : answers) buttons += " [" + answer + "]";
        messageBox(text + buttons, title, BoxIcon::question, BoxButtons::ok);
        return nextChoice;
    }
    std::string openFile(const FileQuestion& question) override {
        lastQuestion = question;
        onDialog();
        return nextFile;
    }
    std::string saveFile(const FileQuestion& question) override { return openFile(question); }
};

class FakeShell : public Shell {
public:
    bool opens = true;
    std::vector<std::string> addresses;
    double progress = -1;  // as shown last
    std::string language;  // as told last

    bool open(const std::string& address) override {
        addresses.push_back(address);
        return opens;
    }
    void showProgress(double done) override { progress = done; }
    void useLanguage(const std::string& code) override { language = code; }
};

class FakeFileNames : public FileNames {
public:
    std::string temporaryMidi;
    std::string cache;

    std::string systemDirectory() const override { return "/system"; }
    std::string programDirectory() const override { return "/program"; }
    std::string pageAddress(const std::string& page) const override { return "file:///program/" + page; }
    std::string temporaryMidiFile() const override { return temporaryMidi; }
    std::string cacheDirectory() const override { return cache; }
    std::string shortPath(const std::string& path) const override { return path; }
    std::string commandLineWord(const std::string& path) const override { return "<" + path + ">"; }
};

}  // namespace melvane::test
