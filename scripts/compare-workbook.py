"""Compares the numbers of a workbook with a recording: compare-workbook.py BOOK.xlsx DATA.dat DATA.txt codes|volts

Reads the recording by itself, after docs/formats.md, so that a mistake of the converter can't hide."""

import re
import sys
import xml.etree.ElementTree as xml
import zipfile

MAIN = "{http://schemas.openxmlformats.org/spreadsheetml/2006/main}"


def workbook_rows(name):
    """The numbers of the first sheet by row; a cell that holds no number is an error."""
    with zipfile.ZipFile(name) as book:
        sheet = xml.fromstring(book.read("xl/worksheets/sheet1.xml"))
    for row in sheet.iter(MAIN + "row"):
        cells = [cell for cell in row if cell.find(MAIN + "v") is not None]
        texts = [cell.get("r") for cell in cells if cell.get("t", "n") != "n"]
        if texts:
            sys.exit(f"!!!! {name}: {texts[0]} is no number")
        if cells:
            yield [float(cell.find(MAIN + "v").text) for cell in cells]


def described(name, key):
    """The numbers of a key, over continued lines."""
    with open(name, encoding="cp1251") as file:
        text = re.sub(r"\\\s*\n\s*", " ", file.read())
    value = re.search(rf"^{key} = (.*)$", text, re.MULTILINE).group(1)
    return [float(number) for number in value.split(",")]


def recorded_rows(data_name, description, volts):
    width, shift, mask, bits, port_shift, port_mask, lines, sign = map(int, described(description, "DataFormat"))
    signed = sign == 1
    limits = described(description, "ChannelsRange")
    channels = len(limits) // 2
    frequency = described(description, "Frequency")[0]
    lowest = -(1 << bits - 1) if signed else 0
    with open(data_name, "rb") as file:
        data = file.read()
    for frame in range(len(data) // (width * channels)):
        row = [frame / frequency if volts else frame]
        words = [
            int.from_bytes(data[at : at + width], "little")
            for at in range(frame * channels * width, (frame + 1) * channels * width, width)
        ]
        for channel, word in enumerate(words):
            code = (word & mask % (1 << 32)) >> shift
            if signed and code >> (bits - 1):
                code -= 1 << bits
            upper, lower = limits[2 * channel : 2 * channel + 2]
            row.append((upper - lower) * (code - lowest) / ((1 << bits) - 1) + lower if volts else code)
        port = (words[0] & port_mask % (1 << 32)) >> port_shift
        row += [port >> line & 1 for line in range(lines)]
        yield row


def main():
    book, data, description, kind = sys.argv[1:]
    volts = kind == "volts"
    rows = list(workbook_rows(book))
    expected = list(recorded_rows(data, description, volts))
    if len(rows) != len(expected) or not rows:
        sys.exit(f"!!!! {book}: {len(rows)} rows for {len(expected)} frames")
    for number, (row, wanted) in enumerate(zip(rows, expected), 1):
        close = 1e-6 if volts else 0
        if len(row) != len(wanted) or any(abs(a - b) > close for a, b in zip(row, wanted)):
            sys.exit(f"!!!! {book}: row {number} is {row}, recorded was {wanted}")
    print(f"{kind}: {len(rows)} rows of {len(rows[0])} numbers are the recorded ones")


main()
