#!/usr/bin/env python3
"""Reads the passport of a recording and compares all it says with the data files, the descriptions beside them, and
with itself. Written from docs/passport.md, with the standard library alone.

  read_passport.py [--lies] [--counter BITS] [--expect KEY=VALUE]... BASE.json

--counter  the samples are the simulator's counter of so many bits, so that the place of every record is told by them
--expect   what only the operator knows: a path of keys ("rate.asked") and the value it has to have
--lies     alters each value of the passport in turn, in memory, and demands that it is found

Each contradiction is a line; the status is 1 if there is one.
"""

import argparse
import copy
import csv
import datetime
import json
import os
import re
import socket
import sys

SECOND = 1000000000
UTC = "%Y-%m-%dT%H:%M:%S.%fZ"
REASONS = {"user", "time", "size", "condition", "disk full", "write error", "unplugged", "no data", "evaluation error",
           "transfer error", "incompatible", "end of source", "overflow", "error", "shutdown", "cut off"}


def moment(text):
    """Seconds since 1970 of a UTC text."""
    return datetime.datetime.strptime(text, UTC).replace(tzinfo=datetime.timezone.utc).timestamp()


def description_of(path):
    """The keys of a description and their values, lists without blanks."""
    with open(path, encoding="cp1251", newline="") as file:
        text = re.sub(r"\\\r?\n", " ", file.read())
    entries = {}
    for line in text.splitlines():
        key, equals, value = line.partition("=")
        if equals and not line.startswith(";"):
            entries[key.strip()] = value.strip().strip('"')
    return entries


def numbers(value):
    return [float(item) for item in value.split(",")]


def count_word(index, bits):
    return (index + 40503 * (index >> bits)) & ((1 << bits) - 1)


