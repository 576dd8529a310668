// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/RunModel.h"

#include <QColor>
#include <QFont>
#include <algorithm>

#include "app/RunTelling.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "util/OneLine.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr TText kHeadings[] = {Fixed("#"),
                               TText::Later("State"),
                               TText::Later("Statement"),
                               TText::Later("Time"),
                               TText::Later("Rows"),
                               TText::Later("Line"),
                               TText::Later("In force"),
                               TText::Later("Server's words")};  // by ERunColumn
constexpr qsizetype kTipLetters = 2000;
constexpr int kDarkBase = 128;

// Several lines as the first one and how many more there are.
QString FirstOf(const std::string& words) {
  const QString text = ToQt(ShownLines(words));
  const qsizetype more = text.count(QLatin1Char('\n'));
  const QString first = text.section(QLatin1Char('\n'), 0, 0).trimmed();
  return more == 0 ? first : TText::tr("%1 (and %2 more)").arg(first).arg(more);
}

bool IsNumber(int column) {
  return column == kRunNumber || column == kRunTime || column == kRunRows || column == kRunLine;
}

}  // namespace

void TRunModel::Take(const TRunReport& report, const std::string& script) {
  if (report.runs.size() != runs_.size()) Begin(report, script);
  const std::size_t from = report.ended ? 0 : std::min(reached_, runs_.size());
  const std::size_t to = report.ended ? runs_.size() : std::min(report.executed + 1, runs_.size());
  for (std::size_t i = from; i < to; ++i) {
    runs_[i] = report.runs[i];
    force_[i] = ForceWord(report, i);
  }
  reached_ = report.executed;
  if (from < to) emit dataChanged(index(static_cast<int>(from), 0), index(static_cast<int>(to) - 1, kRunColumns - 1));
}

void TRunModel::Begin(const TRunReport& report, const std::string& script) {
  beginResetModel();
  statements_ = report.statements;
  runs_ = report.runs;
  force_.assign(runs_.size(), {});
  lines_.clear();
  reached_ = 0;
  TLineCounter counter(script);
  for (const TScriptStatement& statement : statements_) lines_.push_back(counter.LineAt(statement.start));
  endResetModel();
}

void TRunModel::Clear() { Begin({}, {}); }

int TRunModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(runs_.size());
}

int TRunModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : kRunColumns; }

QVariant TRunModel::data(const QModelIndex& index, int role) const {
  const auto row = static_cast<std::size_t>(index.row());
  if (!index.isValid() || row >= runs_.size()) return {};
  const TStatementRun& run = runs_[row];
  switch (role) {
    case Qt::DisplayRole:
      return Cell(row, index.column());
    case Qt::ToolTipRole:
      if (index.column() == kRunStatement)
        return ToQt(ShownLines(statements_[row].text)).left(kTipLetters).toHtmlEscaped();
      return index.column() == kRunWords ? ToQt(ShownLines(ServerWords(run))).left(kTipLetters).toHtmlEscaped()
                                         : QVariant();
    case Qt::ForegroundRole:
      return Colour(run.state);
    case Qt::FontRole: {
      QFont font;
      font.setBold(run.state == ERunState::Failed || run.state == ERunState::Running);
      return font.bold() ? QVariant(font) : QVariant();
    }
    case Qt::TextAlignmentRole:
      return IsNumber(index.column()) ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    default:
      return {};
  }
}

QString TRunModel::Cell(std::size_t row, int column) const {
  const TStatementRun& run = runs_[row];
  const bool ran = run.state != ERunState::NotRun && run.state != ERunState::Running;
  switch (column) {
    case kRunNumber:
      return QString::number(row + 1);
    case kRunState:
      return ToQt(StateWord(run.state));
    case kRunStatement:
      return ToQt(ShownText(ShownStatement(OnOneLine(statements_[row].text))));
    case kRunTime:
      return ran ? ToQt(DurationText(run.seconds)) : QString();
    case kRunRows:
      return run.rows ? QString::number(*run.rows) : QString();
    case kRunLine:
      return QString::number(lines_[row]);
    case kRunForce:
      return ToQt(force_[row]);
    default:
      return FirstOf(ServerWords(run));
  }
}

QVariant TRunModel::Colour(ERunState state) const {
  const bool dark = palette_.color(QPalette::Base).lightness() < kDarkBase;
  if (state == ERunState::Failed) return QColor(dark ? 0xFF8A80 : 0xB3261E);
  if (state == ERunState::Cancelled) return QColor(dark ? 0xFFB74D : 0x8A5A00);
  if (state == ERunState::NotRun) return palette_.color(QPalette::Disabled, QPalette::Text);
  return {};
}

QVariant TRunModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= kRunColumns) return {};
  if (role == Qt::DisplayRole) return QString(kHeadings[section]);
  return role == Qt::TextAlignmentRole && IsNumber(section) ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
}

}  // namespace velmora
