"""Reads a header as items: declarations, scopes, comments and empty lines."""
import re

# Annotations that say nothing to the reader of a reference.
ATTRIBUTES = re.compile(r"\[\[.*?\]\]|__attribute__\(\(.*?\)\)|\bNK_(?:EXPORT|NO_PLT|SCOPED_CAPABILITY)\b|"
                        r"\bNK_(?:GUARDED_BY|PT_GUARDED_BY|ACQUIRE|RELEASE|TRY_ACQUIRE|REQUIRES|EXCLUDES|CAPABILITY|"
                        r"ASSERT_CAPABILITY|RETURN_CAPABILITY|THREAD_ANNOTATION)\((?:[^()]|\([^()]*\))*\)")


class Item:
    """A declaration, a scope with its items, an access label, an empty line or a comment."""

    def __init__(self, kind, text="", items=None, doc=None):
        self.kind, self.text, self.items, self.doc = kind, text, items, doc


class Reader:
    """Splits a header into items. Understands the C++ that clang-format lays out, not every C++."""

    def __init__(self, text):
        self.text, self.at = text, 0

    def skip_quoted(self):
        quote = self.text[self.at]
        self.at += 1
        while self.text[self.at] != quote:
            self.at += 2 if self.text[self.at] == "\\" else 1
        self.at += 1

    def skip_one(self):
        """Skips a character, a literal or a comment."""
        text = self.text
        if text.startswith("//", self.at):
            self.at = text.index("\n", self.at)
        elif text[self.at] == '"' or (text[self.at] == "'" and not (text[self.at - 1].isalnum())):
            self.skip_quoted()
        else:
            self.at += 1

    def skip_braces(self, opening="{", closing="}"):
        """From an opening bracket to the character after its closing one."""
        depth = 0
        while True:
            character = self.text[self.at]
            depth += (character == opening) - (character == closing)
            self.skip_one()
            if depth == 0:
                return

    def read(self):
        """The items up to the end of the scope; the closing brace is skipped."""
        items = []
        while self.at < len(self.text):
            rest = self.text[self.at:]
            if rest[0].isspace():
                space = re.match(r"\s+", rest).group()
                if space.count("\n") > 1:
                    items.append(Item("empty"))
                self.at += len(space)
            elif rest[0] == "}":
                self.at += 1
                return items
            elif rest.startswith("//"):
                self.read_comment(items)
            elif re.match(r"(?:NK_CODING|Q_OBJECT|QT_BEGIN_NAMESPACE|QT_END_NAMESPACE)\b", rest):
                self.at += len(re.match(r"\w+", rest).group())
            elif rest.startswith("Q_SIGNALS:"):
                self.at += len("Q_SIGNALS:")
                items += [Item("access", "public"), Item("comment", "//", [" Signals:"])]
            elif rest[0] == ";":
                self.at += 1
            else:
                items.append(self.read_item(rest))
        return items

    def read_item(self, rest):
        directive = re.match(r"#(?:[^\n\\]|\\\n|\\.)*", rest)
        if directive:
            self.at += directive.end()
            return Item("directive", directive.group())
        access = re.match(r"(public|protected|private)(?: Q_SLOTS)?:", rest)
        if access:
            self.at += access.end()
            return Item("access", access.group(1))
        statement = re.match(r"(?:NK_(?!EXPORT|NO_PLT)|Q_)\w+\(", rest)
        if statement:
            begin = self.at
            self.at += statement.end() - 1
            self.skip_braces("(", ")")
            return Item("statement", self.text[begin:self.at])
        return self.read_declaration()

    def read_comment(self, items):
        """A comment line: a part of the comment before it, or the text of the declaration before it on its line."""
        marker = re.match(r"///<|///|//", self.text[self.at:self.at + 4]).group()
        line_begin, line_end = self.text.rfind("\n", 0, self.at) + 1, self.text.index("\n", self.at)
        is_trailing = marker == "///<" or not self.text[line_begin:self.at].isspace() and line_begin != self.at
        line = self.text[self.at + len(marker):line_end]
        self.at = line_end
        line = re.sub(r" *(?:NOLINT|clang-format).*", "", line)
        if is_trailing:
            item = next((each for each in reversed(items) if each.kind != "empty"), None)
            # Behind a function a plain comment explains its code.
            is_text = marker == "///<" or (item and not (item.kind == "declaration" and "(" in item.text))
            if item and line and is_text and item.kind in ("declaration", "enumerator", "statement"):
                item.doc = (item.doc or []) + [line]
        elif items and items[-1].kind == "comment" and items[-1].text == marker:
            items[-1].items.append(line)
        else:
            items.append(Item("comment", marker, [line]))

    def read_declaration(self):
        begin = self.at
        parentheses = 0
        while True:
            character = self.text[self.at]
            if character == ";" and parentheses == 0:
                self.at += 1
                return Item("declaration", self.text[begin:self.at - 1])
            if character == "{":
                head = self.text[begin:self.at]
                if parentheses == 0 and not re.search(r"\brequires\s*(\([^()]*\)\s*)?$", head):
                    item = self.read_braces(head)
                    if item:
                        return item
                else:
                    self.skip_braces()
                continue
            parentheses += (character == "(") - (character == ")")
            self.skip_one()

    def read_braces(self, head):
        """What begins at a brace after `head`; nothing if the braces are a part of the declaration."""
        plain = clean(head)
        bare = without_template(plain)
        if re.match(r"(?:inline )?namespace\b|extern \"C\"", bare):
            self.at += 1
            return Item("namespace", bare, self.read())
        name = re.sub(r"<.*>", "", bare).split(":")[0]
        if re.match(r"(?:friend )?(?:class|struct|union)\b", bare) and "(" not in name:
            self.at += 1
            items = self.read()
            self.at = self.text.index(";", self.at) + 1
            return Item("class", plain, items)
        if bare.startswith("enum"):
            self.at += 1
            items = self.read_enumerators()
            self.at = self.text.index(";", self.at) + 1
            return Item("enum", plain, items)
        is_initializer = "(" not in bare or re.search(r"\)\s*(?:noexcept )?:.*[\w>]$", bare)
        self.skip_braces()
        if bare.startswith("concept") or is_initializer or is_assigned(bare):
            return None
        return Item("declaration", head)

    def read_enumerators(self):
        items, begin = [], None
        depth = 0
        while True:
            character = self.text[self.at]
            if self.text.startswith("//", self.at):
                if begin is not None and self.text[begin:self.at].strip():
                    items.append(Item("enumerator", clean(self.text[begin:self.at])))
                begin = None
                self.read_comment(items)
                continue
            if depth == 0 and character in ",}":
                if begin is not None and self.text[begin:self.at].strip():
                    items.append(Item("enumerator", clean(self.text[begin:self.at])))
                begin = None
                self.at += 1
                if character == "}":
                    return items
                continue
            if begin is None and not character.isspace():
                begin = self.at
            depth += (character in "({") - (character in ")}")
            self.skip_one()


