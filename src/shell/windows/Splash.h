// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace velmora {

// The window of the start: title and version, without a border, above all others.
class TfmSplash final : public QWidget {
 public:
  TfmSplash();

  // Shows it at the centre of the desktop and paints it now, without waiting for the event loop.
  void ShowPainted();

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace velmora
