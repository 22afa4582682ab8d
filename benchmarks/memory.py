"""Measures the memory that a run of fernlow takes, for the shapes of replies that take the most.

    benchmarks/memory [--size MEGABYTES] [--program FERNLOW] [WORD...]

Builds the programs, serves one reply after the other, runs fernlow with and without --json in a
pseudo-terminal, and reads the peak memory from the system. Prints a table. Writes it to
results/memory.md if all shapes are measured. Each WORD selects the shapes whose names contain it.
"""
import argparse
import subprocess
import sys
import tempfile
from pathlib import Path

from make_replies import encoded, files, file_row, log_entry

BENCHMARKS = Path(__file__).resolve().parent
ROOT = BENCHMARKS.parent
BUILD = ROOT / "build/bench"
IN_TERMINAL, SERVER = str(BUILD / "benchmarks/in-terminal"), str(BUILD / "benchmarks/reply-server")

ILL_FORMED = b"\xff"
DEEP = b"[" * 1000 + b"]" * 1000

# Name, the beginning of a reply, the piece that is repeated to the reply's size, and the end.
SHAPES = [
    ("a list of numbers as result", b'{"ok":true,"result":[1', b",1", b"]}"),
    ("a list of numbers nobody reads", b'{"ok":true,"x":[1', b",1", b"]}"),
    ("a list of empty objects as result", b'{"ok":true,"result":[{}', b",{}", b"]}"),
    ("a list of empty texts as result", b'{"ok":true,"result":[""', b',""', b"]}"),
    ("one-digit members of the reply", b'{"ok":true', b',"":0', b"}"),
    ("one-digit members of result", b'{"ok":true,"result":{"":0', b',"":0', b"}}"),
    ("one-digit settings", b'{"ok":true,"result":{"project":{"":0', b',"":0', b"}}}"),
    ("a language for each setting", b'{"ok":true,"result":{"project":{},"languages":{"":{"":0}',
     b',"":{"":0}', b"}}}"),
    ("members that JSON is read for", b'{"ok":true,"result":{"errorCount":1', b',"errorCount":1',
     b"}}"),
    ("a setting that is a list of texts", b'{"ok":true,"result":{"applied":{"a":[""', b',""',
     b"]}}}"),
    ("empty log entries", b'{"ok":true,"result":{"entries":[{}', b",{}", b"]}}"),
    ("empty problems", b'{"ok":true,"result":{"compiledFileCount":0,"problems":[{}', b",{}",
     b"]}}"),
    ("a page of files", None, None, None),
    ("a page of the log", None, None, None),
    ("texts with escapes", b'{"ok":true,"result":{"notes":["\\n"', b',"\\n"',
     b'],"endpoints":[]}}'),
    ("one long text with an escape", b'{"ok":true,"result":{"applied":{"a":"\\n', b"x", b'"}}}'),
    ("one long key with an escape", b'{"ok":true,"\\n', b"x", b'":1}'),
    ("a number of many digits", b'{"ok":true,"result":{"errorCount":1', b"0", b"}}"),
    ("lists 1,000 deep", b'{"ok":true,"x":[' + DEEP, b"," + DEEP, b"]}"),
    ("numbers, cut off", b'{"ok":true,"result":[1', b",1", b""),
    ("ill-formed UTF-8", b'{"ok":true,"result":{"applied":{"a":"', ILL_FORMED, b'"}}}'),
    ("ill-formed UTF-8 with an escape", b'{"ok":true,"result":{"applied":{"a":"\\n', ILL_FORMED,
     b'"}}}'),
    ("ill-formed UTF-8 in texts", b'{"ok":true,"result":[""', b',"' + ILL_FORMED + b'"', b"]}"),
    ("numbers and ill-formed UTF-8", b'{"ok":true,"x":"' + ILL_FORMED + b'","result":[1', b",1",
     b"]}"),
]


