// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The top level of errors: the one place that shows the user the text of an error; then the program goes on. Every
// handler of a window is connected by Handle, so that none lets an error out into the event loop.

#include <QObject>
#include <QString>
#include <functional>
#include <string>
#include <utility>

class QWidget;

namespace velmora {

// What a message box shows of an error's text. A text that is a report has a line that begins with
// "exception message : "; what follows that there is shown, anything else whole.
std::string ShownMessage(const std::string& text);

// A text of many letters or lines, cut to what a box can show on any screen.
QString Shortened(const QString& text, qsizetype letters);

// The window that messages and dialogs belong to: the modal one, else the one in front, else one that will be. Null
// when there is none. Windows beside the program, such as the help, are none.
QWidget* WorkingForm();

// Shows the text of an error in a plain message box. What is too long for one stands whole in its details.
void ShowError(const std::string& text);

// Runs a handler and shows the error that it raises; a silent abort shows nothing. False when it raised.
bool AtTopLevel(const std::function<void()>& handler);

// Connects a signal to a handler at the top level; the connection ends with `context`.
template <class Sender, class Signal>
void Handle(Sender* sender, Signal signal, QObject* context, std::function<void()> handler) {
  QObject::connect(sender, signal, context, [handler = std::move(handler)] { AtTopLevel(handler); });
}

}  // namespace velmora
