#!/usr/bin/env python3
"""Runs clang-tidy 14 with the rules of .clang-tidy and fails when it finds anything.

    tools/tidy.py BUILD            every source that BUILD/compile_commands.json compiles
    tools/tidy.py BUILD FILE...    these files; a header is read through a source that includes it

BUILD is a finished build: what Qt's tools make has to be there. Most of the time goes into the headers, so the sources
of a library are read as one; sources that do not compile as one are read one by one.
"""

import concurrent.futures
import json
import os
import re
import shlex
import subprocess
import sys

TIDY = "clang-tidy-14"
SOURCES_AT_ONCE = 10


def compile_command(entry, source):
    """The entry's own command for another source: without the launcher and the output, which clang-tidy has no use for."""
    words = [w for w in shlex.split(entry["command"])]
    while not re.search(r"(c\+\+|g\+\+|clang\+\+)(-\d+)?$", words[0]):
        words.pop(0)
    kept, skip = [], False
    for word in words:
        if skip:
            skip = False
        elif word in ("-o", "-MF", "-MT", "-c", "-include"):
            # Without the headers that targets share, a source that forgets an include is found.
            skip = True
        elif word not in ("-MD", "-Werror", "-Winvalid-pch"):
            kept.append(word)
    return {"directory": entry["directory"], "file": source, "arguments": kept + ["-c", source]}


def target_of(entry):
    match = re.search(r"-o (\S+\.dir)/", entry["command"])
    return match.group(1) if match else entry["file"]


def run(folder, source):
    result = subprocess.run([TIDY, "-p", folder, "--quiet", source], capture_output=True, text=True, check=False)
    return result.returncode, result.stdout


def through_sources(root, files, known):
    """The sources that `files` are read through."""
    chosen = [f for f in files if f in known]
    for header in (f for f in files if f.endswith(".h")):
        own = os.path.splitext(header)[0] + ".cpp"
        name = f'#include "{os.path.relpath(header, root)}"'
        through = own if own in known else next((s for s in sorted(known) if name in open(s, encoding="utf-8").read()), None)
        if through:
            chosen.append(through)
    return set(chosen)


def main():
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    build = os.path.abspath(sys.argv[1])
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        entries = [e for e in json.load(file)
                   if e["file"].startswith(root + os.sep) and e["file"].endswith(".cpp")
                   and not e["file"].startswith(build + os.sep) and "mocs_compilation" not in e["file"]]
    if len(sys.argv) > 2:
        chosen = through_sources(root, [os.path.abspath(f) for f in sys.argv[2:]], {e["file"] for e in entries})
        entries = [e for e in entries if e["file"] in chosen]

    folder = os.path.join(build, "tidy")
    os.makedirs(folder, exist_ok=True)
    groups = {}
    for entry in entries:
        groups.setdefault(target_of(entry), []).append(entry)
    jobs, commands = [], []
    for target, members in sorted(groups.items()):
        for first in range(0, len(members), SOURCES_AT_ONCE):
            part = members[first:first + SOURCES_AT_ONCE]
            together = os.path.join(folder, f"{len(jobs)}.cpp")
            with open(together, "w", encoding="utf-8") as file:
                file.writelines(f'#include "{e["file"]}"\n' for e in part)
            commands.append(compile_command(part[0], together))
            commands += [compile_command(e, e["file"]) for e in part]
            jobs.append((together, [e["file"] for e in part]))
    with open(os.path.join(folder, "compile_commands.json"), "w", encoding="utf-8") as file:
        json.dump(commands, file)

    def check(job):
        together, sources = job
        code, text = run(folder, together)
        if "clang-diagnostic-error" not in text:
            return code, text
        results = [run(folder, source) for source in sources]
        return max(code for code, _ in results), "".join(text for _, text in results)

    failed = False
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for code, text in pool.map(check, jobs):
            if code != 0 or re.search(r": (warning|error): ", text):
                failed = True
                print(text, end="")
    print(f"{len(entries)} sources read: {'see above' if failed else 'nothing found'}.")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
