# Front door of the project: `make run` and `make test` work on a fresh Debian machine.
PRESET ?= dev
BUILD  := build/$(PRESET)
JOBS   ?= $(shell nproc 2>/dev/null || echo 2)

DEB_PACKAGES := g++ cmake make python3 googletest libgtest-dev libgmock-dev \
                libbenchmark-dev libcli11-dev libfmt-dev nlohmann-json3-dev \
                libsqlite3-dev

.PHONY: all deps configure build run test bench coverage clean

all: build

# Installs only the Debian packages that are missing; needs root or sudo.
deps:
	@missing=""; for p in $(DEB_PACKAGES); do \
	  dpkg -s $$p >/dev/null 2>&1 || missing="$$missing $$p"; done; \
	if [ -n "$$missing" ]; then \
	  echo "installing:$$missing"; \
	  SUDO=""; [ "$$(id -u)" = 0 ] || SUDO=sudo; \
	  $$SUDO apt-get update -qq && DEBIAN_FRONTEND=noninteractive $$SUDO apt-get install -y -qq $$missing; \
	fi

$(BUILD)/CMakeCache.txt:
	cmake --preset $(PRESET)

configure: deps $(BUILD)/CMakeCache.txt

build: configure
	cmake --build $(BUILD) -j $(JOBS)

run: build
	./examples/run-example.sh $(BUILD)/qvt

test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

bench: deps
	$(MAKE) PRESET=release build
	./bench/run-benchmarks.sh build/release

# Line coverage of src/ by the whole suite, per folder; the lines themselves
# go to build/coverage/coverage.json (see tools/coverage.py to compare two runs).
coverage: deps
	cmake --preset coverage
	cmake --build build/coverage -j $(JOBS)
	python3 tools/coverage.py run build/coverage build/coverage/coverage.json -- ctest --test-dir build/coverage -j $(JOBS)

clean:
	rm -rf build
