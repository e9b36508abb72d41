#!/usr/bin/env python3
"""collect-relink.py BUILD QT LIBSSH CURL FOLDER: what makes Trevane.exe once more, with another Qt or libssh: the objects
of its own that the build in BUILD links, and curl's library, in FOLDER/objects, and the script FOLDER/relink.sh, which
links them as that build does. QT, LIBSSH and CURL are the folders of these libraries."""
import os
import shlex
import shutil
import subprocess
import sys

SCRIPT = """#!/usr/bin/env bash
# relink.sh FOLDER-OF-QT FOLDER-OF-LIBSSH [PROGRAM]: makes Trevane.exe of the objects beside this script and of static
# libraries for Windows.
set -euo pipefail
[ $# -ge 2 ] || {{ echo "usage: relink.sh FOLDER-OF-QT FOLDER-OF-LIBSSH [PROGRAM]" >&2; exit 2; }}
here=$(cd "$(dirname "${{BASH_SOURCE[0]}}")" && pwd)
qt=$(cd "$1" && pwd)
libssh=$(cd "$2" && pwd)
program=${{3:-Trevane.exe}}
{compiler} \\
{arguments}
python3 "$here/finish-windows-program.py" "$program"
"""


def link_command(build):
    commands = subprocess.run(["ninja", "-C", build, "-t", "commands", "-s", "bin/Trevane.exe"], check=True,
                              capture_output=True, text=True).stdout.strip().splitlines()
    # ": && LINK && cd ... && WHAT FOLLOWS"
    return next(part for part in commands[-1].split(" && ") if " -o bin/Trevane.exe" in part)


def in_library(path, libraries):
    """The path as the script says it, or None outside the libraries' folders."""
    for name, place in libraries.items():
        if path.startswith(place + os.sep):
            return f'"${name}"/' + shlex.quote(path[len(place) + 1:])
    return None


def collect(build, qt, libssh, curl, folder):
    libraries = {"qt": qt, "libssh": libssh}
    words = shlex.split(link_command(build))
    objects = os.path.join(folder, "objects")
    os.makedirs(objects)
    arguments = []
    for word in words[1:]:
        path = os.path.normpath(os.path.join(build, word))
        if word.startswith("-Wl,--out-implib,"):
            continue
        if word == "bin/Trevane.exe":
            arguments.append('"$program"')
        elif in_library(path, libraries):
            arguments.append(in_library(path, libraries))
        elif os.path.isfile(path) and path.startswith(build + os.sep):
            # Several parts have objects of one name.
            name = os.path.relpath(path, build).replace(os.sep, "-").replace("CMakeFiles-", "").replace(".dir", "")
            shutil.copyfile(path, os.path.join(objects, name))
            arguments.append('"$here"/objects/' + shlex.quote(name))
        elif os.path.isfile(path) and path.startswith(curl + os.sep):
            shutil.copyfile(path, os.path.join(objects, os.path.basename(path)))
            arguments.append('"$here"/objects/' + shlex.quote(os.path.basename(path)))
        elif any(place in word for place in (build, curl, *libraries.values())):
            raise ValueError(f"an unknown argument of the link: {word}")
        else:
            arguments.append(shlex.quote(word))
    script = os.path.join(folder, "relink.sh")
    with open(script, "w", encoding="utf-8") as file:
        file.write(SCRIPT.format(compiler=os.path.basename(words[0]),
                                 arguments="\n".join(f"  {argument} \\" for argument in arguments).removesuffix(" \\")))
    os.chmod(script, 0o755)


collect(*(os.path.realpath(argument) for argument in sys.argv[1:6]))
