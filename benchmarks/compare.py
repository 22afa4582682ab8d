"""Sets a run of fernlow beside the least it could take and beside other programs' runs.

    benchmarks/compare [--runs N]

Builds, serves replies of several sizes, and measures for each of them a C program that only moves
the bytes, linked as usual (the floor) and statically with what is shipped (the static floor);
fernlow as it is shipped, static; curl; and curl piped into jq. Writes results/compare.md, .csv and
.svg. N is the number of runs of each command, 100 at first; a quick try takes 10.

Without the toolchain that makes what is shipped, fernlow is the ordinary build, and there is no
static floor.
"""
import argparse
import json
import re
import shlex
import shutil
import statistics
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path

BENCHMARKS = Path(__file__).resolve().parent
ROOT = BENCHMARKS.parent
BUILD = ROOT / "build/bench"
RESULTS = BENCHMARKS / "results"
FLOOR = str(BUILD / "benchmarks/floor")
HAS_TOOLCHAIN = "--shipped" in sys.argv
SHIPPED = ROOT / "build/bench-static"
FERNLOW = str((SHIPPED if HAS_TOOLCHAIN else BUILD) / "fernlow")
STATIC_FLOOR = [str(SHIPPED / "benchmarks/floor")] if HAS_TOOLCHAIN else []
IN_TERMINAL, SERVER = str(BUILD / "benchmarks/in-terminal"), str(BUILD / "benchmarks/reply-server")
ROUNDS = 5

# The replies, in the order of the tables, and the filter that makes fernlow's text of each.
FILTERS = {"status": "status", "work-report": "work-report", "settings-schema": "settings-schema",
           "files-500": "files", "log-5000": "log", "files-5000": "files", "files-1mb": "files",
           "files-50mb": "files"}


@dataclass
class Measured:
    """One command's runs, in milliseconds."""
    times: list

    @property
    def median(self):
        return statistics.median(self.times)

    @property
    def spread(self):
        """Between the quartiles."""
        first, _, third = statistics.quantiles(self.times, n=4)
        return third - first


def build():
    quiet = {"cwd": ROOT, "check": True, "stdout": subprocess.DEVNULL}
    subprocess.run(["cmake", "--preset", "release", "-B", BUILD, "-DFERNLOW_BENCHMARKS=ON"],
                   **quiet)
    subprocess.run(["cmake", "--build", BUILD, "-j2", "--target", "fernlow", "floor", "in-terminal",
                    "reply-server"], **quiet)
    if HAS_TOOLCHAIN:
        subprocess.run(["cmake", "--preset", "linux-x86_64", "-B", SHIPPED,
                        "-DFERNLOW_BENCHMARKS=ON"], **quiet)
        subprocess.run(["cmake", "--build", SHIPPED, "-j2", "--target", "fernlow", "floor"], **quiet)


def commands_for(name, socket):
    """What is measured for one reply: each command's words by its name, with fernlow's text of the
    reply."""
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


def output_and_status(words):
    run = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    return run.stdout, run.returncode


def check(name, commands, body, text):
    """What is wrong with what the commands give, in sentences."""
    wrong = []
    for command in ("floor", *(["static floor"] if STATIC_FLOOR else []), "fernlow --json", "curl"):
        if output_and_status(commands[command])[0].rstrip(b"\n") != body:
            wrong.append(f"{name}: {command} does not give the reply's body.")
    if not text or text != output_and_status(commands["curl | jq"])[0]:
        wrong.append(f"{name}: jq's text differs from fernlow's.")
    return wrong


