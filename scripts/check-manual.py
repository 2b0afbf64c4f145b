#!/usr/bin/env python3
"""Checks that the manual tells everything, and the same in both languages.

    scripts/check-manual.py [FOLDER]       checks a checkout (this one)
    scripts/check-manual.py --self-test    checks that planted faults are found

In the manual of each language have to be
- every message: the page messages.md quotes it as {{Name}}. A row of src/language/texts.inc is a message when its
  English is a sentence (three words and more that end with a full stop, a question or an exclamation mark) or tells
  something of something (four words and more that end with ": %s"), unless its name says that it is a hint, a comment of
  a settings file, a command of a menu or a line of the about box; and besides the rows that OTHER_MESSAGES names, which are
  told without a full stop
- every key of the settings file and of the autosettings file: settings.md has it in `code`
- every shortcut of an action, in `code` on any page
- every option and command of a program, in `code` on commands.md
What settings.md has in the first column of a table is a key, and what begins with "--" on commands.md an option, of today.
The languages have the same pages, and these the same anchors in the same order; every heading has one. Links lead to
headings that are there, pictures are there, names between {{ }} are rows of texts.inc.
"""

import re
import shutil
import sys
import tempfile
from pathlib import Path

LANGUAGES = ("en", "ru")

OTHER_MESSAGES = """
    FifoOverflow InitError StartError UnknownError NoData AnalyzeError GetDataError GetDataReport DataWriteError
    BoardUnplugged Attention UndefinedFormat StaticParametersMistake FileNameError ModuleFileNameError NotLocalDrive
    UnknownDrive UnknownFat FileNameEmpty FileNameIsFolder EarlierRecordingMoved EarlierRecordingNotMoved
    UnrecognizedError Usage DriverReleasedTooOften DriverFreedWhileHeld DriverDestroyedWhileHeld BoardReleasedTooOften
    BoardFreedWhileHeld BoardDestroyedWhileHeld SynchroValueMistake SynchroParametersMistake NotFoundEntry
    LookingForBoard SearchingForBoards ExportFinished ExportInterrupted ScoperaNotLoaded
    """.split()
NO_MESSAGE = re.compile(r"^(Key|Comment|Menu|About|Column)|Hint$")

STRING = re.compile(r'"((?:[^"\\]|\\.)*)"')
HEADING = re.compile(r"^#{1,6} .*$", re.MULTILINE)
ANCHOR = re.compile(r"\{#([\w-]+)\}\s*$")
LINK = re.compile(r"(!?)\[[^\]]*\]\(([^)\s]+)\)")
QUOTE = re.compile(r"\{\{(\w+)\}\}")


def read(path: Path) -> str:
    return path.read_text(encoding="utf-8")


def sources(folder: Path, *patterns: str) -> str:
    return "\n".join(read(path) for pattern in patterns for path in sorted(folder.glob(pattern)))


def english_texts(root: Path) -> dict[str, str]:
    """The English text of every row, its conversions as they stand."""
    texts = {}
    for row in re.finditer(r'TEXT_ROW\((\w+),\s*\d+,(.*?")\)\n', read(root / "src/language/texts.inc"), re.DOTALL):
        first = re.match(r'\s*((?:"(?:[^"\\]|\\.)*"\s*)+),', row[2])
        texts[row[1]] = "".join(STRING.findall(first[1])).replace("\\n", " ").strip() if first else ""
    return texts


def is_message(name: str, english: str) -> bool:
    words = len(english.split())
    told = (words >= 3 and re.search(r"[.?!]$", english) and not english.endswith("...")) or (
        words >= 4 and english.endswith(": %s"))
    return name in OTHER_MESSAGES or (bool(told) and not NO_MESSAGE.search(name))


def setting_keys(root: Path) -> set[str]:
    settings = root / "src/config/settings"
    table = read(settings / "settings_table.cpp")
    keys = set(re.findall(r'"([A-Z][A-Za-z]{3,})"', table))
    keys |= set(re.findall(r'constexpr const char\* k\w+ = "([A-Z]\w+)";', read(settings / "auto_settings.cpp")))
    # Keys of the first versions are rows of the texts, their names told once more.
    keys |= set(re.findall(r'TEXT_ROW\(Key\w+, \d+, "(\w+)"', read(root / "src/language/texts.inc")))
    return keys


