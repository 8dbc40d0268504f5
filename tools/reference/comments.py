"""Turns the comments of headers into comments for Doxygen."""
import html
import re

# The pages of headers by their file names, such as "DDLog.h": a mention of a header becomes a link.
links = {}

# Stands for a missing text, because Doxygen leaves out declarations without a text.
BLANK = "nk_blank"

# Types of the implementation, as a user writes them.
SPELLINGS = [
    (re.compile(r"\bdetail::ObjectArgument\b"), "NSObject&"),
    (re.compile(r"\bdetail::Filtered<\w+, \w+, (\w+)>"), r"Ref<\1>"),
]


def ordinary(text):
    """A declaration with the types that a user writes."""
    for pattern, spelling in SPELLINGS:
        text = pattern.sub(spelling, text)
    return text


def spelled(text):
    """A declaration with names as the user of the namespace norvik writes them."""
    return re.sub(r"\b(?:norvik::)?(?:detail::)?", "", ordinary(text)) if "::" in text else text


# The first word of a sentence, if it could be the name of a class. After % Doxygen links no word.
SENTENCE_START = re.compile(r"(^|[.:;!?] +|\( *)(?=[A-Z][a-z]+\b(?!\(|::|<))")


def escaped(text):
    """A text without commands for Doxygen."""
    text = html.escape(text.replace("\\", "\\\\"), quote=False).replace('"', "&quot;")  # in quotes nothing is read
    return re.sub(r"([@#%$]|--|(?<![\w>])::)", r"\\\1", text)


def linked(text):
    """An escaped text in which the names of headers are links to their pages."""
    def link(found):
        target = links.get(found.group())
        return f'\\ref {target} "{found.group()}"' if target else found.group()
    return re.sub(r"[\w+]+\.h\b", link, escaped(spelled(text)))


def words(text):
    """A text for Doxygen: `code` in code elements; the first word of a sentence is no link to a class of that name."""
    parts = re.split(r"`([^`]*)`", text)
    for at, part in enumerate(parts):
        parts[at] = f"<code>{linked(part)}</code>" if at % 2 == 1 else SENTENCE_START.sub(r"\1%", linked(part))
    return "".join(parts)


LABEL = re.compile(r"^ ([A-Z][a-z]+(?: [a-z]+)?):( +)(\S.*)$")
LABELS = ("Threads", "Errors", "Cost", "Ownership", "Memory", "Fork", "Limits", "Saving", "Bounds")


class Block:
    """A part of a comment: a paragraph of "text", a paragraph with a "label", a "list", or an example ("code")."""

    def __init__(self, kind, line, label=None):
        self.kind, self.lines, self.label = kind, [line], label

    @property
    def text(self):
        return " ".join(self.lines)

    def continue_line(self, line):
        """Adds a line to the paragraph, or to the last item of the list."""
        if self.kind == "list":
            self.lines[-1] += " " + line
        else:
            self.lines.append(line)

    def written(self):
        """The block as lines of a Doxygen comment."""
        if self.kind == "text":
            return [words(self.text)]
        if self.kind == "label":
            return [f"\\par {self.label}", words(sentence(self.text))]
        if self.kind == "list":
            return ["<ul>"] + [f"<li>{words(each)}</li>" for each in self.lines] + ["</ul>"]
        margin = min(indentation(line) for line in self.lines if line)
        code = "\n".join(line[margin:] for line in self.lines).rstrip("\n").split("\n")
        return ["\\code{.cpp}"] + code + ["\\endcode"]


def indentation(line):
    return len(line) - len(line.lstrip(" "))


def blocks(lines):
    """The blocks of a comment, whose lines are given without the marker."""
    found, current = [], None

    def begin(*block):
        nonlocal current
        current = Block(*block)
        found.append(current)

    for line in lines:
        label = LABEL.match(line)
        kind = current.kind if current else None
        if not line.strip():
            if kind == "code":
                current.lines.append("")
            else:
                current = None
        elif label and (len(label.group(2)) > 1 or label.group(1) in LABELS):
            begin("label", label.group(3), label.group(1))
        elif indentation(line) >= 3 and kind in ("label", "list"):
            current.continue_line(line.strip())
        elif indentation(line) >= 3 and kind == "code":
            current.lines.append(line)
        elif indentation(line) >= 3:
            begin("code", line)
        elif line.startswith(" - ") and kind == "list":
            current.lines.append(line[3:].strip())
        elif line.startswith(" - "):
            begin("list", line[3:].strip())
        elif kind == "text":
            current.continue_line(line.strip())
        else:
            begin("text", line.strip())
    return found


def written(found):
    """Blocks as lines of a Doxygen comment, each after an empty line."""
    return [line for block in found for line in [""] + block.written()]


def sentence(text):
    """A text that begins with a capital letter."""
    return text[0].upper() + text[1:]


def comment(lines):
    """A comment for Doxygen."""
    return "\n".join(("/// " + line).rstrip() for line in lines)


def brief(doc):
    """A documentation comment as lines of Doxygen's: the first paragraph is the brief text."""
    if not doc:
        return [f"\\brief {BLANK}"]
    first, *rest = blocks(doc)
    return [f"\\brief {words(first.text)}"] + written(rest)
