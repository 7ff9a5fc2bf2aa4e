#!/usr/bin/env python3
"""Checks the layers of the source: what each folder may include (the table in CONTRIBUTING.md, with
which the links of CMake must agree), no cycle of files or folders, Windows headers in their places
only, family files apart from each other, and family codes known to families and kinds of devices
alone. Prints FILE:LINE: what is wrong and what would be right, and exits with 1.
"""
import posixpath
import re
import subprocess
import sys
from collections import namedtuple
from pathlib import Path

TABLE_FILE = "CONTRIBUTING.md"
TABLE_HEAD = "| Folder | May include |"
FAMILY_TABLE = "families/family_table.cpp"

WINDOWS_PLACES = ("platform/win32/", "host/com/", "simulator/windows/", "tests/windows/",
                  "benchmarks/windows/", "examples/", "docs/editor_pictures.cpp")
# Every other header with .h in its name is taken for one of Windows.
PORTABLE_HEADERS = re.compile(
    r"(arpa/inet|fcntl|iconv|netinet/\w+|poll|pty|signal|sys/\w+|time|unistd)\.h$"
    r"|(benchmark|fmt|gmock|gtest|toml\+\+)/")

# In the files of parallel/ quorinprgmode(0) is the programming mode of a device with configuration
# words.
CODE_PLACES = ("families/", "image_layout/", "devices/kinds/", "tests/",
               "parallel/config_mode.cpp", "parallel/config_word.cpp",
               "parallel/start_programmer.h")

Include = namedtuple("Include", "line system name")
Row = namedtuple("Row", "line entries")
errors = []


def report(file, line, text):
    errors.append((file, line, text))


def line_of(text, offset):
    return text.count("\n", 0, offset) + 1


def starts_in(file, places):
    return file.startswith(places)


TOKENS = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"(?P<mark>[^()\s]*)\(.*?\)(?P=mark)"|"(?:\\.|[^"\\\n])*"'
    r"|(?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])+'", re.DOTALL)


def blank(text, strings):
    """The text with its comments, and if asked its strings, as blanks; lines stay where they are."""
    def replace(match):
        token = match.group()
        if not token.startswith("/") and not strings:
            return token
        return re.sub(r"[^\n]", " ", token)
    return TOKENS.sub(replace, text)


class Source:
    def __init__(self, file):
        self.file = file
        text = Path(file).read_text(encoding="utf-8")
        self.plain = blank(text, strings=False)
        self.code = blank(text, strings=True)
        self.includes = [
            Include(line_of(self.plain, m.start(1)), m.group(1) == "<", m.group(2))
            for m in re.finditer(r'^[ \t]*#[ \t]*include[ \t]*([<"])([^>"\n]+)[>"]', self.plain,
                                 re.MULTILINE)]


def listed(*patterns):
    """Files that git knows or would take up."""
    names = subprocess.run(
        ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard", *patterns],
        check=True, capture_output=True, text=True).stdout.split("\0")
    return [name for name in sorted(set(names)) if name and Path(name).exists()]


def load_sources():
    return {file: Source(file) for file in listed("*.cpp", "*.h")}


def check_windows(source):
    if starts_in(source.file, WINDOWS_PLACES):
        return
    for include in source.includes:
        if include.system and include.name.endswith(".h") and not PORTABLE_HEADERS.match(
                include.name):
            report(source.file, include.line,
                   f"includes <{include.name}>; Windows headers belong in platform/win32/, "
                   "host/com/, simulator/windows/ and programs for Windows alone; a portable header "
                   "must be in PORTABLE_HEADERS of scripts/check-layers.py")


def check_conditions(source):
    for match in re.finditer(r"^[ \t]*#[ \t]*(?:el)?if[^\n]*\b(_?WIN(?:32|64)|_MSC_VER|__MINGW\w+)\b",
                             source.code, re.MULTILINE):
        report(source.file, line_of(source.code, match.start(1)),
               f"asks for {match.group(1)}; the build picks platform/portable or platform/win32")


def resolve_includes(sources):
    """Of each file its includes among the sources; other files that exist, such as .inc, have none."""
    graph = {}
    for source in sources.values():
        graph[source.file] = found = []
        for include in source.includes:
            if include.system:
                continue
            name = posixpath.normpath(include.name)
            if name in sources:
                found.append((include.line, name))
            elif not Path(name).is_file():
                report(source.file, include.line,
                       f'includes "{name}", which does not exist; the path begins at the top folder')
    return graph


