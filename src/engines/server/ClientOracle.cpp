// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/server/ClientOracle.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <iterator>
#include <limits>
#include <string_view>
#include <vector>

#include "engines/server/OracleLibrary.h"
#include "engines/server/OracleValues.h"
#include "util/Aside.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kNoDirectMode[] = "direct mode is not available on this system; use the Oracle client";
constexpr char kNotStarted[] = "The Oracle client library could not be started (%d)";
constexpr char kNoText[] = "The Oracle client library failed without a text (%d)";
constexpr char kTooLong[] = "A value of column %s is too long to be read";
constexpr char kTooLongText[] = "A text is too long for the Oracle client";

constexpr std::uint32_t kPrefetchedRows = 100;
constexpr std::size_t kShortRoom = 256;
constexpr std::size_t kMostRoom = 65535;  // what the library can report as the length of a value
constexpr std::size_t kMostBytesPerByte = 4;
constexpr std::size_t kPieceRoom = 32768;

// Errors after which there is nobody left to talk to: the session was killed or never was, the server went down, the
// line broke.
bool IsLost(int code) {
  constexpr int kLost[] = {28,   1012, 1033, 1034,  1041,  1089,  1092,  3113,  3114,
                           3135, 3136, 2396, 12153, 12537, 12547, 12570, 12571, 12583};
  return std::ranges::find(kLost, code) != std::end(kLost);
}

// The length of a text for the library, whose texts have no zero at their end.
std::uint32_t SizeOf(std::string_view text) {
  if (text.size() > std::numeric_limits<std::int32_t>::max()) RaiseError(kTooLongText);
  return static_cast<std::uint32_t>(text.size());
}

// Owns a handle; the environment's must be the last to go.
class THandle {
 public:
  THandle(const TOracleLibrary& library, std::uint32_t type) : library_(library), type_(type) {}
  ~THandle() {
    if (handle_ != nullptr) library_.HandleFree(handle_, type_);
  }
  THandle(const THandle&) = delete;
  THandle& operator=(const THandle&) = delete;

  void* get() const { return handle_; }
  void** out() { return &handle_; }
  std::uint32_t type() const { return type_; }

 private:
  const TOracleLibrary& library_;
  const std::uint32_t type_;
  void* handle_ = nullptr;
};

// One column of a result with the room for its values, whose addresses the library keeps: it must stay where it is.
class TFetchedColumn {
 public:
  explicit TFetchedColumn(TOracleColumn column) : column_(std::move(column)), type_(OracleTypeOf(column_)) {
    const std::size_t size = column_.size;
    if (type_.room == EOraRoom::Short) room_.resize(kShortRoom);
    if (type_.room == EOraRoom::Bytes) room_.resize(std::max<std::size_t>(size, 1));
    if (type_.room == EOraRoom::Characters) room_.resize(std::min(size * kMostBytesPerByte + 1, kMostRoom));
  }
  TFetchedColumn(const TFetchedColumn&) = delete;
  TFetchedColumn& operator=(const TFetchedColumn&) = delete;

  const TOracleColumn& Column() const { return column_; }
  bool InPieces() const { return type_.room == EOraRoom::Pieces; }

  // Gives the library the room; both are calls of the library, whose result is passed on.
  int Define(const TOracleLibrary& library, void* statement, void* error, std::uint32_t position, void** define) {
    if (InPieces())
      return library.DefineByPos(statement, define, error, position, nullptr, std::numeric_limits<std::int32_t>::max(),
                                 type_.fetch_as, nullptr, nullptr, nullptr, oci::kDynamicFetch);
    return library.DefineByPos(statement, define, error, position, room_.data(),
                               static_cast<std::int32_t>(room_.size()), type_.fetch_as, &indicator_, &length_, nullptr,
                               oci::kDefault);
  }
  int DefinePieces(const TOracleLibrary& library, void* define, void* error) {
    return library.DefineDynamic(define, error, this, NextPiece);
  }

  // Before each row. A null value may come without asking for room.
  void Reset() {
    pieces_.clear();
    indicator_ = oci::kNull;
  }

  TVariant Value() const {
    if (indicator_ == oci::kNull) return {};
    if (indicator_ == oci::kCut || indicator_ > 0) RaiseError(Format(kTooLong, column_.name));
    return type_.read(InPieces() ? Joined() : std::string(room_.data(), length_));
  }

