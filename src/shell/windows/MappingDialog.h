// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <functional>
#include <optional>
#include <string>

#include "app/MappingDraft.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QTableView;
class QTabWidget;
class QTreeWidget;

namespace velmora {

class TMappingModel;

enum class EMappingPage { Columns, Rules, Unmade, Options };

// The dialog "Mapping": what a source that is not MySQL becomes, and what the task asks for it. Works on a draft, so
// that Cancel leaves everything as it was.
class TfmMapping final : public QDialog {
 public:
  TfmMapping(const TForeignWishes& wishes, const TFindings& found, QWidget* parent);

  // Waits for the user. True after OK, if anything is asked otherwise than before.
  bool Edit(EMappingPage page);
  const TForeignWishes& Wishes() const { return wishes_; }

  // The rule for one column, in a dialog of its own; false after Cancel.
  static bool MapColumn(TMappingDraft& draft, const TMadeColumn& column, QWidget* parent);

 private:
  QWidget* MakeColumns();
  QWidget* MakeRules();
  QWidget* MakeUnmade();
  QWidget* MakeOptions();
  QPushButton* Button(const char* name, const QString& caption, const std::function<void()>& click);

  void ShowColumns();
  void ShowRules();
  void ShowElements();
  void RulesChanged();
  void MapCurrent();
  void EditRule(std::optional<std::size_t> place);
  void RemoveRule();
  std::optional<std::size_t> CurrentRule() const;
  void AcceptAll();
  void TakeOptions();

  TMappingDraft draft_;
  TForeignWishes before_;
  TForeignWishes wishes_;
  QTabWidget* pages_;
  QLineEdit* filter_ = nullptr;
  QComboBox* level_ = nullptr;
  TMappingModel* model_ = nullptr;
  QTableView* columns_ = nullptr;
  QPushButton* map_ = nullptr;
  QTreeWidget* rules_ = nullptr;
  QPushButton* change_ = nullptr;
  QPushButton* remove_ = nullptr;
  QTreeWidget* elements_ = nullptr;
  QCheckBox* lower_ = nullptr;
  QLineEdit* collation_ = nullptr;
};

}  // namespace velmora
