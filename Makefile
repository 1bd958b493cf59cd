# Entry points: make demo, make test, make bench, make docs (and make fuzz for the libFuzzer targets).
# Each prepares a fresh Debian 12 machine first (scripts/install-deps.sh is idempotent).

JOBS ?= $(shell nproc)
FUZZ_SECONDS ?= 60

.PHONY: all deps demo test bench docs fuzz clean

all: test

deps:
	@scripts/install-deps.sh

test: deps
	cmake --preset debug-asan
	cmake --build --preset debug-asan -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
		ctest --preset debug-asan -j $(JOBS)

demo: deps
	cmake --preset release
	cmake --build --preset release -j $(JOBS) --target qor_demo
	build/release/examples/qor_demo out

bench: deps
	cmake --preset release
	cmake --build --preset release -j $(JOBS) --target qor_bench qor_bench_sdl
	build/release/bench/qor_bench
	build/release/bench/qor_bench_sdl

# The HTML API reference from the public headers' comments: build/docs/html/index.html.
docs: deps
	mkdir -p build/docs
	doxygen docs/Doxyfile
	@echo "API reference: build/docs/html/index.html"

fuzz: deps
	cmake --preset fuzz
	cmake --build --preset fuzz -j $(JOBS)
	scripts/run-fuzzers.sh build/fuzz/fuzz $(FUZZ_SECONDS)

clean:
	rm -rf build out