def find_cycle(graph):
    """A list of nodes that leads back to its first, or None."""
    done, path = set(), []

    def visit(node):
        if node in path:
            return path[path.index(node):] + [node]
        if node in done:
            return None
        path.append(node)
        for following in graph.get(node, ()):
            cycle = visit(following)
            if cycle:
                return cycle
        path.pop()
        done.add(node)
        return None

    for node in graph:
        cycle = visit(node)
        if cycle:
            return cycle
    return None


def check_file_cycle(graph):
    cycle = find_cycle({file: [name for _, name in found] for file, found in graph.items()})
    if cycle:
        line = next(line for line, name in graph[cycle[0]] if name == cycle[1])
        report(cycle[0], line, "a cycle of includes, one of which must go: " + " -> ".join(cycle))


def read_table():
    rows = {}
    lines = Path(TABLE_FILE).read_text(encoding="utf-8").split("\n")
    first = lines.index(TABLE_HEAD) + 2 if TABLE_HEAD in lines else len(lines)
    for number, line in enumerate(lines[first:], first + 1):
        cells = re.fullmatch(r"\| (\S+)/ \|(.*)\|", line)
        if not cells:
            break
        entries = [entry.strip().rstrip("/") for entry in cells.group(2).split(",")]
        rows[cells.group(1)] = Row(number, [entry for entry in entries if entry])
    if not rows:
        report(TABLE_FILE, 1, f"must have a table that begins with {TABLE_HEAD}")
    for folder, row in rows.items():
        for name in [folder] + [entry for entry in row.entries if entry not in rows]:
            if name != "any" and not Path(name).exists():
                report(TABLE_FILE, row.line, f"{name} does not exist; must be a folder or a file")
    return rows


def folder_of(file, rows):
    """The row for a file: the nearest folder above it that has one."""
    while file := posixpath.dirname(file):
        if file in rows:
            return file
    return None


def check_folders(graph, rows):
    used, where, without_row = {}, {}, set()
    for file, found in graph.items():
        folder = folder_of(file, rows)
        if folder is None:
            if (parent := posixpath.dirname(file)) not in without_row:
                report(file, 1, f"{parent}/ must have a row in the table of {TABLE_FILE}")
            without_row.add(parent)
            continue
        entries = rows[folder].entries
        for line, name in found:
            target = folder_of(name, rows)
            if name in entries:
                used.setdefault(folder, set()).add(name)
            elif target not in (folder, None):
                where.setdefault((folder, target), (file, line))
                if target not in entries and "any" not in entries:
                    report(file, line, f"includes {name}; {folder}/ may include "
                           f"{', '.join(entries) or 'no other folder'} ({TABLE_FILE})")
    check_folder_cycle(where)
    for folder, row in rows.items():
        for entry in row.entries:
            if Path(entry).is_file() and entry not in used.get(folder, ()):
                report(TABLE_FILE, row.line, f"{folder}/ does not include {entry}; take it out")


def check_folder_cycle(where):
    graph = {}
    for folder, target in where:
        graph.setdefault(folder, []).append(target)
    cycle = find_cycle(graph)
    if cycle:
        file, line = where[cycle[0], cycle[1]]
        report(file, line, "a cycle of folders, one of which must not include the next: "
               + " -> ".join(cycle))


def read_links():
    """Of each fliglaf_ target its folder, and of each folder (line, target) that it links."""
    folders, links = {}, {}
    for path in listed("*CMakeLists.txt"):
        text, folder = re.sub(r"#[^\n]*", "", Path(path).read_text()), posixpath.dirname(path)
        for match in re.finditer(r"add_library\((fliglaf_\w+)", text):
            folders[match.group(1)] = folder
        for match in re.finditer(r"target_link_libraries\(fliglaf_([^)]*)\)", text):
            for linked in re.finditer(r"\bfliglaf_\w+", match.group(1)):
                line = line_of(text, match.start(1) + linked.start())
                links.setdefault(folder, []).append((line, linked.group()))
    return folders, links


