# The two everyday commands: `make demo` and `make test`. Both install missing packages first.
.PHONY: setup demo browser test bench fuzz format clean

JOBS ?= $(shell nproc)

setup:
	@bash scripts/setup

demo: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target quorda_demo -j $(JOBS)
	@bash scripts/run-demo build/dev
	@echo
	@echo "The desktop browser on the same database: make browser (or scripts/run-browser build/dev)"

browser: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target quorda_browser -j $(JOBS)
	@bash scripts/run-browser build/dev

test: setup
	cmake --preset asan-ubsan
	cmake --build --preset asan-ubsan -j $(JOBS)
	ctest --preset asan-ubsan

bench: setup
	cmake --preset release
	cmake --build --preset release --target quorda_bench -j $(JOBS)
	bash scripts/run-bench build/release

fuzz: setup
	cmake --preset fuzz
	cmake --build --preset fuzz -j $(JOBS)
	bash scripts/run-fuzz build/fuzz

format:
	git ls-files '*.h' '*.cpp' '*.c' | xargs clang-format -i

clean:
	rm -rf build
