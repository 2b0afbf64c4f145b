#!/usr/bin/env python3
"""What scripts/first-uses.sh does on its screen: three first uses of the window, their clicks and keys counted.

Whoever uses it knows where things are; what is counted is what the window asks of the hand. A click is one, a double click
two, a key with its modifiers one, a text as many as it has letters. Starting the program, looking and waiting are free.
"""

import os
import re
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import pyatspi

BIN = Path(os.environ["TARNO2_BIN"])
PATIENCE = 30.0


def wait_for(what, text):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        try:
            if found := what():
                return found
        except Exception:  # a control went away while it was asked
            pass
        time.sleep(0.1)
    sys.exit(f"!!!! {text} was not to be seen")


def xdotool(*words):
    subprocess.run(["xdotool", *map(str, words)], check=True, stdout=subprocess.DEVNULL)
    time.sleep(0.4)


class Program:
    """The running program, what is seen of it, and the hand that uses it."""

    def __init__(self, home):
        self.home = home
        self.count = 0
        self.process = subprocess.Popen([BIN / "Tarno2"], env=os.environ | {
            "TARNO2_HOME": str(home), "HOME": str(home), "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"})
        self.use_window("Tarno2")
        self.find("label", "○ Ready")

    def close(self):
        self.process.terminate()
        self.process.wait(PATIENCE)

    def use_window(self, title):
        """Gives a window the keys, as nobody manages windows here."""
        subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--name", title, "windowfocus", "--sync"],
                       check=True, stdout=subprocess.DEVNULL, timeout=PATIENCE)
        time.sleep(0.5)

    def parts(self, node=None):
        """Everything that is showing, from the window on top down."""
        children = node if node is not None else [
            window for application in pyatspi.Registry.getDesktop(0) if application and application.name == "Tarno2"
            for window in reversed(list(application))]
        for child in children:
            if child and child.getState().contains(pyatspi.STATE_SHOWING):
                yield child
                yield from self.parts(child)

    def seen(self, role, name):
        return next((part for part in self.parts()
                     if part.getRoleName() == role and re.fullmatch(name, part.name)), None)

    def find(self, role, name):
        return wait_for(lambda: self.seen(role, name), f"{role} {name!r}")

    def cell(self, table, row, column):
        """The cell in the row that begins with a name, below the heading of that text."""
        def look():
            grid = next(part for part in self.parts() if part.getRoleName() == "table" and re.fullmatch(table, part.name)
                        and any(child.name == column for child in part))
            heading = [child.name for child in grid if child.getRoleName() == "table column header"].index(column)
            cells = [child for child in grid if child.getRoleName() == "table cell"]
            width = grid.queryTable().nColumns
            rows = [cells[i:i + width] for i in range(0, len(cells), width)]
            return next(line for line in rows if any(re.fullmatch(row, cell.name) for cell in line[:2]))[heading]
        return wait_for(look, f"{row!r} below {column!r}")

    # What is counted.

    def click(self, part, times=1, at=0.5):
        """Clicks into a part, at so much of its width."""
        box = part.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
        xdotool("mousemove", int(box.x + box.width * at), box.y + box.height // 2)
        xdotool("click", "--repeat", times, "--delay", 60, 1)
        self.count += times

    def pick(self, box, entry):
        self.click(box)
        self.click(self.find("list item", entry))

    def press(self, *keys):
        for key in keys:
            xdotool("key", key)
            self.count += 1


def beside(program, label):
    """The list that a label stands for."""
    def look():
        relations = program.find("label", label).getRelationSet()
        return next(relation.getTarget(0) for relation in relations
                    if relation.getRelationType() == pyatspi.RELATION_LABEL_FOR)
    return wait_for(look, f"what {label!r} stands for")


def choose_simulator(program):
    """As the page of the first start offers it; its signal runs then."""
    program.click(program.find("push button", "Try the simulated board"))
    program.find("label", "◉ Monitoring")


def recordings(home):
    return sorted((home / "Documents" / "Data").glob("*.dat"))


def described(data, key):
    text = data.with_suffix(".txt").read_text(encoding="cp1251").replace("\\\n", " ").replace("\\\r\n", " ")
    return [value.strip() for value in re.search(rf"^{key} = (.*)$", text, re.MULTILINE)[1].split(",")]


def highest(data, channel):
    """The largest voltage of a channel in the data file."""
    text = subprocess.run([BIN / "tarno2-export", data, "--data", "volts", "--channels", str(channel), "--quiet", "-"],
                          check=True, capture_output=True, text=True).stdout
    return max(map(float, text.split()))


def record_and_look(program):
    choose_simulator(program)
    # Channels are chosen while the board stands still.
    program.press("F6")
    program.find("label", "[○■] .*")
    program.click(program.cell("Channels", "1", "On"))
    program.press("alt+3")
    program.pick(beside(program, "Stop of recording"), "After time")
    program.press("F5")
    program.find("label", "■ Stopped")
    program.click(program.find("check box", "Cursors"))
    peak = float(wait_for(lambda: program.cell("", "Channel 0.*", "Max").name, "the peak"))
    data, = recordings(program.home)
    frames = data.stat().st_size // 4
    assert described(data, "ChannelNumber") == ["2"], "two channels"
    assert abs(frames / float(described(data, "Frequency")[0]) - 10) < 0.1, f"ten seconds, and not {frames} frames"
    assert abs(peak - highest(data, 0)) < 0.001, f"the peak that is shown, {peak}"


def set_trigger(program):
    choose_simulator(program)
    program.press("F7")
    program.use_window("Additional settings")
    program.click(program.find("radio button", "Synchronization"))
    program.click(program.find("text", "Trigger: Threshold"), times=2, at=0.04)
    program.press("1")
    # A page of the bar: a tenth of a record.
    program.click(program.find("slider", "Prehistory size"))
    program.press("Return")


def check_trigger(program):
    program.use_window("Tarno2")
    program.press("F5")
    wait_for(lambda: recordings(program.home) and recordings(program.home)[0].stat().st_size, "a record")
    program.press("F6")
    program.find("label", "■ Stopped")
    data, = recordings(program.home)
    assert set(described(data, "SynchroListValue")) == {"1.000000"}, "the level"
    before, after = (set(described(data, f"SynchroList{part}")) for part in ("Prehistory", "History"))
    assert (before, after) == ({"100"}, {"900"}), f"a tenth before the trigger, and not {before} to {after}"


def export_part(program):
    program.click(program.find("push button", "Open"))
    program.click(program.find("push button", "Save this part"))
    program.use_window("Save as text")
    program.press("Return")
    program.click(program.find("push button", "OK"))


def check_export(program):
    between = int(re.sub(r"\D", "", program.find("label", r"[\d\s]+ samples").name))
    text = wait_for(lambda: next((program.home / "Documents" / "Data").glob("*.csv"), None), "the text")
    wait_for(lambda: len(text.read_text().splitlines()) == between, f"a text of {between} lines")


def counted(title, limit, program, use):
    before = program.count
    use(program)
    count = program.count - before
    print(f"{'ok' if count <= limit else 'FAILED'}: {title}: {count} clicks and keys, {limit} allowed")
    return count <= limit


def keep(folder, name):
    if folder:
        subprocess.run(["import", "-window", "root", Path(folder) / f"first_{name}.png"], check=True)


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else None
    # The bus of the screen readers has to be there before the program is.
    wait_for(lambda: pyatspi.Registry.getDesktop(0) is not None, "the bus of screen readers")
    good = []
    with tempfile.TemporaryDirectory() as home:
        program = Program(Path(home))
        good.append(counted("record ten seconds of two channels and look at the peak", 8, program, record_and_look))
        keep(folder, "peak")
        good.append(counted("export what is between its cursors", 6, program, export_part))
        check_export(program)
        keep(folder, "export")
        program.close()
    with tempfile.TemporaryDirectory() as home:
        program = Program(Path(home))
        good.append(counted("set a trigger at 1 V with 10 % of prehistory", 10, program, set_trigger))
        check_trigger(program)
        keep(folder, "trigger")
        program.close()
    return 0 if all(good) else 1


if __name__ == "__main__":
    sys.exit(main())
