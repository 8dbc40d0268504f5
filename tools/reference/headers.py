"""Turns a public header into what Doxygen reads for the reference.

A header has ordinary comments: the subject and an example at its head, and a sentence before a declaration where its
name is not enough. From these come Doxygen's comments, so that headers need no commands of Doxygen:

- The head becomes the text of a topic with the name of the file, which contains all that the header declares. Lines
  that are indented by three spaces or more are an example; "Threads: ..." begins a titled paragraph.
- A plain comment before declarations is the heading of these declarations, up to the next empty line.
- A documentation comment (///) is the text of its declaration.

The result has only what a user can call: no function bodies, no private members, no namespace detail, no attributes. A
property (NK_PROPERTY and its relatives) becomes its accessors. The order and the paragraphs of the header are kept.

A function, a variable, an alias or an enumeration may have no text, because its name can say everything. A class and a
concept must have one; the subject of the header is enough for the class of that name. A macro without one is not part
of the reference.
"""
import os
import re
import sys
from typing import NamedTuple, Optional

from comments import BLANK, blocks, brief, comment, ordinary, sentence, spelled, words, written
from declarations import Item, Reader, clean, declarators, is_assigned, prototype, split_arguments, without_template

# The statements of a class that declare nothing by themselves: the user writes the function or the accessors.
STATEMENTS = ("NK_METHOD", "NK_METHOD_AS", "NK_CLASS_METHOD", "NK_CLASS_METHOD_AS", "NK_AFFECTED_BY", "NK_CLASS_NAME",
              "NK_COMPUTED_PROPERTY", "NK_COMPUTED_PROPERTY_WITH_SETTER", "NK_CATEGORY_PROPERTY",
              "NK_CATEGORY_READONLY_PROPERTY", "NK_DECODED_BY", "NK_STORED_PROPERTY", "Q_PROPERTY")

# Headers that declare nothing for users, and that other texts mention for what they say.
TEXTS = ("NorvikCore/platform/values/FormatDirective.h",)


class Declared(NamedTuple):
    """A declaration for the reference. The kinds "open" and "close" begin and end a namespace within norvik."""
    kind: str
    text: str
    doc: Optional[list] = None
    item: Optional[Item] = None


class Paragraph:
    """Declarations without an empty line between them, with the comment before them."""

    def __init__(self, access, heading=None):
        self.access, self.heading, self.declared = access, heading, []

    def runs(self):
        """The declarations in runs of one kind."""
        found = []
        for each in self.declared:
            if found and found[-1][0].kind == each.kind:
                found[-1].append(each)
            else:
                found.append([each])
        return found