NAMES_OF_KEYS = {"Backspace": "Backspace", "Plus": "+", "Minus": "-", "Equal": "=", "PageUp": "PgUp",
                 "PageDown": "PgDown", "Space": "Space", "Question": "?", "Return": "Enter", "Escape": "Esc",
                 "Slash": "/", "Comma": ",", "Period": ".", "Delete": "Del"}
STANDARD_KEYS = {"Open": "Ctrl+O", "Copy": "Ctrl+C", "Save": "Ctrl+S", "SelectAll": "Ctrl+A"}


def shortcuts(root: Path) -> set[str]:
    """What actions are given as their keys, as the menus show it."""
    found = set()
    for line in sources(root / "src/ui", "*.cpp", "panels/*.cpp").splitlines():
        if not re.search(r"\b(add|addToggle|addBarAction|key|setShortcuts?|QShortcut|QKeySequence)\((?!\))", line):
            continue
        for modifiers, name in re.findall(r"((?:Qt::(?:CTRL|SHIFT|ALT) \| )*)Qt::Key_(\w+)", line):
            key = NAMES_OF_KEYS.get(name, name)
            found.add("".join(m.capitalize() + "+" for m in re.findall(r"CTRL|SHIFT|ALT", modifiers)) + key)
        found |= {STANDARD_KEYS.get(name, name) for name in re.findall(r"QKeySequence::([A-Z]\w+)\)", line)}
    return found


def options(root: Path) -> set[str]:
    found = {"--help"}
    found |= set(re.findall(r'ProgramOption k\w+ = \{"([^"]+)"', read(root / "src/config/settings/command_line.cpp")))
    text = sources(root / "src/apps", "*.cpp", "**/*.cpp")
    for names in re.findall(r'add_(?:option|flag|subcommand)\(\s*"([^"]+)"', text):
        found |= {name for name in names.split(",") if name.startswith("-") or name.islower()}
    # Places of arguments, which a line names after its command.
    return found - {"name", "library", "board"}


def without_code(text: str) -> str:
    return re.sub(r"`[^`\n]*`", "", re.sub(r"^```.*?^```", "", text, flags=re.MULTILINE | re.DOTALL))


def in_code(text: str) -> set[str]:
    """The words in `code`, each as a whole and by its parts."""
    found = set()
    for code in re.findall(r"`([^`\n]+)`", text):
        found |= {code, *re.split(r"[ ,=]+", code)}
    return found


class Manual:
    def __init__(self, root: Path, language: str) -> None:
        self.folder = root / "manual" / language
        self.pages = {path.stem: read(path) for path in sorted(self.folder.glob("*.md"))}

    def anchors(self, page: str) -> list[str]:
        text = re.sub(r"^```.*?^```", "", self.pages[page], flags=re.MULTILINE | re.DOTALL)
        return [found[1] if (found := ANCHOR.search(line)) else "" for line in HEADING.findall(text)]

    def stale(self, keys: set[str], known_options: set[str]) -> list[str]:
        cells = re.findall(r"^\| ([^|]*`[^|]*) \|", self.pages.get("settings", ""), re.MULTILINE)
        told = {word for cell in cells for word in re.findall(r"`([A-Z]\w+)`", cell)}
        told_options = {word for word in in_code(self.pages.get("commands", "")) if re.fullmatch(r"--[\w-]+", word)}
        return [f"{self.folder.name}: {name} is not there any more"
                for name in sorted((told - keys) | (told_options - known_options))]

    def lacks(self, names: set[str], page: str, what: str) -> list[str]:
        told = in_code(self.pages.get(page, "")) if page else in_code("\n".join(self.pages.values()))
        return [f"{self.folder.name}: {what} {name} is not told" for name in sorted(names - told)]


def check_links(root: Path, manual: Manual) -> list[str]:
    faults = []
    for page, text in manual.pages.items():
        where = f"manual/{manual.folder.name}/{page}.md"
        for picture, target in LINK.findall(without_code(text)):
            if "://" in target:
                continue
            file, _, anchor = target.partition("#")
            if picture:
                if not (manual.folder / file).is_file():
                    faults.append(f"{where}: there is no picture {target}")
            elif (file and not file.endswith(".md")) or (other := file.removesuffix(".md") or page) not in manual.pages:
                faults.append(f"{where}: there is no page {target}")
            elif anchor and anchor not in manual.anchors(other):
                faults.append(f"{where}: there is no heading {target}")
    return faults


