"""Large recordings cost nothing until they are read."""

import json
import shutil
import sys

import pytest
from conftest import ROOT, run

SIZE = 4 << 30

MEASURE = """
import json, re, sys, time
began = time.perf_counter()
import tarno2
rec = tarno2.open(sys.argv[1])
opened = time.perf_counter() - began
rec.volts[rec.frames // 2 : rec.frames // 2 + 1000, 0], rec.utc[-1], rec.codes[:: rec.frames // 10]
# Not getrusage(): that counts what the parent had before it started this program.
most = int(re.search(r"VmHWM:\\s*(\\d+) kB", open("/proc/self/status").read())[1])
print(json.dumps({"frames": rec.frames, "seconds": opened, "kib": most}))
"""


OCTAVE = """
addpath('{root}/matlab');
rec = tarno2_read('{data}', 'from', 4e8, 'count', 1000);
printf('%d %d', rec.frames, str2double(regexp(fileread('/proc/self/status'), 'VmHWM:\\s*(\\d+)', 'tokens', 'once'){{1}}));
"""


@pytest.fixture
def sparse(recordings, tmp_path):
    for ending in (".txt", ".json"):
        shutil.copy(recordings / f"board2{ending}", tmp_path / f"sparse{ending}")
    with (tmp_path / "sparse.dat").open("wb") as file:
        file.truncate(SIZE)
    return tmp_path / "sparse.dat"


def test_four_gibibytes_open_without_their_samples(sparse, capsys):
    command = (sys.executable, "-W", "ignore", "-c", MEASURE, sparse)
    measured = json.loads(run(*command, PYTHONPATH=str(ROOT / "python")))
    with capsys.disabled():
        print(f"\n4 GiB: opened in {measured['seconds']:.3f} s with Python and NumPy, {measured['kib'] / 1024:.0f} MiB")
    assert measured["frames"] == SIZE // 10 and measured["kib"] < 100 * 1000 * 1000 / 1024


def test_octave_reads_a_part_of_four_gibibytes(sparse):
    frames, kib = run("octave-cli", "--quiet", "--eval", OCTAVE.format(root=ROOT, data=sparse)).split()
    assert int(frames) == SIZE // 10 and int(kib) < 100 * 1000 * 1000 / 1024