class Reader:
    def __init__(self, path, counter, expected):
        self.folder = os.path.dirname(os.path.abspath(path))
        self.base = os.path.basename(path)[: -len(".json")]
        self.counter = counter
        self.expected = expected
        self.descriptions = {}
        self.problems = []

    def must(self, holds, words):
        if not holds:
            self.problems.append(words)

    def check(self, passport):
        """All contradictions of one passport."""
        self.problems = []
        try:
            for part in (self.head, self.rates, self.sample, self.channels, self.pieces, self.synchronisation,
                         self.records, self.clock, self.end, self.marks, self.wishes):
                part(passport)
        except (KeyError, ValueError, TypeError, IndexError, OverflowError, OSError) as error:
            self.problems.append("%s: %s" % (type(error).__name__, error))
        return self.problems

    def description(self, name):
        if name not in self.descriptions:
            self.descriptions[name] = description_of(os.path.join(self.folder, os.path.splitext(name)[0] + ".txt"))
        return self.descriptions[name]

    def first(self, passport):
        return self.description(passport["pieces"][0]["file"])

    def head(self, passport):
        self.must(passport["format"] == "Tarno2 passport" and passport["formatVersion"] == 1, "format")
        self.must(passport["program"]["name"] == "Tarno2", "program")
        self.must(re.fullmatch(r"\d+(\.\d+){3}", passport["program"]["version"]) is not None, "version of the program")
        self.must(passport["driver"] == self.first(passport)["DriverName"], "driver")
        self.must(passport["computer"] == socket.gethostname(), "computer")
        begun = moment(passport["start"]["utc"])
        local = datetime.datetime.fromisoformat(passport["start"]["local"])
        self.must(local.timestamp() == begun, "local time and UTC of the start")
        told = re.search(r"(\d+):(\d+):(\d+).*?(\d+)\.(\d+)\.(\d+)", self.first(passport)["CreateTime"])
        hour, minute, second, day, month, year = (int(number) for number in told.groups())
        created = datetime.datetime(year, month, day, hour, minute, second)
        self.must(abs((local.replace(tzinfo=None) - created).total_seconds()) < 3.0, "start and CreateTime")

    def rates(self, passport):
        rate = passport["rate"]
        self.must(rate["recorded"] == rate["given"] / rate["decimation"], "rate recorded of the one given")
        told = numbers(self.first(passport)["Frequency"])[0]
        self.must(abs(rate["recorded"] - told) < 1e-6 + told * 1e-9, "rate and Frequency")
        self.must(rate["externalClock"] == (self.first(passport)["ExternalFreqMode"] != "0"), "external clock")

    def sample(self, passport):
        sample = passport["sample"]
        told = [int(number) % (1 << 32) for number in self.first(passport)["DataFormat"].split(",")]
        ours = [sample[key] for key in ("bytes", "codeShift", "codeMask", "codeBits", "lineShift", "lineMask", "lines")]
        self.must(ours + [int(sample["signed"])] == told, "sample and DataFormat")
        self.must(sample["byteOrder"] == "little" and sample["backwardOrder"] is False, "order of bytes and channels")
        half = 1 << (sample["codeBits"] - 1)
        lowest = -half if sample["signed"] else 0
        self.must((sample["codeMinimum"], sample["codeMaximum"]) == (lowest, lowest + 2 * half - 1), "range of codes")
        self.must([line["number"] for line in passport["lines"]] == list(range(sample["lines"])), "lines")

    def channels(self, passport):
        told = numbers(self.first(passport)["ChannelsRange"])
        ours = [channel[limit] for channel in passport["channels"] for limit in ("upper", "lower")]
        self.must(len(ours) == len(told) and all(abs(a - b) <= 5e-7 for a, b in zip(ours, told)),
                  "limits and ChannelsRange")
        self.must(len(passport["channels"]) == int(self.first(passport)["ChannelNumber"]), "number of channels")

    def pieces(self, passport):
        width = passport["sample"]["bytes"] * len(passport["channels"])
        for number, piece in enumerate(passport["pieces"]):
            name = self.base + ("_%d" % number if number else "") + ".dat"
            self.must(piece["file"] == name, "name of piece %d" % number)
            size = os.path.getsize(os.path.join(self.folder, name))
            self.must(piece["bytes"] == size, "size of piece %d" % number)
            self.must(piece["frames"] * width == size, "frames of piece %d" % number)
            self.must(piece["frames"] == int(self.description(name)["DataCountPerChannel"]),
                      "frames of piece %d and DataCountPerChannel" % number)
        after = self.base + "_%d.dat" % len(passport["pieces"])
        self.must(not os.path.exists(os.path.join(self.folder, after)), "there are more pieces")
        self.must(passport["frames"] == sum(piece["frames"] for piece in passport["pieces"]), "frames in all")

    def synchronisation(self, passport):
        mode = passport["synchronisation"]["mode"]
        events = self.first(passport).get("SynchroEnable", "0") != "0"
        self.must((mode == "records") == events and mode in ("off", "analysis", "records"), "mode of synchronisation")
        if mode != "records":
            return
        condition = passport["synchronisation"]["conditions"][0]
        told = self.first(passport)
        for key, list_of in (("prehistory", "SynchroListPrehistory"), ("history", "SynchroListHistory")):
            self.must({passport["synchronisation"][key]} == set(numbers(told[list_of])), key)
        self.must(condition["role"] == "trigger" and len(passport["synchronisation"]["conditions"]) == 1, "condition")
        edge = {"rises": 0, "falls": 1}[condition["when"]]
        self.must({edge} == set(numbers(told["SynchroListConditions"])), "edge of the trigger")
        self.must({condition["channel"]} == set(numbers(told["SynchroListChannel"])), "channel of the trigger")
        self.must({condition["threshold"]} == set(numbers(told["SynchroListValue"])), "threshold of the trigger")

    def records(self, passport):
        if passport["synchronisation"]["mode"] != "records":
            self.must("records" not in passport, "records without synchronisation")
            return
        before = passport["synchronisation"]["prehistory"]
        length = before + passport["synchronisation"]["history"]
        places = [(number, frame) for number, piece in enumerate(passport["pieces"])
                  for frame in range(0, piece["frames"], length)]
        records = passport["records"]
        self.must([(record["piece"], record["frame"]) for record in records] == places, "places of the records")
        for number, piece in enumerate(passport["pieces"]):
            count = sum(1 for place in places if place[0] == number)
            self.must(piece["records"] == count, "records of piece %d" % number)
            self.must(count == int(self.description(piece["file"])["SynchroListCount"]),
                      "records of piece %d and SynchroListCount" % number)
        if passport["state"] == "complete":
            triggers = [record["trigger"] for record in records]
            self.must(all(b - a >= length for a, b in zip(triggers, triggers[1:])), "records overlap")
            self.trigger_words(passport, before)

    def trigger_words(self, passport, before):
        """Where the samples count themselves, the first frame of a record tells its place in the stream."""
        sample, channels = passport["sample"], len(passport["channels"])
        for record in passport["records"] if self.counter else []:
            piece = passport["pieces"][record["piece"]]["file"]
            with open(os.path.join(self.folder, piece), "rb") as data:
                data.seek(record["frame"] * channels * sample["bytes"])
                word = int.from_bytes(data.read(sample["bytes"]), "little")
            index = (record["trigger"] - before) * passport["rate"]["decimation"] * channels
            self.must(word == count_word(index, self.counter), "trigger of the record in frame %d" % record["frame"])

    def clock(self, passport):
        pairs = passport["clock"]["pairs"]
        self.must(passport["state"] == "recovered" or 1 <= len(pairs) <= 1024, "number of clock pairs")
        for a, b in zip(pairs, pairs[1:]):
            self.must(a["frame"] <= b["frame"] and a["monotonic"] < b["monotonic"], "order of the clock pairs")
        for pair in pairs:
            apart = moment(pair["utc"]) - moment(pairs[0]["utc"]) - (pair["monotonic"] - pairs[0]["monotonic"]) * 1e-9
            self.must(abs(apart) < 0.05, "monotonic clock and UTC")
            self.must(moment(passport["start"]["utc"]) <= moment(pair["utc"]) <= moment(passport["end"]["utc"]),
                      "clock outside of the recording")
        line = self.line(pairs)
        self.must(("measuredFrequency" in passport["clock"]) == (line is not None), "measured frequency")
        if line is not None:
            frequency = passport["clock"]["measuredFrequency"]
            self.must(abs(line[1] - frequency) <= 1e-9 * frequency, "measured frequency and clock pairs")
        for record in passport.get("records", []):
            if "utc" in record and line is not None:
                apart = line[0] + record["trigger"] / line[1] - moment(record["utc"])
                self.must(abs(apart) < 5e-6, "UTC of the record in frame %d" % record["frame"])

    @staticmethod
    def line(pairs):
        """UTC of frame 0 and frames a second, by least squares over the monotonic clock."""
        count = len(pairs)
        if count < 2 or pairs[0]["frame"] == pairs[-1]["frame"]:
            return None
        seconds = [(pair["monotonic"] - pairs[0]["monotonic"]) * 1e-9 for pair in pairs]
        frames = [pair["frame"] - pairs[0]["frame"] for pair in pairs]
        mean_s, mean_f = sum(seconds) / count, sum(frames) / count
        rate = (sum((s - mean_s) * (f - mean_f) for s, f in zip(seconds, frames)) /
                sum((s - mean_s) ** 2 for s in seconds))
        return moment(pairs[0]["utc"]) + mean_s - (mean_f + pairs[0]["frame"]) / rate, rate

    def end(self, passport):
        self.must(passport["state"] in ("complete", "recovered"), "state")
        self.must((passport["state"] == "recovered") == (passport["end"]["reason"] == "cut off"), "state and reason")
        self.must(passport["end"]["reason"] in REASONS, "reason of the end")
        self.must(moment(passport["end"]["utc"]) >= moment(passport["start"]["utc"]), "end before the start")
        ended = os.path.getmtime(os.path.join(self.folder, self.base + ".json"))
        self.must(abs(ended - moment(passport["end"]["utc"])) < 120.0, "end and the time of the file")
        self.losses(passport)

    def losses(self, passport):
        told = []
        path = os.path.join(self.folder, self.base + ".log")
        if os.path.exists(path):
            with open(path, encoding="ascii") as file:
                told = [line.strip() for line in file if line.strip()]
        ours = ["sample = %(sample)d, count = %(count)d, cause = %(cause)s" % loss for loss in passport["losses"]]
        self.must(ours == told, "losses and the list of losses: %s, %s" % (ours, told))

    def marks(self, passport):
        path = os.path.join(self.folder, self.base + ".marks.csv")
        self.must(os.path.exists(path) == ("marks" in passport), "marks and their list")
        if "marks" not in passport:
            return
        self.must(passport["marks"]["file"] == os.path.basename(path), "file of the marks")
        with open(path, encoding="utf-8", newline="") as file:
            rows = list(csv.DictReader(file, strict=True))
        self.must(passport["marks"]["count"] == len(rows), "count of the marks")
        self.must([int(row["mark"]) for row in rows] == list(range(1, len(rows) + 1)), "numbers of the marks")
        for row in rows:
            self.must(row["source"] in ("operator", "line", "driver"), "source of a mark")
            self.must(moment(row["utc"]) <= moment(passport["end"]["utc"]), "a mark after the end")

    def wishes(self, passport):
        for path, value in self.expected:
            self.must(str(value_at(passport, path.split("."))) == value, "%s is not %s" % (path, value))


