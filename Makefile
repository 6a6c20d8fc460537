# Two commands do everything on a fresh Debian machine:
#   make demo   installs what is missing, builds, and runs the main job on the bundled defaults
#   make test   installs what is missing, builds with the sanitizers, and runs every test,
#               then fuzzes the MIDI cleaner for a bounded time (make fuzz)
# Both are thin layers over CMake; the build trees are build/, build-test/ and build-fuzz/.

DEBIAN_PACKAGES := cmake ninja-build g++ clang libclang-rt-14-dev libgtest-dev libgmock-dev \
                   libbenchmark-dev \
                   libpugixml-dev libzip-dev pkg-config libxml2-utils musescore3 \
                   libcpp-httplib-dev nodejs chromium unzip
# (MusicXML: pugixml and libzip read scores and .mxl archives; xmllint validates what is written
# against the schema; MuseScore 3 is the notation program the tests play written drum notes in.
# The page: cpp-httplib serves it, node runs its browser test in Debian's chromium; unzip opens
# the .mxl it downloads.)
BUILD := build
TEST_BUILD := build-test
FUZZ_BUILD := build-fuzz
JOBS ?= $(shell nproc)
FUZZ_SECONDS ?= 60

.PHONY: all deps build demo test unit-tests fuzz bench clean

all: build

deps:
	@missing=$$(for p in $(DEBIAN_PACKAGES); do dpkg -s $$p >/dev/null 2>&1 || echo $$p; done); \
	if [ -n "$$missing" ]; then \
	  echo "Installing Debian packages:" $$missing; \
	  sudo=$$([ "$$(id -u)" = 0 ] || echo sudo); \
	  $$sudo apt-get update -qq && \
	  DEBIAN_FRONTEND=noninteractive $$sudo apt-get install -y -qq --no-install-recommends $$missing; \
	fi
	@# npm comes with some builds of nodejs and is a package of its own in Debian's
	@command -v npm >/dev/null || { sudo=$$([ "$$(id -u)" = 0 ] || echo sudo); \
	  DEBIAN_FRONTEND=noninteractive $$sudo apt-get install -y -qq --no-install-recommends npm; }
	@# The page's engraver and the browser test's driver, pinned in web/package-lock.json
	@[ web/node_modules/.package-lock.json -nt web/package-lock.json ] || (cd web && npm ci --no-audit --no-fund)

build: deps
	cmake -S . -B $(BUILD) -G Ninja -DTAMBERLYNE_TESTS=OFF
	cmake --build $(BUILD) -j $(JOBS)

# Fills measures 5-12 of the demo score's drum staff with the bundled "Rock 8ths" groove
# (the per-user groove folder is filled from the bundled library on first use) and writes the
# result as MusicXML, to open in a notation program.
demo: build
	$(BUILD)/bin/tamberlyne fill --measures 5-12 --groove "Rock 8ths" --staff Drums --style drums --yes \
	  -o $(BUILD)/demo.drums.musicxml --force

unit-tests: deps
	cmake -S . -B $(TEST_BUILD) -G Ninja -DTAMBERLYNE_SANITIZE=ON -DTAMBERLYNE_BENCH=ON
	cmake --build $(TEST_BUILD) -j $(JOBS)
	ctest --test-dir $(TEST_BUILD) --output-on-failure -j $(JOBS)

# The optimised build is built too (its warnings differ from the sanitizer build's); the fuzz
# run comes before the unit tests so that the test summary closes the output.
test: build
	$(MAKE) --no-print-directory fuzz
	$(MAKE) --no-print-directory unit-tests

# The MIDI cleaner under libFuzzer (clang, own tree): seeds are the hand-made broken files of
# fuzz/corpus and the groove library; new inputs collect in $(FUZZ_BUILD)/corpus. Any crash,
# sanitizer report, leak, timeout or memory blow-up fails the target (kept in $(FUZZ_BUILD)/findings).
fuzz: deps
	cmake -S . -B $(FUZZ_BUILD) -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DTAMBERLYNE_FUZZ=ON -DTAMBERLYNE_TESTS=OFF
	cmake --build $(FUZZ_BUILD) --target midi_fuzzer -j $(JOBS)
	mkdir -p $(FUZZ_BUILD)/corpus $(FUZZ_BUILD)/findings
	$(FUZZ_BUILD)/bin/midi_fuzzer -max_total_time=$(FUZZ_SECONDS) -timeout=10 -rss_limit_mb=2048 -max_len=16384 \
	  -print_final_stats=1 -artifact_prefix=$(FUZZ_BUILD)/findings/ \
	  $(FUZZ_BUILD)/corpus fuzz/corpus grooves/Tamberlyne

bench: deps
	cmake -S . -B $(BUILD) -G Ninja -DTAMBERLYNE_TESTS=OFF -DTAMBERLYNE_BENCH=ON
	cmake --build $(BUILD) -j $(JOBS)

clean:
	rm -rf $(BUILD) $(TEST_BUILD) $(FUZZ_BUILD)
