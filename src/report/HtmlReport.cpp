// SPDX-License-Identifier: GPL-3.0-or-later
#include "report/HtmlReport.h"

#include <algorithm>

#include "app/RunTelling.h"
#include "util/Counted.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kStyle[] = R"(
:root { color-scheme: light dark; --ink: #1d2129; --dim: #626b78; --page: #fff; --box: #f5f6f8; --line: #d9dde3;
  --new: #e2f4e5; --gone: #fbe3e1; --mark-new: #a9dfb3; --mark-gone: #f3b3ad; --risk: #b3261e; --warn: #8a5a00; }
@media (prefers-color-scheme: dark) { :root { --ink: #e3e6ea; --dim: #9aa4b2; --page: #16191e; --box: #1f242b;
  --line: #353c46; --new: #1c3323; --gone: #3b2120; --mark-new: #2f6b40; --mark-gone: #7a3330; --risk: #ff8a80;
  --warn: #f0c060; } }
body { font: 15px/1.5 system-ui, sans-serif; color: var(--ink); background: var(--page); margin: 2em auto;
  max-width: 1200px; padding: 0 1em; }
h1 { font-size: 1.5em; margin-bottom: .2em; } h2 { font-size: 1.2em; margin-top: 2em; }
h3 { font-size: 1em; margin: 0; display: inline; }
.dim { color: var(--dim); } .verdict { font-size: 1.15em; }
table.facts td { padding: .1em 1em .1em 0; vertical-align: top; } table.facts td:first-child { color: var(--dim); }
nav { columns: 3 16em; } nav a { color: inherit; display: block; overflow-wrap: anywhere; }
details { border: 1px solid var(--line); border-radius: 6px; margin: .8em 0; padding: .6em .9em; }
summary { cursor: pointer; } ul.what { margin: .5em 0; padding-left: 1.2em; list-style: none; }
ul.what li { text-indent: -1.2em; overflow-wrap: anywhere; }
.sign { display: inline-block; width: 1.2em; text-indent: 0; font-family: ui-monospace, monospace; }
.risk { color: var(--risk); } .cost { color: var(--warn); }
table.run td, table.run th { text-align: left; vertical-align: top; padding: .15em 1em .15em 0; white-space: nowrap; }
table.run td.sql { font: 12.5px/1.45 ui-monospace, monospace; white-space: pre-wrap; overflow-wrap: anywhere; }
table.texts { width: 100%; border-collapse: collapse; table-layout: fixed; font: 12.5px/1.45 ui-monospace, monospace; }
table.texts th { text-align: left; color: var(--dim); font-weight: normal; padding: .2em .5em; }
table.texts td { padding: 0 .5em; white-space: pre-wrap; overflow-wrap: anywhere; vertical-align: top; width: 50%; }
td.new { background: var(--new); } td.gone { background: var(--gone); } td.none { background: var(--box); }
td.new mark { background: var(--mark-new); color: inherit; } td.gone mark { background: var(--mark-gone); color: inherit; }
pre { background: var(--box); border: 1px solid var(--line); border-radius: 6px; padding: .8em; overflow-x: auto;
  font: 12.5px/1.45 ui-monospace, monospace; white-space: pre-wrap; overflow-wrap: anywhere; }
@media print { body { margin: 0; max-width: none; font-size: 11px; } details { break-inside: avoid-page; border: 0; padding: 0; }
  nav { display: none; } table.texts, pre { font-size: 9px; } pre { border: 0; } tr { break-inside: avoid; } }
)";

std::string Escaped(std::string_view text, std::string (*shown)(std::string_view) = ShownText) {
  std::string escaped;
  for (const char c : shown(text)) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string Lines(std::string_view text) { return Escaped(text, ShownLines); }

std::string Element(const std::string& tag, const std::string& content) {
  return Format("<%s>%s</%s>", tag, content, tag.substr(0, tag.find(' ')));
}

class TPage {
 public:
  explicit TPage(const TReport& report) : report_(report) {}

  std::string Write() {
    page_ =
        "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n";
    page_ += Element("title", "Comparison of " + Escaped(report_.reference) + " and " + Escaped(report_.target)) + "\n";
    page_ += Element("style", kStyle) + "\n</head>\n<body>\n";
    Head();
    if (report_.run) Run(*report_.run);
    List("Fails on", report_.failures);
    Differences();
    List("Not compared, or left alone", report_.findings);
    Script();
    Log();
    return page_ + "</body>\n</html>\n";
  }

 private:
  void Head() {
    page_ += Element("h1", "Comparison of two databases") + "\n";
    page_ += Element("p class=\"verdict\"", Escaped(report_.verdict)) + "\n<table class=\"facts\">\n";
    Fact("Reference", report_.reference);
    Fact("Target", report_.target);
    Fact("Compared", report_.dialect);
    Fact("Made by", report_.made);
    page_ += "</table>\n";
  }

  void Fact(const std::string& name, const std::string& value) {
    page_ += Element("tr", Element("td", name) + Element("td", Escaped(value))) + "\n";
  }

  void Run(const TReportRun& run) {
    page_ += Element("h2", "Run") + "\n" + Element(run.done ? "p" : "p class=\"risk\"", Escaped(run.sentence)) + "\n";
    for (const std::string& line : run.lines) page_ += Element("p", Escaped(line)) + "\n";
    if (!run.verdict.empty()) page_ += Element("p", "Compared again: " + Escaped(run.verdict)) + "\n";
    if (run.statements.empty()) return;
    page_ += "<table class=\"run\">\n<tr><th></th><th>State</th><th>Time</th><th>Statement</th></tr>\n";
    for (std::size_t i = 0; i < run.statements.size(); ++i) Statement(i + 1, run.statements[i]);
    page_ += "</table>\n";
  }

  void Statement(std::size_t number, const TReportStatement& statement) {
    const bool failed = statement.state == ERunState::Failed;
    std::string state = StateWord(statement.state);
    if (!statement.force.empty()) state += ", " + statement.force;
    std::string text = Lines(statement.text);
    if (!statement.words.empty()) text += Format("<br><span class=\"cost\">%s</span>", Lines(statement.words));
    page_ += Element("tr", Element("td", Format("%d", number)) +
                               Element(failed ? "td class=\"risk\"" : "td", Escaped(state)) +
                               Element("td", Escaped(statement.took)) + Element("td class=\"sql\"", text)) +
             "\n";
  }

  void Differences() {
    if (report_.parts.empty()) return;
    page_ += Element("h2", "Differences") + "\n";
    if (report_.parts.size() > 1) Contents();
    for (std::size_t i = 0; i < report_.parts.size(); ++i) Part(report_.parts[i], i);
  }

  void Contents() {
    page_ += "<nav>\n";
    for (std::size_t i = 0; i < report_.parts.size(); ++i)
      page_ += Format("<a href=\"#p%d\">%s</a>\n", i, Escaped(report_.parts[i].title));
    page_ += "</nav>\n";
  }

  void Part(const TReportPart& part, std::size_t number) {
    page_ += Format("<details open id=\"p%d\">\n<summary>%s <span class=\"dim\">%s</span></summary>\n", number,
                    Element("h3", Escaped(part.title)),
                    Counted(part.lines.size(), "difference") +
                        (part.Place().empty() ? std::string() : " &middot; " + Escaped(part.Place())));
    page_ += "<ul class=\"what\">\n";
    for (const TReportLine& line : part.lines) Line(line);
    page_ += "</ul>\n";
    if (part.rows.empty())
      Plain(part);
    else
      Aligned(part);
    page_ += "</details>\n";
  }

  void Line(const TReportLine& line) {
    const TDifference& what = line.difference;
    std::string text = Format("<span class=\"sign\">%c</span>%s", SignOf(what.state), Escaped(what.text));
    if (!what.detail.empty()) text += Format(" <span class=\"dim\">%s</span>", Escaped(what.detail));
    if (!what.lock.empty())
      text += Format(" <span class=\"%s\">[%s]</span>", line.rule == EReportRule::Difference ? "dim" : "cost",
                     Escaped(what.lock));
    if (!line.scripted) text += " <span class=\"dim\">(taken out of the script)</span>";
    if (!what.unsafe.empty()) text += Format("<br><span class=\"risk\">Unsafe: %s</span>", Escaped(what.unsafe));
    if (!what.note.empty()) text += Format("<br><span class=\"dim\">%s</span>", Lines(what.note));
    page_ += Element("li", text) + "\n";
  }

  void Plain(const TReportPart& part) {
    for (const std::string* text : {&part.reference, &part.target})
      if (!text->empty()) page_ += Element("pre", Lines(*text)) + "\n";
  }

  void Aligned(const TReportPart& part) {
    TStringList texts[2];
    SplitPlain('\n', part.reference, texts[kLeft]);
    SplitPlain('\n', part.target, texts[kRight]);
    page_ += "<table class=\"texts\">\n<tr><th>Reference</th><th>Target</th></tr>\n";
    for (const TAlignedRow& row : part.rows)
      page_ += "<tr>" + Cell(row, kLeft, texts[kLeft]) + Cell(row, kRight, texts[kRight]) + "</tr>\n";
    page_ += "</table>\n";
  }

  static std::string Cell(const TAlignedRow& row, ESide of, const TStringList& lines) {
    const TAlignedSide& side = row.sides[of];
    if (!side.line || *side.line >= lines.size()) return "<td class=\"none\"></td>";
    std::string line = lines[*side.line];
    if (line.ends_with('\r')) line.pop_back();
    if (!Differs(row)) return Element("td", Escaped(line));
    return Element(of == kLeft ? "td class=\"new\"" : "td class=\"gone\"", Marked(line, side.counts));
  }

  static std::string Marked(const std::string& line, const std::vector<TLetters>& marks) {
    std::string text;
    std::size_t done = 0;
    for (const TLetters& mark : marks) {
      const std::size_t first = std::clamp(mark.first, done, line.size());
      const std::size_t last = std::clamp(mark.last, first, line.size());
      if (first == last) continue;
      text += Escaped(std::string_view(line).substr(done, first - done)) +
              Element("mark", Escaped(std::string_view(line).substr(first, last - first)));
      done = last;
    }
    return text + Escaped(std::string_view(line).substr(done));
  }

  void List(const std::string& title, const TStringList& lines) {
    if (lines.empty()) return;
    page_ += Element("h2", title) + "\n<ul>\n";
    for (const std::string& line : lines) page_ += Element("li", Escaped(line)) + "\n";
    page_ += "</ul>\n";
  }

  void Script() {
    if (!report_.script.empty()) page_ += Element("h2", "Script") + "\n" + Element("pre", Lines(report_.script)) + "\n";
  }

  void Log() {
    if (!report_.log.empty())
      page_ += Element("h2", "Log") + "\n" + Element("pre", Lines(JoinList(report_.log, "\n"))) + "\n";
  }

  const TReport& report_;
  std::string page_;
};

}  // namespace

std::string HtmlReport(const TReport& report) { return TPage(report).Write(); }

}  // namespace velmora