def check_links(rows):
    folders, links = read_links()

    def reach(folder, seen):
        for _, target in links.get(folder, ()):
            if folders[target] not in seen:
                seen.add(folders[target])
                reach(folders[target], seen)
        return seen

    for folder in set(folders.values()) & set(rows):
        build = f"{folder}/CMakeLists.txt"
        parts = [name for name in rows if name == folder or (
            name.startswith(folder + "/") and not Path(name, "CMakeLists.txt").exists())]
        entries = [entry for name in parts for entry in rows[name].entries]
        for line, target in links.get(folder, ()):
            if folders[target] not in entries:
                report(build, line, f"links {target}, but the table of {TABLE_FILE} lets {folder}/ "
                       f"not include {folders[target]}/; one of them must change")
        linked = reach(folder, {folder})
        for entry in entries:
            compiled_in = f"/{entry}/" in Path(build).read_text()
            if entry in rows and not compiled_in and not any(
                    entry == name or entry.startswith(name + "/") for name in linked):
                report(build, 1, f"does not link {entry}/, which the table of {TABLE_FILE} lets "
                       f"{folder}/ include; one of them must change")


def family_headers(sources):
    """The headers with the factories that the rows of the family table name."""
    table = sources[FAMILY_TABLE]
    headers = {name for include in table.includes if not include.system
               and (name := include.name) in sources}
    found = set()
    rows = list(re.finditer(r"\bFamilyRow\{\s*\d+\s*,\s*(\w+)", table.code))
    if not rows:
        report(FAMILY_TABLE, 1, "has no rows FamilyRow{CODE, FACTORY}; must have one a family")
    for row in rows:
        declared = re.compile(rf"\b{row.group(1)}\s*\(")
        owners = {header for header in headers if declared.search(sources[header].code)}
        if not owners and not declared.search(table.code):
            report(FAMILY_TABLE, line_of(table.code, row.start(1)),
                   f"includes no header that declares {row.group(1)}; must include the family's")
        found |= owners
    return found


def check_families(graph, sources):
    stems = sorted((header[:-2] for header in family_headers(sources)), key=len, reverse=True)

    def family_of(file):
        stem = posixpath.splitext(file)[0]
        return next((name for name in stems if stem == name or stem.startswith(name + "_")), None)

    for file, found in graph.items():
        if file == FAMILY_TABLE or file.startswith("tests/"):
            continue
        for line, name in found:
            header = name[:-2]
            if header in stems and family_of(file) != header:
                report(file, line, f"includes {name}, a family's own header; only {header}.cpp and "
                       "the family table may. What families share goes into a file of its own")


FIELD = r"(?:[\w:]+(?:\[\w+\])?(?:\(\))?(?:\.|->))*"
CODE = r"(?:\bquorinprgmode\s*\[\s*0\s*\]|(?<![:\w])family\b{aliases})"
COMPARISON = r"(?:[=!]=|<=|>=|<(?!<)|>(?!>))"


def operand(aliases):
    code = CODE.format(aliases="".join(rf"|(?<![.>:\w]){name}\b" for name in aliases))
    field = FIELD + code
    return (rf"(?:static_cast<[^<>]*>\(\s*{field}\s*\)|\b[\w:]+\{{\s*{field}\s*\}}"
            rf"|(?<![\w>\]])\(\s*{field}\s*\)|{field})")


def check_codes(source):
    if starts_in(source.file, CODE_PLACES):
        return
    text = source.code
    aliases = re.findall(
        rf"\b(?:auto|int|std::u?int\d+_t) (\w+)\s*[={{(]\s*{operand([])}\s*[)}}]?\s*;", text)
    code = operand(aliases)
    patterns = (
        rf"{code}\s*(?<![<>-]){COMPARISON}(?!\s*nullptr)",
        rf"\b(?:\d\w*|k[A-Z]\w*)\s*{COMPARISON}\s*{code}",
        rf"\bswitch\s*\(\s*{code}\s*\)",
        rf"\b(?:find|contains|count|binary_search|lower_bound)\s*\("
        rf"(?:(?:[^;{{}}()]|\(\))*,)?\s*{code}\s*[,)]")
    lines = {line_of(text, m.end()) for pattern in patterns for m in re.finditer(pattern, text)}
    for line in sorted(lines):
        report(source.file, line, "tests a family code; must ask the class of the family, its image "
               "layout or the profile of the device instead")


def main():
    sources = load_sources()
    for source in sources.values():
        check_windows(source)
        check_conditions(source)
        check_codes(source)
    graph = resolve_includes(sources)
    rows = read_table()
    if rows:
        check_folders(graph, rows)
        check_links(rows)
    check_file_cycle(graph)
    check_families(graph, sources)
    for file, line, text in sorted(errors):
        print(f"{file}:{line}: {text}", file=sys.stderr)
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
