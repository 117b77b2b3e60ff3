"""Uses the library as a project outside would: installed in a folder of its own, found by CMake and by pkg-config,
its examples compiled, run, and what they wrote checked: python3 outside.py BUILD-FOLDER EXAMPLES
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

EXPECTED = "1, Säntis, 2501.9\n2, Zugspitze, 2962.1\n"


def run(*command, **environment):
    done = subprocess.run([str(word) for word in command], env={**os.environ, **environment}, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True)
    if done.returncode != 0:
        sys.exit(f"{command} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def check_symbols(library):
    for line in run("nm", "-D", "--defined-only", library).splitlines():
        name = line.split()[-1]
        if name != "VELMORA_JET_0.1" and not (name.startswith("vjet_") and name.endswith("@@VELMORA_JET_0.1")):
            sys.exit(f"the library shows {name}")


def check_program(program, work, libraries):
    database = work / "peaks.mdb"
    output = run(program, database, LD_LIBRARY_PATH=str(libraries))
    if output != EXPECTED:
        sys.exit(f"{program} wrote {output!r}")
    shared = os.environ.get("VELMORA_SHARED")
    if shared:
        run(sys.executable, "-m", "jetcheck", database, PYTHONPATH=str(pathlib.Path(shared) / "tools"))
    database.unlink()


def main():
    if shutil.which("pkg-config") is None:
        print("[  SKIPPED ] pkg-config is not installed")
        return 77
    build, examples = sys.argv[1:]
    with tempfile.TemporaryDirectory(prefix="velmora-test-") as name:
        work = pathlib.Path(name)
        prefix = work / "prefix"
        run("cmake", "--install", build, "--component", "library", "--prefix", prefix)
        library = next(prefix.glob("**/libvelmora_jet.so"))
        check_symbols(library)

        run("cmake", "-S", examples, "-B", work / "build", f"-DCMAKE_PREFIX_PATH={prefix}")
        run("cmake", "--build", work / "build")
        for program in ("table_c", "table_cpp"):
            check_program(work / "build" / program, work, library.parent)

        os.environ["PKG_CONFIG_PATH"] = str(library.parent / "pkgconfig")
        flags = run("pkg-config", "--cflags", "--libs", "velmora_jet").split()
        strict = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]
        run("cc", "-std=c99", *strict, f"{examples}/table.c", *flags, "-o", work / "by_c")
        run("c++", "-std=c++17", *strict, f"{examples}/table.cpp", *flags, "-o", work / "by_cpp")
        includes = run("pkg-config", "--cflags", "velmora_jet").split()
        run("cc", f"{examples}/table.c", *includes, library.with_suffix(".a"), "-lstdc++", "-lm", "-o", work / "static_c")
        for program in ("by_c", "by_cpp", "static_c"):
            check_program(work / program, work, library.parent)
    return 0


sys.exit(main())
