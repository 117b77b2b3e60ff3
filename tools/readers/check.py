"""Loads text files that velmora wrote with +quoted into SQLite, PostgreSQL and LibreOffice, and compares what they read.

usage: check.py PROGRAM

Each reader takes the files as they are, by its own import of CSV; what it shows must be what the document held. One that
is not installed is said so, and makes the exit status 1 as a difference does.
"""

import csv
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
from xml.sax.saxutils import escape

# Of each record two values; None is a value that is not there.
RECORDS = [
    ("plain", "007"),
    ("a,b;c\td", 'say "no"'),
    ('"', '""'),
    ("line\nbreak", "two\r\nlines\rof them"),
    ("ä€𝄞", " blanks "),
    ("", None),
    (None, ""),
    (None, "\\N"),
    ("\\.", "NULL"),
    ("'=1+1", "1e5"),
    ("2024-03-05", "True"),
    ("x" * 5000, "last"),
]
FORMS = {
    "as it comes": ([], ","),
    "for Linux": (["eol=lf", "null=\\N", "date=iso"], ","),
    "for Excel": (["+bom", "eol=crlf"], ";"),
}
CSV_FILTER = "Text - txt - csv (StarCalc)"  # of LibreOffice


def run(command, **options):
    result = subprocess.run(command, capture_output=True, text=True, **options)
    if result.returncode != 0:
        raise RuntimeError(f"{command[0]}: {result.stderr.strip() or result.stdout.strip()}")
    return result.stdout


def document():
    def element(name, value):
        text = escape(value, {"\r": "&#13;", "\n": "&#10;", "\t": "&#9;"}) if value is not None else ""
        return "" if value is None else f"<{name}>{text}</{name}>"

    items = "".join(f"<item>{element('a', a)}{element('b', b)}</item>" for a, b in RECORDS)
    return f"<list>{items}</list>"


def exported(program, folder, options, delimiter):
    source = folder / "list.xml"
    source.write_text(document(), encoding="utf-8")
    run([program, f"xml={source}", f"mdb={folder}/list.mdb", f"txt={folder}/text", f"delimiter={delimiter}",
         "+complete", "+quoted", "+quiet", *options])
    return folder / "text" / "item.txt"


def in_sqlite(file, options, delimiter):
    separator = f'.separator "{delimiter}"'
    shown = run(["sqlite3", "-cmd", ".mode csv", "-cmd", separator, ":memory:"],
                input=f'.import "{file}" item\n.mode json\nSELECT a, b FROM item ORDER BY CAST(PKEY AS INTEGER);\n')
    return [(row["a"], row["b"]) for row in json.loads(shown)]


def in_postgresql(file, options, delimiter):
    folder = pathlib.Path(tempfile.mkdtemp(dir="/tmp"))
    as_server = []
    if os.geteuid() == 0:  # which the server refuses
        as_server = ["runuser", "-u", "postgres", "--"]
        shutil.chown(folder, "postgres")
    tools = sorted(pathlib.Path("/usr/lib/postgresql").glob("*/bin"))[-1]
    try:
        run([*as_server, tools / "initdb", "-D", folder / "data", "-E", "UTF8", "--locale=C", "-A", "trust"], cwd="/tmp")
        run([*as_server, tools / "pg_ctl", "-w", "-D", folder / "data", "-l", folder / "log",
             "-o", f"-k {folder} -c listen_addresses=", "start"], cwd="/tmp", stdin=subprocess.DEVNULL)
        null = ["null '\\N'"] if "null=\\N" in options else []
        copy = " ".join(["COPY item FROM STDIN CSV HEADER DELIMITER", f"'{delimiter}'", *null])
        psql = [*as_server, "psql", "-h", folder, "-d", "postgres", "-qAt", "-v", "ON_ERROR_STOP=1"]
        run([*psql, "-c", "CREATE TABLE item (pkey int PRIMARY KEY, fkey int, a text, b text)"], cwd="/tmp")
        with open(file, "rb") as data:
            run([*psql, "-c", copy], cwd="/tmp", stdin=data)
        return [tuple(row) for row in json.loads(
            run([*psql, "-c", "SELECT json_agg(json_build_array(a, b) ORDER BY pkey) FROM item"], cwd="/tmp"))]
    finally:
        subprocess.run([*as_server, tools / "pg_ctl", "-m", "immediate", "-D", folder / "data", "stop"],
                       cwd="/tmp", capture_output=True)
        shutil.rmtree(folder, ignore_errors=True)


def in_libreoffice(file, options, delimiter):
    folder = file.parent.parent / "office"
    # Separator, quotation mark, UTF-8, from line 1, every column as text, as it stands.
    reading = f"{CSV_FILTER}:{ord(delimiter)},34,76,1,1/2/2/2/3/2/4/2,1033,true,false"
    writing = f"csv:{CSV_FILTER}:44,34,76,1,,0,true,false"
    run(["soffice", f"-env:UserInstallation=file://{folder}/profile", "--headless", f"--infilter={reading}",
         "--convert-to", writing, "--outdir", str(folder), str(file)])
    with open(folder / "item.csv", encoding="utf-8-sig", newline="") as written:
        rows = list(csv.reader(written))
    return [(a, b) for _, _, a, b in rows[1:]]


def as_read(reader, options):
    """What the document holds, as far as the reader can tell it apart."""
    word = "\\N" if "null=\\N" in options else ""
    if reader is in_postgresql:
        return RECORDS
    shown = [tuple(word if value is None else value for value in record) for record in RECORDS]
    if reader is in_libreoffice:  # whose cells have line feeds alone
        shown = [tuple(v.replace("\r\n", "\n").replace("\r", "\n") for v in record) for record in shown]
    return shown


def main():
    program = str(pathlib.Path(sys.argv[1]).resolve())
    readers = {"SQLite": (in_sqlite, "sqlite3"), "PostgreSQL": (in_postgresql, "psql"),
               "LibreOffice": (in_libreoffice, "soffice")}
    failed = False
    for name, (reader, needed) in readers.items():
        if shutil.which(needed) is None:
            print(f"{name}: not installed")
            failed = True
            continue
        for form, (options, delimiter) in FORMS.items():
            with tempfile.TemporaryDirectory() as folder:
                file = exported(program, pathlib.Path(folder), options, delimiter)
                try:
                    read = reader(file, options, delimiter)
                except (RuntimeError, ValueError, OSError) as error:
                    read = [str(error)]
                wanted = as_read(reader, options)
                different = [(a, b) for a, b in zip(read, wanted) if a != b]
                good = len(read) == len(wanted) and not different
                print(f"{name}, {form}: " + (f"{len(read)} records as they were" if good else "DIFFERENT"))
                for got, expected in different:
                    print(f"  read {got!r}\n  not  {expected!r}")
                failed = failed or not good
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
