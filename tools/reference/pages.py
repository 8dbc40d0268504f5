"""Makes the pages of the reference: the texts and their links from Doxygen's XML, the declarations as headers.py has
them."""
import glob
import html
import json
import os
import re
import shutil
from urllib.parse import quote, unquote
from xml.etree import ElementTree

from comments import BLANK
from declarations import matching, split_arguments, without_template

here = os.path.dirname(os.path.abspath(__file__))

KEYWORDS = frozenset("""
    auto bool char char16_t char32_t class concept const consteval constexpr default delete double enum explicit extern
    false final float friend inline int long mutable namespace noexcept nullptr operator override public protected
    requires short signed sizeof static struct template this true typename union unsigned using virtual void volatile
    """.split())

# What the search shows of a kind of declaration.
KINDS = {"define": "macro", "typedef": "alias", "friend": "function"}


# A literal, a name or a character of a declaration.
TOKEN = r'"[^"]*"|[A-Za-z_]\w*|.'


class Entry:
    """A declaration of a header: what it is called, where it is, and its text."""

    def __init__(self, node, name, paragraph=None, heading=None):
        self.name, self.paragraph, self.heading = name, paragraph, heading
        self.kind = node.get("kind")
        self.brief, self.detail = node.find("briefdescription"), node.find("detaileddescription")
        self.values = node.findall("enumvalue")
        location = node.find("location")
        self.file, self.line = location.get("file")[len("input/"):], int(location.get("line"))
        self.id, self.url, self.anchor = node.get("id"), None, None
        self.nested = []

    def is_class(self):
        return self.kind in ("class", "struct", "union")

    def is_main(self):
        """True for the class with the name of its header, whose text is that of the header."""
        return self.is_class() and self.name.rpartition("::")[2] == os.path.basename(self.file)[:-len(".h")]


class Reference:
    """Everything that Doxygen found, and the place of each name on the pages."""

    def __init__(self, xml, chapters):
        self.chapters = chapters
        self.by_id, self.by_name, self.groups, self.mentioned = {}, {}, {}, {}
        self.of_page = {page.path: page for chapter in chapters for page in chapter.pages}
        for path in sorted(glob.glob(os.path.join(xml, "*.xml"))):
            if os.path.basename(path) != "index.xml":
                for node in ElementTree.parse(path).getroot().iter("compounddef"):
                    self.add_compound(node)
        entries = sorted(self.by_id.values(), key=lambda each: (each.file, each.line))
        for entry in entries:
            self.add_to_owner(entry)
        self.give_places(entries)

    def add_compound(self, node):
        kind, name = node.get("kind"), shown(node.findtext("compoundname"))
        if kind == "group":
            self.groups[node.findtext("compoundname")] = node
        elif kind in ("class", "struct", "union", "concept"):
            entry = Entry(node, name)
            self.by_id[entry.id] = self.by_name[name] = entry
            if "<" in node.findtext("compoundname"):  # Doxygen does not link the plain name of a specialization
                self.mentioned[name] = [entry]
        for section in node.iter("sectiondef"):
            heading = section.find("description")
            for member in section.iter("memberdef"):
                if member.get("id") not in self.by_id:
                    name = shown(member.findtext("qualifiedname") or member.findtext("name"))
                    found = Entry(member, name, section, heading)
                    self.by_id[found.id] = found
                    if found.kind in ("variable", "define", "typedef", "function") and "::" not in found.name:
                        self.mentioned.setdefault(found.name, []).append(found)
                    if found.kind in ("typedef", "enum"):
                        self.by_name[found.name] = found

    def add_to_owner(self, entry):
        owner = self.by_name.get(entry.name.rpartition("::")[0])
        if owner and owner.is_class() and owner.file == entry.file:
            owner.nested.append(entry)
        else:
            self.of_page[entry.file].entries.append(entry)

    def give_places(self, entries):
        used = set()
        for entry in entries:
            page = self.of_page[entry.file]
            anchor = entry.name.replace("::", ".").replace(" ", "")
            number = 1
            while (page.path, anchor if number == 1 else f"{anchor}-{number}") in used:
                number += 1
            entry.anchor = anchor if number == 1 else f"{anchor}-{number}"
            used.add((page.path, entry.anchor))
            entry.url = page.url + "#" + quote(entry.anchor)

    def place(self, refid):
        """The address of what Doxygen refers to: a chapter, the page of a header or a declaration."""
        for chapter in self.chapters:
            if refid == "group__" + chapter.id.replace("_", "__"):
                return chapter.url
            for page in chapter.pages:
                if refid == "group__" + page.topic.replace("_", "__"):
                    return page.url
        entry = self.by_id.get(refid)
        if entry is None:  # an enumerator: its enumeration
            entry = self.by_id.get(refid[:-33])
        return entry.url if entry else None