 private:
  struct TPiece {
    std::vector<char> room = std::vector<char>(kPieceRoom);
    std::uint32_t length = kPieceRoom;
  };

  static std::int32_t NextPiece(void* context, void* /*define*/, std::uint32_t /*row*/, void** buffer,
                                std::uint32_t** length, std::uint8_t* piece, void** indicator, std::uint16_t** code) {
    auto& self = *static_cast<TFetchedColumn*>(context);
    TPiece& next = self.pieces_.emplace_back();
    *buffer = next.room.data();
    *length = &next.length;
    *piece = oci::kOnePiece;
    *indicator = &self.indicator_;
    *code = nullptr;
    return oci::kContinue;
  }

  std::string Joined() const {
    std::string text;
    for (const TPiece& piece : pieces_) text.append(piece.room.data(), piece.length);
    return text;
  }

  const TOracleColumn column_;
  const TOracleTypeRow& type_;
  std::vector<char> room_;
  std::uint16_t length_ = 0;
  std::deque<TPiece> pieces_;
  std::int16_t indicator_ = oci::kNull;
};

}  // namespace

// The connection while it lasts.
class TOraLibrarySession::TLink {
 public:
  struct TLogin {
    std::string server, username, password;
    int mode;
  };

  explicit TLink(const TOracleLibrary& library) : library_(library) {}
  ~TLink() { Close(); }

  void Open(const TLogin& login);
  bool IsLost() const { return lost_; }
  TOraResult Run(const std::string& sql);
  void Commit() { Check(library_.TransCommit(service_.get(), error_.get(), oci::kDefault)); }
  void Rollback() { Check(library_.TransRollback(service_.get(), error_.get(), oci::kDefault)); }

 private:
  class TStatement;

  void Close();
  void Make(THandle& handle);
  void Set(const THandle& target, void* value, std::uint32_t size, std::uint32_t attribute);
  void SetText(const THandle& target, const std::string& text, std::uint32_t attribute);
  template <class Number>
  Number Get(const void* target, std::uint32_t type, std::uint32_t attribute);
  void Check(int status);  // raises unless the call went well
  int ErrorText(std::string& text) const;

  TOracleColumn Describe(const TStatement& statement, std::uint32_t position);
  void Define(const TStatement& statement, TFetchedColumn& column, std::uint32_t position);
  void FetchAll(const TStatement& statement, TOraResult& result);

  const TOracleLibrary& library_;
  THandle environment_{library_, oci::kEnvironmentHandle};
  THandle error_{library_, oci::kErrorHandle};
  THandle server_{library_, oci::kServerHandle};
  THandle service_{library_, oci::kServiceHandle};
  THandle session_{library_, oci::kSessionHandle};
  bool attached_ = false;
  bool begun_ = false;
  bool lost_ = false;
};

class TOraLibrarySession::TLink::TStatement {
 public:
  TStatement(TLink& link, const std::string& sql) : link_(link) {
    link_.Check(link_.library_.StmtPrepare2(link_.service_.get(), &statement_, link_.error_.get(), sql.data(),
                                            SizeOf(sql), nullptr, 0, oci::kNativeSyntax, oci::kDefault));
  }
  ~TStatement() { link_.library_.StmtRelease(statement_, link_.error_.get(), nullptr, 0, oci::kDefault); }
  TStatement(const TStatement&) = delete;
  TStatement& operator=(const TStatement&) = delete;

  void* get() const { return statement_; }
  template <class Number>
  Number Get(std::uint32_t attribute) const {
    return link_.Get<Number>(statement_, oci::kStatementHandle, attribute);
  }

 private:
  TLink& link_;
  void* statement_ = nullptr;
};

// --- Connecting

