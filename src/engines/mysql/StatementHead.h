#pragma once

#include <cstddef>
#include <string_view>

namespace velmora {

// What a statement of a creation script is, as far as anybody cares.
enum class EStatementKind { CreateTable, ReplaceTable, AlterTable, CreateIndex, Rename, Drop, Other };

struct TStatementHead {
  EStatementKind kind = EStatementKind::Other;
  // Of a CreateTable, offsets in the statement: where a qualified name begins, and the part behind its last point.
  std::size_t qualifier = 0;
  std::size_t name = 0;
  std::size_t name_end = 0;
};

// Reads the first words of a statement; comments between them are passed. A "create table" without a name is Other, and
// so is one of a temporary table.
TStatementHead ReadStatementHead(std::string_view statement);

}  // namespace velmora
