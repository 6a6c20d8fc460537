# Two commands do everything on a fresh Debian machine:
#   make demo   installs what is missing, builds, and runs the main job on the bundled defaults
#   make test   installs what is missing, builds with the sanitizers, and runs every test
# Both are thin layers over CMake; the build trees are build/ and build-test/.

DEBIAN_PACKAGES := cmake ninja-build g++ clang libclang-rt-14-dev libgtest-dev libgmock-dev \
                   libbenchmark-dev
BUILD := build
TEST_BUILD := build-test
FUZZ_BUILD := build-fuzz
JOBS ?= $(shell nproc)

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

build: deps
	cmake -S . -B $(BUILD) -G Ninja -DTAMBERLYNE_TESTS=OFF
	cmake --build $(BUILD) -j $(JOBS)

demo: build
	$(BUILD)/bin/tamberlyne plugins

unit-tests: deps
	cmake -S . -B $(TEST_BUILD) -G Ninja -DTAMBERLYNE_SANITIZE=ON -DTAMBERLYNE_BENCH=ON
	cmake --build $(TEST_BUILD) -j $(JOBS)
	ctest --test-dir $(TEST_BUILD) --output-on-failure -j $(JOBS)

test: unit-tests

bench: deps
	cmake -S . -B $(BUILD) -G Ninja -DTAMBERLYNE_TESTS=OFF -DTAMBERLYNE_BENCH=ON
	cmake --build $(BUILD) -j $(JOBS)

clean:
	rm -rf $(BUILD) $(TEST_BUILD) $(FUZZ_BUILD)
