// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/CanonicalForm.h"

#include <algorithm>
#include <optional>

#include "exact/compare/ExpressionForm.h"
#include "exact/compare/ServerDefaults.h"
#include "mysqltext/Charsets.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/TableOptions.h"
#include "util/Text.h"

namespace velmora {

namespace {

TCanonicalToken WordToken(std::string_view text) { return {EToken::Word, LowerText(text)}; }

TCanonicalToken Canonical(const TToken& token) {
  switch (token.kind) {
    case EToken::Name:
      return WordToken(NameOf(token));
    case EToken::String:
      return {EToken::String, LowerText(PrefixOf(token)) + "'" + ValueOf(token)};
    case EToken::Symbol:
      return {EToken::Symbol, std::string(token.text)};
    default:
      return {token.kind, LowerText(token.text)};
  }
}

TCanonicalTokens Canonical(TTokens tokens, TTokenRange range) {
  TCanonicalTokens result;
  result.reserve(range.last - range.first);
  for (std::size_t at = range.first; at < range.last; ++at) result.push_back(Canonical(tokens[at]));
  return result;
}

// How many pairs of brackets stand around the whole.
std::size_t OuterBrackets(TTokens tokens, TTokenRange range) {
  std::size_t opening = range.first;
  while (opening < range.last && tokens[opening].Is("(")) ++opening;
  std::size_t closing = range.last;
  while (closing > opening && tokens[closing - 1].Is(")")) --closing;
  std::size_t depth = opening - range.first;
  std::size_t result = std::min(depth, range.last - closing);
  for (std::size_t at = opening; at < closing; ++at) {
    if (tokens[at].Is("(")) ++depth;
    if (tokens[at].Is(")") && depth > 0) --depth;
    result = std::min(result, depth);
  }
  return result;
}

// "_latin1'x'" as "_utf8'x'": when a table changes, MySQL prints texts of its checks in the character set of the
// columns that they are compared with.
void ForgetIntroducer(TCanonicalToken& token) {
  if (token.kind != EToken::String || !token.text.starts_with("_") || token.text.starts_with("_binary")) return;
  const std::size_t quote = token.text.find('\'');
  const auto letters = LettersOf(token.text.substr(quote + 1), CharsetName(token.text.substr(1, quote - 1)));
  if (letters) token.text = "_utf8'" + *letters;
}

// A set and the bytes after it (_latin1 x'e9') as one text.
void JoinIntroducers(TCanonicalTokens& tokens) {
  for (std::size_t at = 0; at + 1 < tokens.size(); ++at) {
    TCanonicalToken& value = tokens[at + 1];
    if (tokens[at].kind != EToken::Word || !tokens[at].text.starts_with("_")) continue;
    if (value.kind != EToken::String || !value.text.starts_with("x'")) continue;
    value.text = tokens[at].text + "'" + BytesOf(value.text.substr(2), 4);
    tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(at));
  }
}

// Without brackets around the whole: servers differ in how many they print.
TCanonicalTokens Expression(TTokens tokens, TTokenRange range) {
  const std::size_t outer = OuterBrackets(tokens, range);
  TCanonicalTokens result = Canonical(tokens, {range.first + outer, range.last - outer});
  JoinIntroducers(result);
  for (TCanonicalToken& token : result) ForgetIntroducer(token);
  return result;
}

// --- Columns

TCanonicalTokens Numbers(std::string_view first, std::string_view second = "") {
  TCanonicalTokens result = {{EToken::Number, std::string(first)}};
  if (second.empty()) return result;
  result.push_back({EToken::Symbol, ","});
  result.push_back({EToken::Number, std::string(second)});
  return result;
}

// What servers complete by themselves: decimal is decimal(10,0), char is char(1), datetime(0) is datetime.
void CompleteArguments(const TColumnParts& parts, TCanonicalTokens& arguments) {
  if (parts.is_boolean) arguments = Numbers("1");
  if (parts.type == "decimal" && arguments.size() < 2)
    arguments = Numbers(arguments.empty() ? "10" : arguments[0].text, "0");
  if (arguments.empty() && InList(parts.type, {"char", "binary", "bit"})) arguments = Numbers("1");
  if (IsTimeType(parts.type) && arguments.size() == 1 && arguments[0].text == "0") arguments.clear();
}

// Of columns with letters. Expressions are printed whole.
void MarkAsPrinted(TCanonicalTokens& values) {
  for (TCanonicalToken& value : values)
    if (value.kind == EToken::String) value.printed = true;
}

// A default in hexadecimal or as bits as the text that it is: servers print bytes and letters in one way or another.
void SpellOut(const TCharset& charset, TCanonicalTokens& value) {
  if (value.size() != 1) return;
  TCanonicalToken& token = value[0];
  const std::string_view text = token.text;
  const bool number = token.kind == EToken::Number;
  const bool hex = text.starts_with(number ? "0x" : "x'");
  if (!hex && !text.starts_with(number ? "0b" : "b'")) return;
  std::string bytes = BytesOf(text.substr(2), hex ? 4 : 1);
  token = {EToken::String, "'" + LettersOf(bytes, charset.charset).value_or(bytes)};
}

// A column without "not null" may be null and has the default null, whether its text says so or not. Only of a
// timestamp a text that is silent may mean something else.
void AddNullAndDefault(TTokens tokens, const TColumnParts& parts, TCanonicalForm& form) {
  const std::optional<TTokenRange>& value = parts.default_value;
  const bool null_default = value && value->last - value->first == 1 && IsKeyword(tokens[value->first], "null");
  if (value && !null_default) form[ESlot::Default] = Expression(tokens, *value);
  if (parts.not_null)
    form[ESlot::Null] = {WordToken("not null")};
  else if (parts.type == "timestamp" && (parts.null || null_default))
    form[ESlot::Null] = {WordToken("null")};
}

void AddFlags(const TColumnParts& parts, TCanonicalForm& form) {
  if (parts.is_unsigned) form[ESlot::Sign].push_back(WordToken("unsigned"));
  if (parts.zerofill) form[ESlot::Sign].push_back(WordToken("zerofill"));
  if (parts.auto_increment) form[ESlot::Flags].push_back(WordToken("auto_increment"));
  if (parts.invisible) form[ESlot::Flags].push_back(WordToken("invisible"));
}

void AddComment(const TToken& token, TCanonicalForm& form) {
  TCanonicalToken comment = {EToken::String, ValueOf(token), true};
  if (!comment.text.empty()) form[ESlot::Comment] = {std::move(comment)};
}

void AddColumn(const TElementText& text, TCanonicalForm& form) {
  const TTokens tokens = text.Tokens();
  const TColumnParts& parts = text.Column();
  form.type = parts.type;
  form[ESlot::Type] = {{EToken::Word, parts.type}};
  form[ESlot::Arguments] = Canonical(tokens, parts.arguments);
  CompleteArguments(parts, form[ESlot::Arguments]);
  AddFlags(parts, form);
  AddNullAndDefault(tokens, parts, form);
  if (parts.on_update) form[ESlot::OnUpdate] = Expression(tokens, *parts.on_update);
  if (parts.check) form[ESlot::Check] = Expression(tokens, *parts.check);
  if (parts.comment) AddComment(tokens[*parts.comment], form);
  if (parts.generated) {
    form[ESlot::Generated] = Expression(tokens, *parts.generated);
    form[ESlot::Flags].push_back(WordToken(parts.stored ? "stored" : "virtual"));
  }
  for (const TTokenRange& range : parts.rest)
    for (TCanonicalToken& token : Canonical(tokens, range)) form[ESlot::Rest].push_back(std::move(token));

  form.own = {parts.charset, parts.collation};
  if (IsByteType(parts.type)) SpellOut({}, form[ESlot::Default]);
  if (!IsLetterType(parts.type)) return;
  const bool named = form.own != TCharset();
  form.effective = named ? NamedCharset(parts.charset, parts.collation) : form.table;
  SpellOut(form.effective, form[ESlot::Default]);
  MarkAsPrinted(form[ESlot::Arguments]);
  if (form[ESlot::Default].size() == 1) MarkAsPrinted(form[ESlot::Default]);
}

// --- Keys

TCanonicalTokens KeyParts(TTokens tokens, std::size_t open) {
  TCanonicalTokens result;
  for (TTokenRange part : ListParts(tokens, open)) {
    if (part.last > part.first + 1 && IsKeyword(tokens[part.last - 1], "asc")) --part.last;
    for (TCanonicalToken& token : Canonical(tokens, part)) result.push_back(std::move(token));
    result.push_back({EToken::Symbol, ","});
  }
  return result;
}

// One attribute of a key as one text, without "=".
TCanonicalToken KeyAttribute(TTokens tokens, std::size_t& at) {
  std::size_t words = 1;
  if (IsKeyword(tokens[at], "with")) words = 3;  // with parser p
  if (TokenAt(tokens, at + 1).Is("=")) words = 3;
  TCanonicalToken result;
  for (const std::size_t last = std::min(at + words, tokens.size()); at < last; ++at)
    if (!tokens[at].Is("=")) result.text += Canonical(tokens[at]).text + " ";
  return result;
}

bool SkipsWhatIsUsual(TTokens tokens, std::size_t& at) {
  if (IsKeyword(tokens[at], "visible")) return ++at, true;
  if (!IsKeyword(tokens[at], "not") || !IsKeyword(TokenAt(tokens, at + 1), "ignored")) return false;
  at += 2;
  return true;
}

// Reads "word value" or "word=value"; null for what is something else.
const TToken* TakeValue(TTokens tokens, std::string_view word, std::size_t& at) {
  if (!IsKeyword(tokens[at], word)) return nullptr;
  const std::size_t value = TokenAt(tokens, at + 1).Is("=") ? at + 2 : at + 1;
  if (value >= tokens.size()) return nullptr;
  at = value + 1;
  return &tokens[value];
}

void AddKey(TTokens tokens, std::size_t body, TCanonicalForm& form) {
  for (std::size_t at = body; at < tokens.size();) {
    if (tokens[at].Is("(")) {
      form[ESlot::Columns] = KeyParts(tokens, at);
      at = AfterGroup(tokens, at);
    } else if (const TToken* method = TakeValue(tokens, "using", at)) {
      form[ESlot::Using] = {WordToken(method->text)};
    } else if (const TToken* old_method = TakeValue(tokens, "type", at)) {
      form[ESlot::Using] = {WordToken(old_method->text)};
    } else if (const TToken* size = TakeValue(tokens, "key_block_size", at)) {
      form[ESlot::KeyBlockSize] = {Canonical(*size)};
    } else if (const TToken* comment = TakeValue(tokens, "comment", at)) {
      AddComment(*comment, form);
    } else if (!SkipsWhatIsUsual(tokens, at)) {
      form[ESlot::Rest].push_back(KeyAttribute(tokens, at));
    }
  }
  std::sort(form[ESlot::Rest].begin(), form[ESlot::Rest].end(),
            [](const TCanonicalToken& a, const TCanonicalToken& b) { return a.text < b.text; });
}

// A key has the block size of its table unless it names one. Servers print it only where it differs from the table's,
// and keep it when the table's changes.
void CompleteBlockSize(const TInheritance& table, TCanonicalForm& form) {
  TCanonicalTokens& size = form[ESlot::KeyBlockSize];
  if (size.empty() && !table.key_block_size.empty()) size = {{EToken::Number, table.key_block_size}};
  if (!size.empty() && size[0].text == "0") size.clear();
}

// --- Constraints

// Case counts in names of databases and tables, not in those of columns.
void AddReferences(const TForeignKeyParts& parts, TCanonicalForm& form) {
  for (const std::string& column : parts.columns) form[ESlot::Columns].push_back(WordToken(column));
  form[ESlot::References] = {{EToken::Name, parts.database}, {EToken::Name, parts.table}};
  for (const std::string& column : parts.references) form[ESlot::References].push_back(WordToken(column));
}

void AddForeignKey(const TElementText& text, TCanonicalForm& form) {
  const TTokens tokens = text.Tokens();
  AddReferences(text.ForeignKey(), form);
  for (std::size_t at = text.ForeignKey().rules; at < tokens.size();) {
    const bool rule = IsKeyword(tokens[at], "on");
    const bool update = rule && IsKeyword(TokenAt(tokens, at + 1), "update");
    if (rule) at = std::min(at + 2, tokens.size());
    TCanonicalTokens& slot = form[update ? ESlot::UpdateRule : rule ? ESlot::DeleteRule : ESlot::Rest];
    for (bool first = true; at < tokens.size() && (first || !IsKeyword(tokens[at], "on")); first = false)
      slot.push_back(Canonical(tokens[at++]));
  }
}

void AddCheck(TTokens tokens, std::size_t body, TCanonicalForm& form) {
  const std::size_t after = std::min(AfterGroup(tokens, body), tokens.size());
  form[ESlot::Check] = Expression(tokens, {std::min(body, after), after});
  form[ESlot::Rest] = Canonical(tokens, {after, tokens.size()});
  if (form[ESlot::Rest] == TCanonicalTokens{WordToken("enforced")}) form[ESlot::Rest].clear();
}

bool IsEngineWord(const TToken& token) { return IsKeyword(token, "engine"); }

// What partitions are chosen by, in brackets at `at`; products print it in spellings of their own.
bool AddPartitionExpression(TTokens tokens, std::size_t& at, TCanonicalTokens& result) {
  const TToken& kind = TokenAt(tokens, at - 1);
  if (!tokens[at].Is("(") || !(kind.Is("hash") || kind.Is("range") || kind.Is("list"))) return false;
  const std::size_t after = AfterGroup(tokens, at);
  const auto form = ReadExpressionForm(tokens.subspan(at, after - at));
  if (form) result.push_back({EToken::Word, form->text});
  if (form) at = after - 1;
  return form.has_value();
}

}  // namespace

