PREFIX ?= /usr/local
JOBS ?= $(shell nproc)
# How often make test-long runs each test whose world is more than its own process.
REPEATS ?= 20

RELEASE := build/release
BENCH := build/bench
SANITIZED := build/sanitized
FUZZ := build/fuzz
# How long make fuzz runs each fuzzer.
MINUTES ?= 1
# A display decides whether Curtain starts in the user's session or in a virtual desktop.
HAS_DISPLAY := $(DISPLAY)$(WAYLAND_DISPLAY)

.PHONY: help run configure-tests test check-sanitized fuzzers fuzz-short fuzz test-long bench lint install \
	package clean program tests

help:
	@echo "make run         install what is missing, build, and start Curtain"
	@echo "make test        install what is missing, build, and run the tests"
	@echo "make check-sanitized"
	@echo "                 the unit tests under sanitizers, and clang-tidy over core/ and hotkeys/"
	@echo "make fuzz        invented input for what reads other programs' data, MINUTES=$(MINUTES) for each reader"
	@echo "make fuzz-short  the same, a few seconds each"
	@echo "make test-long   the long tests, and the others REPEATS=$(REPEATS) times on a busy machine; takes hours"
	@echo "make bench       the benchmarks; what they measured is kept in build/bench/figures.json"
	@echo "make lint        check the format and run clang-tidy"
	@echo "make install     build and install under PREFIX=$(PREFIX)"
	@echo "make package     build a Debian package into build/package"
	@echo "make clean       remove everything that was built"

# The program can be built without the tests' packages; once configured with the tests, the tree stays so.
program:
	@test -f $(RELEASE)/build.ninja || cmake --preset release -DCURTAIN_BUILD_TESTS=OFF
	cmake --build --preset release --parallel $(JOBS) --target curtain $(TOUR)

configure-tests:
	scripts/setup --tests
	@grep -qs '^CURTAIN_BUILD_TESTS:BOOL=ON$$' $(RELEASE)/CMakeCache.txt && test -f $(RELEASE)/build.ninja || \
		cmake --preset release -DCURTAIN_BUILD_TESTS=ON

tests: configure-tests
	cmake --build --preset release --parallel $(JOBS)

ifneq ($(HAS_DISPLAY),)
run:
	scripts/setup
	@$(MAKE) --no-print-directory program
	cmake --install $(RELEASE) --prefix build/stage >/dev/null
	exec build/stage/bin/curtain
else
# The tour brings a microphone and cameras of its own.
run:
	@echo "There is no display here, so Curtain takes a tour in a virtual desktop, of which pictures are left in build/tour."
	scripts/setup --tour
	@$(MAKE) --no-print-directory program TOUR=VirtualCamera
	cmake --install $(RELEASE) --prefix build/stage >/dev/null
	exec scripts/virtual-desktop --media -- scripts/tour build/stage/bin/curtain $(RELEASE)/support/VirtualCamera
endif

test: tests
	ctest --preset release

check-sanitized:
	scripts/setup --tests
	cmake --preset sanitized -DCURTAIN_BUILD_TESTS=ON
	cmake --build --preset sanitized --parallel $(JOBS) --target CoreTest HotkeysTest AppTest PlantedFault
	tests/sanitizers/run $(SANITIZED)
	run-clang-tidy -quiet -j $(JOBS) -p $(SANITIZED) '^$(CURDIR)/(core|hotkeys)/'

fuzzers:
	scripts/setup --tests
	cmake --preset fuzz -DCURTAIN_BUILD_TESTS=ON
	cmake --build --preset fuzz --parallel $(JOBS) --target fuzzers

fuzz-short: fuzzers
	tests/fuzz/run $(FUZZ)

fuzz: fuzzers
	tests/fuzz/run $(FUZZ) --minutes $(MINUTES)

test-long: tests
	scripts/setup --long
	ctest --preset long
	scripts/repeat-tests --times $(REPEATS) $(RELEASE)

bench: export CURTAIN_FIGURES := $(abspath $(BENCH)/figures.json)
bench:
	@test -d bench || { echo "There are no benchmarks yet."; exit 1; }
	scripts/setup --tests
	@test -f $(BENCH)/build.ninja || \
		cmake --preset release -B $(BENCH) -DCURTAIN_BUILD_BENCHMARKS=ON -DCURTAIN_BUILD_TESTS=OFF
	cmake --build $(BENCH) --parallel $(JOBS)
	@rm -f $(CURTAIN_FIGURES)
	@set -e; for program in $$(find $(BENCH)/bench -maxdepth 1 -type f -executable | sort); do \
		echo "$$program"; $$program; done
	@set -e; for program in $$(find $(BENCH)/bench/display -type f -executable | sort); do \
		for session in x11-openbox x11-xfwm4; do \
			echo "$$program ($$session)"; \
			scripts/virtual-desktop --session $$session --tray none --media -- $$program; done; done
	cmake --install $(BENCH) --prefix $(BENCH)/stage >/dev/null
	scripts/virtual-desktop --media -- python3 -B bench/tray_benchmark.py $(BENCH)/stage/bin/curtain \
		$(BENCH)/bench/peers/BareTrayIcon
	CURTAIN=$(BENCH)/stage/bin/curtain scripts/virtual-desktop -- python3 -B tests/desktop/toggles_test.py 10000
	scripts/virtual-desktop --media --camera $(BENCH)/support/VirtualCamera -- \
		python3 -B bench/popover_benchmark.py $(BENCH)/stage/bin/curtain
	scripts/virtual-desktop -- python3 -B bench/settings_benchmark.py $(BENCH)/stage/bin/curtain
	scripts/virtual-desktop --session kwin -- python3 -B bench/kwin_benchmark.py $(BENCH)/stage/bin/curtain
	@set -e; for session in sway x11-i3; do \
		scripts/virtual-desktop --session $$session -- python3 -B bench/scratchpad_benchmark.py $(BENCH)/stage/bin/curtain; done
	@set -e; for session in x11-openbox x11-xfwm4; do \
		echo "bench/leak_benchmark.py ($$session)"; \
		LEAK_METER_PROGRAMS=$(BENCH)/support scripts/virtual-desktop --session $$session -- \
			python3 -B bench/leak_benchmark.py $(BENCH)/stage/bin/curtain; done

lint: tests
	scripts/format --check
	run-clang-tidy -quiet -j $(JOBS) -p $(RELEASE) '^$(CURDIR)/(core|platform|hotkeys|Curtain|tests|bench)/'

install: program
	cmake --install $(RELEASE) --prefix "$(abspath $(PREFIX))"

package:
	scripts/setup --package
	@$(MAKE) --no-print-directory program
	CURTAIN_BUILD=$(abspath $(RELEASE)) DEB_BUILD_OPTIONS=nocheck scripts/debian-package build/package --build=binary

clean:
	rm -rf build
