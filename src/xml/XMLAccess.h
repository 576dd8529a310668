// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The path store: an XML document as a tree of texts addressed by paths like "/root/reference/folder". Task files and
// settings go through it; nothing else touches XML.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "util/Lists.h"

namespace velmora {

class TDom;

// A path is "/" and element names joined by "/"; names compare exactly. The value of an element is the text of its
// first child. Texts are UTF-8. Failures raise EVelmora with a message that begins with the operation's name.
//
// A load never raises for what the text holds. One that is refused leaves the document without a root; the next access
// raises "Document.DocumentElement=nil". Refused are texts that are not well-formed, not in the character set that they
// declare (UTF-8, ISO 8859 or a Windows-125x one; UTF-8 by default), over 16 MB, deeper than 256 elements, with more
// than 256 attributes in one element, with a document type or entities of their own. Nothing but the text or the file
// itself is ever read.
//
// Values that XML cannot hold (control characters but tab, CR and LF; what is no UTF-8) and names that are no element
// names are refused, with the path in the message, before anything is changed.
class TXMLAccess {
 public:
  TXMLAccess();  // an empty element "root"
  ~TXMLAccess();
  TXMLAccess(const TXMLAccess&) = delete;
  TXMLAccess& operator=(const TXMLAccess&) = delete;

  // --- The whole document
  // With `mapEntities` the letters of the entity table, and then every "&", are put into the text as entity texts.
  void xmlLoadText(const std::string& text, bool mapEntities);
  // Raises `xmlLoad: file "%s" does not exist!`, and "Cannot read %s: %s", which leaves no root.
  void xmlLoad(const std::string& fileName);
  // Replaces the file in one step. False, with the old file whole, when it cannot be written or there is no root.
  bool xmlSave(const std::string& fileName) const;
  // The declaration, if there is one, and the top-level nodes, joined by CR LF; empty without a root. A load of it
  // gives the same values, white space included.
  std::string xmlGetText() const;
  // Why the last load was refused, with the line where there is one; empty when it was not.
  const std::string& LoadFault() const;

  // --- Single values
  // Raises when the path gives no element or more than one. An element without content gives "".
  std::string xmlGetVal(std::string_view path) const;
  // Creates the path, and the root where there is none. Raises when the path gives more than one element.
  void xmlSetVal(std::string_view path, std::string_view value);
  void xmlSetInt(std::string_view path, std::int64_t value);
  void xmlSetBool(std::string_view path, bool value);  // "Y" or "N"
  // Creates the elements that are missing. Below a root of another name it creates nothing.
  void xmlCreatePath(std::string_view path);

  // --- Lists: lines of values, columns of names, both separated by ";". A ";" inside a value acts as a separator.
  // Fills the list with one line per element at the path; none gives an empty list. A column is the name of a child,
  // with one "\" in front for each level that its parent stands above the element.
  void xmlGetList(std::string_view path, std::string_view columns, TStringList& list) const;
  // Replaces the children of the first element at the path by one element `item` per line, with a child per column.
  // Surplus values of a line are dropped; too few raise EListError. A failure leaves the document as it was.
  void xmlSetList(std::string_view path, std::string_view item, const TStringList& list, std::string_view columns);

 private:
  std::unique_ptr<TDom> dom_;
};

// --- The shared document: settings at start and close, task files in between, so every user first resets or loads it.
// Not for several threads. Keys are paths below "/root/".
TXMLAccess& SharedDocument();

std::string cfgGetStr(std::string_view key);
bool cfgGetBool(std::string_view key);         // true for "Y" alone
std::int32_t cfgGetInt(std::string_view key);  // raises EConvertError
void cfgSetStr(std::string_view key, std::string_view value);
void cfgSetBool(std::string_view key, bool value);
void cfgSetInt(std::string_view key, std::int64_t value);
void cfgGetList(std::string_view key, std::string_view columns, TStringList& list);
// The key is parent/item; without a "/" it raises "Nothing to StrChop!". Creates the parent.
void cfgSetList(std::string_view key, const TStringList& list, std::string_view columns);

void cfgReset();  // an empty element "root"
void cfgLoadText(const std::string& text);
std::string cfgText();
void cfgLoad(const std::string& fileName);
bool cfgSave(const std::string& fileName);

}  // namespace velmora
