// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The document model below the path store: what the store needs of an XML library, and the only files that know it.

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// The library's own names for its types; its headers stay out of this one.
struct _xmlDoc;   // NOLINT(bugprone-reserved-identifier)
struct _xmlNode;  // NOLINT(bugprone-reserved-identifier)

namespace velmora {

using TDomNode = _xmlNode;  // belongs to its document
using TDomNodes = std::vector<TDomNode*>;

inline constexpr std::size_t kMaxXmlSize = 16U << 20U;  // bytes of a document, and of a value
inline constexpr char kXmlTooLarge[] = "it is larger than 16 MB";
inline constexpr std::size_t kMaxXmlDepth = 256;  // elements inside each other

// One document. Without one all reads give nothing.
class TDom {
 public:
  // Replaces the document. False when the text is refused; there is no document then, and Fault() tells why.
  bool Load(std::string_view text);
  void Refuse(std::string fault);  // ends up like a load that was refused
  const std::string& Fault() const { return fault_; }

  TDomNode* Root() const;                         // nullptr without a document
  TDomNodes Select(std::string_view path) const;  // elements at a path of child steps, in document order
  // Declaration and top-level nodes, joined by CR LF; UTF-8.
  std::string Text() const;

 private:
  struct TFreeDoc {
    void operator()(_xmlDoc* doc) const;
  };
  std::unique_ptr<_xmlDoc, TFreeDoc> doc_;
  std::string fault_;
};

bool IsElement(const TDomNode& node, std::string_view name);
TDomNode* ParentOf(const TDomNode& node);  // of the root it is the document itself, of that nullptr
TDomNodes ChildrenOf(const TDomNode& node);
TDomNodes ChildElements(const TDomNodes& nodes, std::string_view name);

// The text of the first child; empty when there is none, or when it is no text.
std::string ValueOf(const TDomNode& node);
// Overwrites the text of the first child, or makes one. False, and nothing changed, when the first child is no text.
bool SetValue(TDomNode& node, std::string_view value);
TDomNode& AppendElement(TDomNode& parent, const std::string& name);
void RemoveChildren(TDomNode& node);

bool IsElementName(const std::string& name);
// Why XML cannot hold the text, for use after "the value of ..."; empty when it can.
std::string TextFault(std::string_view text);

}  // namespace velmora
