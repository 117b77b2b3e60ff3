"""Checks what a release says in its documents: python3 documents.py FOLDER VERSION

Every relative link in a Markdown file leads to a file that is there, and to a heading that is in it; the newest entry of
CHANGELOG.md is that of VERSION; codespell, where it is installed, knows every word.
"""

import pathlib
import re
import shutil
import subprocess
import sys
import urllib.parse


def text_of(path):
    """A document without its code, in which brackets are no links."""
    text = re.sub(r"^```.*?^```", "", path.read_text(), flags=re.M | re.S)
    return re.sub(r"`[^`\n]*`", "code", text)


def anchors(path):
    """The places of a document that a link can name: its headings, as they are written in an address."""
    titles = re.findall(r"^#+ +(.*)", path.read_text(), re.M)
    return {re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-") for title in titles}


def broken_links(root):
    for path in sorted(root.rglob("*.md")):
        if "build" in path.relative_to(root).parts:
            continue
        for target in re.findall(r"\]\(([^)\s]+)\)", text_of(path)):
            if re.match(r"[a-z]+:", target):
                continue
            file, _, anchor = urllib.parse.unquote(target).partition("#")
            leads_to = path.parent / file if file else path
            if not leads_to.exists():
                yield f"{path.relative_to(root)}: {target} leads nowhere"
            elif anchor and anchor not in anchors(leads_to):
                yield f"{path.relative_to(root)}: {target} names no heading"


def misspelt(root):
    if shutil.which("codespell") is None:
        return
    documents = [*root.glob("*.md"), *root.glob("docs/**/*.md"), root / "src/settings/options.cpp",
                 root / "data/io.github.velmora.velmora.metainfo.xml.in", *root.glob("packaging/**/*")]
    yield from subprocess.run(["codespell", *filter(pathlib.Path.is_file, documents)],
                              stdout=subprocess.PIPE, text=True).stdout.splitlines()


def main():
    root, version = pathlib.Path(sys.argv[1]), sys.argv[2]
    faults = [*broken_links(root), *misspelt(root)]
    newest = re.search(r"^## (\S+?),? ", (root / "CHANGELOG.md").read_text(), re.M)
    if newest is None or newest[1] != version:
        faults.append(f"CHANGELOG.md does not begin with {version}")
    print("\n".join(faults))
    return 1 if faults else 0


sys.exit(main())
