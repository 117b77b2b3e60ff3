# The ways to build and check velmora. Everything built goes into build/.

SHELL := /bin/sh
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
PROGRAM := build/velmora

FUZZ_SECONDS ?= 20
TSAN_TESTS ?= *
PREFIX ?= /usr/local
DESTDIR ?=
VERSION = $(shell awk '/^project/ { print $$3 }' CMakeLists.txt)
CLANG := clang libclang-rt-dev llvm
SOURCES = find src tests fuzz bench tools -name '*.cpp' -o -name '*.h'

# The window and its tests.
WINDOW := qt6-base-dev qt6-svg-dev qt6-l10n-tools qt6-tools-dev xvfb xdotool
# What tries manual pages, completions, documents, and the engine as a library.
TRIES := mandoc zsh fish pkgconf codespell
WITH_WINDOW := -DVELMORA_WINDOW=ON

.PHONY: all setup build run window windows smoke-windows test-windows screenshots install package dist release-check test test-sanitize test-tsan tidy format reformat fuzz bench check-large \
    check-readers clean

all: build

# Installs the packages that are missing; says nothing when all are there.
setup:
	@tools/setup.sh

# The optimised program, at build/velmora.
build: setup
	@cmake --preset release --log-level=WARNING
	@cmake --build --preset release --parallel $(JOBS) --target velmora
	@cp build/release/velmora $(PROGRAM)

# Converts the example orders and shows the tables that came out.
run: build
	@examples/run.sh $(PROGRAM)

# Builds the window and opens it.
window:
	@tools/setup.sh $(WINDOW)
	@cmake --preset release --log-level=WARNING $(WITH_WINDOW)
	@cmake --build --preset release --parallel $(JOBS) --target velmora velmora-gui
	@cp build/release/velmora $(PROGRAM) && cp build/release/velmora-gui $(PROGRAM)-gui
	@$(PROGRAM)-gui

# velmora.exe for 64-bit Windows and a ZIP with it, into build/windows. The sources of the libraries come through apt.
windows:
	@tools/setup.sh g++-mingw-w64-x86-64-posix dpkg-dev
	@tools/windows/build.sh build/windows $(JOBS)

