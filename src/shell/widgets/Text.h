// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QString>
#include <cstddef>

namespace velmora {

// A text that users read, as a window is given it. It is written in English, in one of these forms:
//   TText::tr("...")                    in the user's language
//   TText::Counted("...", nullptr, n)   the same with a number, %n; "(s)" stands for the ending of the plural
//   TText::Later("...")                 for tables of constants: in the user's language where it is shown
//   Fixed("...")                        the same in every language: names of windows, commands and fields that manuals,
//                                       help and support speak of
// Texts of the library below the windows stay as they come: they stand in logs, scripts and terminals too.
// docs/translating.md tells how a language is added; scripts/check-translations holds the sources against it.
class TText {
  Q_DECLARE_TR_FUNCTIONS(TText)

 public:
  constexpr TText() = default;  // no text
  static constexpr TText Later(const char* words) { return {words, false}; }
  static constexpr TText Same(const char* words) { return {words, true}; }

  // The second argument is there for the tool that collects texts: by three of them it knows those with a plural.
  static QString Counted(const char* words, std::nullptr_t, std::size_t count);

  bool Empty() const { return words_ == nullptr; }
  operator QString() const;  // NOLINT: what windows take

 private:
  constexpr TText(const char* words, bool same) : words_(words), same_(same) {}

  const char* words_ = nullptr;
  bool same_ = false;  // in every language
};

constexpr TText Fixed(const char* words) { return TText::Same(words); }

}  // namespace velmora
