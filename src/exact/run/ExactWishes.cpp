#include "exact/run/ExactWishes.h"

#include <array>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoWish[] = "The task asks for \"%s\", which this version does not know";

constexpr std::array kOptions = {
    TExactOption{"definer", "POLICY", true, "Definers",
                 "The definers of views, triggers, routines and events: ignore (as it is), compare, strip (the script "
                 "names none), or 'map A@B=C@D', which may be given several times",
                 [](TExactWishes& wishes, const std::string& text) { TakeDefinerWish(text, wishes.definers); },
                 [](const TExactWishes& wishes) { return DefinerWishTexts(wishes.definers); }},
};

void TakeLine(const std::string& line, TExactWishes& wishes) {
  std::string argument = line;
  const std::string word = StrChop(" ", argument, true);
  for (const TExactOption& option : kOptions) {
    if (option.word != (option.argument.empty() ? line : word)) continue;
    return option.take(wishes, option.argument.empty() ? std::string() : argument);
  }
  RaiseError(Format(kNoWish, line));
}

}  // namespace

std::span<const TExactOption> ExactOptions() { return kOptions; }

std::string ExactWishesText(const TExactWishes& wishes) {
  TStringList lines;
  for (const TExactOption& option : kOptions)
    for (const std::string& argument : option.given(wishes))
      lines.push_back(Trim(std::string(option.word) + " " + argument));
  return JoinList(lines, "\n");
}

TExactWishes ReadExactWishes(const std::string& text) {
  TExactWishes wishes;
  TStringList lines;
  SplitText("\n", text, lines);
  for (const std::string& line : lines)
    if (!Trim(line).empty()) TakeLine(Trim(line), wishes);
  return wishes;
}

TExactWishes JoinWishes(const TExactWishes& now, const TExactWishes& kept) {
  TExactWishes joined = now;
  for (const TExactOption& option : kOptions)
    if (option.given(now).empty())
      for (const std::string& argument : option.given(kept)) option.take(joined, argument);
  return joined;
}

}  // namespace velmora