# Under Wine: the example and the documents made by hand, converted by velmora.exe and by the program of this system, and
# compared; what Windows does in its own way. VELMORA_SHARED names the shared corpus and the checker (../shared otherwise).
SMOKE_DOCUMENTS = examples/orders.xml tests/corpus/by_hand/*.xml
smoke-windows: windows build
	@tools/setup.sh wine wine64
	@python3 tools/windows/compare.py build/windows/velmora.exe $(PROGRAM) build/windows/compare $(SMOKE_DOCUMENTS) \
	    $(MORE_DOCUMENTS)
	@python3 tools/windows/system.py build/windows/velmora.exe build/windows/system $${VELMORA_SHARED:-../shared}/tools

# The same with all documents of the shared corpus; the tests of the engine there, and runs that are killed.
test-windows: MORE_DOCUMENTS = $$(find $${VELMORA_SHARED:-../shared}/corpus -name '*.xml' -size -3M | sort)
test-windows: smoke-windows
	@tools/setup.sh googletest
	@tools/windows/tests.sh build/windows $(JOBS)
	@python3 tools/windows/crash.py build/windows/velmora.exe build/windows/crash $${VELMORA_SHARED:-../shared}/tools

# Pictures of every page and of a diagram into build/screenshots: light and dark, at 100 to 200 percent, also in German.
screenshots:
	@tools/setup.sh $(WINDOW) fonts-dejavu-core
	@cmake --preset release --log-level=WARNING $(WITH_WINDOW)
	@cmake --build --preset release --parallel $(JOBS) --target velmora_screenshots
	@tools/screenshots/take.sh build/release/tools/velmora_screenshots examples/orders.xml build/screenshots

# Both programs, with manual pages, completions, icon, desktop file and manual, and the engine as a library, below PREFIX
# (/usr/local); with DESTDIR into that folder, as if it were /.
install:
	@tools/setup.sh $(WINDOW)
	@cmake --preset release --log-level=WARNING $(WITH_WINDOW)
	@cmake --build --preset release --parallel $(JOBS) --target velmora velmora-gui handbook_pages velmora_jet \
	    velmora_jet_static
	@DESTDIR=$(DESTDIR) cmake --install build/release --prefix $(PREFIX)

# Debian's packages, into build/packages.
package:
	@tools/setup.sh $(WINDOW) dpkg-dev lintian
	@tools/packages/make.sh $(JOBS)

# The sources of the last commit, into build/packages.
dist:
	@tools/packages/archive.sh build/packages/velmora-$(VERSION).tar.gz

# All that must hold before a release, in a clean clone of the last commit. Takes the better part of an hour.
release-check:
	@tools/setup.sh $(CLANG) $(WINDOW) $(TRIES) dpkg-dev lintian
	@tools/release/check.sh $(VERSION) $(JOBS)

# Builds everything, the window too, and runs every test.
test: build
	@tools/setup.sh $(WINDOW) $(TRIES)
	@cmake --preset release --log-level=WARNING $(WITH_WINDOW)
	@cmake --build --preset release --parallel $(JOBS)
	@ctest --preset release --parallel $(JOBS)

# The same tests with assertions, under AddressSanitizer and UndefinedBehaviorSanitizer, built by clang.
test-sanitize:
	@tools/setup.sh $(CLANG) $(WINDOW) $(TRIES)
	@cmake --preset sanitize --log-level=WARNING $(WITH_WINDOW)
	@cmake --build --preset sanitize --parallel $(JOBS)
	@ctest --preset sanitize --parallel $(JOBS)

# Threads, documents and conversions under ThreadSanitizer, each with three threads; TSAN_TESTS chooses among the tests.
test-tsan:
	@tools/setup.sh $(CLANG)
	@cmake --preset tsan --log-level=WARNING
	@cmake --build --preset tsan --parallel $(JOBS) --target platform_test jet_store_test jet_model_test xml_test driver_test
	@for program in platform/platform jet/store/jet_store jet/face/jet_model xml/xml driver/driver; do \
	    TSAN_OPTIONS=halt_on_error=1 VELMORA_TEST_THREADS=3 build/tsan/tests/$${program}_test \
	        --gtest_brief=1 --gtest_filter='$(TSAN_TESTS)' || exit 1; \
	done

# clang-tidy over src/: nothing to say, or the target fails.
tidy:
	@tools/setup.sh $(CLANG) $(WINDOW) clang-tidy
	@cmake --preset tidy --log-level=WARNING $(WITH_WINDOW)
	@run-clang-tidy -quiet -p build/tidy -j $(JOBS) -extra-arg=-fno-caret-diagnostics "$(CURDIR)/src/" \
	    >build/tidy.log || { cat build/tidy.log; exit 1; }

# Fails and says where when a file is not as clang-format would have it; `make reformat` brings them all to it.
format:
	@tools/setup.sh clang-format
	@$(SOURCES) | xargs clang-format --dry-run -Werror

reformat:
	@tools/setup.sh clang-format
	@$(SOURCES) | xargs clang-format -i

# Runs each fuzz target for FUZZ_SECONDS. What it finds stays in build/sanitize/finds.
fuzz:
	@tools/setup.sh $(CLANG)
	@cmake --preset sanitize --log-level=WARNING
	@cmake --build --preset sanitize --parallel $(JOBS) --target fuzz
	@fuzz/run.sh build/sanitize $(FUZZ_SECONDS) $(JOBS)

# Conversions of seven shapes of document beside their floor and beside SQLite; thousands of small files; the engine by itself.
bench: build
	@cmake --build --preset release --parallel $(JOBS) --target bench_floor bench_same_rows bench_engine
	@python3 bench/run.py --program $(PROGRAM) --floor build/release/bench/bench_floor \
	    --same-rows build/release/bench/bench_same_rows --data build/bench; \
	    conversion=$$?; \
	    python3 bench/files.py --program $(PROGRAM) --data build/bench; files=$$?; \
	    python3 bench/engine.py --program build/release/bench/bench_engine --data build/bench && \
	    exit $$((conversion + files))

# The large inputs: some minutes, some gigabytes. VELMORA_SHARED names the shared corpus (../shared otherwise).
check-large: build
	@tools/setup.sh $(CLANG)
	@cmake --preset sanitize --log-level=WARNING
	@cmake --build --preset sanitize --parallel $(JOBS) --target velmora
	@python3 bench/check_large.py --program $(PROGRAM) --sanitized build/sanitize/velmora --data build/large

# Text files with +quoted in SQLite, PostgreSQL and LibreOffice, by their own import; installs what is missing of them.
check-readers: build
	@tools/setup.sh sqlite3 postgresql libreoffice-calc
	@python3 tools/readers/check.py $(PROGRAM)

clean:
	@rm -rf build
