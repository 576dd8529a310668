// SPDX-License-Identifier: GPL-3.0-or-later

// What comes out of an Access file by way of the library, which is another process: the stored properties and values
// that are taken apart here, and the answers of such a process.

#include <string>

#include "Harnesses.h"
#include "Input.h"
#include "formats/mdb/MdbProperties.h"
#include "formats/mdb/MdbText.h"
#include "sandbox/WireFormat.h"

namespace velmora::fuzzing {
namespace {

void ReadStored(std::string_view bytes) {
  if (const auto text = TextOfUtf16(bytes)) TextOfUtf16(Utf16OfText(*text));
  TextOfMoney(bytes);
  for (const int scale : {0, 3, 28, 255}) TextOfNumeric(bytes, scale);
  TextOfGuid(bytes);
  Try([&] { MomentOf(bytes); });
  Try([&] { MomentOfDigits(bytes); });
}

}  // namespace

void FuzzAccess(std::string_view input) {
  const std::size_t way = Choose(input, 10);
  TWireReader answer(input);
  switch (way) {
    case 0:
      ReadMdbProperties(input, TextOfUtf16);
      break;
    case 1:
      ReadMdbProperties(input, [](std::string_view text) { return std::optional<std::string>(text); });
      break;
    case 2:
      ReadStored(input);
      break;
    case 3:
      answer.Tables();
      break;
    case 4:
      answer.Columns();
      break;
    case 5:
      answer.Indexes();
      break;
    case 6:
      answer.Structure();
      break;
    case 7:
      answer.Rows();
      break;
    case 8:
      answer.Value();
      break;
    default: {
      std::vector<TFieldDef> fields;
      std::vector<bool> counting;
      answer.Fields(fields, counting);
      answer.Values();
    }
  }
}

}  // namespace velmora::fuzzing
