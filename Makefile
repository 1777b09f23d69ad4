# The two everyday commands: `make demo` and `make test`. Both install missing packages first.
.PHONY: setup demo browser test bench fuzz format format-check clean

JOBS ?= $(shell nproc)

setup:
	@bash scripts/setup

demo: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target quorda_demo quorda -j $(JOBS)
	@bash scripts/run-demo build/dev
	@echo
	@echo "The desktop browser on the same database: make browser (or scripts/run-browser build/dev)"

browser: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target quorda_browser -j $(JOBS)
	@bash scripts/run-browser build/dev

test: setup format-check
	cmake --preset asan-ubsan
	cmake --build --preset asan-ubsan -j $(JOBS)
	ctest --preset asan-ubsan
# The thread tests once more under ThreadSanitizer: only the suite that carries them is built.
	cmake --preset tsan
	cmake --build --preset tsan -j $(JOBS) --target quorda_concurrency_tests
	ctest --preset tsan
# A short run of the fuzzer whose input is a whole file a person hands over: a saved component set.
	cmake --preset fuzz
	cmake --build --preset fuzz -j $(JOBS) --target fuzz_component_stream
	bash scripts/run-fuzz build/fuzz 30 fuzz_component_stream

bench: setup
	cmake --preset release
	cmake --build --preset release --target quorda_bench -j $(JOBS)
	bash scripts/run-bench build/release

fuzz: setup
	cmake --preset fuzz
	cmake --build --preset fuzz -j $(JOBS)
	bash scripts/run-fuzz build/fuzz

# Layout is checked with the clang-format release that .clang-format is written for.
CLANG_FORMAT ?= clang-format-14
FORMATTED = git ls-files -z '*.h' '*.cpp' '*.c'

format:
	@$(FORMATTED) | xargs -0 $(CLANG_FORMAT) -i

format-check: setup
	@$(FORMATTED) | xargs -0 $(CLANG_FORMAT) --dry-run --Werror

clean:
	rm -rf build
