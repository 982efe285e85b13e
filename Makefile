# Entry points for users and CI. Every target installs what is missing first.
BUILD      ?= build
ASAN_BUILD ?= build-asan
COV_BUILD  ?= build-cov
JOBS       ?= $(shell nproc)
CORPUS     ?= ../shared/corpus
# ON makes every warning of our own code an error (the CI run sets it).
WERROR     ?= OFF

.PHONY: all deps configure build test demo asan asan-build corpus bench coverage loc clean

all: build

deps:
	@bash scripts/setup-deps.sh

configure: deps
	@cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Release -DVURL_WERROR=$(WERROR) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

test: build
	@cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

# Only the tool and the sample writers the demo runs; `make test` builds the rest.
demo: configure
	@cmake --build $(BUILD) -j $(JOBS) --target vurl vurl_make_sample_glb vurl_make_sample_fbx
	@bash scripts/demo.sh $(BUILD)/bin/vurl

asan-build: deps
	@cmake -S . -B $(ASAN_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DVURL_SANITIZE=ON -DVURL_BUILD_BENCH=OFF \
	  -DVURL_WERROR=$(WERROR) >/dev/null
	@cmake --build $(ASAN_BUILD) -j $(JOBS)

asan: asan-build
	@cd $(ASAN_BUILD) && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 ctest --output-on-failure -j $(JOBS)

# The corpus runs on the sanitizer build, so memory faults show even where they do not crash.
corpus: asan-build
	@bash scripts/corpus.sh $(ASAN_BUILD)/bin/vurl $(CORPUS)

bench: build
	@bash scripts/bench.sh $(BUILD)/bin

# Line and branch coverage of src/ by the whole suite (a gcov build of its own).
coverage: deps
	@bash scripts/coverage.sh $(COV_BUILD)

# Size of the test suite against the product code.
loc:
	@bash scripts/loc.sh

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(COV_BUILD)