def clean(text):
    """A declaration on one line, without comments and attributes."""
    text = re.sub(r'("(?:[^"\\]|\\.)*")|//[^\n]*', lambda found: found.group(1) or "", text)
    text = ATTRIBUTES.sub("", text)
    text = re.sub(r"\s+", " ", text).strip().replace("( ", "(")
    return re.sub(r"^__extension__ ", "", text)


def is_assigned(text):
    """True if the declaration has a "=" outside of parentheses that is no part of an operator's name."""
    return bool(re.search(r"(?<![=!<>])=(?!=)", re.sub(r"operator\S+|\([^()]*(\([^()]*\)[^()]*)*\)", "", text)))


def matching(text, begin, opening, closing):
    """The place of the bracket that closes the one at `begin`."""
    depth = 0
    for at in range(begin, len(text)):
        depth += (text[at] == opening) - (text[at] == closing)
        if depth == 0:
            return at
    raise ValueError(f"no {closing} in: {text}")


def without_template(text):
    """Without leading `template <...>` and `requires ...`."""
    while text.startswith("template"):
        text = text[matching(text, text.index("<"), "<", ">") + 1:].strip()
    if text.startswith("requires("):
        text = text[matching(text, 8, "(", ")") + 1:].strip()
    return re.sub(r"^requires\b.*?(?=\b(?:struct|class)\b)", "", text)


def prototype(text):
    """A function's declaration without its list of initializers, `inline` and `extern`."""
    bare = without_template(text)
    template = text[:len(text) - len(bare)]
    begin = bare.find("(")
    if begin < 0 or re.match(r"using\b|typedef\b|concept\b", bare):
        return text
    if re.search(r"operator$", bare[:begin]):  # operator()
        begin = bare.index("(", begin + 2)
    end = matching(bare, begin, "(", ")")
    rest = bare[end + 1:]
    rest = re.sub(r"(?<!:):(?!:).*$", "", rest)  # the list of initializers
    bare = re.sub(r"\b(?:inline|extern) ", "", bare[:end + 1]) + rest.rstrip()
    return template + bare


def declarators(text):
    """`int a = 1, b = 2` as two declarations."""
    parts = split_arguments(text)
    if len(parts) == 1 or not all(re.match(r"\*?\w+(?: = .*|\{.*\})?$", each) for each in parts[1:]):
        return [text]
    kind = re.match(r"(.*?)\*?\w+(?: = .*|\{.*\})?$", parts[0]).group(1)
    return [parts[0]] + [kind + each for each in parts[1:]]


def split_arguments(text):
    """The arguments of a macro or the bases of a class, split at commas outside of brackets."""
    parts, depth, part = [], 0, ""
    for character in text:
        depth += (character in "(<[{") - (character in ")>]}")
        if character == "," and depth == 0:
            parts.append(part.strip())
            part = ""
        else:
            part += character
    return [each for each in parts + [part.strip()] if each]
