// How the windows look: dark, with one colour for the song and one for the voice.
#pragma once

#include <QApplication>
#include <QWidget>

namespace melvane {

// Colours for every window and dialog of the program; before the first window is made.
void applyStyle(QApplication& app);

// Sets a property that the style sheet asks for, such as "running".
void setStyleState(QWidget& widget, const char* state, bool on);

}  // namespace melvane