def check(root: Path) -> list[str]:
    faults: list[str] = []
    texts = english_texts(root)
    manuals = {language: Manual(root, language) for language in LANGUAGES}
    if not texts or not manuals["en"].pages:
        return ["there is no manual, or no texts"]
    messages = {name for name, english in texts.items() if is_message(name, english)}
    faults += [f"OTHER_MESSAGES: {name} is no row of texts.inc" for name in OTHER_MESSAGES if name not in texts]
    for language, manual in manuals.items():
        quoted = set(QUOTE.findall(manual.pages.get("messages", "")))
        faults += [f"{language}: message {name} is not told: {texts[name]}" for name in sorted(messages - quoted)]
        for page, text in manual.pages.items():
            faults += [f"{language}/{page}.md: {name} is no row of texts.inc"
                       for name in sorted(set(QUOTE.findall(text)) - set(texts))]
            if "" in manual.anchors(page):
                faults.append(f"{language}/{page}.md: a heading has no anchor")
            if f"{{file: {page}," not in read(manual.folder / "manual.yaml"):
                faults.append(f"{language}/{page}.md is not in manual.yaml")
        faults += manual.lacks(setting_keys(root), "settings", "key")
        faults += manual.lacks(options(root), "commands", "option")
        faults += manual.stale(setting_keys(root), options(root))
        faults += manual.lacks(shortcuts(root), "", "shortcut")
        faults += check_links(root, manual)
    first, second = manuals.values()
    faults += [f"{page}.md is there in one language alone" for page in sorted(set(first.pages) ^ set(second.pages))]
    for page in sorted(set(first.pages) & set(second.pages)):
        if first.anchors(page) != second.anchors(page):
            faults.append(f"{page}.md: the languages have different headings")
    return faults


def self_test(root: Path) -> int:
    """Each case changes one file of a copy, in which that fault has to be found then beside those of the tree."""
    cases = (
        ("manual/ru/messages.md", "{{FifoOverflow}}", "", "message FifoOverflow"),
        ("src/language/texts.inc", 'TEXT_ROW(FifoOverflow,', 'TEXT_ROW(Planted, 9999, "It is new here.", "Новое.")\n'
         'TEXT_ROW(FifoOverflow,', "message Planted"),
        ("manual/en/settings.md", "`CutModeValue`", "", "key CutModeValue"),
        ("manual/ru/settings.md", "`SizeNeedHight`", "", "key SizeNeedHight"),
        ("manual/en/window.md", "`Ctrl+M`", "", "shortcut Ctrl+M"),
        ("manual/ru/commands.md", "`--divider-count", "`", "option --divider-count"),
        ("manual/ru/settings.md", "`TextMarks`", "`TextMarks`, `TextFlags`", "TextFlags is not there any more"),
        ("manual/en/index.md", "](first.md)", "](last.md)", "there is no page last.md"),
        ("manual/en/first.md", "](measuring.md#marks)", "](measuring.md#none)", "there is no heading"),
        ("manual/ru/trigger.md", "pictures/ru_trigger.svg", "pictures/none.svg", "there is no picture"),
        ("manual/ru/view.md", "{#cursors}", "{#others}", "different headings"),
        ("manual/en/view.md", " {#cursors}", "", "a heading has no anchor"),
        ("manual/en/glossary.md", "# ", "{{NoSuchText}}\n\n# ", "NoSuchText is no row"),
    )
    before = check(root)
    failed = 0
    for name, old, new, expected in cases:
        with tempfile.TemporaryDirectory() as folder:
            copy = Path(folder)
            for part in ("manual", "src/language", "src/config/settings", "src/ui", "src/apps", "docs/pictures"):
                shutil.copytree(root / part, copy / part)
            text = read(copy / name)
            (copy / name).write_text(text.replace(old, new), encoding="utf-8")
            faults = [fault for fault in check(copy) if fault not in before]
        if old not in text or not any(expected in fault for fault in faults):
            print(f"self-test: {name}: {expected!r} was not found, but {faults}")
            failed += 1
    print(f"{len(cases) - failed} passed, {failed} failed")
    return 1 if failed else 0


def main() -> int:
    root = Path(__file__).resolve().parent.parent
    if sys.argv[1:] == ["--self-test"]:
        return self_test(root)
    faults = check(Path(sys.argv[1]) if len(sys.argv) > 1 else root)
    print("\n".join(faults) if faults else "The manual tells everything, in both languages")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
