# Front doors. Each target sets up what it needs on a fresh machine; the work is in CMakePresets.json.
.DEFAULT_GOAL := build
.PHONY: setup build test check-all check-clang coverage demo cluster bench performance cuda check-cuda gpu-bundle
.PHONY: docs package wheel test-python format clean

JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=
GPU_ARCH ?= 90
MEASURE = scripts/gpu-check bench --programs build/release --limit 3600

setup:
	@scripts/install-dependencies

build: setup
	@cmake --preset release $(CMAKE_FLAGS)
	@cmake --build --preset release -j $(JOBS)

# Programs that the tests run under the drop-in library.
TEST_PACKAGES = libblas-test liblapack-test python3-scipy octave openmpi-bin libscalapack-openmpi-dev

test:
	@scripts/install-dependencies $(TEST_PACKAGES)
	@$(MAKE) --no-print-directory build
	@ctest --preset release -j 1

# The tests, and those of the library again under the address and undefined-behaviour sanitizers.
check-all: test
	@cmake --preset asan $(CMAKE_FLAGS)
	@cmake --build --preset asan -j $(JOBS)
	@ctest --preset asan -j 1

# Which branches of the library and of the software device the tests take: a figure, and pages in build/coverage/html.
coverage: setup
	@scripts/install-dependencies clang libclang-rt-dev llvm $(TEST_PACKAGES)
	@cmake --preset coverage $(CMAKE_FLAGS)
	@cmake --build --preset coverage -j $(JOBS)
	@rm -rf build/coverage/profiles
	@ctest --preset coverage -j 2
	@scripts/coverage

demo: setup
	@cmake --preset release $(CMAKE_FLAGS)
	@cmake --build --preset release -j $(JOBS) --target tarn
	@build/release/bin/tarn demo

# The ScaLAPACK example on one process and on four.
cluster:
	@scripts/install-dependencies openmpi-bin libscalapack-openmpi-dev
	@$(MAKE) --no-print-directory build
	@examples/cluster/run build/release

bench: build
	@build/release/bin/tarn bench --routine all --type s --size 512,1024,2048,4096

performance: build
	@$(MEASURE) --fresh --repeat 0 --type sc --size 256,512,1024,2048
	@$(MEASURE) --type s --repeat 0 --size 4096 --routine gemm,trsm,getrf,gesv,geqrf,gels
	@$(MEASURE) --type s --size 2000 --routine gesvd-nn,gesvd-ss --repeat 1
	@scripts/install-dependencies python3-matplotlib
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

# The manuals: build/release/manuals/html/index.html, and man pages in build/release/manuals/man.
docs: setup
	@scripts/install-dependencies doxygen python3
	@cmake --preset release -DTARN_BUILD_DOCS=ON $(CMAKE_FLAGS)
	@cmake --build --preset release -j $(JOBS) --target docs

# clang, its warnings errors, on a project that takes the sources in by FetchContent and asks for C++20; without
# precompiled headers, so that each file has to include what it needs.
check-clang: setup
	@scripts/install-dependencies clang
	@CC=clang CXX=clang++ cmake -S tests/package/foreign -B build/clang -G Ninja -DTARN=$(CURDIR) -DBY=FetchContent \
	       -DTARN_DEVICE=software -DTARN_WERROR=ON -DTARN_BUILD_TESTS=ON \
	       -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON $(CMAKE_FLAGS)
	@cmake --build build/clang -j $(JOBS) --target programs kernels_test callers_test
	@ctest --test-dir build/clang --output-on-failure --no-tests=error -R "^(solve|kernels_test|callers_test)"

# Debian packages and a .tar.gz in build/package/packages, tried in a clean root.
package: setup
	@scripts/install-dependencies dpkg-dev file lintian doxygen python3 man-db
	@cmake --preset package $(CMAKE_FLAGS)
	@cmake --build --preset package -j $(JOBS)
	@rm -rf build/package/packages
	@cd build/package && cpack
	@tests/package/check-packages build/package .

# The Python package as a wheel in dist/, and its tests in a virtual environment of their own.
wheel: setup
	@scripts/python-wheel

test-python: wheel
	@scripts/python-test

format:
	@git ls-files '*.h' '*.hpp' '*.c' '*.cpp' '*.cu' 'include/tarndev/*' 'include/lapack/cu/*' | xargs clang-format -i

clean:
	rm -rf build gpu-bundle dist
