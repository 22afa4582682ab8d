"""Counts page faults, instructions and system calls, which hardly depend on the machine's load."""
import os
import re
import shutil
import statistics
import subprocess
import tempfile

# The number of copies of a program, and of the runs of each copy, that perf measures. The number of
# page faults depends on the addresses at which the system loads the program, and on the pieces in
# which it holds the file in memory: it differs by up to five between copies of one program.
COPIES, RUNS_OF_COPY = 8, 25


def page_faults(words):
    """Returns the mean number of page faults of a run, or None without perf or the permission
    to use it."""
    counted = []
    for _ in range(COPIES):
        with tempfile.TemporaryDirectory() as folder:
            program = shutil.copy(words[0], folder)
            text = log_of("perf", lambda log: ["stat", "-x,", "-o", log, "-e", "page-faults", "-r",
                                               str(RUNS_OF_COPY), program, *words[1:]])
        counted.append(number(r"^(\d+),[^,]*,page-faults", text))
    return None if None in counted else round(statistics.mean(counted))


def instructions(words):
    """Returns the number of instructions that a run executes outside the kernel, or None without
    valgrind."""
    text = log_of("valgrind", lambda log: ["--tool=callgrind", "--callgrind-out-file=/dev/null",
                                           f"--log-file={log}", *words])
    return number(r"Collected : (\d+)", text)


def system_calls(words):
    """Returns the number of system calls that a run makes, or None without strace."""
    text = log_of("strace", lambda log: ["-f", "-c", "-o", log, *words])
    # The last line contains the sums: per cent, seconds, microseconds per call, calls, and errors
    # if any.
    return number(r"^100\.00\s+\S+\s+\S+\s+(\d+)\s.*total$", text)


def libraries(program):
    """Returns the names of the shared libraries that a program loads."""
    if not shutil.which("ldd"):
        return "(not listed: there is no ldd)"
    listed = subprocess.run(["ldd", program], capture_output=True, text=True, check=False).stdout
    names = [line.split()[0].rpartition("/")[2] for line in listed.splitlines() if "(0x" in line]
    return ", ".join(name for name in names if name[:3] == "lib") or "nothing"


def log_of(tool, arguments_for):
    """Runs a tool and returns its log, or an empty text without the tool or a log. The function
    `arguments_for` takes the path of the log and returns the arguments of the tool."""
    if not shutil.which(tool):
        return ""
    with tempfile.TemporaryDirectory() as folder:
        log = os.path.join(folder, "log")
        subprocess.run([tool, *arguments_for(log)], stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, check=False)
        try:
            with open(log, encoding="utf-8") as text:
                return text.read()
        except FileNotFoundError:
            return ""


def number(pattern, text):
    found = re.search(pattern, text, re.MULTILINE)
    return int(found[1]) if found else None
