// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The calls and constants of an Oracle client library that this program uses, declared by hand from the library's
// public interface; neither its headers nor the library itself are needed to build. The library is looked for when a
// session connects.

#include <cstddef>
#include <cstdint>
#include <string>

namespace velmora {

// Numbers of the library's interface.
namespace oci {

inline constexpr int kSuccess = 0;
inline constexpr int kSuccessWithInfo = 1;
inline constexpr int kNoData = 100;
inline constexpr int kError = -1;
inline constexpr int kContinue = -24200;  // from a callback

inline constexpr std::uint32_t kEnvironmentHandle = 1;
inline constexpr std::uint32_t kErrorHandle = 2;
inline constexpr std::uint32_t kServiceHandle = 3;
inline constexpr std::uint32_t kStatementHandle = 4;
inline constexpr std::uint32_t kDefineHandle = 6;
inline constexpr std::uint32_t kServerHandle = 8;
inline constexpr std::uint32_t kSessionHandle = 9;
inline constexpr std::uint32_t kParameterDescriptor = 53;

inline constexpr std::uint32_t kDataSize = 1;  // attributes
inline constexpr std::uint32_t kDataType = 2;
inline constexpr std::uint32_t kName = 4;
inline constexpr std::uint32_t kServer = 6;
inline constexpr std::uint32_t kSession = 7;
inline constexpr std::uint32_t kRowCount = 9;
inline constexpr std::uint32_t kPrefetchRows = 11;
inline constexpr std::uint32_t kParameterCount = 18;
inline constexpr std::uint32_t kUserName = 22;
inline constexpr std::uint32_t kPassword = 23;
inline constexpr std::uint32_t kStatementType = 24;
inline constexpr std::uint32_t kCharacterForm = 32;

inline constexpr std::uint32_t kDefault = 0;  // modes
inline constexpr std::uint32_t kThreaded = 1;
inline constexpr std::uint32_t kDynamicFetch = 2;
inline constexpr std::uint32_t kSysDba = 2;
inline constexpr std::uint32_t kSysOper = 4;
inline constexpr std::uint32_t kByName = 1;  // credentials
inline constexpr std::uint32_t kNativeSyntax = 1;
inline constexpr std::uint16_t kFetchNext = 2;
inline constexpr std::uint8_t kOnePiece = 0;

inline constexpr std::uint16_t kSelect = 1;  // type of a statement
inline constexpr std::uint16_t kAl32Utf8 = 873;
inline constexpr std::uint8_t kNationalForm = 2;

inline constexpr std::int16_t kNull = -1;  // indicators
inline constexpr std::int16_t kCut = -2;   // as is a positive one

inline constexpr std::uint16_t kVarchar = 1;  // types of data
inline constexpr std::uint16_t kNumber = 2;
inline constexpr std::uint16_t kString = 5;
inline constexpr std::uint16_t kLong = 8;
inline constexpr std::uint16_t kRowId = 11;
inline constexpr std::uint16_t kDate = 12;
inline constexpr std::uint16_t kRaw = 23;
inline constexpr std::uint16_t kLongRaw = 24;
inline constexpr std::uint16_t kChar = 96;
inline constexpr std::uint16_t kBinaryFloat = 100;
inline constexpr std::uint16_t kBinaryDouble = 101;
inline constexpr std::uint16_t kRowIdDescriptor = 104;
inline constexpr std::uint16_t kClob = 112;
inline constexpr std::uint16_t kBlob = 113;
inline constexpr std::uint16_t kTimestamp = 187;
inline constexpr std::uint16_t kTimestampZone = 188;
inline constexpr std::uint16_t kIntervalMonths = 189;
inline constexpr std::uint16_t kIntervalSeconds = 190;
inline constexpr std::uint16_t kUniversalRowId = 208;
inline constexpr std::uint16_t kTimestampLocal = 232;

}  // namespace oci

// Gives the library room for the next piece of a value, `length` bytes at `buffer`; the library sets `length` to what
// it has used.
using TOraPieceCall = std::int32_t (*)(void* context, void* define, std::uint32_t row, void** buffer,
                                       std::uint32_t** length, std::uint8_t* piece, void** indicator,
                                       std::uint16_t** code);

// The entry points. Handles and descriptors are opaque; a result is one of kSuccess to kError, and what else there is
// fails too.
struct TOracleLibrary {
  int (*EnvNlsCreate)(void** environment, std::uint32_t mode, void* context, void* allocate, void* reallocate,
                      void* free, std::size_t extra, void** extra_memory, std::uint16_t charset,
                      std::uint16_t national_charset);
  int (*HandleAlloc)(const void* parent, void** handle, std::uint32_t type, std::size_t extra, void** extra_memory);
  int (*HandleFree)(void* handle, std::uint32_t type);
  int (*AttrSet)(void* target, std::uint32_t type, void* value, std::uint32_t size, std::uint32_t attribute,
                 void* error);
  int (*AttrGet)(const void* target, std::uint32_t type, void* value, std::uint32_t* size, std::uint32_t attribute,
                 void* error);
  int (*ServerAttach)(void* server, void* error, const char* name, std::int32_t size, std::uint32_t mode);
  int (*ServerDetach)(void* server, void* error, std::uint32_t mode);
  int (*SessionBegin)(void* service, void* error, void* session, std::uint32_t credentials, std::uint32_t mode);
  int (*SessionEnd)(void* service, void* error, void* session, std::uint32_t mode);
  int (*StmtPrepare2)(void* service, void** statement, void* error, const char* sql, std::uint32_t size,
                      const char* key, std::uint32_t key_size, std::uint32_t language, std::uint32_t mode);
  int (*StmtRelease)(void* statement, void* error, const char* key, std::uint32_t key_size, std::uint32_t mode);
  int (*StmtExecute)(void* service, void* statement, void* error, std::uint32_t times, std::uint32_t offset,
                     const void* snapshot_in, void* snapshot_out, std::uint32_t mode);
  int (*ParamGet)(const void* target, std::uint32_t type, void* error, void** parameter, std::uint32_t position);
  int (*DescriptorFree)(void* descriptor, std::uint32_t type);
  int (*DefineByPos)(void* statement, void** define, void* error, std::uint32_t position, void* value,
                     std::int32_t size, std::uint16_t type, void* indicator, std::uint16_t* length, std::uint16_t* code,
                     std::uint32_t mode);
  int (*DefineDynamic)(void* define, void* error, void* context, TOraPieceCall call);
  int (*StmtFetch2)(void* statement, void* error, std::uint32_t rows, std::uint16_t orientation, std::int32_t offset,
                    std::uint32_t mode);
  int (*TransCommit)(void* service, void* error, std::uint32_t flags);
  int (*TransRollback)(void* service, void* error, std::uint32_t flags);
  int (*ErrorGet)(void* handle, std::uint32_t record, char* state, std::int32_t* code, char* text, std::uint32_t size,
                  std::uint32_t type);
};

// The library of the client whose home folder the environment's ORACLE_HOME names, else of the one in `home` unless
// that is empty, else the one that the system's loader finds. It stays loaded to the end of the program, and the
// environment's ORACLE_HOME is set where `home` was taken: the library finds its own files by it. Raises a message that
// says what to install.
const TOracleLibrary& LoadOracleLibrary(const std::string& home);

}  // namespace velmora
