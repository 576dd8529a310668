"""Where a C++ source can be made faulty, and how.

Works on tokens, by the habits of clang-format: a binary operator has white space on both sides, the bracket of a template
has none. What is mistaken for something else does not compile with Fault.h and is left out later. Edits keep lines.
"""

import dataclasses
import re

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      |(?P<raw>R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)")
      |(?P<text>"(?:\\.|[^"\\\n])*"|(?<![0-9a-zA-Z])'(?:\\.|[^'\\\n])*')
      |(?P<directive>^[ \t]*\#(?:\\\n|[^\n])*)
      |(?P<word>[A-Za-z_]\w*)
      |(?P<number>\d(?:'?\w|\.\d)*)
      |(?P<sign><=>|<<=|>>=|\.\.\.|->\*|::|->|\+\+|--|<<|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|\S)""",
    re.VERBOSE | re.DOTALL | re.MULTILINE,
)
SKIPPED = ("comment", "directive")
TURNED = {"<": "Lt", "<=": "Le", ">": "Gt", ">=": "Ge", "==": "Eq", "!=": "Ne"}
OPENING = {"(": ")", "[": "]", "{": "}"}
CLOSING = {close: opening for opening, close in OPENING.items()}
ASSIGNMENTS = {"=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>="}
OPERAND_ENDS = {",", ";", "?", ":", "return", "else", "do"} | ASSIGNMENTS
NO_STATEMENT = {
    *("return", "if", "else", "for", "while", "do", "switch", "case", "default", "break", "continue", "goto", "throw"),
    *("try", "catch", "using", "namespace", "template", "static", "const", "constexpr", "inline", "auto", "class"),
    *("struct", "enum", "public", "private", "protected", "friend", "delete", "static_assert", "extern", "typedef"),
}


@dataclasses.dataclass
class Token:
    kind: str
    text: str
    start: int
    end: int


@dataclasses.dataclass
class Fault:
    file: str
    line: int
    rule: str
    shown: str  # the words of the source that it is about
    # Places and texts with "%d" for the number: what goes in there, or in place of the part.
    edits: list  # of (start, end, text)
    number: int = 0
    place: int = 0  # among those of the file with the same rule and words, from 0


def tokens_of(source):
    found = []
    for match in TOKEN.finditer(source):
        kind = match.lastgroup if match.lastgroup != "mark" else "raw"
        if kind not in SKIPPED:
            found.append(Token(kind, match.group(), match.start(), match.end()))
    return found


class Source:
    def __init__(self, file, text):
        self.file = file
        self.text = text
        self.tokens = tokens_of(text)
        self.partner = self._pair_brackets()
        self.fixed = self._fixed_ranges()

    def faults(self):
        found = []
        for index, token in enumerate(self.tokens):
            if self._is_fixed(token.start):
                continue
            for rule in (self._turned, self._joined, self._constant, self._branch, self._returned, self._statement):
                fault = rule(index, token)
                if fault is not None:
                    found.append(fault)
        return found

    def _pair_brackets(self):
        partner, open_ones = {}, []
        for index, token in enumerate(self.tokens):
            if token.kind != "sign":
                continue
            if token.text in OPENING:
                open_ones.append(index)
            elif token.text in CLOSING and open_ones:
                opening = open_ones.pop()
                partner[opening], partner[index] = index, opening
        return partner

    # What is reckoned when the program is compiled: nothing can be switched there.
    def _fixed_ranges(self):
        ranges = []
        for index, token in enumerate(self.tokens):
            if token.text in ("constexpr", "static_assert", "case", "enum", "template", "using", "requires"):
                ranges.append((token.start, self._end_of_fixed(index)))
        return ranges

    def _end_of_fixed(self, index):
        if self.tokens[index].text == "constexpr" and index > 0 and self.tokens[index - 1].text == "if":
            return self.tokens[self.partner.get(index + 1, index + 1)].end
        while index < len(self.tokens):
            token = self.tokens[index]
            if token.text in (";", ":"):
                break
            if token.text in OPENING and index in self.partner:
                index = self.partner[index]
                if token.text == "{":
                    break
            index += 1
        return self.tokens[min(index, len(self.tokens) - 1)].end

    def _is_fixed(self, place):
        return any(start <= place < end for start, end in self.fixed)

    def _text_at(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def _is_spaced(self, token):
        around = self.text[token.start - 1 : token.start], self.text[token.end : token.end + 1]
        return all(side.isspace() for side in around)

    def _fault(self, rule, first, last, edits):
        line = self.text.count("\n", 0, first) + 1
        return Fault(self.file, line, rule, " ".join(self.text[first:last].split())[:100], edits)

    def _turned(self, index, token):
        if token.kind != "sign" or token.text not in TURNED or not self._is_spaced(token):
            return None
        first, last = self.tokens[max(index - 4, 0)].start, self.tokens[min(index + 4, len(self.tokens) - 1)].end
        edit = f" {TURNED[token.text]}<%d>{{}} {token.text}".replace(" ", " velmora_fault::", 1)
        return self._fault("comparison turned", first, last, [(token.end, token.end, edit)])

    def _joined(self, index, token):
        if token.text not in ("&&", "||") or not self._is_spaced(token):
            return None
        weaker = {"||"} if token.text == "&&" else set()
        begin = self._operand_edge(index - 1, -1, OPERAND_ENDS | weaker)
        end = self._operand_edge(index + 1, 1, OPERAND_ENDS | weaker | {token.text})
        if begin is None or end is None:
            return None
        start, stop = self.tokens[begin].start, self.tokens[end].end
        name = "And" if token.text == "&&" else "Or"
        edits = [
            (start, start, f"velmora_fault::{name}<%d>(bool("),
            (token.start, token.end, "), [&] { return bool("),
            (stop, stop, "); })"),
        ]
        return self._fault("and/or", start, stop, edits)

    # The last token of the operand that `index` belongs to, in this direction.
    def _operand_edge(self, index, step, ends):
        last = None
        skipped, turned_back = (OPENING, CLOSING) if step > 0 else (CLOSING, OPENING)
        while 0 <= index < len(self.tokens):
            text = self.tokens[index].text if self.tokens[index].kind != "text" else ""
            if text in ends or text in turned_back:
                return last
            if text in skipped:
                if index not in self.partner:
                    return None
                index = self.partner[index]
            last = index
            index += step
        return None

    def _constant(self, _index, token):
        if token.kind != "number" or not re.fullmatch(r"\d[\d']*[uUlLzZ]*|0[xX][\da-fA-F']+", token.text):
            return None
        line_start = self.text.rfind("\n", 0, token.start) + 1
        line_end = self.text.find("\n", token.end)
        edits = [(token.start, token.start, "velmora_fault::OffByOne<%d>("), (token.end, token.end, ")")]
        return self._fault("constant off by one", line_start, line_end, edits)

    def _branch(self, index, token):
        if token.text not in ("if", "while") or self._text_at(index + 1) != "(" or index + 1 not in self.partner:
            return None
        close = self.partner[index + 1]
        first = index + 2
        inside = index + 2
        while inside < close:
            text = self.tokens[inside].text
            if text == ";":
                first = inside + 1
            elif text in OPENING and inside in self.partner:
                inside = self.partner[inside]
            inside += 1
        declares = any(self.tokens[i].text == "=" for i in range(first, close))
        if declares or first >= close:
            return None
        start, stop = self.tokens[first].start, self.tokens[close].start
        edits = [(start, start, "velmora_fault::Taken<%d>(bool("), (stop, stop, "))")]
        return self._fault("branch left out", token.start, stop + 1, edits)

    def _returned(self, index, token):
        if token.text != "return" or self._text_at(index + 1) in (";", "{"):
            return None
        end = self._statement_end(index)
        if end is None:
            return None
        start, stop = self.tokens[index + 1].start, self.tokens[end].start
        edits = [(start, start, "velmora_fault::Returned<%d>("), (stop, stop, ")")]
        return self._fault("return value", token.start, stop, edits)

    def _statement_end(self, index):
        while index < len(self.tokens):
            text = self.tokens[index].text
            if text == ";":
                return index
            if text in CLOSING:
                return None
            if text in OPENING:
                if index not in self.partner:
                    return None
                index = self.partner[index]
            index += 1
        return None

    # A call or an assignment that is a statement of its own.
    def _statement(self, index, token):
        begins = self._text_at(index - 1) in (";", "{", "}", ")", "else")
        if not begins or token.kind != "word" or token.text in NO_STATEMENT or not self._is_in_body(index):
            return None
        end = self._statement_end(index)
        if end is None or not self._acts(index, end):
            return None
        start, stop = token.start, self.tokens[end].end
        edits = [(start, start, "{ if (!velmora_fault::Is<%d>()) "), (stop, stop, " }")]
        return self._fault("statement left out", start, stop, edits)

    def _acts(self, index, end):
        words = 0
        while index < end:
            token = self.tokens[index]
            if token.kind == "word":
                words += 1
                if words > 1:  # two words in a row are a declaration
                    return False
            elif token.text in ("(", "["):
                index = self.partner.get(index, end)
                if token.text == "(" and self._text_at(index + 1) == ";":
                    return True
                words = 1
            elif token.text in (".", "->", "::"):
                words = 0
            else:
                return token.text in ASSIGNMENTS or token.text in ("++", "--")
            index += 1
        return False

    # Within the braces of a function: those that a ")" or a word after one (const, override, else) stands before.
    def _is_in_body(self, index):
        depth = 0
        for i in range(index - 1, -1, -1):
            text = self.tokens[i].text
            if text == "}" and i in self.partner:
                depth += 1
            elif text == "{" and i in self.partner:
                if depth == 0:
                    return self._text_at(i - 1) in (")", "const", "override", "else", "do", "try", "noexcept", "mutable")
                depth -= 1
        return False


def apply(text, faults):
    """The text with the edits of all faults. A wider range opens before and ends after a narrower one."""
    pieces = []
    for index, fault in enumerate(faults):
        start = min(edit[0] for edit in fault.edits)
        stop = max(edit[1] for edit in fault.edits)
        for place, end, words in fault.edits:
            opens = place == start and start != stop
            # At one place the ends come first, the narrowest before all; then the beginnings, the widest before all.
            order = (1, -stop, index) if opens else (0, -start, -index)
            pieces.append((place, order, end, words % fault.number if "%d" in words else words))
    pieces.sort(key=lambda piece: piece[:2])
    result, done = [], 0
    for place, _order, end, words in pieces:
        result += [text[done:place], words]
        done = max(done, end, place)
    return "".join(result) + text[done:]