std::string EngineOf(const TTableText& table) {
  const TTableOption* option = table.FindOption("ENGINE");
  if (option == nullptr) return "";
  std::string engine = LowerText(OptionValue(*option));
  return engine == "heap" ? "memory" : engine;
}

TCanonicalForm CanonicalForm(const TElement& element, const TInheritance& table) {
  TCanonicalForm form;
  form.name = element.name;
  const TTokens tokens = element.text.Tokens();
  const std::size_t body = element.text.Body();
  switch (element.kind) {
    case EElement::Column:
      form.table = table.charset;
      AddColumn(element.text, form);
      break;
    case EElement::ForeignKey:
      AddForeignKey(element.text, form);
      break;
    case EElement::Check:
      AddCheck(tokens, body, form);
      break;
    case EElement::Period:
    case EElement::Other:
      form[ESlot::Rest] = Canonical(tokens, {body, tokens.size()});
      break;
    default:
      form.btree_is_own = table.btree_is_own;
      if (!tokens.empty() && IsKeyword(tokens[0], "vector")) form[ESlot::Type] = {WordToken("vector")};
      AddKey(tokens, body, form);
      CompleteBlockSize(table, form);
  }
  return form;
}

TCanonicalTokens CanonicalPartitioning(const TTableText& table) {
  const std::vector<TToken> tokens = Tokens(table.partitioning);
  const std::string engine = EngineOf(table);
  TCanonicalTokens result;
  for (std::size_t at = 0; at + 1 < tokens.size(); ++at) {
    if (tokens[at].Is("=")) continue;
    if (at > 0 && AddPartitionExpression(tokens, at, result)) continue;
    const std::size_t value = TokenAt(tokens, at + 1).Is("=") ? at + 2 : at + 1;
    // The engine of a partition is that of its table.
    if (IsEngineWord(tokens[at]) && SameText(TokenAt(tokens, value).text, engine)) {
      if (!result.empty() && result.back().text == "storage") result.pop_back();
      at = value;
      continue;
    }
    const bool maximum =
        tokens[at].Is("(") && TokenAt(tokens, at + 1).Is("maxvalue") && TokenAt(tokens, at + 2).Is(")");
    if (maximum) ++at;
    const bool comment = !result.empty() && result.back().text == "comment";
    result.push_back(Canonical(tokens[at]));
    if (comment) result.back().printed = true;
    if (maximum) ++at;
  }
  return result;
}

}  // namespace velmora
