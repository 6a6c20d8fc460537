# Two commands do everything on a fresh Debian machine:
#   make demo   installs what is missing, builds, and runs the main job on the bundled defaults
#   make test   installs what is missing, then: the optimised build with its tests (warnings are
#               errors), the fuzz run (make fuzz), and the sanitizer build with every test, whose
#               summary closes the output
# Both are thin layers over CMake; the build trees are build/ (demo, install), build-release/,
# build-fuzz/ and build-test/. Long output (package installation, configuration, fuzzer progress)
# goes to log files in build-logs/, shown only when that step fails.

DEBIAN_PACKAGES := cmake ninja-build g++ clang llvm-14 libclang-rt-14-dev libgtest-dev libgmock-dev \
                   libbenchmark-dev \
                   libpugixml-dev libzip-dev pkg-config libxml2-utils musescore3 \
                   libcpp-httplib-dev nodejs chromium unzip fluidsynth timgm6mb-soundfont libsndfile1-dev
# (llvm-14: the sanitizers' symbolizer. MusicXML: pugixml and libzip read scores and .mxl
# archives; xmllint validates what is written against the schema; MuseScore 3 is the notation
# program the tests play written drum notes in. The page: cpp-httplib serves it, node runs its
# browser test in Debian's chromium; unzip opens the .mxl it downloads. Sound: FluidSynth with a
# General MIDI sound font; the tests read the audio it renders with libsndfile.)
BUILD := build
RELEASE_BUILD := build-release
TEST_BUILD := build-test
FUZZ_BUILD := build-fuzz
LOGS := build-logs
JOBS ?= $(shell nproc)
PREFIX ?= /usr/local

# The fuzz targets, each as target:seed-folder[,seed-folder...]; a new fuzzer is one more entry.
# Each runs for FUZZ_SECONDS with its own corpus and findings under $(FUZZ_BUILD).
FUZZ_TARGETS := midi_fuzzer:fuzz/corpus,grooves/Tamberlyne musicxml_fuzzer:fuzz/musicxml-corpus
FUZZ_SECONDS ?= 60
FUZZ_FLAGS := -timeout=10 -rss_limit_mb=2048 -max_len=65536 -print_final_stats=1

# `$(call quietly,log-name,command)`: the command's output goes to $(LOGS)/log-name.log and is
# printed only when the command fails.
quietly = mkdir -p $(LOGS) && { $(2); } > $(LOGS)/$(1).log 2>&1 || { cat $(LOGS)/$(1).log; \
          echo "make: $(1) failed (log: $(LOGS)/$(1).log)"; exit 1; }

# `$(call configure,tree,options)` and `$(call compile,tree[,targets])`: ninja shows only the
# compiler's own messages (warnings, errors), no progress lines.
configure = $(call quietly,$(1)-configure,cmake -S . -B $(1) -G Ninja $(2))
compile = echo "Building $(1)$(if $(2), ($(2)))"; cmake --build $(1) -j $(JOBS) $(if $(2),--target $(2)) -- --quiet

# The sanitizers' symbolizer (llvm-14's, which is not on the PATH under its plain name), so that
# reports name functions and lines.
SYMBOLIZER = $$(command -v llvm-symbolizer || ls /usr/lib/llvm-*/bin/llvm-symbolizer 2>/dev/null | tail -n 1)
with_symbolizer = export ASAN_SYMBOLIZER_PATH=$(SYMBOLIZER) UBSAN_SYMBOLIZER_PATH=$(SYMBOLIZER);

.PHONY: all deps build demo test release-tests unit-tests fuzz bench install clean

all: build

deps:
	@missing=$$(for p in $(DEBIAN_PACKAGES); do dpkg -s $$p >/dev/null 2>&1 || echo $$p; done); \
	if [ -n "$$missing" ]; then \
	  echo "Installing Debian packages:" $$missing; \
	  sudo=$$([ "$$(id -u)" = 0 ] || echo sudo); \
	  $(call quietly,apt,$$sudo apt-get update -qq && \
	    $$sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $$missing); \
	fi
	@# npm comes with some builds of nodejs and is a package of its own in Debian's
	@command -v npm >/dev/null || { echo "Installing Debian packages: npm"; \
	  sudo=$$([ "$$(id -u)" = 0 ] || echo sudo); \
	  $(call quietly,apt-npm,$$sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends npm); }
	@# The page's engraver and the browser test's driver, pinned in web/package-lock.json
	@[ web/node_modules/.package-lock.json -nt web/package-lock.json ] || { \
	  echo "Installing the page's npm packages (web/package-lock.json)"; \
	  $(call quietly,npm,(cd web && npm ci --no-audit --no-fund)); }

build: deps
	@$(call configure,$(BUILD),-DTAMBERLYNE_TESTS=OFF)
	@$(call compile,$(BUILD))

