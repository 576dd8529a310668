// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/Dom.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {
namespace {

constexpr char kTooDeep[] = "elements are nested deeper than 256 levels";
constexpr char kManyAttributes[] = "an element has more than 256 attributes";
constexpr char kManyNamespaces[] = "more than 32 namespaces are in force at once";
constexpr char kCharacterSet[] = "its character set is not supported: %s";
constexpr char kDocumentType[] = "it has a document type, which is not supported";
constexpr char kNulByte[] = "it holds a zero byte";
constexpr char kBroken[] = "it is not well-formed";
constexpr char kNotUtf8[] = "byte %d of it is not UTF-8";
constexpr char kNoXmlCharacter[] = "byte %d of it is a character that XML does not allow";
constexpr char kDeclaration[] = "<?xml version=\"1.0\"?>";
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kMaxAttributes = 256;
constexpr int kMaxNamespaces = 32;

// Supersets of ASCII without shift sequences, so that markup stands in the bytes as it does in the text.
constexpr std::string_view kCharacterSets[] = {"utf-8", "utf8", "us-ascii", "ascii", "iso-8859-", "windows-125"};

// Parts of a text in which "<" and quotes mean nothing.
constexpr struct {
  std::string_view open, close;
} kOpaqueParts[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};

const xmlChar* XmlChars(const char* text) { return reinterpret_cast<const xmlChar*>(text); }
std::string_view PlainText(const xmlChar* text) {
  return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

template <class T>
T& Made(T* thing) {
  if (thing == nullptr) throw std::bad_alloc();
  return *thing;
}

// The library writes what it does not like to standard error, and by some paths whatever the parser was told. The
// handlers belong to the thread; those of whoever called are put back.
class TSilence {
 public:
  TSilence() : handler_(xmlStructuredError), context_(xmlStructuredErrorContext) {
    xmlSetStructuredErrorFunc(nullptr, [](void*, xmlErrorPtr) {});
  }
  ~TSilence() { xmlSetStructuredErrorFunc(context_, handler_); }
  TSilence(const TSilence&) = delete;
  TSilence& operator=(const TSilence&) = delete;

 private:
  xmlStructuredErrorFunc handler_;
  void* context_;
};

struct TFreeParser {
  void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
};
struct TFreeBuffer {
  void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
};

// Of a character in valid UTF-8.
bool IsXmlCharacter(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  if (first < 0x20) return first == '\t' || first == '\n' || first == '\r';
  return character != "\uFFFE" && character != "\uFFFF";
}

// --- What is refused before parsing
// Where the opaque part that begins at `at` ends; `at` when none does.
std::size_t OpaqueEnd(std::string_view text, std::size_t at) {
  for (const auto& part : kOpaqueParts)
    if (text.substr(at).starts_with(part.open)) return std::min(text.find(part.close, at), text.size());
  return at;
}

// Where the tag that begins at `at` ends, and how many quoted texts it has.
struct TTagEnd {
  std::size_t at, quoted;
};

TTagEnd FindTagEnd(std::string_view text, std::size_t at) {
  for (std::size_t quoted = 0;; ++quoted, ++at) {
    at = text.find_first_of(">\"'", at);
    if (at >= text.size() || text[at] == '>') return {std::min(at, text.size()), quoted};
    at = text.find(text[at], at + 1);
    if (at >= text.size()) return {text.size(), quoted};
  }
}

// The library compares each attribute of an element with all others before it tells of the element: a small file could
// keep it busy for hours.
bool HasLongTag(std::string_view text) {
  for (std::size_t at = text.find('<'); at < text.size(); at = text.find('<', at)) {
    const std::size_t opaqueEnd = OpaqueEnd(text, at);
    const TTagEnd end = opaqueEnd != at ? TTagEnd{opaqueEnd, 0} : FindTagEnd(text, at);
    if (end.quoted > kMaxAttributes) return true;
    at = end.at;
  }
  return false;
}

// --- What the parser refuses beyond what is not well-formed. The parser's private field points to the reason.
void StopParser(void* context, const std::string& fault) {
  auto* parser = static_cast<xmlParserCtxt*>(context);
  *static_cast<std::string*>(parser->_private) = fault;
  xmlStopParser(parser);
}

void StartDocument(void* context) {
  const auto* parser = static_cast<xmlParserCtxt*>(context);
  const xmlChar* converted = parser->input != nullptr ? parser->input->encoding : nullptr;
  const std::string declared = LowerText(PlainText(converted != nullptr ? converted : parser->encoding));
  const bool known = std::any_of(std::begin(kCharacterSets), std::end(kCharacterSets),
                                 [&](std::string_view name) { return declared.starts_with(name); });
  if (!declared.empty() && !known) return StopParser(context, Format(kCharacterSet, declared));
  xmlSAX2StartDocument(context);
}

// A document type can define entities, and attributes that every element gets: small texts that grow without bound.
void RefuseDocumentType(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
  StopParser(context, kDocumentType);
}

void StartElement(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri, int namespaceCount,
                  const xmlChar** namespaces, int attributeCount, int defaultCount, const xmlChar** attributes) {
  const auto* parser = static_cast<xmlParserCtxt*>(context);
  if (static_cast<std::size_t>(parser->nodeNr) >= kMaxXmlDepth) return StopParser(context, kTooDeep);
  // The library goes through all of them for every name; it keeps two entries for each.
  if (parser->nsNr > 2 * kMaxNamespaces) return StopParser(context, kManyNamespaces);
  xmlSAX2StartElementNs(context, name, prefix, uri, namespaceCount, namespaces, attributeCount, defaultCount,
                        attributes);
}

std::string LibraryFault(xmlParserCtxt& parser) {
  const xmlError* error = xmlCtxtGetLastError(&parser);
  if (error == nullptr || error->message == nullptr) return kBroken;
  return Format("line %d: %s", error->line, TrimView(error->message));
}

// The document, or nullptr and the reason. The library's own limits are lifted, since those of this file are tighter:
// what they guard against are entities. Nothing outside the text is read.
xmlDoc* Parse(std::string_view text, std::string& fault) {
  const TSilence silence;
  const std::unique_ptr<xmlParserCtxt, TFreeParser> parser(&Made(xmlNewParserCtxt()));
  parser->_private = &fault;
  parser->sax->startDocument = StartDocument;
  parser->sax->internalSubset = RefuseDocumentType;
  parser->sax->startElementNs = StartElement;
  xmlDoc* doc = xmlCtxtReadMemory(parser.get(), text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                                  XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE);
  if (doc == nullptr && fault.empty()) fault = LibraryFault(*parser);
  if (doc != nullptr && !fault.empty()) {
    xmlFreeDoc(doc);
    doc = nullptr;
  }
  return doc;
}

bool IsText(const xmlNode* node) {
  return node != nullptr && (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE);
}

std::string NodeText(xmlDoc* doc, xmlNode* node) {
  const std::unique_ptr<xmlBuffer, TFreeBuffer> buffer(&Made(xmlBufferCreate()));
  if (xmlNodeDump(buffer.get(), doc, node, 0, 0) < 0) throw std::bad_alloc();
  return std::string(PlainText(xmlBufferContent(buffer.get())));
}

}  // namespace

void TDom::TFreeDoc::operator()(_xmlDoc* doc) const { xmlFreeDoc(doc); }

bool TDom::Load(std::string_view text) {
  Refuse("");
  // The library takes a zero byte after the root for the end of the text.
  if (text.size() > kMaxXmlSize)
    fault_ = kXmlTooLarge;
  else if (text.find('\0') != std::string_view::npos)
    fault_ = kNulByte;
  else if (HasLongTag(text))
    fault_ = kManyAttributes;
  else
    doc_.reset(Parse(text, fault_));
  return doc_ != nullptr;
}

void TDom::Refuse(std::string fault) {
  doc_.reset();
  fault_ = std::move(fault);
}

TDomNode* TDom::Root() const { return doc_ ? xmlDocGetRootElement(doc_.get()) : nullptr; }

TDomNodes TDom::Select(std::string_view path) const {
  TDomNodes nodes;
  if (path.starts_with('/')) path.remove_prefix(1);
  TStringList steps;
  SplitPlain('/', path, steps);
  TDomNode* root = Root();
  if (root == nullptr || !IsElement(*root, steps.front())) return nodes;
  nodes.push_back(root);
  for (std::size_t i = 1; i < steps.size() && !nodes.empty(); ++i) nodes = ChildElements(nodes, steps[i]);
  return nodes;
}

std::string TDom::Text() const {
  std::string text;
  if (!doc_) return text;
  constexpr int kNoDeclaration = -1;
  if (doc_->standalone != kNoDeclaration) text = kDeclaration;
  for (xmlNode* node = doc_->children; node != nullptr; node = node->next) {
    if (!text.empty()) text += kLineEnd;
    text += NodeText(doc_.get(), node);
  }
  return text;
}

bool IsElement(const TDomNode& node, std::string_view name) {
  return node.type == XML_ELEMENT_NODE && PlainText(node.name) == name;
}

TDomNode* ParentOf(const TDomNode& node) { return node.parent; }

TDomNodes ChildrenOf(const TDomNode& node) {
  TDomNodes children;
  for (xmlNode* child = node.children; child != nullptr; child = child->next) children.push_back(child);
  return children;
}

TDomNodes ChildElements(const TDomNodes& nodes, std::string_view name) {
  TDomNodes found;
  for (const TDomNode* node : nodes) {
    for (xmlNode* child = node->children; child != nullptr; child = child->next)
      if (IsElement(*child, name)) found.push_back(child);
  }
  return found;
}

std::string ValueOf(const TDomNode& node) {
  return std::string(IsText(node.children) ? PlainText(node.children->content) : std::string_view());
}

bool SetValue(TDomNode& node, std::string_view value) {
  xmlNode* first = node.children;
  if (first != nullptr && !IsText(first)) return false;
  xmlNode& text = Made(xmlNewDocTextLen(node.doc, XmlChars(value.data()), static_cast<int>(value.size())));
  if (first == nullptr) {
    xmlAddChild(&node, &text);
  } else {
    xmlReplaceNode(first, &text);
    xmlFreeNode(first);
  }
  return true;
}

TDomNode& AppendElement(TDomNode& parent, const std::string& name) {
  xmlNode& element = Made(xmlNewDocRawNode(parent.doc, nullptr, XmlChars(name.c_str()), nullptr));
  xmlAddChild(&parent, &element);
  return element;
}

void RemoveChildren(TDomNode& node) {
  xmlNode* children = std::exchange(node.children, nullptr);
  node.last = nullptr;
  xmlFreeNodeList(children);
}

bool IsElementName(const std::string& name) {
  return name.find('\0') == std::string::npos && xmlValidateNCName(XmlChars(name.c_str()), 0) == 0;
}

std::string TextFault(std::string_view text) {
  if (text.size() > kMaxXmlSize) return kXmlTooLarge;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t size = CharSize(text, i);
    const std::string_view character = text.substr(i, size);
    if (size == 1 && static_cast<unsigned char>(character[0]) >= 0x80) return Format(kNotUtf8, i + 1);
    if (!IsXmlCharacter(character)) return Format(kNoXmlCharacter, i + 1);
    i += size;
  }
  return "";
}

}  // namespace velmora
