#!/usr/bin/env python3
"""Packs a folder into a ZIP whose bytes depend on nothing but the files: in order, of one date, with one set of rights.

usage: pack.py ZIP FOLDER SECONDS_SINCE_1970
"""

import pathlib
import sys
import time
import zipfile

archive, folder, seconds = sys.argv[1:]
root = pathlib.Path(folder)
with zipfile.ZipFile(archive, "w") as packed:
    for path in sorted(p for p in root.rglob("*") if p.is_file()):
        entry = zipfile.ZipInfo(f"{root.name}/{path.relative_to(root).as_posix()}", time.gmtime(int(seconds))[:6])
        entry.compress_type = zipfile.ZIP_DEFLATED
        entry.external_attr = 0o644 << 16
        packed.writestr(entry, path.read_bytes(), compresslevel=9)