def shown(name):
    """A qualified name as the user of the namespace norvik writes it."""
    return re.sub(r"^norvik::", "", re.sub(r"<.*>(?=::|$)", "", name)).strip()


def address(chapter_or_header):
    return quote(re.sub(r"\.h$", "", chapter_or_header)) + ".html"


class Writer:
    """One page's HTML. Links are relative to the page, so that the pages need no server."""

    def __init__(self, reference, url):
        self.reference, self.url, self.up = reference, url, "../" * url.count("/")

    def link(self, url, content, kind=""):
        if not url:
            return content
        return f'<a{kind} href="{self.up}{url}">{content}</a>'

    # -- texts

    def words(self, text):
        """A text with links for constants, macros and plain names of functions, which Doxygen does not link."""
        def link(found):
            return self.link(self.mention(found.group()), found.group())
        return re.sub(r"\b(?:[A-Z]\w{3,}|[a-z]+_\w+)", link, html.escape(text or "", quote=False))

    def mention(self, name):
        """The address of a name: the one on this page, or else the only page that has it."""
        entries = self.reference.mentioned.get(name, [])
        here_or_all = [each for each in entries if each.url.startswith(self.url + "#")] or entries
        return here_or_all[0].url if len({each.file for each in here_or_all}) == 1 else None

    def inner(self, node):
        parts = [self.words(node.text)]
        for child in node:
            parts.append(self.element(child))
            parts.append(self.words(child.tail))
        return "".join(parts)

    def element(self, node):
        tag = node.tag
        if tag == "para":
            return self.paragraph(node)
        if tag == "ref":
            text = html.escape("".join(node.itertext()), quote=False)
            return self.link(self.reference.place(node.get("refid")), text)
        if tag == "computeroutput":
            return f"<code>{self.inner(node)}</code>"
        if tag == "programlisting":
            return f'<pre class="example"><code>{self.code(node)}</code></pre>'
        if tag == "itemizedlist":
            return f"<ul>{self.inner(node)}</ul>"
        if tag == "listitem":
            return f"<li>{self.inner(node)}</li>".replace("<li><p>", "<li>").replace("</p></li>", "</li>")
        if tag == "simplesect":
            title = html.escape(node.findtext("title"))
            return f"<dt>{title}</dt><dd>{''.join(self.inner(each) for each in node.findall('para'))}</dd>"
        if tag == "ndash":
            return "--"
        if tag == "linebreak":
            return "<br>"
        if tag == "ulink":  # Doxygen takes any "file:" for an address; it may contain the quote behind it
            return html.escape(html.unescape("".join(node.itertext())), quote=False)
        raise ValueError(f"an element that the pages cannot show: {tag}")

    def paragraph(self, node):
        """The paragraph, in pieces if it contains blocks."""
        pieces, text = [], self.words(node.text)
        for child in node:
            if child.tag in ("programlisting", "itemizedlist", "simplesect"):
                pieces += [f"<p>{text.strip()}</p>"] if text.strip() else []
                pieces.append(self.element(child))
                text = ""
            else:
                text += self.element(child)
            text += self.words(child.tail)
        pieces += [f"<p>{text.strip()}</p>"] if text.strip() else []
        return "".join(pieces)

    def text(self, *nodes):
        found = "".join(self.element(child) for node in nodes if node is not None for child in node)
        found = found.replace(f"<p>{BLANK}</p>", "")
        return re.sub(r"(<dt>.*?</dd>)+", lambda run: f"<dl>{run.group()}</dl>", found, flags=re.S)

    def code(self, listing):
        lines = []
        for line in listing.findall("codeline"):
            parts = []
            for highlight in line.findall("highlight"):
                content = self.code_text(highlight)
                kind = highlight.get("class")
                parts.append(content if kind == "normal" or not content else f'<span class="{kind}">{content}</span>')
            lines.append("".join(parts))
        return "\n".join(lines)

    def code_text(self, node):
        parts = [html.escape(node.text or "", quote=False)]
        for child in node:
            parts.append(" " if child.tag == "sp" else self.element(child))
            parts.append(html.escape(child.tail or "", quote=False))
        return "".join(parts)

    # -- declarations

    def signature(self, page, entry):
        """The declaration as the header has it: its own name marked, and the names of types linked."""
        text = page.lines[entry.line - 1].strip()
        text = re.sub(r"(?: \{|;|,)$", "", text)
        if entry.kind == "define":
            text = re.sub(r"^#define ", "", text)
        own = entry.name.rpartition("::")[2]
        text = self.laid_out(text)
        marked = False

        def word(found):
            nonlocal marked
            name = found.group()
            if name == own and not marked and not self.is_type_of(entry, text, found):
                marked = True
                return f'<a class="own" href="#{quote(entry.anchor)}">{html.escape(name)}</a>'
            if entry.kind == "define":
                return html.escape(name)
            if name in KEYWORDS:
                return f'<span class="keyword">{name}</span>'
            if not name[0].isalpha() and name[0] != "_":
                return html.escape(name, quote=False)
            scope = entry.name
            while scope:
                scope = scope.rpartition("::")[0]
                target = self.reference.by_name.get(f"{scope}::{name}" if scope else name)
                if target and target is not entry:
                    return self.link(target.url, html.escape(name))
            return html.escape(name)

        if own.startswith("operator"):
            shown_text = self.operator_signature(text, word, entry)
        else:
            shown_text = re.sub(TOKEN, word, text, flags=re.S)
        return "".join(f'<span class="line">{line}</span>' for line in shown_text.split("\n"))

    @staticmethod
    def operator_signature(text, word, entry):
        at = text.index("operator")
        end = re.compile(r"operator(?:\(\)|[^(]*)").match(text, at).end()
        marked = f'<a class="own" href="#{quote(entry.anchor)}">{html.escape(text[at:end])}</a>'
        return re.sub(TOKEN, word, text[:at], flags=re.S) + marked + re.sub(TOKEN, word, text[end:], flags=re.S)

    @staticmethod
    def is_type_of(entry, text, found):
        """True where the name of a function is a type before it: `static Ref<Semaphore> Semaphore(...)`."""
        return entry.kind in ("function", "friend") and not text[found.end():].startswith("(")

    @staticmethod
    def laid_out(text):
        """Template parameters on their own line; the parameters of a long declaration one per line."""
        bare = without_template(text)
        template = text[:len(text) - len(bare)].strip()
        if len(bare) > 100 and "(" in bare and not bare.startswith(("using ", "concept ")):
            begin = bare.index("(")
            if bare[:begin].endswith("operator"):
                begin = bare.index("(", begin + 2)
            end = matching(bare, begin, "(", ")")
            parameters = ",\n    ".join(split_arguments(bare[begin + 1:end]))
            bare = f"{bare[:begin + 1]}\n    {parameters}{bare[end:]}"
        return f"{template}\n{bare}" if template else bare

    def values(self, entry):
        """The enumerators as a table."""
        names = []
        for value in entry.values:
            number = (value.findtext("initializer") or "").strip()
            name = html.escape(f"{value.findtext('name')} {number}".strip())
            about = self.text(value.find("briefdescription"), value.find("detaileddescription"))
            about = re.sub(r"</?p>", "", about)
            names.append(f"<tr><td><code>{name}</code></td><td>{about}</td></tr>")
        return f'<table class="values">{"".join(names)}</table>' if names else ""

    def member(self, page, entry):
        about = self.text(entry.brief, entry.detail) + self.values(entry)
        about = f'<div class="about">{about}</div>' if about else ""
        signature = f'<pre class="signature"><code>{self.signature(page, entry)}</code></pre>'
        return f'<div class="member" id="{html.escape(entry.anchor)}">{signature}{about}</div>'

    def entries(self, page, entries, level):
        """Declarations in the order of the header, in its paragraphs, each with its heading."""
        parts, paragraph = [], None
        for entry in entries:
            if entry.is_class():
                parts.append("</section>" if paragraph is not None else "")
                paragraph = None
                parts.append(self.class_section(page, entry, level))
                continue
            if entry.paragraph is not paragraph:
                parts.append("</section>" if paragraph is not None else "")
                paragraph = entry.paragraph
                heading = self.text(entry.heading) if entry.heading is not None else ""
                heading = f'<div class="heading">{heading}</div>' if heading else ""
                parts.append(f'<section class="paragraph">{heading}')
            parts.append(self.member(page, entry))
        parts.append("</section>" if paragraph is not None else "")
        return "\n".join(part for part in parts if part)

    def class_section(self, page, entry, level):
        name = html.escape(entry.name)
        content = self.entries(page, entry.nested, level + 1)
        return (f'<section class="class" id="{html.escape(entry.anchor)}"><h{level}>{name}</h{level}>'
                f'<pre class="signature"><code>{self.signature(page, entry)}</code></pre>'
                f"{self.text(entry.brief, None if entry.is_main() else entry.detail)}{content}</section>")


