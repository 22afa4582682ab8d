"""Compares whole runs of fernlow with the least work a run can do, and with other programs.

    benchmarks/compare [--runs N]

Builds the programs, serves replies of several sizes, and measures for each reply: a C program that
only moves the bytes, linked as usual (the floor) and linked statically like the released program
(the static floor); the released, static fernlow; curl; and curl piped into jq. Counts page faults,
instructions and system calls. Writes results/compare.md, .csv and .svg, and prints the part of
compare.md that the README shows. N is the number of runs of each command, 100 by default; 10 are
enough for a quick try.

Without the toolchain for released programs, fernlow is the ordinary build, and there is no static
floor.
"""
import argparse
import shlex
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

import counts
import report
from times import measure, output_and_status

BENCHMARKS = Path(__file__).resolve().parent
ROOT = BENCHMARKS.parent
BUILD = ROOT / "build/bench"
SHIPPED = ROOT / "build/bench-static"
RESULTS = BENCHMARKS / "results"
HAS_TOOLCHAIN = "--shipped" in sys.argv
# The programs are measured as copies. The page cache holds a file that a linker has just written in
# smaller pieces than an installed file, which costs a few page faults.
COPIES = BUILD / "measured"
FLOOR, FERNLOW = str(COPIES / "floor"), str(COPIES / "fernlow")
COMPLETE = str(COPIES / "fernlow-complete")
STATIC_FLOOR = [str(COPIES / "static-floor")] if HAS_TOOLCHAIN else []
IN_TERMINAL, SERVER = str(BUILD / "benchmarks/in-terminal"), str(BUILD / "benchmarks/reply-server")

# The name of each reply, in the order of the tables, and the name of the jq filter that turns the
# reply into the text that fernlow prints.
FILTERS = {"status": "status", "work-report": "work-report", "settings-schema": "settings-schema",
           "files-500": "files", "log-5000": "log", "files-5000": "files", "files-1mb": "files",
           "files-50mb": "files"}


def build():
    quiet = {"cwd": ROOT, "check": True, "stdout": subprocess.DEVNULL}
    programs = ["fernlow", "fernlow-complete", "floor"]
    subprocess.run(["cmake", "--preset", "release", "-B", BUILD, "-DFERNLOW_BENCHMARKS=ON"],
                   **quiet)
    subprocess.run(["cmake", "--build", BUILD, "-j2", "--target", *programs, "in-terminal",
                    "reply-server"], **quiet)
    if HAS_TOOLCHAIN:
        subprocess.run(["cmake", "--preset", "linux-x86_64", "-B", SHIPPED,
                        "-DFERNLOW_BENCHMARKS=ON"], **quiet)
        subprocess.run(["cmake", "--build", SHIPPED, "-j2", "--target", *programs], **quiet)
    shutil.rmtree(COPIES, ignore_errors=True)
    COPIES.mkdir()
    source = SHIPPED if HAS_TOOLCHAIN else BUILD
    shutil.copy(source / "fernlow", FERNLOW)
    shutil.copy(source / "fernlow-complete", COMPLETE)
    shutil.copy(BUILD / "benchmarks/floor", FLOOR)
    for static_floor in STATIC_FLOOR:
        shutil.copy(SHIPPED / "benchmarks/floor", static_floor)


def commands_for(name, socket):
    """Returns the text that fernlow prints for a reply, and the commands to measure with this
    reply: a dictionary from the name of a command to its words."""
    jq = (BENCHMARKS / f"filters/{FILTERS[name]}.jq").read_text()
    curl = ["curl", "-sS", "--unix-socket", socket, "http://localhost/v1/status"]
    request = [socket, "/v1/status"]
    floor = [FLOOR, *request]
    terminal = [IN_TERMINAL, FERNLOW, "--socket", socket, "status"]
    shown, _ = output_and_status([IN_TERMINAL, "--show", *terminal[1:]])
    text = shown.replace(b"\r\n", b"\n")
    text_file = f"{socket}.txt"
    Path(text_file).write_bytes(text)
    return text, {
        "floor": floor,
        **({"static floor": STATIC_FLOOR + request} if STATIC_FLOOR else {}),
        "fernlow --json": [FERNLOW, "--json", "--socket", socket, "status"],
        "curl": curl,
        "floor in a terminal": [IN_TERMINAL, *floor, text_file],
        "fernlow in a terminal": terminal,
        "curl | jq": ["sh", "-c", f"{shlex.join(curl)} | jq -r {shlex.quote(jq)}"],
    }