# Fills measures 5-12 of the demo score's drum staff with the bundled "Rock 8ths" groove
# (the per-user groove folder is filled from the bundled library on first use), writes the result
# as MusicXML to open in a notation program, and what the filled measures sound like as MIDI and audio.
demo: build
	$(BUILD)/bin/tamberlyne fill --measures 5-12 --groove "Rock 8ths" --staff Drums --style drums --yes \
	  -o $(BUILD)/demo.drums.musicxml --force --midi $(BUILD)/demo-fill.mid --audio $(BUILD)/demo-fill.ogg

install: build
	cmake --install $(BUILD) --prefix $(PREFIX)

# What a person gets from "Building by hand" in Release, tests on, warnings as errors (an
# optimised build warns where the sanitizer build does not). Its tests run too: they take well
# under a minute, and they check the optimised code and the install.
release-tests: deps
	@$(call configure,$(RELEASE_BUILD),-DCMAKE_BUILD_TYPE=Release -DTAMBERLYNE_WERROR=ON)
	@$(call compile,$(RELEASE_BUILD))
	@mkdir -p $(LOGS); \
	if ctest --test-dir $(RELEASE_BUILD) --output-on-failure -j $(JOBS) > $(LOGS)/release-tests.log 2>&1; then \
	  echo "Release build tests: $$(grep 'tests passed' $(LOGS)/release-tests.log)"; \
	else cat $(LOGS)/release-tests.log; echo "make: the Release build's tests failed"; exit 1; fi

# The sanitizer build: Debug (-O0) compiles several times faster than optimised code under the
# sanitizers and finds the same faults; the benchmarks are not built here (they run nowhere).
unit-tests: deps
	@$(call configure,$(TEST_BUILD),-DCMAKE_BUILD_TYPE=Debug -DTAMBERLYNE_SANITIZE=ON -DTAMBERLYNE_WERROR=ON)
	@$(call compile,$(TEST_BUILD))
	@$(with_symbolizer) mkdir -p $(LOGS); \
	if ctest --test-dir $(TEST_BUILD) --output-on-failure -j $(JOBS) > $(LOGS)/unit-tests.log 2>&1; then \
	  sed -n '/tests passed/,$$p' $(LOGS)/unit-tests.log; \
	else cat $(LOGS)/unit-tests.log; exit 1; fi

test: release-tests
	@$(MAKE) --no-print-directory fuzz
	@$(MAKE) --no-print-directory unit-tests

# Every fuzz target under libFuzzer (clang, own tree), seeded from its folders; new inputs
# collect in $(FUZZ_BUILD)/corpus/<target>. Any crash, sanitizer report, leak, timeout or memory
# blow-up fails the run (kept in $(FUZZ_BUILD)/findings/<target>). The progress goes to
# $(LOGS)/<target>.log; one line per target tells executions and findings.
fuzz: deps
	@$(call configure,$(FUZZ_BUILD),-DCMAKE_CXX_COMPILER=clang++ -DTAMBERLYNE_FUZZ=ON -DTAMBERLYNE_TESTS=OFF -DTAMBERLYNE_WERROR=ON)
	@$(call compile,$(FUZZ_BUILD),$(foreach entry,$(FUZZ_TARGETS),$(firstword $(subst :, ,$(entry)))))
	@$(with_symbolizer) mkdir -p $(LOGS); \
	for entry in $(FUZZ_TARGETS); do \
	  target=$${entry%%:*}; seeds=$$(echo "$${entry#*:}" | tr ',' ' '); log=$(LOGS)/$$target.log; \
	  corpus=$(FUZZ_BUILD)/corpus/$$target; findings=$(FUZZ_BUILD)/findings/$$target; \
	  rm -rf $$findings; mkdir -p $$corpus $$findings; \
	  echo "Fuzzing $$target for $(FUZZ_SECONDS) s (log: $$log)"; \
	  $(FUZZ_BUILD)/bin/$$target -max_total_time=$(FUZZ_SECONDS) $(FUZZ_FLAGS) -artifact_prefix=$$findings/ \
	    $$corpus $$seeds > $$log 2>&1; status=$$?; \
	  runs=$$(sed -n 's/^stat::number_of_executed_units: *//p' $$log); found=$$(ls $$findings | wc -l); \
	  echo "  $$target: $${runs:-?} executions, corpus $$(ls $$corpus | wc -l) inputs, $$found findings"; \
	  if [ $$status -ne 0 ] || [ $$found -ne 0 ] || grep -q 'invalid path to external symbolizer' $$log; then \
	    grep -v '^#[0-9]' $$log; echo "make: fuzzing $$target failed (exit $$status; findings in $$findings)"; exit 1; \
	  fi; \
	done

bench: deps
	@$(call configure,$(BUILD),-DTAMBERLYNE_TESTS=OFF -DTAMBERLYNE_BENCH=ON)
	@$(call compile,$(BUILD))

clean:
	rm -rf $(BUILD) $(RELEASE_BUILD) $(TEST_BUILD) $(FUZZ_BUILD) $(LOGS)
