"""Packs documents in every form, and bombs: python3 pack.py FOLDER"""

import bz2
import gzip
import lzma
import pathlib
import subprocess
import sys
import zipfile

DOCUMENT = b"<people><person><name>Ann</name></person><person><name>Bob</name></person></people>"
MEGABYTES = 100
folder = pathlib.Path(sys.argv[1])


def zstd(data):
    return subprocess.run(["zstd", "-qc"], input=data, stdout=subprocess.PIPE, check=True).stdout


def archive(name, members):
    with zipfile.ZipFile(folder / name, "w", zipfile.ZIP_DEFLATED) as packed:
        for member, content in members.items():
            packed.writestr(member, content)


for form, pack in {"gz": gzip.compress, "bz2": bz2.compress, "xz": lzma.compress, "zst": zstd}.items():
    (folder / f"a.{form}").write_bytes(pack(DOCUMENT))
    # One piece after another is one text to all of them.
    bomb = pack(b"<a>" + b"x" * 1_000_000) + pack(b"x" * 10_000_000) * (MEGABYTES // 10)
    (folder / f"bomb.{form}").write_bytes(bomb)
(folder / "twice.gz").write_bytes(gzip.compress(bz2.compress(DOCUMENT)))
(folder / "cut.gz").write_bytes(gzip.compress(DOCUMENT)[:-20])
(folder / "large.gz").write_bytes(gzip.compress(b"<a><b>" + b"0123456789" * 200_000 + b"</b></a>"))
archive("a.zip", {"one.xml": DOCUMENT, "d/TWO.XML": DOCUMENT, "read.me": b"", "__MACOSX/._one.xml": b""})
archive("mixed.zip", {"inner.zip": b"", "one.xml": DOCUMENT, "two.xml": b"<people>"})
archive("none.zip", {"read.me": b""})
archive("bomb.zip", {"one.xml": DOCUMENT, "b.xml": b"<a>" + b"x" * (MEGABYTES * 1_000_000)})
archive("secret.zip", {"one.xml": DOCUMENT})
secret = bytearray((folder / "secret.zip").read_bytes())
for signature, flags in (b"PK\3\4", 6), (b"PK\1\2", 8):
    secret[secret.index(signature) + flags] |= 1
(folder / "secret.zip").write_bytes(secret)
