// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QWidget>

#include "shell/widgets/SqlEdit.h"

namespace velmora {

// The bar below the editors that finds a text in the one it was opened for. Letter case does not count; after the end
// the search goes on at the start.
class TFindBar final : public QWidget {
 public:
  explicit TFindBar(QWidget* parent = nullptr);

  // Shows the bar for an editor; a selection within one line becomes the text to find.
  void Open(TSqlEdit& edit);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void Find(bool forward);
  void FindFromStart();  // of the selection, while the text is being typed
  void Show(bool found);
  void CloseBar();

  QLineEdit* edFind_;
  QLabel* lbFound_;
  QPointer<TSqlEdit> edit_;
};

}  // namespace velmora
