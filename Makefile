# Front doors. Each target sets up what it needs on a fresh machine; the work is in CMakePresets.json.
.DEFAULT_GOAL := build
.PHONY: setup build test check-all coverage demo bench performance cuda check-cuda gpu-bundle check-clang package format clean

JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=
GPU_ARCH ?= 90
MEASURE = scripts/gpu-check bench --programs build/release --limit 3600

setup:
	@scripts/install-dependencies

build: setup
	@cmake --preset release $(CMAKE_FLAGS)
	@cmake --build --preset release -j $(JOBS)

test: build
	@ctest --preset release -j 1

# The tests, and all of them again under the address and undefined-behaviour sanitizers.
check-all: test
	@cmake --preset asan $(CMAKE_FLAGS)
	@cmake --build --preset asan -j $(JOBS)
	@ctest --preset asan -j 1

# Which branches of the library and of the software device the tests take: a figure, and pages in build/coverage/html.
coverage: setup
	@scripts/install-dependencies gcovr
	@cmake --preset coverage $(CMAKE_FLAGS)
	@cmake --build --preset coverage -j $(JOBS)
	@find build/coverage -name '*.gcda' -delete
	@ctest --preset coverage -j 1
	@mkdir -p build/coverage/html
	@gcovr --root . --object-directory build/coverage --filter src/ --filter platform/ --exclude-throw-branches \
	       --exclude-unreachable-branches --html-details build/coverage/html/index.html --print-summary --branches

demo: setup
	@cmake --preset release $(CMAKE_FLAGS)
	@cmake --build --preset release -j $(JOBS) --target tarn
	@build/release/bin/tarn demo

bench: build
	@build/release/bin/tarn bench --routine all --type s --size 512,1024,2048,4096

performance: build
	@$(MEASURE) --fresh --repeat 0 --type sc --size 512,1024,2048
	@$(MEASURE) --type s --repeat 0 --size 4096 --routine gemm,trsm,getrf,gesv,geqrf,gels
	@$(MEASURE) --type s --size 2000 --routine gesvd-nn,gesvd-ss --repeat 1
	@scripts/performance

cuda: setup
	@scripts/install-dependencies libzstd-dev
	cmake --preset cuda $(CMAKE_FLAGS)
	cmake --build --preset cuda -j $(JOBS)
	tests/exports/check-exports build/cuda/lib/libtarn_lapack.so
	tests/cuda/check-without-gpu build/cuda
	tests/cuda/check-kernels build/cuda

# The tests of the CUDA build on the emulated GPU, under its checks.
check-cuda: cuda
	@ctest --preset emulated -j 1

gpu-bundle: setup
	@scripts/install-dependencies libzstd-dev
	@scripts/gpu-bundle --arch $(GPU_ARCH) --jobs $(JOBS)

# clang, its warnings errors, on a project that takes the sources in by FetchContent and asks for C++20.
check-clang: setup
	@scripts/install-dependencies clang
	@CC=clang CXX=clang++ cmake -S tests/package/foreign -B build/clang -G Ninja -DTARN=$(CURDIR) -DBY=FetchContent \
	       -DTARN_DEVICE=software -DTARN_WERROR=ON -DTARN_BUILD_TESTS=ON $(CMAKE_FLAGS)
	@cmake --build build/clang -j $(JOBS) --target programs kernels_test callers_test
	@ctest --test-dir build/clang --output-on-failure --no-tests=error -R "^(solve|kernels_test|callers_test)"

# Debian packages and a .tar.gz in build/package/packages, tried in a clean root.
package: setup
	@scripts/install-dependencies dpkg-dev file lintian
	@cmake --preset package $(CMAKE_FLAGS)
	@cmake --build --preset package -j $(JOBS)
	@rm -rf build/package/packages
	@cd build/package && cpack
	@tests/package/check-packages build/package/packages .

format:
	@git ls-files '*.h' '*.hpp' '*.c' '*.cpp' '*.cu' 'include/tarndev/*' 'include/lapack/cu/*' | xargs clang-format -i

clean:
	rm -rf build gpu-bundle
