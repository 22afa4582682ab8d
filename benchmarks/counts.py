"""Counts that describe a run of a program and hardly depend on the machine's load."""
import os
import re
import shutil
import subprocess
import tempfile

# perf repeats a run this often: where the system loads a program decides on a page fault or two.
PERF_RUNS = 60


def page_faults(words):
    """The mean number of page faults of a run, or None without perf or the right to use it."""
    said = told_by("perf", lambda log: ["stat", "-x,", "-o", log, "-e", "page-faults",
                                        "-r", str(PERF_RUNS), *words])
    return number(r"^(\d+),[^,]*,page-faults", said)


def instructions(words):
    """The instructions that a run executes outside the kernel, or None without valgrind."""
    said = told_by("valgrind", lambda log: ["--tool=callgrind", "--callgrind-out-file=/dev/null",
                                            f"--log-file={log}", *words])
    return number(r"Collected : (\d+)", said)


def system_calls(words):
    """The system calls that a run makes, or None without strace."""
    said = told_by("strace", lambda log: ["-f", "-c", "-o", log, *words])
    # The line of sums: per cent, seconds, microseconds per call, calls, and errors if any.
    return number(r"^100\.00\s+\S+\s+\S+\s+(\d+)\s.*total$", said)


def libraries(program):
    """The names of the shared libraries that a program loads."""
    if not shutil.which("ldd"):
        return "(not listed: there is no ldd)"
    listed = subprocess.run(["ldd", program], capture_output=True, text=True, check=False).stdout
    names = [line.split()[0].rpartition("/")[2] for line in listed.splitlines() if "(0x" in line]
    return ", ".join(name for name in names if name[:3] == "lib") or "nothing"


def told_by(tool, arguments_for):
    """Returns the text that a tool writes to the log that its arguments name."""
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
