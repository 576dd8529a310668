// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlnet/MySqlResultSet.h"

#include <utility>

#include "mysqlnet/MySqlErrors.h"

namespace velmora {

namespace {

constexpr std::uint64_t kMostColumns = 65535;  // more than any server has in a table
constexpr std::uint8_t kEndMark = 254;
constexpr std::size_t kEndLength = 9;  // a row with that first byte is longer: the byte announces 8 more
constexpr std::uint8_t kNullMark = 251;

std::uint8_t Byte(char c) { return static_cast<std::uint8_t>(c); }

// How many bytes of a length stand after its first byte.
std::size_t LengthBytes(std::uint8_t first) {
  switch (first) {
    case 252:
      return 2;
    case 253:
      return 3;
    case 254:
      return 8;
    default:
      return 0;
  }
}

}  // namespace

// A length and as many bytes, or the mark of nothing; false when the row has no such thing at `position`, which else
// goes after it.
bool TMySqlResultSet::NextCell(std::string_view row, std::size_t& position, TCell& cell) {
  if (position >= row.size()) return false;
  const std::uint8_t first = Byte(row[position++]);
  cell = {position, 0, first == kNullMark};
  if (cell.null) return true;
  const std::size_t bytes = LengthBytes(first);
  if (first == 255 || bytes > row.size() - position) return false;
  std::uint64_t length = bytes == 0 ? first : 0;
  for (std::size_t i = bytes; i > 0; --i) length = length << 8 | Byte(row[position + i - 1]);
  position += bytes;
  if (length > row.size() - position) return false;
  cell = {position, static_cast<std::size_t>(length), false};
  position += cell.length;
  return true;
}

TMySqlResultSet::TMySqlResultSet(TMySqlSession& session) : session_(session) {
  if (!session.has_result) throw ClientError(kOutOfSync);
  Guarded([this] { ReadColumns(); });
}

// An error packet in place of what is expected ends the result.
template <class Read>
void TMySqlResultSet::Guarded(Read read) {
  try {
    read();
  } catch (...) {
    end_ = true;
    session_.has_result = false;
    session_.server_status &= static_cast<std::uint16_t>(~kMoreResults);
    throw;
  }
}

// --- Columns

// One packet per column and, where the protocol has one there, an end packet. What the head says of their number is
// not believed: memory grows with what comes.
void TMySqlResultSet::ReadColumns() {
  if (session_.field_count > kMostColumns) session_.net.FailMalformed();
  std::size_t size = 0;
  for (std::uint64_t i = 0; i < session_.field_count; ++i) {
    session_.net.ReadPacket();
    size += session_.net.Packet().size();
    if (size > session_.max_result_size || IsEnd(session_.net.Packet())) session_.net.FailMalformed();
    columns_.push_back(session_.UsesProtocol41() ? ReadColumn41() : ReadOldColumn());
  }
  if (session_.HasDeprecatedEof()) return;
  session_.net.ReadPacket();
  if (!IsEnd(session_.net.Packet())) session_.net.FailMalformed();
}

std::string TMySqlResultSet::ReadText() {
  const std::uint64_t length = session_.net.ReadFieldLength();
  if (length == NULL_LENGTH) return {};
  if (length > session_.net.Rest()) session_.net.FailMalformed();
  return session_.net.ReadBytes(static_cast<std::size_t>(length));
}

// Six texts and a block of fixed length: 2 bytes character set, 4 length, 1 type, 2 flags, 1 decimals.
TMySqlColumn TMySqlResultSet::ReadColumn41() {
  TMySqlNet& net = session_.net;
  TMySqlColumn column;
  ReadText();  // the catalog, which is always the same
  column.database = ReadText();
  column.table = ReadText();
  column.org_table = ReadText();
  column.name = ReadText();
  column.org_name = ReadText();
  net.ReadFieldLength();
  column.charset = net.ReadInt2();
  column.length = net.ReadInt4();
  column.type = net.ReadByte();
  column.flags = net.ReadInt2();
  column.decimals = net.ReadByte();
  return column;
}

// Five fields, each with its length: table, name, 3 bytes length, 1 byte type, 1 or 2 bytes flags and 1 decimals.
TMySqlColumn TMySqlResultSet::ReadOldColumn() {
  constexpr std::uint64_t kLongFlags = 3;
  TMySqlNet& net = session_.net;
  TMySqlColumn column;
  column.table = column.org_table = ReadText();
  column.name = column.org_name = ReadText();
  if (net.ReadFieldLength() != 3) net.FailMalformed();
  column.length = net.ReadInt3();
  if (net.ReadFieldLength() != 1) net.FailMalformed();
  column.type = net.ReadByte();
  column.flags = net.ReadFieldLength() == kLongFlags ? net.ReadInt2() : net.ReadByte();
  column.decimals = net.ReadByte();
  return column;
}

// --- Rows

bool TMySqlResultSet::IsEnd(std::string_view packet) const {
  if (packet.empty() || Byte(packet[0]) != kEndMark) return false;
  return packet.size() < (session_.HasDeprecatedEof() ? MAX_PACKET_LENGTH : kEndLength);
}

// The mark, then 2 bytes warnings and 2 bytes status; or what an accepted statement gives otherwise.
void TMySqlResultSet::TakeEnd() {
  TMySqlNet& net = session_.net;
  end_ = true;
  session_.has_result = false;
  net.ReadByte();
  if (session_.HasDeprecatedEof()) {
    session_.ReadOk();
  } else if (session_.UsesProtocol41()) {
    session_.warning_count = net.ReadInt2();
    session_.server_status = net.ReadInt2();
  }
}

bool TMySqlResultSet::ReadRow() {
  session_.net.ReadPacket();
  if (!IsEnd(session_.net.Packet())) return true;
  TakeEnd();
  return false;
}

// Finds where each value stands; nothing is copied.
void TMySqlResultSet::CutUp(std::string_view row) {
  current_ = row;
  cells_.clear();
  std::size_t position = 0;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    TCell cell{};
    if (!NextCell(row, position, cell)) session_.net.FailMalformed();
    cells_.push_back(cell);
  }
}

