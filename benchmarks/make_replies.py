#!/usr/bin/env python3
"""Writes the replies that the benchmarks serve, one file each.

    make_replies.py FOLDER
"""
import json
import sys
from pathlib import Path

SITE = "/Users/sam/Sites/storefront-2024"
LANGUAGES = [("scss", "styles", "css"), ("typescript", "scripts", "js"), ("svg", "images", "svg"),
             ("pug", "pages", "html")]


def file_row(number):
    language, folder, extension = LANGUAGES[number % len(LANGUAGES)]
    name = f"{folder}/components/section-{number // 40:04}/component-{number:06}"
    row = {"path": f"{SITE}/source/{name}.{language}", "relativePath": f"source/{name}.{language}",
           "language": language, "outputAction": "compile", "outputActionIsChosen": False,
           "outputPathIsChosen": number % 17 == 0, "isShadowItem": number % 53 == 0,
           "isFolder": False, "exists": number % 97 != 0}
    if number % 11 == 0:
        row.update(outputAction="ignore", outputActionIsChosen=True)
    else:
        row["outputPath"] = f"{SITE}/public/{name}.{extension}"
    return row


def files(count):
    return {"files": [file_row(number) for number in range(count)], "total": count + 1234,
            "truncated": True, "offset": 500}


def files_of_size(size):
    """Returns a list of files with about `size` bytes, calculated from the mean size of rows."""
    sample = 1000
    return files(size * sample // len(encoded([file_row(number) for number in range(sample)])))


def problem(number):
    path = file_row(number)["path"]
    issues = [{"line": 10 * number + n, "column": 5 + n,
               "reason": f"Expected “}}” before “.section-{n}”."} for n in range(number % 4)]
    return {"cursor": 48000 + number, "severity": "warning" if number % 3 else "error",
            "title": f"component-{number:06} could not be compiled", "path": path,
            "message": "" if number % 5 == 0 else
            "The style sheet has a fault.\nThe output of the last good run was left alone.",
            "projectPath": SITE, "isCompiled": False,
            "syntaxReports": [{"path": path, "issues": issues}]}


def work_report(count):
    problems = [problem(number) for number in range(count)]
    errors = sum(each["severity"] == "error" for each in problems)
    compiled = [file_row(number)["path"] for number in range(120)]
    return {"compiledFileCount": len(compiled), "errorCount": errors,
            "warningCount": count - errors, "requestedPaths": compiled[:3],
            "compiledPaths": compiled, "problems": problems, "timedOut": False,
            "logTruncated": True, "logCursor": 48211}


def log_entry(number):
    row = file_row(number)
    severity = "error" if number % 41 == 0 else "warning" if number % 13 == 0 else "success"
    return {"cursor": 43000 + number, "severity": severity,
            "title": f"Compiled {row['relativePath'].rpartition('/')[2]}", "message": "",
            "path": row["path"], "projectPath": SITE, "isCompiled": True, "syntaxReports": []}


def setting(number):
    row = {"name": f"{LANGUAGES[number % 4][0]}Option{number:03}",
           "valueType": ("boolean", "string", "integer", "stringList")[number % 4],
           "propagation": "compiling" if number % 3 else "newFilesOnly"}
    if number % 8:
        row["language"] = LANGUAGES[number % 4][0]
    if number % 5 == 0:
        row["group"] = f"Group {number % 7}"
    return row


STATUS = {"logCursor": 48211, "isIndexing": False, "isCompiling": True,
          "isFileWatchingPaused": False, "projectCount": 12, "frameworkCount": 3,
          "activeBuild": {"projectName": "Storefront", "itemsCompleted": 40, "itemsTotal": 120}}

REPLIES = {
    "status": lambda: STATUS,
    "work-report": lambda: work_report(50),
    "settings-schema": lambda: [setting(number) for number in range(400)],
    "files-500": lambda: files(500),
    "log-5000": lambda: {"entries": [log_entry(number) for number in range(5000)]},
    "files-5000": lambda: files(5000),
    "files-1mb": lambda: files_of_size(10**6),
    "files-50mb": lambda: files_of_size(50 * 10**6),
}


def encoded(value):
    return json.dumps(value, ensure_ascii=False, separators=(",", ":")).encode()


if __name__ == "__main__":
    for name, result in REPLIES.items():
        (Path(sys.argv[1]) / f"{name}.json").write_bytes(encoded({"ok": True, "result": result()}))
