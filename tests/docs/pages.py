#!/usr/bin/env python3
"""Prepares what Doxygen reads, and looks at what it writes.

prepare <root of the tree> <folder>: copies of the guide and of the public headers, and the option that lists them in
the order of the README's links. The files of the tree stay as people read them; in the copies

- the first line of a header, which says what the file is, is also the first sentence of the class of that name;
- indented pieces of a comment are code or tables, and what begins with "Thread safety:" and the like begins a line;
- signs that Doxygen would take for commands are what they are in the text;
- a heading of the guide has the anchor that links give it, and what is no page is named instead of linked.

No line is added or taken away, so that warnings name the right one.

check <root of the tree> <folder of pages>: names each link, figure and script of the pages that leads nowhere within
them, and each piece of code in the text of the guide that a page does not show as it is.
"""

import itertools
import os
import pathlib
import re
import subprocess
import sys
import urllib.parse

COMMAND = re.compile(r" *///? ?@(\{|\}|cond\b|endcond\b)")
LABEL = re.compile(r"^( *///) ((?:Thread safety|Ownership|Errors|Failures|Forks):)")


def replaced(pattern, by, text):
    """re.sub() for text that is not in quotes, where Doxygen leaves signs alone."""
    return re.sub(r'("[^"]*")|' + pattern, lambda match: match[1] or match.expand(by), text)


PERCENT = r"(%)(?=[A-Za-z_])"  # Doxygen takes it away


def escaped(text):
    """Without what Doxygen would see as a command or a tag; code in `` is left alone but for its %."""
    spans = text.split("`")
    for index, span in enumerate(spans):
        if index % 2:
            spans[index] = re.sub(PERCENT, "%%", span)
        else:
            spans[index] = replaced(PERCENT, "%%", replaced(r"([\\@<])(?! )", r"\\\2", span))
    return "`".join(spans)


def is_comment(line):
    return line.lstrip().startswith("///")


def comments(lines):
    result = list(lines)
    index = 0
    while index < len(lines):
        line, before = lines[index], lines[index - 1].strip() if index > 0 else ""
        if re.match(r" *///   \S", line) and is_comment(before) and not re.match(r"///  ?-", before):
            # Behind an empty line of the comment it is code, behind a text a table.
            result[index - 1] += " @code{.cpp}" if before == "///" else " @code{.unparsed}"
            while index + 1 < len(lines) and re.match(r" *///   ", lines[index + 1]):
                index += 1
            result[index] += " @endcode"
        elif is_comment(line) and not COMMAND.match(line):
            gap = "" if before == "///" else "@n "
            result[index] = LABEL.sub(rf"\1 {gap}**\2**", escaped(line).replace("///\\<", "///<"))
        index += 1
    return result


def header(path, text):
    lines = text.split("\n")
    head = next(i for i, line in enumerate(lines) if not line.startswith("//"))
    purpose = " ".join(line[2:].strip() for line in lines[:head])
    purpose = escaped(re.split(r"(?<=\.) +", purpose.split("  ")[0])[0])
    lines[:head] = ["/" + line for line in lines[:head]]
    lines = comments(lines)
    lines[0] = f"/// @file {path} {lines[0][4:]}"
    declared = re.compile(r"(class|struct) (?:\w+(?:\(.*\))? )?" + path.stem + r"\b[^;]*\{")
    for index, line in enumerate(lines):
        if declared.match(line):
            while lines[index - 1].startswith(("///", "template")):
                index -= 1
            if lines[index - 1] == "":
                lines[index - 1] = "/// " + purpose
            break
    return "\n".join(lines)


def anchor(page, heading):
    return page + "-" + re.sub(r"[^\w-]", "", heading.lower().replace(" ", "-"))


def label_of(path):
    """Of a page, and not that of one of Doxygen's own, such as "files"."""
    return "guide-" + path.stem.lower()


def name_of(path):
    return "index" if path.name == "README.md" else label_of(path)


def prose(line):
    """A line of the guide in which Doxygen leaves code and bold text what they are."""
    spans = line.split("`")
    texts = [replaced(PERCENT, "%%", text) for text in spans[::2]]
    codes = [re.sub(PERCENT, "%%", code) for code in spans[1::2]]
    if len(codes) < len(texts) and "``" not in line:
        codes = [f"`{code}`" if "'" in code else code for code in codes]  # with one backquote it would end at the quote
    if sum(text.count("**") for text in texts) % 2 == 0:
        tags = itertools.cycle(["<b>", "</b>"])  # which may begin with code
        texts = [re.sub(r"\*\*", lambda _: next(tags), text) for text in texts]
    spans[::2], spans[1::2] = texts, codes
    return "`".join(spans)


def page(root, path, text, guide):
    """The anchors of a page begin with its name, because they are one set for Doxygen."""
    def link(match):
        text, target, fragment = match[1], *match[2].partition("#")[::2]
        if re.match(r"https?:", target):
            return match[0]
        file = pathlib.PurePath(os.path.normpath(path.parent / target)) if target else path
        if file.suffix == ".svg":
            return f"[{text}]({file.name})"
        if not (root / file).exists():
            print(f"{path}: {target}: there is no such file")
        if file not in guide:
            return text if text == str(file) else f"{text} (`{file}`)"
        place = anchor(file.stem, fragment) if fragment else name_of(file)
        if "`" in text:  # which Doxygen shows as it is in a link of its own
            return f'<a href="{name_of(file)}.html{"#" + place if fragment else ""}">{text}</a>'
        return f"[{text}](@ref {place})"

    lines, in_code = text.split("\n"), False
    for index, line in enumerate(lines):
        if line.startswith("```"):
            in_code = not in_code
        if in_code:
            continue
        line = prose(re.sub(r"\[([^]]*)\]\(([^)\s]*)\)", link, line))
        if heading := re.match(r"#+ (.*)$", line):
            line = line.replace("`", "") + f" {{#{anchor(path.stem, heading[1]) if index > 0 else label_of(path)}}}"
        lines[index] = line
    return "\n".join(lines)