def measure(commands, runs, warmup, folder):
    """Takes turns: several rounds of all commands, so that a slow spell of the machine meets each
    of them. A run that ends with another status than a first try did stops everything."""
    statuses = {command: output_and_status(words)[1] for command, words in commands.items()}
    times = {command: [] for command in commands}
    rounds = min(ROUNDS, runs // 2)
    export = folder / "hyperfine.json"
    for turn in range(rounds):
        subprocess.run(
            ["hyperfine", "-N", "--ignore-failure", "--style=none", "--output=pipe",
             f"--warmup={warmup if turn == 0 else 2}", f"--runs={max(-(-runs // rounds), 2)}",
             f"--export-json={export}", *map(shlex.join, commands.values())],
            check=True, stderr=subprocess.DEVNULL)
        for command, result in zip(commands, json.loads(export.read_text())["results"]):
            if set(result["exit_codes"]) != {statuses[command]}:
                sys.exit(f"{command} ended with the statuses {set(result['exit_codes'])}")
            times[command] += [1000 * seconds for seconds in result["times"]]
    return {command: Measured(each) for command, each in times.items()}


def system_calls(words):
    """How many a run makes."""
    if not shutil.which("strace"):
        return "(not counted: there is no strace)"
    run = subprocess.run(["strace", "-f", "-c", *words], stdout=subprocess.DEVNULL,
                         stderr=subprocess.PIPE, text=True, check=False)
    # The line of sums: per cent, seconds, microseconds per call, calls, and errors if any.
    return re.search(r"^100\.00\s+\S+\s+\S+\s+(\d+)\s.*total$", run.stderr, re.MULTILINE)[1]


def libraries(program):
    """The shared libraries a program loads."""
    if not shutil.which("ldd"):
        return "(not listed: there is no ldd)"
    listed = subprocess.run(["ldd", program], capture_output=True, text=True, check=False).stdout
    names = [line.split()[0].rpartition("/")[2] for line in listed.splitlines() if "(0x" in line]
    return ", ".join(name for name in names if name[:3] == "lib") or "nothing"


def table(header, rows):
    titles = [title.replace("|", r"\|") for title in header]
    lines = [titles, ["---", *["---:"] * (len(titles) - 1)], *rows]
    return "\n".join("| " + " | ".join(line) + " |" for line in lines) + "\n"


def ratios(measured):
    """Those of one reply, in the order of the table's columns."""
    def ratio(one, other):
        return measured[one].median / measured[other].median
    return [ratio("fernlow --json", "floor"),
            *([ratio("fernlow --json", "static floor")] if STATIC_FLOOR else []),
            ratio("fernlow in a terminal", "floor in a terminal"),
            ratio("fernlow --json", "curl"), ratio("curl | jq", "fernlow in a terminal")]


def linearity(results, sizes):
    rows = []
    for command in ("floor", "fernlow --json", "floor in a terminal", "fernlow in a terminal"):
        small, large = (1e6 * results[name][command].median / sizes[name]
                        for name in ("files-1mb", "files-50mb"))
        rows.append([command, f"{small:.3f}", f"{large:.3f}", f"{large / small:.2f}"])
    return table(["command", "ms per MB at 1 MB", "at 50 MB", "ratio"], rows)


def report(results, sizes, wrong, system):
    medians = [[name, f"{sizes[name]:,}", *(f"{each.median:.2f} ± {each.spread:.2f}"
                                            for each in measured.values())]
               for name, measured in results.items()]
    compared = [[name, *(f"{ratio:.2f}" for ratio in ratios(measured))]
                for name, measured in results.items()]
    runs = ", ".join(f"{name} {len(measured['floor'].times)}" for name, measured in results.items())
    return f"""# fernlow beside the floor, curl and jq

Whole runs on one machine, in turns, with their output read from a pipe. fernlow is {system["kind"]}.
The floor is a C program that sends the same request and writes the reply's body, linked as usual; the
static floor is the same, linked like fernlow. Text is what fernlow writes to a terminal
only, so those runs and a floor to set beside them go through a program that gives them a
pseudo-terminal: its time is in both (in the status rounds, around a program that does nothing:
{system["terminal"]:.2f} ms).
That floor reads the same reply and writes fernlow's text, which it is given in a file.
"curl | jq" makes the same text, in `sh -c`, and writes it to the pipe without that program.

{table(["reply", "fernlow --json / floor", *(["/ static floor"] if STATIC_FLOOR else []),
        "text / floor, both in a terminal", "fernlow --json / curl", "curl | jq / text"], compared)}
As people type it, `fernlow --no-launch status`, with nobody there: {system["nobody"]}

Medians in milliseconds ± the distance between the quartiles:

{table(["reply", "bytes", *results["status"]], medians)}
Runs of each command: {runs}.

{linearity(results, sizes)}
For the status reply fernlow --json makes {system["fernlow calls"]} system calls, the floor \
{system["floor calls"]}; with nobody there, and as people type it, {system["nobody calls"]}. fernlow loads {system["fernlow libraries"]}; the floor \
{system["floor libraries"]}.

{" ".join(wrong) or "jq's text was the same as fernlow's for every reply."}
"""


def draw(results, folder):
    data = folder / "ratios"
    data.write_text("".join(
        f"{name} {ratios(measured)[0]} {ratios(measured)[-3]} "
        f"{measured['curl'].median / measured['floor'].median}\n"
        for name, measured in results.items()))
    subprocess.run(["gnuplot"], text=True, check=True, input=f"""
        set terminal svg size 900,420 background "white"
        set output "{RESULTS / 'compare.svg'}"
        set style data histograms
        set style fill solid 0.8 noborder
        set boxwidth 0.9
        set yrange [0:*]
        set ylabel "median time / the floor's"
        set grid ytics
        set key top right
        set xtics rotate by -25
        plot "{data}" using 2:xtic(1) title "fernlow --json", \\
            "" using 3 title "fernlow in a terminal", "" using 4 title "curl", \\
            1 with lines lc "black" title "floor"
        """)


def main():
    parser = argparse.ArgumentParser(description="fernlow beside the floor, curl and jq")
    parser.add_argument("--runs", type=int, default=100, help="runs of each command")
    parser.add_argument("--shipped", action="store_true", help="the toolchain for it is there")
    runs = max(parser.parse_args().runs, 4)
    build()
    RESULTS.mkdir(exist_ok=True)
    # Not $TMPDIR: a socket's path may have 103 bytes only.
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
    """Everything once the server runs; whether all commands gave what they should."""
    results, sizes, wrong, others = {}, {}, [], {}
    typed = [FERNLOW, "--no-launch", "status"]
    if output_and_status(typed)[1] != 3:
        wrong.append("Somebody listens where nobody should.")
    # Measured once, among the status replies.
    alone = {"nothing": [IN_TERMINAL, shutil.which("true")], "as typed": typed,
             "floor, nobody there": [FLOOR, str(folder / "nobody"), "/v1/status"]}
    for name in FILTERS:
        body = (folder / f"{name}.json").read_bytes()
        text, commands = commands_for(name, str(folder / name))
        sizes[name] = len(body)
        wrong += check(name, commands, body, text)
        if name == "status":
            commands |= alone
        is_large = len(body) > 10**7
        few, warmup = (min(runs, 20), 3) if is_large else (runs, 10)
        results[name] = measure(commands, few, warmup, folder)
        others |= {each: results[name].pop(each) for each in alone if each in results[name]}
        print(name, *(f"{each.median:.2f}" for each in results[name].values()), flush=True)
    _, status = commands_for("status", str(folder / "status"))
    system = {"kind": "the static program that is shipped" if HAS_TOOLCHAIN else "the ordinary build",
              "terminal": others["nothing"].median,
              "nobody": "{:.2f} ms, {:.2f} of the floor's {:.2f}.".format(
                  others["as typed"].median,
                  others["as typed"].median / others["floor, nobody there"].median,
                  others["floor, nobody there"].median),
              "nobody calls": system_calls(typed),
              "fernlow calls": system_calls(status["fernlow --json"]),
              "floor calls": system_calls(status["floor"]),
              "fernlow libraries": libraries(FERNLOW), "floor libraries": libraries(FLOOR)}
    (RESULTS / "compare.md").write_text(report(results, sizes, wrong, system))
    (RESULTS / "compare.csv").write_text("reply,bytes,command,runs,median_ms,quartile_distance_ms\n"
        + "".join(f"{name},{sizes[name]},{command},{len(each.times)},{each.median:.4f},"
                  f"{each.spread:.4f}\n"
                  for name, measured in results.items() for command, each in measured.items())
        + "".join(f"nobody there,0,{command},{len(others[each].times)},{others[each].median:.4f},"
                  f"{others[each].spread:.4f}\n"
                  for command, each in (("floor", "floor, nobody there"),
                                        ("fernlow as typed", "as typed"))))
    draw(results, folder)
    for sentence in wrong:
        print(sentence, file=sys.stderr)
    return not wrong


if __name__ == "__main__":
    main()
