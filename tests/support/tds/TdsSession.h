#pragma once

// One connection of the fake server, from its login to its end.

#include <map>
#include <string>

#include "support/tds/FakeTdsServer.h"

namespace velmora::testing {

class TTdsSession {
 public:
  TTdsSession(TFakeTdsServer& server, int connection);
  void Serve();

 private:
  // Each gives the tokens of its reply.
  std::string Answer(const TTdsRequest& request);
  std::string Prelogin() const;
  std::string Login(const std::string& body);
  std::string Batch(const std::string& sql);
  std::string Statements(const std::string& sql);
  std::string Transaction(const std::string& body);
  std::string Procedure(const std::string& body);
  std::string Tables(std::map<std::string, std::string>& arguments);
  std::string Refused(const TTdsError& error) const;

  bool TransactionWords(const std::string& sql);  // false: it is something else
  void ChangeTransaction(const std::string& word, TTdsReply* reply);

  TFakeTdsServer& server_;
  int connection_;
  TTdsCatalog catalog_;
  int version_ = 0x701;
  bool ended_ = false;
};

}  // namespace velmora::testing