void TOraLibrarySession::TLink::Open(const TLogin& login) {
  const int status = library_.EnvNlsCreate(environment_.out(), oci::kThreaded, nullptr, nullptr, nullptr, nullptr, 0,
                                           nullptr, oci::kAl32Utf8, oci::kAl32Utf8);
  if (status != oci::kSuccess && status != oci::kSuccessWithInfo) RaiseError(Format(kNotStarted, status));
  for (THandle* handle : {&error_, &server_, &service_, &session_}) Make(*handle);

  Check(library_.ServerAttach(server_.get(), error_.get(), login.server.data(),
                              static_cast<std::int32_t>(SizeOf(login.server)), oci::kDefault));
  attached_ = true;
  Set(service_, server_.get(), 0, oci::kServer);
  SetText(session_, login.username, oci::kUserName);
  SetText(session_, login.password, oci::kPassword);
  constexpr std::array<std::uint32_t, 3> kModes = {oci::kDefault, oci::kSysOper, oci::kSysDba};  // by ConnectMode
  Check(library_.SessionBegin(service_.get(), error_.get(), session_.get(), oci::kByName,
                              kModes.at(static_cast<std::size_t>(login.mode))));
  begun_ = true;
  Set(service_, session_.get(), 0, oci::kSession);
  Run(kOracleFormats);
}

// The end of a session commits what is open, unless it is rolled back. A server that is gone can't be told anything, so
// what these calls say is of no interest.
void TOraLibrarySession::TLink::Close() {
  if (begun_) {
    library_.TransRollback(service_.get(), error_.get(), oci::kDefault);
    library_.SessionEnd(service_.get(), error_.get(), session_.get(), oci::kDefault);
  }
  if (attached_) library_.ServerDetach(server_.get(), error_.get(), oci::kDefault);
  begun_ = attached_ = false;
}

void TOraLibrarySession::TLink::Make(THandle& handle) {
  const int status = library_.HandleAlloc(environment_.get(), handle.out(), handle.type(), 0, nullptr);
  if (status != oci::kSuccess) RaiseError(Format(kNotStarted, status));
}

void TOraLibrarySession::TLink::Set(const THandle& target, void* value, std::uint32_t size, std::uint32_t attribute) {
  Check(library_.AttrSet(target.get(), target.type(), value, size, attribute, error_.get()));
}

void TOraLibrarySession::TLink::SetText(const THandle& target, const std::string& text, std::uint32_t attribute) {
  std::string copy = text;  // the library's parameter is not const, though it copies the text itself
  Set(target, copy.data(), SizeOf(copy), attribute);
}

template <class Number>
Number TOraLibrarySession::TLink::Get(const void* target, std::uint32_t type, std::uint32_t attribute) {
  Number number{};
  Check(library_.AttrGet(target, type, &number, nullptr, attribute, error_.get()));
  return number;
}

// --- Errors

void TOraLibrarySession::TLink::Check(int status) {
  if (status == oci::kSuccess || status == oci::kSuccessWithInfo) return;
  std::string text;
  const int code = status == oci::kError ? ErrorText(text) : 0;
  lost_ = lost_ || velmora::IsLost(code);
  RaiseError(text.empty() ? Format(kNoText, status) : text);
}

// Gives the number; the text goes without its line end.
int TOraLibrarySession::TLink::ErrorText(std::string& text) const {
  std::array<char, 3072> buffer{};
  std::int32_t code = 0;
  library_.ErrorGet(error_.get(), 1, nullptr, &code, buffer.data(), static_cast<std::uint32_t>(buffer.size() - 1),
                    oci::kErrorHandle);
  text = buffer.data();
  text.erase(text.find_last_not_of("\r\n") + 1);
  return code;
}

// --- Statements

TOraResult TOraLibrarySession::TLink::Run(const std::string& sql) {
  const TStatement statement(*this, sql);
  const bool select = statement.Get<std::uint16_t>(oci::kStatementType) == oci::kSelect;
  if (select) {
    std::uint32_t rows = kPrefetchedRows;
    Check(library_.AttrSet(statement.get(), oci::kStatementHandle, &rows, 0, oci::kPrefetchRows, error_.get()));
  }
  Check(library_.StmtExecute(service_.get(), statement.get(), error_.get(), select ? 0 : 1, 0, nullptr, nullptr,
                             oci::kDefault));
  TOraResult result;
  if (select) FetchAll(statement, result);
  result.row_count = statement.Get<std::uint32_t>(oci::kRowCount);
  return result;
}