def breakable(name):
    """A name that may be broken after its separators."""
    return re.sub(r"([+_])", r"\1<wbr>", html.escape(name))


def plain(text):
    return re.sub(r"</?p>", " ", text).strip()


def table(rows):
    cells = "".join(f"<tr><td>{name}</td><td>{about}</td></tr>" for name, about in rows)
    return f'<table class="contents">{cells}</table>'


def read(name):
    with open(os.path.join(here, name), encoding="utf-8") as file:
        return file.read()


class Site:
    """All pages: the first one, one for each chapter and each header; the search index, the style and the script."""

    def __init__(self, xml, output, chapters, version):
        self.output, self.chapters, self.version = output, chapters, version
        for chapter in chapters:
            chapter.url = address(chapter.folder)
            for page in chapter.pages:
                page.entries, page.url = [], address(page.path[len("NorvikCore/"):])
        self.reference = Reference(xml, chapters)

    def write(self):
        self.write_first_page()
        for chapter in self.chapters:
            self.write_chapter(chapter)
            for page in chapter.pages:
                self.write_header(chapter, page)
        self.write_names()
        for name in ("style.css", "search.js"):
            shutil.copy(os.path.join(here, name), self.output)

    def text(self, writer, group, *parts):
        return writer.text(*(self.reference.groups[group].find(part) for part in parts))

    def summary(self, writer, group):
        return plain(self.text(writer, group, "briefdescription"))

    def navigation(self, writer, chapter, page):
        """The chapters, with the pages of the current one."""
        parts = []
        for each in self.chapters:
            mark = ' aria-current="true"' if each is chapter and not page else ""
            parts.append(f"<li>{writer.link(each.url, html.escape(each.folder), mark)}")
            if each is chapter:
                parts.append("<ul>")
                for one in each.pages:
                    mark = ' aria-current="page"' if one is page else ""
                    parts.append(f"<li>{writer.link(one.url, breakable(one.name), mark)}</li>")
                parts.append("</ul>")
            parts.append("</li>")
        return f"<ul>{''.join(parts)}</ul>"

    def write_file(self, url, title, writer, navigation, content):
        text = read("page.html")
        for name, part in (("title", html.escape(title)), ("up", writer.up), ("version", self.version),
                           ("chapters", navigation), ("content", content)):
            text = text.replace(f"@{name}@", part)
        path = os.path.join(self.output, *unquote(url).split("/"))
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)

    def write_first_page(self):
        writer = Writer(self.reference, "index.html")
        rows = [(writer.link(each.url, html.escape(each.folder)), self.summary(writer, each.id))
                for each in self.chapters]
        content = read("index.html").replace("@example@", self.text(writer, "index_example", "detaileddescription"))
        self.write_file("index.html", "Reference", writer, self.navigation(writer, None, None),
                        content.replace("@contents@", table(rows)))

    def write_chapter(self, chapter):
        writer = Writer(self.reference, chapter.url)
        rows = [(writer.link(page.url, f"<code>{breakable(page.name)}</code>"), self.summary(writer, page.topic))
                for page in chapter.pages]
        about = self.text(writer, chapter.id, "briefdescription", "detaileddescription")
        self.write_file(chapter.url, chapter.folder, writer, self.navigation(writer, chapter, None),
                        f"<h1>{html.escape(chapter.folder)}</h1>{about}{table(rows)}")

    def write_header(self, chapter, page):
        writer = Writer(self.reference, page.url)
        prose = self.text(writer, page.topic, "detaileddescription")
        prose += "".join(writer.text(entry.detail) for entry in page.entries if entry.is_main())
        content = (f'<p class="place">{writer.link(chapter.url, html.escape(chapter.folder))}</p>'
                   f"<h1>{breakable(page.name)}</h1>"
                   f'<div class="subject">{self.text(writer, page.topic, "briefdescription")}</div>'
                   f'<pre class="include"><code>#include "{html.escape(page.path)}"</code></pre>'
                   f'<div class="prose">{prose}</div>')
        if page.entries:
            content += f'<div class="declarations">{writer.entries(page, page.entries, 2)}</div>'
        self.write_file(page.url, page.name, writer, self.navigation(writer, chapter, page), content)

    def write_names(self):
        """What the search knows: name, place in words, address."""
        names = []
        for chapter in self.chapters:
            names.append([chapter.folder, "chapter", chapter.url])
            names += [[page.name, f"{chapter.folder}: header", page.url] for page in chapter.pages]
        for entry in sorted(self.reference.by_id.values(), key=lambda each: (each.file, each.line)):
            scope, _, name = entry.name.rpartition("::")
            kind = KINDS.get(entry.kind, entry.kind)
            if kind == "variable" and not scope:
                kind = "constant"
            names.append([name, f"{scope or os.path.basename(entry.file)}: {kind}", entry.url])
            names += [[value.findtext("name"), f"{entry.name}: enumerator", entry.url] for value in entry.values]
        with open(os.path.join(self.output, "names.js"), "w", encoding="utf-8") as file:
            file.write("const names = " + json.dumps(names, ensure_ascii=False, separators=(",", ":")) + ";\n")
