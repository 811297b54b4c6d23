# Front doors. Each target sets up what it needs on a fresh machine; the work is in CMakePresets.json.
.DEFAULT_GOAL := build
.PHONY: setup build test demo bench cuda format clean

JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=

setup:
	@scripts/install-dependencies

build: setup
	@cmake --preset release $(CMAKE_FLAGS)
	@cmake --build --preset release -j $(JOBS)

test: build
	@ctest --preset release -j 1

demo: build
	@build/release/bin/tarn demo

bench: build
	@build/release/bin/tarn bench --routine all --type s --size 512,1024,2048,4096

cuda: setup
	cmake --preset cuda $(CMAKE_FLAGS)
	cmake --build --preset cuda -j $(JOBS)
	tests/exports/check-exports build/cuda/lib/libtarn_lapack.so
	tests/cuda/check-without-gpu build/cuda

format:
	@git ls-files '*.h' '*.c' '*.cpp' '*.cu' 'include/tarndev/*' 'include/lapack/cu/*' | xargs clang-format -i

clean:
	rm -rf build