def value_at(place, path):
    for key in path:
        place = place[int(key)] if isinstance(place, list) else place[key]
    return place


def leaves(place, path=()):
    """The paths of all values that are no list and no object."""
    if isinstance(place, (dict, list)):
        for key in place if isinstance(place, dict) else range(len(place)):
            yield from leaves(place[key], path + (key,))
    else:
        yield path


def altered(value):
    """Another value of the same kind, as near as any reader could be asked to tell apart."""
    if isinstance(value, bool):
        return not value
    if isinstance(value, int):
        return value + 1
    if isinstance(value, float):
        return value * 1.001 + 0.001
    if re.fullmatch(r"\d{4}-\d\d-\d\dT.*", value):
        return str(int(value[:4]) + 1) + value[4:]
    return value + "x"


def untold(passport, expected):
    """Lies that nothing else can contradict: what the operator typed, and times that the computer alone knows."""
    known = {tuple(path.split(".")) for path, _ in expected}
    free = [r"board|comment|program\.version|rate\.(asked|packets\w+)|end\.words|synchronisation\.stopAfterRecord",
            r"channels\.\d+\.(number|name|unit|gain|factor|offset)|lines\.\d+\.name|pieces\.\d+\.sha256"]
    if passport["synchronisation"]["mode"] == "analysis":
        free.append(r"synchronisation\.conditions\.\d+\..*")
    if len(passport["clock"]["pairs"]) == 1:
        free.append(r"clock\.pairs\.0\.(frame|monotonic)")
    for path in leaves(passport):
        name = tuple(str(key) for key in path)
        if name not in known and re.fullmatch("|".join(free), ".".join(name)):
            yield path


def find_lies(reader, passport):
    """Alters one value after the other; those that are not found."""
    free = set(untold(passport, reader.expected))
    for path in leaves(passport):
        if path in free:
            continue
        lie = copy.deepcopy(passport)
        value_at(lie, path[:-1])[path[-1]] = altered(value_at(passport, path))
        if path[-1] == "monotonic":
            value_at(lie, path[:-1])[path[-1]] += SECOND
        if not reader.check(lie):
            yield "a lie about %s is not found" % ".".join(str(key) for key in path)


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--lies", action="store_true")
    arguments.add_argument("--counter", type=int, default=0)
    arguments.add_argument("--expect", action="append", default=[])
    arguments.add_argument("passport")
    asked = arguments.parse_args()
    with open(asked.passport, encoding="utf-8") as file:
        passport = json.load(file)
    reader = Reader(asked.passport, asked.counter, [tuple(pair.split("=", 1)) for pair in asked.expect])
    problems = reader.check(passport)
    if asked.lies and not problems:
        problems = list(find_lies(reader, passport))
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