class Selection:
    """The paragraphs of a scope with all that a user can name in it. `scope` is the class, or None."""

    def __init__(self, page, items, access, scope):
        self.page, self.access, self.scope = page, access, scope
        self.doc = None
        self.paragraphs = [Paragraph(access)]
        self.select(items)
        self.paragraphs = [each for each in self.paragraphs if each.declared]

    def begin_paragraph(self, heading=None):
        if not self.paragraphs[-1].declared:
            self.paragraphs.pop()
        self.paragraphs.append(Paragraph(self.access, heading))

    def add(self, kind, text, item=None):
        trailing = item.doc if item and item.doc else []
        self.paragraphs[-1].declared.append(Declared(kind, text, (self.doc or []) + trailing or None, item))

    def select(self, items):
        for item in items:
            if item.kind == "comment" and item.text == "///":
                self.doc = item.items
                continue
            if item.kind == "comment":
                if self.access != "private":
                    self.begin_paragraph(item.items)
                continue
            getattr(self, "select_" + item.kind)(item)
            self.doc = None

    def select_empty(self, _):
        self.begin_paragraph()

    def select_access(self, item):
        self.access = item.text
        self.begin_paragraph()

    def select_directive(self, item):
        define = re.match(r"#define (\w+(?:\([^)]*\))?)", item.text)
        if define and self.doc:
            self.add("macro", define.group(1))

    def select_namespace(self, item):
        names = [name for name in re.findall(r"[\w:]+", item.text) if name not in ("inline", "namespace")]
        if not names or "detail" in names[0] or names[0] in ("std", "fmt"):
            return
        inner = "" if names[0] in ("norvik", "literals") else names[0].replace("norvik::", "")
        if inner:
            self.begin_paragraph()
            self.add("open", inner)
        self.select(item.items)
        if inner:
            self.begin_paragraph()
            self.add("close", inner)
            self.begin_paragraph()

    def select_statement(self, item):
        name, arguments = re.match(r"(\w+)\((.*)\)$", item.text, re.S).groups()
        if name == "NK_OBJECT":
            self.access = "public"
            self.begin_paragraph()
        elif self.access != "private":
            for text in accessors(name, split_arguments(arguments)):
                self.add("function", text, item)
                self.doc = item.doc = None  # the setter does not repeat the text of the property

    def select_class(self, item):
        if self.access != "private" and not item.text.startswith("friend") and not self.is_left_out(item.text):
            self.add("class", item.text, item)

    def select_enum(self, item):
        if self.access != "private":
            self.add("enum", item.text, item)

    def select_declaration(self, item):
        if self.access == "private":
            return
        text = clean(item.text)
        kind = None if self.is_for_the_library(text) else self.kind_of(text)
        if kind == "forward":
            if self.doc:
                self.page.forward_docs[re.search(r"(\w+)$", text).group(1)] = self.doc
        elif kind == "variable":
            for each in declarators(text):
                self.add(kind, each, item)
        elif kind:
            self.add(kind, prototype(text) if kind in ("function", "friend") else text, item)

    def kind_of(self, text):
        """The kind of a declaration; none if it is no part of the reference."""
        bare = without_template(text)
        if re.match(r"[^(]*\s(?:std|fmt)::[\w:]+<.*> = ", bare):
            return None  # a variable of another namespace, such as std::ranges::enable_view<T>
        if re.match(r"(?:template <>|extern template|static_assert|using namespace|template (?:class|struct))", text):
            return None
        if re.match(r"friend (?:class |struct )?\w+$", bare):
            return None
        if re.match(r"(?:class|struct|union)\b[^()={]*$", bare) or re.match(r"enum\b[^={]*$", bare):
            return "forward"
        if bare.startswith("concept"):
            return "concept"
        if re.match(r"using\b|typedef\b", bare):
            return "alias" if "=" in bare or bare.startswith("typedef") else None
        head = bare.split("(")[0]
        if "(" not in bare or is_assigned(head):
            return "variable"
        name = re.search(r"(operator.*|[~\w:]+)\s*$", head)
        is_definition_of_member = self.scope is None and name and re.match(r"(?!operator).*\w::~?\w", name.group(1))
        is_deduction_guide = re.match(r"\w+\(.*\) ->", bare)
        if is_definition_of_member or is_deduction_guide or (not self.doc and self.scope and self.is_routine(bare)):
            return None
        return "friend" if bare.startswith("friend ") else "function"

    def is_for_the_library(self, text):
        """True for members that a user cannot use: names that end in "_", and members with types of the implementation,
        unless they are public and have a text."""
        bare = without_template(prototype(text))
        if self.scope and re.search(r"^[^(]*\w_(?:\(|$| = )", bare):
            return True
        uses_detail = "detail::" in ordinary(bare) and not bare.startswith("using ")
        return bool(self.scope and uses_detail and (self.access == "protected" or not self.doc))

    def is_left_out(self, text):
        """True for classes of other namespaces, for specializations of templates unless the only one is the class, and
        for iterators without a text."""
        name, specialized = re.match(r"(?:class|struct|union)[^:]*? ([\w:]+)(<)?", without_template(text)).groups()
        if name.startswith(("std::", "fmt::")):
            return True
        if self.doc:
            return False
        return bool(specialized and name != self.page.only_specialized) or name.split("::")[-1].lower() == "iterator"

    def is_routine(self, bare):
        """True for what every class has: destructors, and copying that is not deleted."""
        same = rf"(?:const {self.scope}&|{self.scope}&&)(?: \w+)?\)"
        return "= delete" not in bare and bool(
            re.search(rf"(?:^|\s)~{self.scope}\(|(?:^|\s){self.scope}\({same}|operator=\({same}", bare))


