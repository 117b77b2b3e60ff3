"""Tries the manual pages and completions of a folder: python3 handbook.py pages|bash|zsh|fish FOLDER MANUAL

Shells run on a pseudo-terminal, where a line is typed, completed with the tab, and shown as the shell has it then.
A checker or shell that is not installed skips the test (status 77).
"""

import os
import pathlib
import pty
import re
import select
import shutil
import subprocess
import sys
import tempfile

# What is typed, and what stands there after the tab.
LINES = [
    ("velmora +qui", "velmora +quiet "),
    ("velmora -recr", "velmora -recreate_database "),
    ("velmora enc", "velmora encoding="),
    ("velmora ver=2", "velmora ver=2000 "),
    ("velmora v=9", "velmora v=97 "),
    ("velmora-gui eol=l", "velmora-gui eol=lf "),
    ("velmora xml=or", "velmora xml=orders.xml "),
    ("velmora XML=or", "velmora XML=orders.xml "),
    ("velmora +quiet mdb=or", "velmora +quiet mdb=orders.mdb "),
    ("velmora xml=UP", "velmora xml=UPPER.XML "),
    ("velmora xml=export/in", "velmora xml=export/inner.xml.gz "),
    ("velmora txt=e", "velmora txt=export/"),
    ("velmora tags=n", "velmora tags=names.tsv "),
    ("velmora xml=my", "velmora xml=my\\ orders.xml "),
    ("velmora orders.x", "velmora orders.xml "),
    ("velmora nothing", "velmora nothing"),
]
FILES = ["orders.xml", "orders.mdb", "UPPER.XML", "names.tsv", "nothing.csv", "my orders.xml", "export/inner.xml.gz"]

SETUP = {
    "bash": """
PS1= INPUTRC=/dev/null
bind 'set bell-style none'
bind 'set enable-bracketed-paste off'
bind -x '"\\C-t": printf "<<%s>>" "$READLINE_LINE"'
source {folder}/velmora.bash
""",
    "zsh": """
PS1=
fpath=({folder} $fpath)
autoload -Uz compinit && compinit -u -D
show() {{ print -rn -- "<<$BUFFER>>" }}
zle -N show && bindkey -e && bindkey '^T' show
""",
}
COMMAND = {"bash": ["bash", "--noprofile", "--rcfile", "{setup}", "-i"], "zsh": ["zsh", "-f", "-i"]}


def in_terminal(shell, folder, work):
    """The lines as `shell` completes them."""
    setup = work / "setup"
    setup.write_text(SETUP[shell].format(folder=folder))
    process, terminal = pty.fork()
    if process == 0:
        os.environ.update(TERM="dumb", HOME=str(work), LC_ALL="C.UTF-8")
        os.chdir(work)
        os.execvp(shell, [word.format(setup=setup) for word in COMMAND[shell]])
    if shell == "zsh":
        os.write(terminal, f". {setup}\n".encode())
    lines = []
    for typed, _ in LINES:
        os.write(terminal, typed.encode() + b"\t\x14\x01\x0b")  # tab, show, to the beginning, delete to the end
        seen = b""
        while not (found := re.search(rb"<<(.*?)>>", seen, re.S)):
            if not select.select([terminal], [], [], 60)[0]:
                raise SystemExit(f"{shell} does not answer; it wrote {seen!r}")
            seen += os.read(terminal, 65536)
        lines.append(found[1].decode())
    os.close(terminal)
    os.waitpid(process, 0)
    return lines


def in_fish(folder, work):
    """fish tells what it would offer; its only candidate is what would stand there, a blank behind what is complete."""
    lines = []
    for typed, _ in LINES:
        script = f"source {folder}/velmora.fish; complete -C {typed!r}"
        offers = subprocess.run(["fish", "--no-config", "-c", script], cwd=work, stdout=subprocess.PIPE, check=True,
                                env={**os.environ, "HOME": str(work)}, text=True).stdout.splitlines()
        words = [offer.split("\t")[0] for offer in offers]
        line = typed if len(words) != 1 else typed.rpartition(" ")[0] + " " + words[0].replace(" ", "\\ ")
        lines.append(line if not words or line[-1] in "/=" else line + " ")
    return lines


def check_shell(shell, folder, manual):
    options = manual.partition("\n## The command line\n")[2].partition("\n## ")[0]
    words = set(re.findall(r"^\| `([^`= ]+=?)", options, re.M))
    script = (folder / {"bash": "velmora.bash", "zsh": "_velmora", "fish": "velmora.fish"}[shell]).read_text()
    missing = [word for word in words if not re.search(rf"[\s'\"]{re.escape(word)}[\s'\":]", script)]
    faults = [f"{word} is not offered" for word in sorted(missing)]
    with tempfile.TemporaryDirectory(prefix="velmora-test-") as name:
        work = pathlib.Path(name)
        for file in FILES:
            (work / file).parent.mkdir(exist_ok=True)
            (work / file).touch()
        lines = in_fish(folder, work) if shell == "fish" else in_terminal(shell, folder, work)
    for (typed, expected), line in zip(LINES, lines):
        if line != expected:
            faults.append(f"{typed!r} became {line!r}, not {expected!r}")
    return faults


def check_pages(folder, manual):
    faults = []
    for page in ("velmora.1", "velmora-gui.1"):
        lint = subprocess.run(["mandoc", "-Tlint", folder / page], stdout=subprocess.PIPE, text=True).stdout
        # The pages name each other, and need not be installed here.
        faults += [line for line in lint.splitlines() if "referenced manual not found: Xr velmora" not in line]
    rendered = subprocess.run(["mandoc", "-Tutf8", "-Owidth=100", folder / "velmora.1"], stdout=subprocess.PIPE,
                              text=True, check=True).stdout
    text = " ".join(re.sub(".\x08", "", rendered).split())
    for words in ("ver=2000|97, v= the format of a new database", "-recreate_database, -d keep an existing database",
                  '<library name="Harbour">', "0.007", "columns of a table, key columns included", "EXIT STATUS",
                  "delimiter=\\t for the tab", "y year, four digits m month, two digits"):
        if words not in text:
            faults.append(f"velmora(1) lacks {words!r}")
    headings = re.findall(r"^## (.*)", manual, re.M)
    faults += [f"velmora(1) lacks {heading!r}" for heading in headings
               if heading.upper() not in text and heading != "The window"]
    return faults


def main():
    what, folder, manual = sys.argv[1], pathlib.Path(sys.argv[2]).resolve(), pathlib.Path(sys.argv[3]).read_text()
    program = "mandoc" if what == "pages" else what
    if shutil.which(program) is None:
        print(f"[  SKIPPED ] {program} is not installed")
        return 77
    faults = check_pages(folder, manual) if what == "pages" else check_shell(what, folder, manual)
    print("\n".join(faults))
    return 1 if faults else 0


sys.exit(main())
