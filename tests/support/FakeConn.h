// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// An engine fed by a test: it lists, fetches and answers what it was given, and writes down what it was asked.

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "core/DBConn.h"
#include "core/Meta.h"
#include "util/Errors.h"

namespace velmora::testing {

class TFakeConn : public TDBConn {
 public:
  TStringList tables;                                                // what ListTables gives
  std::function<void(TMeta& meta, const std::string& table)> fetch;  // fills in one table
  TColumnTypeInfoArray types = GenericColumnTypes();
  std::map<std::string, TMemDataset> results;  // by statement
  std::string quotes;                          // opening and closing quote
  int engine = 0;
  TStringList log;

  TConnectionObject& GetConnectionObject() override { return client_; }
  std::unique_ptr<TDataset> OpenQuery(const std::string& sql) override {
    log.push_back(sql);
    const auto found = results.find(sql);
    if (found == results.end()) RaiseError("No result for " + sql);
    return std::make_unique<TMemDataset>(found->second);
  }
  int GetEngine() override { return engine; }
  void QuoteOpen(std::string& text) override { text = quotes.substr(0, 1); }
  void QuoteClose(std::string& text) override { text = quotes.empty() ? "" : quotes.substr(1); }
  void GetColumnTypes(TColumnTypeInfoArray& table) override { table = types; }
  void ListTables(TStringList& list) override { list = tables; }
  void FetchTableStructure(const std::string& table) override {
    log.push_back("fetch " + table);
    if (fetch) fetch(meta(), table);
  }
  void ConstraintDescription(const TMetaConstraint& constraint, bool, std::string& text) override {
    text = constraint.name.empty() ? "" : "constraint " + constraint.name;
  }

 private:
  struct TClient : TConnectionObject {
    explicit TClient(TStringList& calls) : log(calls) {}
    bool GetConnected() const override { return connected; }
    void SetConnected(bool on) override {
      log.push_back(on ? "on" : "off");
      connected = on;
    }
    TStringList& log;
    bool connected = false;
  };
  TClient client_{log};
};

}  // namespace velmora::testing
