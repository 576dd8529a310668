// SPDX-License-Identifier: GPL-3.0-or-later

// A stand-in for an Oracle client library, as far as the program calls it. Its entry points are spelled out here once
// more, so that a slip in the program's own declarations shows.

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/FakeOracle.h"

namespace {

using velmora::testing::TFakeOracle;
using TPieceCall = std::int32_t(void*, void*, std::uint32_t, void**, std::uint32_t**, std::uint8_t*, void**,
                                std::uint16_t**);

TFakeOracle server;
TFakeOracle::TError last_error;

struct THandle {
  explicit THandle(std::uint32_t kind, THandle* of = nullptr) : type(kind), parent(of) {}
  std::uint32_t type;
  THandle* parent;
  int children = 0;
  std::string username, password;  // of a session
  THandle* server = nullptr;       // of a service
  THandle* session = nullptr;
};

struct TDefine : THandle {
  TDefine() : THandle(6) {}
  char* value = nullptr;
  std::size_t size = 0;
  std::uint16_t type_wanted = 0;
  std::int16_t* indicator = nullptr;
  std::uint16_t* length = nullptr;
  bool dynamic = false;
  void* context = nullptr;
  TPieceCall* call = nullptr;
  bool national = false;
};

struct TStatement : THandle {
  TStatement() : THandle(4) {}
  std::string sql;
  TFakeOracle::TAnswer answer;
  std::size_t row = 0;
  std::vector<std::unique_ptr<TDefine>> defines;
};

struct TParameter : THandle {
  explicit TParameter(const TFakeOracle::TColumn& of) : THandle(53), column(of) {}
  const TFakeOracle::TColumn& column;
};

int Fail(TFakeOracle::TError error) {
  last_error = std::move(error);
  return -1;
}

int FailGone() { return Fail({3113, "ORA-03113: end-of-file on communication channel\n"}); }

// Writes down what the client has sent to the server.
int Told(const char* word) {
  server.log.emplace_back(word);
  return server.gone ? FailGone() : 0;
}

void Expect(bool met, const char* fault) {
  if (!met) server.faults.emplace_back(fault);
}

template <class Number>
int Put(void* value, Number number) {
  std::memcpy(value, &number, sizeof number);
  return 0;
}

bool IsQuery(const std::string& sql) { return sql.starts_with("select"); }

// Gives a long value piece after piece.
void PutPieces(const TDefine& define, const std::optional<std::string>& value) {
  std::size_t done = 0;
  do {
    void* buffer = nullptr;
    std::uint32_t* length = nullptr;
    void* indicator = nullptr;
    std::uint16_t* code = nullptr;
    std::uint8_t piece = done == 0 ? 1 : 2;
    Expect(define.call(define.context, nullptr, 0, &buffer, &length, &piece, &indicator, &code) == -24200, "callback");
    const std::size_t size = value ? std::min({value->size() - done, server.piece, std::size_t{*length}}) : 0;
    if (size > 0) std::memcpy(buffer, value->data() + done, size);
    *length = static_cast<std::uint32_t>(size);
    *static_cast<std::int16_t*>(indicator) = value ? 0 : -1;
    done += size;
  } while (value && done < value->size());
}

void PutValue(const TDefine& define, const std::optional<std::string>& value) {
  *define.indicator = value ? 0 : -1;
  if (!value) return;
  const std::size_t room = define.type_wanted == 5 ? define.size - 1 : define.size;
  const std::size_t size = std::min(value->size(), room);
  if (size < value->size())
    *define.indicator = value->size() > 32767 ? std::int16_t{-2} : static_cast<std::int16_t>(value->size());
  std::memcpy(define.value, value->data(), size);
  if (define.type_wanted == 5) define.value[size] = '\0';
  *define.length = static_cast<std::uint16_t>(size);
}

}  // namespace

