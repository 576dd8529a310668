#pragma once

#include <QDialog>
#include <memory>

#include "shell/widgets/frameConn.h"

class QPushButton;
class QRadioButton;
class QStackedWidget;
class QVBoxLayout;

namespace velmora {

// The dialog of New Task: asks for the reference and for the target, and connects each as the user leaves its page.
//
// Made once and shown again: each showing begins on the first page, with the fields as they were left. A connection
// that fails is told in a message, and the page stays. `clients` makes the connections, `enumerators` fills the lists
// of servers and sources; both are copied.
class TfmTaskWiz : public QDialog {
 public:
  explicit TfmTaskWiz(const TEngineClients& clients = {}, QWidget* parent = nullptr,
                      const TEnumerators& enumerators = {});

  // Both connected when the dialog was confirmed; whoever showed it takes them. Otherwise what is in them, connected or
  // not, is freed by the next use.
  std::unique_ptr<TDBConn> RefConn;
  std::unique_ptr<TDBConn> TgtConn;

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void FormCreate();
  void FormShow();
  void bnNextClick();
  void bnBackClick();
  void cbLiveConnClick();
  void cbScriptClick();

  QVBoxLayout* NewPage(QWidget* page, const char* step, const char* heading, const char* purpose);
  void MakeRefPage();
  void MakeTargetPage();
  void MakeOptionsPage();
  void MakeButtons();

  QStackedWidget* pages_;
  QWidget* tsRefConn_;
  QWidget* tsTargetConn_;
  QWidget* tsOptions_;
  QRadioButton* cbLiveConn_ = nullptr;
  QRadioButton* cbScript_ = nullptr;
  TfrConn* frRefConn_;
  TfrConn* frTgtConn_;
  QPushButton* bnCancel_;
  QPushButton* bnBack_;
  QPushButton* bnNext_;
};

}  // namespace velmora