TOracleColumn TOraLibrarySession::TLink::Describe(const TStatement& statement, std::uint32_t position) {
  void* parameter = nullptr;
  Check(library_.ParamGet(statement.get(), oci::kStatementHandle, error_.get(), &parameter, position));
  TOracleColumn column;
  RunGuarded(
      [&] {
        char* name = nullptr;
        std::uint32_t size = 0;
        Check(library_.AttrGet(parameter, oci::kParameterDescriptor, &name, &size, oci::kName, error_.get()));
        column.name.assign(name, size);
        column.type = Get<std::uint16_t>(parameter, oci::kParameterDescriptor, oci::kDataType);
        column.size = Get<std::uint16_t>(parameter, oci::kParameterDescriptor, oci::kDataSize);
        column.national =
            Get<std::uint8_t>(parameter, oci::kParameterDescriptor, oci::kCharacterForm) == oci::kNationalForm;
      },
      [&] { library_.DescriptorFree(parameter, oci::kParameterDescriptor); });
  return column;
}

// Letters of a national column would come by way of the server's other character set, and some not arrive.
void TOraLibrarySession::TLink::Define(const TStatement& statement, TFetchedColumn& column, std::uint32_t position) {
  void* define = nullptr;
  Check(column.Define(library_, statement.get(), error_.get(), position, &define));
  if (column.Column().national) {
    std::uint8_t form = oci::kNationalForm;
    Check(library_.AttrSet(define, oci::kDefineHandle, &form, 0, oci::kCharacterForm, error_.get()));
  }
  if (column.InPieces()) Check(column.DefinePieces(library_, define, error_.get()));
}

void TOraLibrarySession::TLink::FetchAll(const TStatement& statement, TOraResult& result) {
  const auto count = statement.Get<std::uint32_t>(oci::kParameterCount);
  std::deque<TFetchedColumn> columns;
  for (std::uint32_t position = 1; position <= count; ++position) {
    TFetchedColumn& column = columns.emplace_back(Describe(statement, position));
    result.fields.push_back(OracleFieldDef(column.Column()));
    Define(statement, column, position);
  }
  while (true) {
    for (TFetchedColumn& column : columns) column.Reset();
    StopIfLeft();
    const int status = library_.StmtFetch2(statement.get(), error_.get(), 1, oci::kFetchNext, 0, oci::kDefault);
    if (status == oci::kNoData) return;
    Check(status);
    TMemDataset::TRow& row = result.rows.emplace_back();
    row.reserve(columns.size());
    for (const TFetchedColumn& column : columns) row.push_back(column.Value());
  }
}

// --- Session

TOraLibrarySession::TOraLibrarySession(std::string home) : home_(std::move(home)) {}

TOraLibrarySession::~TOraLibrarySession() { DoDisconnect(); }

bool TOraLibrarySession::GetConnected() const { return waits_ || (link_ && !link_->IsLost()); }

// The link that was left is the call's alone, and this is not connected.
template <class Call>
auto TOraLibrarySession::OnLink(Call call) {
  const TWaitMark waits(waits_);
  try {
    return DoAside(ESlow::Server, [link = link_, call = std::move(call)] { return call(*link); });
  } catch (const ECancelled&) {
    link_.reset();
    throw;
  }
}

std::unique_ptr<TOraSession> TOraLibrarySession::NewSession() const {
  return std::make_unique<TOraLibrarySession>(home_);
}

void TOraLibrarySession::DoConnect() {
  if (Options.Net) RaiseError(kNoDirectMode);
  DoDisconnect();  // one that was lost
  // Loaded here, since that may change the environment, which threads share.
  link_ = std::make_shared<TLink>(LoadOracleLibrary(home_));
  try {
    OnLink([login = TLink::TLogin{Server, Username, Password, ConnectMode}](TLink& link) { link.Open(login); });
  } catch (...) {
    DoDisconnect();
    throw;
  }
}

void TOraLibrarySession::DoDisconnect() {
  if (link_) Aside().End([link = std::exchange(link_, nullptr)]() mutable { link.reset(); });
}

TOraResult TOraLibrarySession::DoRun(const std::string& sql) {
  return OnLink([sql](TLink& link) { return link.Run(sql); });
}

void TOraLibrarySession::DoCommit() {
  OnLink([](TLink& link) { link.Commit(); });
}

void TOraLibrarySession::DoRollback() {
  OnLink([](TLink& link) { link.Rollback(); });
}

}  // namespace velmora
