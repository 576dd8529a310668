// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/sheet/XmlPart.h"

#include <libxml/xmlreader.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <new>

#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kNoXml[] = "the workbook is damaged: line %d of its part %s is no XML";
constexpr char kDocumentType[] = "the workbook's part %s has a document type, which no workbook needs";

// Of workbooks, and of what ties their parts together, as most programs write them and by the strict standard.
constexpr std::string_view kLanguages[] = {
    "http://schemas.openxmlformats.org/spreadsheetml/2006/main",
    "http://purl.oclc.org/ooxml/spreadsheetml/main",
    "http://schemas.openxmlformats.org/package/2006/relationships",
};

std::string_view View(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

bool IsText(int type) {
  return type == XML_READER_TYPE_TEXT || type == XML_READER_TYPE_CDATA || type == XML_READER_TYPE_WHITESPACE ||
         type == XML_READER_TYPE_SIGNIFICANT_WHITESPACE;
}

}  // namespace

void TXmlPart::TFree::operator()(_xmlTextReader* reader) const { xmlFreeTextReader(reader); }

TXmlPart::TXmlPart(TZipParts& parts, const std::string& name) : name_(name), part_(parts.Open(name)) {
  reader_.reset(xmlReaderForIO(Feed, nullptr, this, nullptr, nullptr, XML_PARSE_NONET | XML_PARSE_COMPACT));
  if (!reader_) throw std::bad_alloc();
  xmlTextReaderSetStructuredErrorHandler(
      reader_.get(), [](void*, xmlErrorPtr) {}, nullptr);
}

// The library is written in C: an error waits until it has returned.
int TXmlPart::Feed(void* context, char* buffer, int size) {
  auto& self = *static_cast<TXmlPart*>(context);
  try {
    return static_cast<int>(self.part_.Read({buffer, static_cast<std::size_t>(size)}));
  } catch (...) {
    self.fault_ = std::current_exception();
    return -1;
  }
}

bool TXmlPart::Read() {
  const int result = xmlTextReaderRead(reader_.get());
  if (fault_) std::rethrow_exception(fault_);
  if (result < 0) RaiseError(Format(kNoXml, xmlTextReaderGetParserLineNumber(reader_.get()), name_));
  const int type = xmlTextReaderNodeType(reader_.get());
  if (type == XML_READER_TYPE_DOCUMENT_TYPE || type == XML_READER_TYPE_ENTITY_REFERENCE)
    RaiseError(Format(kDocumentType, name_));
  return result > 0;
}

int TXmlPart::Depth() const { return xmlTextReaderDepth(reader_.get()); }

bool TXmlPart::Next(int depth) {
  const bool within = depth == kDocument || Depth() > depth || xmlTextReaderIsEmptyElement(reader_.get()) != 1;
  while (within && Read()) {
    const int type = xmlTextReaderNodeType(reader_.get());
    if (type == XML_READER_TYPE_ELEMENT) return true;
    if (type == XML_READER_TYPE_END_ELEMENT && Depth() == depth) break;
  }
  return false;
}

void TXmlPart::Skip() {
  for (const int depth = Depth(); Next(depth);) continue;
}

std::string TXmlPart::Text() {
  std::string text;
  if (xmlTextReaderIsEmptyElement(reader_.get()) == 1) return text;
  for (const int depth = Depth(); Read();) {
    const int type = xmlTextReaderNodeType(reader_.get());
    if (IsText(type)) text += View(xmlTextReaderConstValue(reader_.get()));
    if (type == XML_READER_TYPE_END_ELEMENT && Depth() == depth) break;
  }
  return text;
}

std::string_view TXmlPart::Name() {
  const std::string_view language = View(xmlTextReaderConstNamespaceUri(reader_.get()));
  if (language.data() != language_.data()) {
    language_ = language;
    is_known_language_ = std::ranges::count(kLanguages, language) > 0;
  }
  return is_known_language_ ? View(xmlTextReaderConstLocalName(reader_.get())) : std::string_view();
}

std::string_view TXmlPart::Attribute(std::string_view name) {
  std::string_view value;
  while (value.data() == nullptr && xmlTextReaderMoveToNextAttribute(reader_.get()) == 1)
    if (xmlTextReaderIsNamespaceDecl(reader_.get()) != 1 && View(xmlTextReaderConstLocalName(reader_.get())) == name)
      value = View(xmlTextReaderConstValue(reader_.get()));
  xmlTextReaderMoveToElement(reader_.get());
  return value;
}

}  // namespace velmora
