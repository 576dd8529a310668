// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <memory>

#include "persist/RecentConnections.h"
#include "shell/widgets/frameConn.h"

class QCheckBox;
class QComboBox;
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
//
// Each page offers the connections that were made before, out of `recent_file`; the second begins with the server of
// the first, until somebody has typed there.
class TfmTaskWiz : public QDialog {
 public:
  explicit TfmTaskWiz(const TEngineClients& clients = {}, QWidget* parent = nullptr,
                      const TEnumerators& enumerators = {}, const std::string& recent_file = {});

  // Both connected when the dialog was confirmed; whoever showed it takes them. Otherwise what is in them, connected or
  // not, is freed by the next use.
  std::unique_ptr<TDBConn> RefConn;
  std::unique_ptr<TDBConn> TgtConn;
  bool AnalyzeAtOnce = false;  // was asked for when the dialog was confirmed

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void FormCreate();
  void FormShow();
  void bnNextClick();
  void bnBackClick();
  void cbLiveConnClick();
  void cbScriptClick();
  void cbOtherClick();
  void SetReference(int engine);
  void bnAnalyzeClick();
  void ShowRecent();
  void OfferServer();

  // What stands around the fields of a page: the connections made before, and whether the password is kept with them.
  struct TPageExtras {
    QWidget* row = nullptr;
    QComboBox* list = nullptr;
    QCheckBox* keep = nullptr;
  };
  void MakeRecent(QVBoxLayout& rows, const char* side, TfrConn& frame, TPageExtras& extras);
  void MakeKeep(QVBoxLayout& rows, const char* side, TPageExtras& extras);
  void TakeRecent(const TPageExtras& extras, TfrConn& frame, int index);
  void Remember(const TPageExtras& extras, const TfrConn& frame);
  QVBoxLayout* NewPage(QWidget* page, const QString& step, const QString& heading, const QString& purpose);
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
  QRadioButton* cbOther_ = nullptr;
  QComboBox* cEngine_ = nullptr;  // for cbOther; its items hold the engines' numbers
  TfrConn* frRefConn_;
  TfrConn* frTgtConn_;
  TPageExtras ref_extras_;
  TPageExtras tgt_extras_;
  TRecentConnections recent_;
  TEngineValues offered_;  // what the second page had before anybody typed there
  QPushButton* bnCancel_;
  QPushButton* bnBack_;
  QPushButton* bnNext_;
  QPushButton* bnAnalyze_;
};

}  // namespace velmora
