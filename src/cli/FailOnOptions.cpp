// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/FailOnOptions.h"

#include <CLI/CLI.hpp>

#include "util/Errors.h"

namespace velmora {

namespace {

constexpr char kFailOn[] = "--fail-on";

// An option that may be given several times; what `take` raises is a fault of the argument.
CLI::Option* DeclareTaken(CLI::App& app, const std::string& name, const std::string& argument, const std::string& help,
                          const std::function<void(const std::string&)>& take) {
  const auto take_all = [name, take](const std::vector<std::string>& given) {
    try {
      for (const std::string& text : given) take(text);
    } catch (const EVelmora& error) {
      throw CLI::ValidationError(name, error.what());
    }
  };
  return app.add_option_function<std::vector<std::string>>(name, take_all, help)
      ->type_name(argument)
      ->allow_extra_args(false);
}

}  // namespace

void DeclareRules(CLI::App& app, TLintWishes& rules) {
  DeclareTaken(app, "--rule", "ID=SEVERITY",
               "The severity of what a rule of `lint` finds: off, note, warning or error; may be given several times",
               [&rules](const std::string& text) { TakeRuleWish(text, rules); });
}

void DeclareFailOn(CLI::App& app, TFailOnWishes& wishes) {
  CLI::Option* option = DeclareTaken(
      app, kFailOn, "KIND",
      "Exact dialect: end with status 1 only for differences of a kind: data-loss (what is unsafe), rebuild (what "
      "copies "
      "or rebuilds a table), lint (what `lint` would warn of in the reference and not in the target); several with "
      "commas",
      [&wishes](const std::string& text) { TakeFailOn(text, wishes); });
  DeclareRules(app, wishes.rules);
  app.get_option("--rule")->needs(option);
}

TJson JsonOf(const std::vector<TFailure>& failures) {
  TJson list = TJson::array();
  for (const TFailure& failure : failures) list.push_back({{"kind", failure.kind}, {"text", failure.text}});
  return list;
}

void TellFailures(const std::vector<TFailure>& failures, TConsole& console) {
  for (const TFailure& failure : failures) console.Error("fails on " + failure.Line());
}

}  // namespace velmora
