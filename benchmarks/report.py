"""The report of benchmarks/compare: tables in Markdown, a table of values, and a chart."""
import subprocess
from dataclasses import dataclass

from counts import COPIES, RUNS_OF_COPY
from times import MAX_SPREAD, Measured, Ratio

UP_TO_216_KB = ("work-report", "settings-schema", "files-500")


@dataclass
class Comparison:
    """All measurements."""
    # The times of a command with a reply, by the name of the reply and then of the command.
    results: dict[str, dict[str, Measured]]
    # The size of each reply in bytes.
    sizes: dict[str, int]
    # The times of runs without a reply, by name: "nothing" (only the pseudo-terminal), "floor" and
    # "fernlow as typed".
    others: dict[str, Measured]
    # By the name of a run: page faults, instructions and system calls, each None if not counted.
    counted: dict[str, list]
    # By the name of a program: the size of its file in bytes, and the libraries that it loads.
    program_sizes: dict[str, int]
    libraries: dict[str, str]
    # Whether fernlow is the released program. Only then is there a static floor.
    is_released: bool
    # A sentence about each command that printed an unexpected text.
    wrong: list[str]


def table(header, rows):
    titles = [title.replace("|", r"\|") for title in header]
    lines = [titles, ["---", *["---:"] * (len(titles) - 1)], *rows]
    return "\n".join("| " + " | ".join(line) + " |" for line in lines) + "\n"


def ratios(measured):
    """Returns the ratios of one reply, by the title of their column."""
    pairs = {"fernlow --json / floor": ("fernlow --json", "floor"),
             "/ static floor": ("fernlow --json", "static floor"),
             "text / floor, both in a terminal": ("fernlow in a terminal", "floor in a terminal"),
             "fernlow --json / curl": ("fernlow --json", "curl"),
             "curl | jq / text": ("curl | jq", "fernlow in a terminal")}
    return {title: Ratio.of(measured[one], measured[other])
            for title, (one, other) in pairs.items() if other in measured}


def goals(measured):
    """Returns the rows of the goals for the released program: goal, limit, measured figure."""
    floor, status, nobody_floor, nobody = (each[0] for each in measured.counted.values())
    static = {name: ratios(each)["/ static floor"] for name, each in measured.results.items()}
    slowest = max(UP_TO_216_KB, key=lambda name: static[name].value)

    def above(faults, others):
        return "not counted" if None in (faults, others) else str(faults - others)

    return [["page faults above the static floor, status reply", "12", above(status, floor)],
            ["page faults above the static floor, nobody listens", "16",
             above(nobody, nobody_floor)],
            *([f"size of {program}", "420 KB", f"{size / 1000:.0f} KB"]
              for program, size in measured.program_sizes.items()),
            ["time / static floor, status reply", "1.15", str(static["status"])],
            [f"time / static floor, replies up to 216 KB (slowest: {slowest})", "1.30",
             str(static[slowest])]]


def summary(measured):
    """Returns the part of the report that the README shows."""
    titles = list(ratios(measured.results["status"]))
    rows = [[name, *map(str, ratios(each).values())] for name, each in measured.results.items()]
    goal_table = table(["goal", "at most", "measured"], goals(measured)) + "\n" \
        if measured.is_released else ""
    typed, floor = measured.others["fernlow as typed"], measured.others["floor"]
    return f"""{table(["reply", *titles], rows)}
The figures are ratios of median times. A ratio that varies by more than {MAX_SPREAD:.0%} between rounds is
noisy: the table gives the range between its quartiles instead.

{goal_table}`fernlow --no-launch status`, with nobody listening, takes {typed.median:.2f} ms. The floor takes
{floor.median:.2f} ms; the ratio is {Ratio.of(typed, floor)}.
"""


def linearity(results, sizes):
    rows = []
    for command in ("floor", "fernlow --json", "floor in a terminal", "fernlow in a terminal"):
        small, large = (1e6 * results[name][command].median / sizes[name]
                        for name in ("files-1mb", "files-50mb"))
        rows.append([command, f"{small:.3f}", f"{large:.3f}", f"{large / small:.2f}"])
    return table(["command", "ms per MB at 1 MB", "at 50 MB", "ratio"], rows)


def report(measured):
    results = measured.results
    medians = [[name, f"{measured.sizes[name]:,}",
                *(f"{each.median:.2f} ± {each.spread:.2f}" for each in times.values())]
               for name, times in results.items()]
    runs = ", ".join(f"{name} {len(times['floor'].times)}" for name, times in results.items())
    counted = [[run, *("not counted" if each is None else f"{each:,}" for each in figures)]
               for run, figures in measured.counted.items()]
    kind = "the released, static program" if measured.is_released else "the ordinary build"
    return f"""# fernlow compared with the floor, curl and jq

Whole runs on one machine, in turns, with the output read from a pipe. fernlow is {kind}.
The floor is a C program that sends the same request and writes the reply's body, linked as usual.
The static floor is the same program, linked like fernlow. fernlow prints text only to a terminal,
so these runs, and a floor to compare them with, go through a program that provides a
pseudo-terminal. Its time is part of both (around a program that does nothing:
{measured.others["nothing"].median:.2f} ms). That floor reads the same reply and writes fernlow's text,
which it gets from a file. "curl | jq" makes the same text, in `sh -c`, and writes it to the pipe
without that program.

{summary(measured)}
Page faults ({RUNS_OF_COPY} runs of each of {COPIES} copies), instructions and system calls hardly depend on the load of
the machine:

{table(["run", "page faults", "instructions", "system calls"], counted)}
fernlow loads {measured.libraries["fernlow"]}; the floor {measured.libraries["floor"]}.

Medians in milliseconds ± the distance between the quartiles:

{table(["reply", "bytes", *results["status"]], medians)}
Runs of each command: {runs}.

{linearity(results, measured.sizes)}
{" ".join(measured.wrong) or "jq's text was the same as fernlow's for every reply."}
"""


def values(measured):
    """Returns the medians and their spreads as comma-separated values."""
    rows = [[name, measured.sizes[name], command, each]
            for name, times in measured.results.items() for command, each in times.items()]
    rows += [["nobody listens", 0, command, measured.others[command]]
             for command in ("floor", "fernlow as typed")]
    return "reply,bytes,command,runs,median_ms,quartile_distance_ms\n" + "".join(
        f"{name},{size},{command},{len(each.times)},{each.median:.4f},{each.spread:.4f}\n"
        for name, size, command, each in rows)


def draw(measured, folder, chart):
    """Draws the ratios to the floor. The folder is for a temporary file."""
    data = folder / "ratios"
    def row(name, times):
        each = [times[command].median / times[floor].median for command, floor in (
            ("fernlow --json", "floor"), ("fernlow in a terminal", "floor in a terminal"),
            ("curl", "floor"))]
        return " ".join([name, *map(str, each)]) + "\n"

    data.write_text("".join(row(*each) for each in measured.results.items()))
    subprocess.run(["gnuplot"], text=True, check=True, input=f"""
        set terminal svg size 900,420 background "white"
        set output "{chart}"
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
