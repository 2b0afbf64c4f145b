"""Large recordings cost nothing until they are read."""

import json
import subprocess
import sys

from conftest import ROOT

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


def test_four_gibibytes_open_without_their_samples(recordings, tmp_path, capsys):
    size = 4 << 30
    (tmp_path / "sparse.txt").write_bytes((recordings / "board2.txt").read_bytes())
    (tmp_path / "sparse.json").write_bytes((recordings / "board2.json").read_bytes())
    with (tmp_path / "sparse.dat").open("wb") as file:
        file.truncate(size)
    command = [sys.executable, "-W", "ignore", "-c", MEASURE, str(tmp_path / "sparse.dat")]
    environment = {"PYTHONPATH": str(ROOT / "python"), "PATH": "/usr/bin:/bin"}
    measured = json.loads(subprocess.run(command, env=environment, capture_output=True, check=True, text=True).stdout)
    with capsys.disabled():
        print(f"\n4 GiB: opened in {measured['seconds']:.3f} s with Python and NumPy, {measured['kib'] / 1024:.0f} MiB")
    assert measured["frames"] == size // 10 and measured["kib"] < 100 * 1000 * 1000 / 1024