class Page:
    """The page of one header: `path` as it is included, and the chapter to which it belongs."""

    def __init__(self, path, text, chapter):
        self.path, self.chapter = path, chapter
        self.name = os.path.basename(path)[:-len(".h")]
        self.topic = "topic_" + re.sub(r"\W", "_", path[len("NorvikCore/"):-len(".h")])
        text = re.sub(r"(?m)^FMT_(?:BEGIN|END)_NAMESPACE$", "", text)  # they contain no declaration for users
        head = re.match(r"((?://[^\n]*\n)+)", text)
        if not head:
            sys.exit(f"{path}: no comment at the head")
        subject, *self.rest = blocks([line[2:] for line in head.group(1).splitlines()])
        self.subject = re.sub(r"^NorvikCore/\S+ - ", "", subject.text)

        specialized = re.findall(r"\b(?:class|struct) (\w+)<", text)
        self.only_specialized = self.name if specialized.count(self.name) == 1 else None
        self.forward_docs = {}
        try:
            items = Reader(text[head.end():]).read()
        except IndexError:
            sys.exit(f"{path}: a declaration or a bracket has no end")
        self.paragraphs = Selection(self, items, "public", None).paragraphs
        classes = [each.item for paragraph in self.paragraphs for each in paragraph.declared if each.kind == "class"]
        self.main = next((item for item in classes if class_name(item.text) == self.name), None)
        declares = any(each.declared[0].kind not in ("open", "close") for each in self.paragraphs)
        # Other headers are for users if they describe the headers that they include, or make formatters and the like.
        only_includes = all(item.kind not in ("namespace", "class") for item in items) and len(self.rest) > 1
        specializes = any(item.kind == "class" and re.search(r" (?:std|fmt)::", item.text) for item in items)
        self.is_for_users = declares or only_includes or specializes or path in TEXTS

        # What Doxygen reads; classes and concepts without a sentence; other declarations without a text.
        self.lines, self.faults, self.silent = [], [], []
        self.paragraph_count = 0

    def emit(self, text):
        self.lines += text.split("\n")

    def write(self):
        """Fills `lines` with what Doxygen reads, each declaration on a line of its own. Call it once, when the pages of
        all headers are known."""
        # The class of the header's name has the text, so that Doxygen links the names of its members in it.
        about = [] if self.main else written(self.rest)
        subject = "\\brief " + words(sentence(self.subject))
        topic = [f"\\defgroup {self.topic} {self.name}", f"\\ingroup {self.chapter}"]
        self.emit(comment(topic + [subject] + about) + "\n")
        self.open_namespace("norvik")
        self.write_paragraphs(self.paragraphs, None)
        self.close_namespace()

    def complain(self, name):
        self.faults.append(f"{self.path}: {name} has no sentence")

    def open_topic(self):
        self.emit(comment([f"\\addtogroup {self.topic}", "@{"]) + "\n")

    def open_namespace(self, name):
        self.emit(f"namespace {name} {{")
        self.open_topic()

    def close_namespace(self):
        self.emit("/**@}*/\n}")

    def write_paragraphs(self, paragraphs, scope):
        for paragraph in paragraphs:
            heading = paragraph.heading
            if scope:
                self.emit(f" {paragraph.access}:")
                if paragraph.access == "protected":
                    heading = heading or ["For derived classes:"]
            for run in paragraph.runs():
                kind = run[0].kind
                if kind == "open":
                    self.emit("/**@}*/")
                    self.open_namespace(run[0].text)
                elif kind == "close":
                    self.close_namespace()
                    self.open_topic()
                elif kind == "class":
                    for each in run:
                        self.write_class(each)
                else:
                    self.write_run(run, heading)
                    heading = None

    def write_run(self, run, heading):
        """Declarations as a member group of Doxygen, whose text is the heading."""
        self.paragraph_count += 1
        # A title of its own for each group, because Doxygen joins those that have the same.
        title = f"\\name {self.topic} {self.paragraph_count}"
        self.emit(comment([title, "", words(" ".join(line.strip() for line in heading))] if heading else [title]))
        self.emit("/**@{*/")
        for each in run:
            getattr(self, "write_" + each.kind, self.write_plain)(each)
            if not each.doc and not heading:
                self.silent.append(f"{self.path}: {spelled(each.text)}")
        self.emit("/**@}*/")

    def write_plain(self, declared):
        if declared.kind == "concept" and not declared.doc:
            self.complain(re.search(r"concept (\w+)", declared.text).group(1))
        self.emit(comment(brief(declared.doc)))
        self.emit(spelled(declared.text) + ";")

    def write_macro(self, declared):
        """A macro with the parameters of its comment: NK_PROPERTY(Type, name, setName) instead of NK_PROPERTY(...)."""
        name, _, parameters = declared.text.partition("(")
        text = " ".join(line.strip() for line in declared.doc)
        call = re.match(rf"{name}(\([^)]*\)): *", text)
        if call:
            text = sentence(text[call.end():])
            parameters = call.group(1)[1:] if parameters == "...)" else parameters
        self.emit(comment(["\\brief " + words(text)]))
        self.emit(f"#define {name}" + (f"({parameters}" if parameters else ""))

    def write_enum(self, declared):
        self.emit(comment(brief(declared.doc)))
        self.emit(spelled(declared.text) + " {")
        before = None
        for item in declared.item.items:
            if item.kind == "comment":
                before = item.items
            else:
                about = " ".join(line.strip() for line in before or item.doc or [])
                self.emit(f"  {item.text}," + (f"  ///< {words(about)}" if about else ""))
                before = None
        self.emit("};")

    def write_class(self, declared):
        name = class_name(declared.text)
        doc = declared.doc or self.forward_docs.get(name.split("::")[-1])
        if declared.item is self.main:
            own = words(" ".join(line.strip() for line in doc)) if doc else BLANK
            self.emit(comment([f"\\brief {own}"] + written(self.rest)))
        else:
            if not doc:
                self.complain(name)
            self.emit(comment(brief(doc)))
        head, _, bases = declared.text.partition(" : ")
        shown = [base for base in split_arguments(bases) if "private" not in base and "detail::" not in base]
        self.emit(spelled(re.sub(r" final$", "", head) + (" : " + ", ".join(shown) if shown else "")) + " {")
        access = "private" if without_template(head).startswith("class") else "public"
        self.write_paragraphs(Selection(self, declared.item.items, access, name.split("::")[-1]).paragraphs, name)
        self.emit("};")


def class_name(text):
    return re.search(r"(?:class|struct|union) ([\w:]+)", without_template(text)).group(1)


def accessors(name, arguments):
    """What a statement of a class lets a user call."""
    if name in ("NK_PROPERTY", "NK_ATOMIC_PROPERTY", "NK_WEAK_PROPERTY"):
        kind, getter, setter = ", ".join(arguments[:-2]), arguments[-2], arguments[-1]
        if name == "NK_WEAK_PROPERTY":
            kind = f"Ref<{kind}>"
        return [f"{kind} {getter}() const", f"void {setter}({kind} value)"]
    if name == "NK_READONLY_PROPERTY":
        return [f"{', '.join(arguments[:-1])} {arguments[-1]}() const"]
    if name not in STATEMENTS:
        sys.exit(f"a statement that the reference does not know: {name}")
    return []