def of_rows(opening, row, closing, size):
    rows = [encoded(row(number)) for number in range(1000)]
    times = size // sum(len(each) + 1 for each in rows)
    return opening + b",".join(rows * max(times, 1)) + closing


def body_of(shape, size):
    name, opening, repeated, closing = shape
    if name == "a page of files":
        return of_rows(b'{"ok":true,"result":{"files":[', file_row, b"]}}", size)
    if name == "a page of the log":
        return of_rows(b'{"ok":true,"result":{"entries":[', log_entry, b"]}}", size)
    return opening + repeated * ((size - len(opening) - len(closing)) // len(repeated)) + closing


def build():
    quiet = {"cwd": ROOT, "check": True, "stdout": subprocess.DEVNULL}
    subprocess.run(["cmake", "--preset", "release", "-B", BUILD, "-DFERNLOW_BENCHMARKS=ON"],
                   **quiet)
    subprocess.run(["cmake", "--build", BUILD, "-j2", "--target", "fernlow", "in-terminal",
                    "reply-server"], **quiet)


def memory_of_runs(program, body, folder):
    """Returns the peak memory and the length of the output of two runs, both in bytes. The first
    run prints JSON, and the second prints text."""
    (folder / "reply.json").write_bytes(body)
    (folder / "reply").unlink(missing_ok=True)
    server = subprocess.Popen([SERVER, folder, folder], stdout=subprocess.PIPE)
    try:
        server.stdout.readline()
        return [memory_of_run([program, *option, "--socket", str(folder / "reply"), "status"])
                for option in (["--json"], [])]
    finally:
        server.kill()
        server.wait()


def memory_of_run(command):
    run = subprocess.run([IN_TERMINAL, "--peak", *command], stdout=subprocess.PIPE,
                         stderr=subprocess.DEVNULL, text=True, check=False)
    peak, length = run.stdout.split()
    return int(peak), int(length)


def main():
    parser = argparse.ArgumentParser(description="measures the memory that replies take")
    parser.add_argument("--size", type=float, default=32, help="size of a reply in megabytes")
    parser.add_argument("--program", default=str(BUILD / "fernlow"), help="program to measure")
    parser.add_argument("words", nargs="*", metavar="WORD")
    options = parser.parse_args()
    build()
    shapes = [shape for shape in SHAPES
              if not options.words or any(word in shape[0] for word in options.words)]
    lines = ["| reply | as JSON | as text | its text |", "| --- | ---: | ---: | ---: |"]
    # Not $TMPDIR: a socket's path has at most 103 bytes.
    with tempfile.TemporaryDirectory(prefix="fernlow-", dir="/tmp") as temporary:
        folder = Path(temporary)
        constants = [peak for peak, _ in memory_of_runs(options.program, b'{"ok":true}', folder)]
        for shape in shapes:
            body = body_of(shape, int(options.size * 10**6))
            (json_peak, json_length), (peak, length) = memory_of_runs(options.program, body, folder)
            # A reply that is not valid UTF-8 is printed from a repaired copy. Any other reply is
            # printed from the buffer that it was read into.
            repaired = json_length if json_length > len(body) + 1 else 0
            sums = [json_peak - constants[0] - repaired, peak - constants[1] - length, length]
            lines.append("| " + " | ".join([shape[0], *(f"{max(each, 0) / len(body):.2f}"
                                                       for each in sums)]) + " |")
            print(lines[-1], flush=True)
    report = "\n".join(lines) + f"""

Peak memory divided by the size of the reply (here {options.size:g} MB). It does not include the \
{max(constants) / 10**6:.1f} MB
that a run takes with the smallest reply, or the printed text: the text made from the reply, or the
repaired JSON if the reply is not valid UTF-8.
"""
    print("\n" + report)
    if not options.words:
        (BENCHMARKS / "results/memory.md").write_text("# The memory that replies take\n\n" + report)


if __name__ == "__main__":
    sys.exit(main())
