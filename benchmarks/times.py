"""Measures the times of commands, and calculates the ratios of their times."""
import json
import math
import shlex
import statistics
import subprocess
import sys
from dataclasses import dataclass

ROUNDS = 10
# A ratio is noisy if the distance between its quartiles is more than this part of it.
MAX_SPREAD = 0.1


@dataclass
class Measured:
    """The times of one command's runs, in milliseconds, by round."""
    rounds: list

    @property
    def times(self):
        return [time for times in self.rounds for time in times]

    @property
    def median(self):
        return statistics.median(self.times)

    @property
    def spread(self):
        """The distance between the quartiles."""
        first, _, third = statistics.quantiles(self.times, n=4)
        return third - first


@dataclass
class Ratio:
    """The ratio of two commands' medians, and the quartiles of the same ratio by round."""
    value: float
    low: float
    high: float

    @classmethod
    def of(cls, dividend, divisor):
        by_round = [statistics.median(a) / statistics.median(b)
                    for a, b in zip(dividend.rounds, divisor.rounds)]
        low, _, high = statistics.quantiles(by_round, n=4, method="inclusive")
        return cls(dividend.median / divisor.median, low, high)

    def __str__(self):
        low, high = f"{self.low:.2f}", f"{self.high:.2f}"
        if self.high - self.low > MAX_SPREAD * self.value and low != high:
            return f"{low} to {high}"
        return f"{self.value:.2f}"


def output_and_status(words):
    run = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    return run.stdout, run.returncode


def measure(commands, runs, warmup, folder):
    """Measures the commands in turns: each round runs all of them, so that a slow period of the
    machine affects all alike. Exits if a run's status differs from the status of a first run."""
    statuses = {command: output_and_status(words)[1] for command, words in commands.items()}
    times = {command: [] for command in commands}
    rounds = min(ROUNDS, runs // 2)
    export = folder / "hyperfine.json"
    for index in range(rounds):
        subprocess.run(
            ["hyperfine", "-N", "--ignore-failure", "--style=none", "--output=pipe",
             f"--warmup={warmup if index == 0 else 2}",
             f"--runs={max(math.ceil(runs / rounds), 2)}",
             f"--export-json={export}", *map(shlex.join, commands.values())],
            check=True, stderr=subprocess.DEVNULL)
        for command, result in zip(commands, json.loads(export.read_text())["results"]):
            if set(result["exit_codes"]) != {statuses[command]}:
                sys.exit(f"{command} ended with the statuses {set(result['exit_codes'])}")
            times[command].append([1000 * seconds for seconds in result["times"]])
    return {command: Measured(by_round) for command, by_round in times.items()}