bool TMySqlResultSet::Next() {
  cells_.clear();
  if (kept_) {
    if (row_ >= rows_.size()) return false;
    CutUp(rows_[row_++]);
    return true;
  }
  if (end_) return false;
  bool found = false;
  Guarded([&] {
    found = ReadRow();
    if (found) CutUp(session_.net.Packet());
  });
  return found;
}

std::optional<std::string_view> TMySqlResultSet::Value(std::size_t column) const {
  if (column >= cells_.size()) throw EListError(static_cast<std::int64_t>(column));
  const TCell& cell = cells_[column];
  if (cell.null) return std::nullopt;
  return current_.substr(cell.start, cell.length);
}

// Deliberate: where the older protocol is spoken a row that takes more than one packet is refused here.
bool TMySqlResultSet::ReadRowInto(std::string& row) {
  if (session_.net.current_protocol) {
    if (!ReadRow()) return false;
    row = session_.net.Packet();
    return true;
  }
  session_.net.ReadPacketInto(row);
  if (!IsEnd(row)) return true;
  session_.net.TakePacket(row);
  TakeEnd();
  return false;
}

void TMySqlResultSet::FetchAll() {
  cells_.clear();
  kept_ = true;
  Guarded([this] {
    std::string row;
    while (!end_ && ReadRowInto(row)) {
      kept_size_ += row.size() + sizeof(std::string);
      if (kept_size_ > session_.max_result_size) session_.net.FailMemory();
      CutUp(row);
      rows_.push_back(std::move(row));
    }
  });
  cells_.clear();
}

void TMySqlResultSet::Skip() {
  cells_.clear();
  Guarded([this] {
    while (!end_) ReadRow();
  });
}

}  // namespace velmora
