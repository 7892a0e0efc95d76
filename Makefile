# SPDX-License-Identifier: Apache-2.0
# Short names for the usual work. Each installs the Debian packages that it misses; CMake presets do the rest.
.PHONY: help deps demo google-demo test asan format format-check lint install-test windows deb wheel docs bench fuzz clean
.DEFAULT_GOAL := help

PRESET ?= dev
FUZZ_SECONDS ?= 60
GOOGLE_PORT ?= 8420
BOOK := examples/weather.xlsx
CONFIGURE = cmake --preset $(1) --log-level=WARNING
BUILD = cmake --build --preset $(1)
LIBREOFFICE = tools/install-deps libreoffice || echo "interactive mode is neither built nor tested"

help:  ## this list
	@awk -F ':.*## ' '/^[a-z-]+:.*## / {printf "  make %-14s %s\n", $$1, $$2}' $(MAKEFILE_LIST)

deps:  ## install the missing packages (root or sudo)
	@tools/install-deps

demo: deps  ## build the program and read a workbook with it
	@$(call CONFIGURE,release)
	@$(call BUILD,release) --target zxsheet
	build/release/bin/zxsheet info $(BOOK)
	build/release/bin/zxsheet read $(BOOK) --to table
	build/release/bin/zxsheet read $(BOOK) -s Summary --to json

google-demo:  ## serve a sample spreadsheet like Google Sheets does, without an account (GOOGLE_PORT=8420)
	@python3 tools/google_emulator --port $(GOOGLE_PORT) --state demo --hint

test: deps  ## build and run all tests (PRESET=dev or release)
	@tools/install-deps python
	@$(LIBREOFFICE)
	$(call CONFIGURE,$(PRESET))
	$(call BUILD,$(PRESET))
	ctest --preset $(PRESET)

asan: deps  ## build and run all tests under the address and undefined-behaviour sanitizers
	@$(LIBREOFFICE)
	$(call CONFIGURE,asan)
	$(call BUILD,asan)
	ctest --preset asan

format: deps  ## format the C++ sources
	@tools/format

format-check: deps  ## fail if a C++ source is not formatted
	@tools/format --check

lint: deps  ## look for faults with clang-tidy (.clang-tidy has the checks)
	@tools/install-deps lint
	@$(call CONFIGURE,fuzz)
	@tools/lint

install-test: deps  ## install into a scratch folder and build programs against it
	@$(call CONFIGURE,release)
	@$(call BUILD,release) --target zxspreadsheet zxsheet zxsheet_docs
	@tests/install/check build/release

windows:  ## cross-build for 64-bit Windows, test under Wine, make the ZIP file
	@tools/install-deps windows
	@# What CMake has found in other libraries than today's must not stay.
	@deps=$$(tools/deps-windows) && \
	  { grep -qs "^ZX_DEPS:[A-Z]*=$$deps$$" build/windows/CMakeCache.txt || fresh=--fresh; \
	    $(call CONFIGURE,windows) $$fresh -DZX_DEPS="$$deps"; }
	$(call BUILD,windows)
	tools/test-windows
	@rm -f build/windows/zxspreadsheet-*-win64.zip
	@$(call BUILD,windows) --target package
	@tests/install/check-windows build/windows/zxspreadsheet-*-win64.zip

deb:  ## Debian packages into build/deb, then tried in a bare system (root)
	@tools/install-deps deb python libreoffice
	@tools/make-deb
	@tests/install/check-deb build/deb

wheel: deps  ## the wheel for pip into build/wheel, tried in a fresh environment
	@tools/install-deps python
	@tests/install/check-wheel

docs:  ## reference of the public headers into build/docs
	@tools/install-deps docs
	@$(call CONFIGURE,release)
	@$(call BUILD,release) --target docs
	@echo "see build/docs/html/index.html"

bench:  ## build and run the benchmarks (BENCH_ARGUMENTS='--yardstick PROGRAM --peers')
	@tools/install-deps bench
	@$(call CONFIGURE,bench)
	@$(call BUILD,bench)
	build/release/bin/reading_benchmark
	bench/compare $(BENCH_ARGUMENTS) build/release/bin/read_book

fuzz:  ## build the fuzzers and run each for FUZZ_SECONDS (60)
	@tools/install-deps fuzz
	@$(call CONFIGURE,fuzz)
	@$(call BUILD,fuzz)
	fuzz/run $(FUZZ_SECONDS)

clean:  ## remove everything that was built
	rm -rf build
