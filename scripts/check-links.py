#!/usr/bin/env python3
"""Checks the links of the documents: files, headings, pictures, and that every picture is shown somewhere.

    scripts/check-links.py [FOLDER]       checks the files that git tracks in a checkout (this one)
    scripts/check-links.py --self-test    checks that planted faults are found, and that nothing else is
"""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

LINK = re.compile(r"!?\[[^\]]*\]\(([^)\s]+)\)|<img[^>]*src=\"([^\"]+)\"")
PICTURES = (".png", ".svg")


def plain(text: str) -> str:
    """Without what stands in code."""
    text = re.sub(r"^```.*?^```", "", text, flags=re.MULTILINE | re.DOTALL)
    return re.sub(r"`[^`\n]*`", "code", text)


def anchors(page: Path) -> set[str]:
    """The headings as the usual viewers name them: lower case, blanks become dashes, punctuation goes."""
    found: set[str] = set()
    fenced = re.sub(r"^```.*?^```", "", page.read_text(), flags=re.MULTILINE | re.DOTALL)
    for explicit in re.findall(r"\{#([^}\s]+)", fenced):
        found.add(explicit)
    for heading in re.findall(r"^#+ +(.*?)(?: *\{#.*\})?$", fenced, flags=re.MULTILINE):
        found.add(re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-"))
    return found


def faults(root: Path, tracked: list[str]) -> list[str]:
    found: list[str] = []
    shown: set[Path] = set()
    for name in tracked:
        if not name.endswith(".md"):
            continue
        page = root / name
        for target in (a or b for a, b in LINK.findall(plain(page.read_text()))):
            if re.match(r"[a-z]+:", target):
                continue
            path, _, anchor = target.partition("#")
            file = (page.parent / path).resolve() if path else page
            shown.add(file)
            if not file.exists():
                found.append(f"{name}: {target} is missing")
            elif anchor and anchor not in anchors(file):
                found.append(f"{name}: {target} has no such heading")
    for name in tracked:
        path = Path(name)
        if path.parent.name == "pictures" and path.suffix in PICTURES and (root / path).resolve() not in shown:
            found.append(f"{name} is shown nowhere")
    return found


def self_test() -> int:
    with tempfile.TemporaryDirectory() as folder:
        root = Path(folder).resolve()
        (root / "pictures").mkdir()
        for picture in ("used.png", "lost.svg"):
            (root / "pictures" / picture).touch()
        (root / "b.md").write_text("# One: two\n\n```\n# no heading\n```\n")
        (root / "a.md").write_text(
            "[](b.md) [](b.md#one-two) [](https://example.org/x) `[](code.md)` ![](pictures/used.png)\n"
            "[](none.md)\n[](b.md#no-heading)\n[](#nowhere)\n"
        )
        found = faults(root, ["a.md", "b.md", "pictures/used.png", "pictures/lost.svg"])
    wanted = ["none.md is missing", "b.md#no-heading has", "#nowhere has", "lost.svg is shown nowhere"]
    passed = sum(any(want in fault for fault in found) for want in wanted)
    failed = len(wanted) - passed + max(0, len(found) - len(wanted))
    print(f"{passed} passed, {failed} failed", *found if failed else [], sep="\n")
    return failed


def main() -> int:
    if sys.argv[1:] == ["--self-test"]:
        return self_test()
    root = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parent.parent).resolve()
    listed = subprocess.run(["git", "ls-files"], cwd=root, capture_output=True, text=True, check=True)
    tracked = [name for name in listed.stdout.splitlines() if (root / name).exists()]
    found = faults(root, tracked)
    pages = sum(name.endswith(".md") for name in tracked)
    print(*found, f"{pages} pages, {len(found)} faults", sep="\n")
    return 1 if found or not pages else 0


if __name__ == "__main__":
    sys.exit(main())
