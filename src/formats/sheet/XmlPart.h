// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A part of a workbook that is an XML document, element by element.

#include <exception>
#include <memory>
#include <string>
#include <string_view>

#include "formats/sheet/ZipParts.h"

struct _xmlTextReader;  // NOLINT(bugprone-reserved-identifier): libxml2's own name

namespace velmora {

// Stands before the document's outermost element at first. Going on raises an error that names the part where it is no
// XML, has a document type, or cannot be unpacked.
class TXmlPart {
 public:
  TXmlPart(TZipParts& parts, const std::string& name);
  TXmlPart(const TXmlPart&) = delete;
  TXmlPart& operator=(const TXmlPart&) = delete;

  // Goes to the start of the next element within the one at `depth`, however deep; false at the end of that one.
  // Within the document itself, `depth` is kDocument.
  static constexpr int kDocument = -1;
  bool Next(int depth);
  void Skip();         // to the end of the element
  std::string Text();  // all of the element's; stands at its end afterwards

  int Depth() const;
  // Of the element, without its prefix. Elements of other languages than those of workbooks have none.
  std::string_view Name();
  // The attribute's value, without regard for prefixes; empty when it is not there. Holds until the next call.
  std::string_view Attribute(std::string_view name);

 private:
  struct TFree {
    void operator()(_xmlTextReader* reader) const;
  };
  static int Feed(void* context, char* buffer, int size);
  bool Read();

  std::string name_;
  TZipPart part_;
  std::exception_ptr fault_;  // of the unpacking
  std::unique_ptr<_xmlTextReader, TFree> reader_;
  std::string_view language_;  // the one looked at last; the library has each but once
  bool is_known_language_ = false;
};

}  // namespace velmora