def guide_of(root):
    """The README and the documents that it leads to, in that order."""
    names = re.findall(r"\]\(([^)#]*\.md)\)", (root / "README.md").read_text(encoding="utf-8"))
    return [pathlib.PurePath(name) for name in dict.fromkeys(["README.md", *names])]


def prepare(root, folder):
    guide = guide_of(root)
    for path in sorted((root / "docs").glob("*.md")):
        if path.relative_to(root) not in guide:
            print(f"README.md does not lead to {path.relative_to(root)}")
    listed = re.findall(r"^  ([\w/]+\.h)$", (root / "log4vrk/Headers.cmake").read_text(encoding="utf-8"), re.MULTILINE)
    headers = [pathlib.PurePath("log4vrk") / name for name in listed if "/internal/" not in name]
    for path in guide + headers:
        text = (root / path).read_text(encoding="utf-8")
        copy = folder / path
        copy.parent.mkdir(parents=True, exist_ok=True)
        copy.write_text(header(path, text) if path.suffix == ".h" else page(root, path, text, guide), encoding="utf-8")
    # Members that are described together are those that a class is about.
    layout = subprocess.run(["doxygen", "-l", "-"], check=True, capture_output=True, encoding="utf-8").stdout
    layout = layout.replace('type="pages" visible="yes" title=""', 'type="pages" visible="yes" title="Guide"')
    groups = r"(<memberdecl>\n)((?:(?!</memberdecl>).)*?)( *<membergroups[^\n]*\n)"
    layout = re.sub(groups, r"\1\3\2", layout, flags=re.DOTALL)
    (folder / "layout.xml").write_text(layout, encoding="utf-8")
    (folder / "Doxyfile").write_text(
        (root / "cmake/Doxyfile").read_text(encoding="utf-8") +
        f"INPUT = {' '.join(str(path) for path in guide + headers)}\nIMAGE_PATH = {root / 'docs/performance'}\n" +
        f"HTML_EXTRA_STYLESHEET = {root / 'cmake/pages.css'}\n", encoding="utf-8")


def unescaped(text):
    for name, sign in {"lt": "<", "gt": ">", "quot": '"', "#39": "'", "amp": "&"}.items():
        text = text.replace(f"&{name};", sign)
    return text


def mend(folder):
    """Takes away where Doxygen leads to a list of nested classes that are all private, and so not there."""
    for path in folder.glob("class*.html"):
        text = path.read_text(encoding="utf-8")
        if 'name="nested-classes"' not in text:
            path.write_text(re.sub(r'<a href="#nested-classes">[^<]*</a>(?: &#124;)?', "", text), encoding="utf-8")


def check_links(folder, texts):
    anchors = {name: set(re.findall(r'\b(?:id|name)="([^"]*)"', text)) for name, text in texts.items()}
    count = 0
    for name, text in sorted(texts.items()):
        for target in sorted(set(re.findall(r'\b(?:href|src|data)="([^"]*)"', text))):
            count += 1
            file, _, fragment = urllib.parse.unquote(unescaped(target)).partition("#")
            if re.match(r"(https?|mailto|javascript):", target):
                continue
            if not (folder / (file or name)).is_file():
                print(f"{name}: {target}: there is no such file")
            elif fragment and fragment not in anchors.get(file or name, ()):
                print(f"{name}: {target}: the page has no such place")
    if count == 0:
        print(f"{folder}: there are no links")


def check_code(path, text, shown):
    def plain(code):
        return re.sub(r"\s+|&#160;|&#8203;|\\(?=\|)", "", code)

    text = re.sub(r"^(```.*?^```|#.*?)$", "", text, flags=re.DOTALL | re.MULTILINE)
    pieces = re.findall(r"<code>(.*?)</code>", shown, re.DOTALL)
    pieces = {plain(unescaped(re.sub(r"<[^>]*>", "", piece))) for piece in pieces}
    no_prose = r'<code>.*?</code>|<div class="line">.*?</div>|<(pre|script).*?</\1>'
    prose = re.sub(no_prose, "", shown, flags=re.DOTALL)
    for sign in re.findall(r"[^<>\n]*(?:\*\*|`)[^<>\n]*", prose):
        print(f"{path}: the page shows {sign}")
    for code in re.findall(r"`([^`]+)`", text):
        if plain(code) not in pieces:
            print(f"{path}: the page does not show `{code}`")


def check(root, folder):
    mend(folder)
    texts = {path.name: path.read_text(encoding="utf-8") for path in folder.glob("*.html")}
    check_links(folder, texts)
    for path in guide_of(root):
        check_code(path, (root / path).read_text(encoding="utf-8"), texts.get(name_of(path) + ".html", ""))


if __name__ == "__main__":
    {"prepare": prepare, "check": check}[sys.argv[1]](*map(pathlib.Path, sys.argv[2:]))