extern "C" {

TFakeOracle* FakeOracle() { return &server; }

int OCIEnvNlsCreate(THandle** environment, std::uint32_t, void*, void*, void*, void*, std::size_t, void**,
                    std::uint16_t charset, std::uint16_t national) {
  Expect(charset == 873 && national == 873, "character set");
  *environment = new THandle(1);
  ++server.given_out;
  return 0;
}

int OCIHandleAlloc(THandle* parent, THandle** handle, std::uint32_t type, std::size_t, void**) {
  Expect(parent->type == 1, "parent of a handle");
  *handle = new THandle(type, parent);
  ++parent->children;
  ++server.given_out;
  return 0;
}

int OCIHandleFree(THandle* handle, std::uint32_t type) {
  Expect(handle->type == type, "type of a freed handle");
  Expect(handle->children == 0, "the environment was not the last to go");
  if (handle->parent != nullptr) --handle->parent->children;
  delete handle;
  --server.given_out;
  return 0;
}

int OCIAttrSet(THandle* target, std::uint32_t type, void* value, std::uint32_t size, std::uint32_t attribute,
               THandle* error) {
  Expect(target->type == type && error->type == 2, "target of an attribute");
  const auto text = [&] { return std::string(static_cast<const char*>(value), size); };
  if (type == 3 && attribute == 6) target->server = static_cast<THandle*>(value);
  if (type == 3 && attribute == 7) target->session = static_cast<THandle*>(value);
  if (type == 9 && attribute == 22) target->username = text();
  if (type == 9 && attribute == 23) target->password = text();
  if (type == 6 && attribute == 32)
    static_cast<TDefine*>(target)->national = *static_cast<const std::uint8_t*>(value) == 2;
  return 0;
}

int OCIAttrGet(const THandle* target, std::uint32_t type, void* value, std::uint32_t* size, std::uint32_t attribute,
               THandle*) {
  Expect(target->type == type, "source of an attribute");
  if (type == 53) {
    const TFakeOracle::TColumn& column = static_cast<const TParameter*>(target)->column;
    if (attribute == 4) *size = static_cast<std::uint32_t>(column.name.size());
    if (attribute == 4) return Put(value, column.name.data());
    if (attribute == 2) return Put(value, column.type);
    if (attribute == 1) return Put(value, column.size);
    if (attribute == 32) return Put(value, static_cast<std::uint8_t>(column.national ? 2 : 1));
  }
  if (type == 4) {
    const auto* statement = static_cast<const TStatement*>(target);
    if (attribute == 24) return Put(value, static_cast<std::uint16_t>(IsQuery(statement->sql) ? 1 : 8));
    if (attribute == 18) return Put(value, static_cast<std::uint32_t>(statement->answer.columns.size()));
    if (attribute == 9) {
      const auto rows = static_cast<std::uint32_t>(statement->row);
      return Put(value, IsQuery(statement->sql) ? rows : statement->answer.affected);
    }
  }
  Expect(false, "attribute");
  return -1;
}

int OCIServerAttach(THandle* handle, THandle*, const char* name, std::int32_t size, std::uint32_t) {
  Expect(handle->type == 8, "server handle");
  server.log.push_back("attach " + std::string(name, static_cast<std::size_t>(size)));
  if (server.attach_error.code != 0) return Fail(server.attach_error);
  ++server.given_out;
  return 0;
}

int OCIServerDetach(THandle* handle, THandle*, std::uint32_t) {
  Expect(handle->type == 8, "server handle");
  server.log.emplace_back("detach");
  --server.given_out;
  return 0;
}

int OCISessionBegin(THandle* service, THandle*, THandle* session, std::uint32_t credentials, std::uint32_t mode) {
  Expect(service->server != nullptr && credentials == 1, "a session without a server or credentials");
  server.log.push_back("login " + session->username + " " + std::to_string(mode));
  if (session->username != server.username || session->password != server.password)
    return Fail({1017, "ORA-01017: invalid username/password; logon denied\n"});
  ++server.given_out;
  return 1;  // the password will expire
}

int OCISessionEnd(THandle*, THandle*, THandle* session, std::uint32_t) {
  Expect(session->type == 9, "session handle");
  --server.given_out;
  return Told("end");
}

int OCIStmtPrepare2(THandle* service, TStatement** statement, THandle*, const char* sql, std::uint32_t size,
                    const char*, std::uint32_t, std::uint32_t language, std::uint32_t) {
  Expect(service->session != nullptr && language == 1, "a statement without a session");
  *statement = new TStatement;
  (*statement)->sql.assign(sql, size);
  ++server.given_out;
  return 0;
}

int OCIStmtRelease(TStatement* statement, THandle*, const char*, std::uint32_t, std::uint32_t) {
  delete statement;
  --server.given_out;
  return 0;
}

int OCIStmtExecute(THandle*, TStatement* statement, THandle*, std::uint32_t times, std::uint32_t, const void*, void*,
                   std::uint32_t) {
  Expect(times == (IsQuery(statement->sql) ? 0 : 1), "times of an execution");
  server.log.push_back("run " + statement->sql);
  if (server.gone) return FailGone();
  const auto found = server.answers.find(statement->sql);
  if (found != server.answers.end()) {
    statement->answer = found->second;
    if (found->second.error.code != 0) return Fail(found->second.error);
  } else if (IsQuery(statement->sql)) {
    return Fail({942, "ORA-00942: table or view does not exist\n"});
  }
  return 0;
}

int OCIParamGet(const TStatement* statement, std::uint32_t type, THandle*, THandle** parameter,
                std::uint32_t position) {
  Expect(type == 4, "parameter of no statement");
  *parameter = new TParameter(statement->answer.columns.at(position - 1));
  ++server.given_out;
  return 0;
}

int OCIDescriptorFree(THandle* descriptor, std::uint32_t type) {
  Expect(type == 53, "type of a freed descriptor");
  delete static_cast<TParameter*>(descriptor);
  --server.given_out;
  return 0;
}

int OCIDefineByPos(TStatement* statement, THandle** define, THandle*, std::uint32_t position, void* value,
                   std::int32_t size, std::uint16_t type, void* indicator, std::uint16_t* length, std::uint16_t*,
                   std::uint32_t mode) {
  Expect(position == statement->defines.size() + 1 && size > 0, "position of a define");
  auto made = std::make_unique<TDefine>();
  made->value = static_cast<char*>(value);
  made->size = static_cast<std::size_t>(size);
  made->type_wanted = type;
  made->indicator = static_cast<std::int16_t*>(indicator);
  made->length = length;
  made->dynamic = mode == 2;
  *define = made.get();
  statement->defines.push_back(std::move(made));
  return 0;
}

int OCIDefineDynamic(TDefine* define, THandle*, void* context, TPieceCall* call) {
  Expect(define->dynamic && define->type_wanted != 5, "a define that is not dynamic");
  define->context = context;
  define->call = call;
  return 0;
}

int OCIStmtFetch2(TStatement* statement, THandle*, std::uint32_t rows, std::uint16_t orientation, std::int32_t,
                  std::uint32_t) {
  Expect(rows == 1 && orientation == 2, "how rows are fetched");
  const TFakeOracle::TAnswer& answer = statement->answer;
  if (server.gone || statement->row >= answer.lost_after) {
    server.gone = true;
    return FailGone();
  }
  if (statement->row == answer.rows.size()) return 100;
  for (std::size_t i = 0; i < answer.columns.size(); ++i) {
    const TDefine& define = *statement->defines.at(i);
    Expect(define.national == answer.columns[i].national, "character form");
    (define.dynamic ? PutPieces : PutValue)(define, answer.rows[statement->row].at(i));
  }
  ++statement->row;
  return 0;
}

int OCITransCommit(THandle*, THandle*, std::uint32_t) { return Told("commit"); }

int OCITransRollback(THandle*, THandle*, std::uint32_t) { return Told("rollback"); }

int OCIErrorGet(THandle* handle, std::uint32_t record, char*, std::int32_t* code, char* text, std::uint32_t size,
                std::uint32_t type) {
  Expect(handle->type == 2 && record == 1 && type == 2, "error handle");
  *code = last_error.code;
  text[last_error.text.copy(text, size - 1)] = '\0';
  return 0;
}

}  // extern "C"