def check(name, commands, body, text):
    """Returns a sentence about each command that prints an unexpected text."""
    wrong = []
    for command in ("floor", *(["static floor"] if STATIC_FLOOR else []), "fernlow --json", "curl"):
        if output_and_status(commands[command])[0].rstrip(b"\n") != body:
            wrong.append(f"{name}: {command} does not give the reply's body.")
    if not text or text != output_and_status(commands["curl | jq"])[0]:
        wrong.append(f"{name}: jq's text differs from fernlow's.")
    return wrong


def count_runs(folder):
    """Returns a dictionary from the name of a run to its numbers of page faults, instructions and
    system calls. A number is None if it could not be counted."""
    floor = STATIC_FLOOR or [FLOOR]
    name = "static floor" if STATIC_FLOOR else "floor"
    runs = {f"status reply: {name}": [*floor, folder / "status", "/v1/status"],
            "status reply: fernlow --json": [FERNLOW, "--json", "--socket", folder / "status",
                                             "status"],
            f"nobody listens: {name}": [*floor, folder / "nobody", "/v1/status"],
            "nobody listens: fernlow": [FERNLOW, "--no-launch", "status"]}
    counted = {}
    for run, words in runs.items():
        words = [str(word) for word in words]
        counted[run] = [counts.page_faults(words), counts.instructions(words),
                        counts.system_calls(words)]
    return counted


def main():
    parser = argparse.ArgumentParser(description="compares fernlow with the floor, curl and jq")
    parser.add_argument("--runs", type=int, default=100, help="runs of each command")
    parser.add_argument("--shipped", action="store_true", help="measure the released program")
    runs = max(parser.parse_args().runs, 4)
    build()
    RESULTS.mkdir(exist_ok=True)
    # Not $TMPDIR: a socket's path has at most 103 bytes.
    with tempfile.TemporaryDirectory(prefix="fernlow-", dir="/tmp") as temporary:
        folder = Path(temporary)
        subprocess.run([sys.executable, BENCHMARKS / "make_replies.py", folder], check=True)
        server = subprocess.Popen([SERVER, folder, folder], stdout=subprocess.PIPE)
        try:
            server.stdout.readline()
            sys.exit(0 if compare(folder, runs) else 1)
        finally:
            server.kill()


def compare(folder, runs):
    """Measures and reports everything. Returns whether all commands printed the right bytes."""
    results, sizes, wrong, others = {}, {}, [], {}
    typed = [FERNLOW, "--no-launch", "status"]
    if output_and_status(typed)[1] != 3:
        wrong.append("Somebody listens on the default socket.")
    # These commands need no reply. They are measured together with the status reply.
    alone = {"nothing": [IN_TERMINAL, shutil.which("true")], "fernlow as typed": typed,
             "floor": [FLOOR, str(folder / "nobody"), "/v1/status"]}
    for name in FILTERS:
        body = (folder / f"{name}.json").read_bytes()
        text, commands = commands_for(name, str(folder / name))
        sizes[name] = len(body)
        wrong += check(name, commands, body, text)
        if name == "status":
            commands |= {f"alone: {each}": words for each, words in alone.items()}
        is_large = len(body) > 10**7
        few, warmup = (min(runs, 20), 3) if is_large else (runs, 10)
        results[name] = measure(commands, few, warmup, folder)
        if name == "status":
            others = {each: results[name].pop(f"alone: {each}") for each in alone}
        print(name, *(f"{each.median:.2f}" for each in results[name].values()), flush=True)
    measured = report.Comparison(
        results, sizes, others, count_runs(folder),
        {Path(program).name: Path(program).stat().st_size for program in (FERNLOW, COMPLETE)},
        {"fernlow": counts.libraries(FERNLOW), "floor": counts.libraries(FLOOR)}, HAS_TOOLCHAIN,
        wrong)
    (RESULTS / "compare.md").write_text(report.report(measured))
    (RESULTS / "compare.csv").write_text(report.values(measured))
    report.draw(measured, folder, RESULTS / "compare.svg")
    print("\n" + report.summary(measured))
    for sentence in wrong:
        print(sentence, file=sys.stderr)
    return not wrong


if __name__ == "__main__":
    main()
