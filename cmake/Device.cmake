# Chooses the provider of the CUDA runtime and cuBLAS calls: TARN_PROVIDER is cuda or software.
set(TARN_PROVIDER ${TARN_DEVICE})
if(TARN_DEVICE STREQUAL auto)
    include(CheckLanguage)
    check_language(CUDA)
    file(GLOB gpus /dev/nvidia[0-9]*)
    if(CMAKE_CUDA_COMPILER AND gpus)
        set(TARN_PROVIDER cuda)
    else()
        set(TARN_PROVIDER software)
    endif()
elseif(NOT TARN_DEVICE MATCHES "^(cuda|software)$")
    message(FATAL_ERROR "TARN_DEVICE is '${TARN_DEVICE}'; it must be auto, cuda or software")
endif()
message(STATUS "tarn runs on: ${TARN_PROVIDER}")

if(TARN_PROVIDER STREQUAL cuda)
    if(NOT DEFINED CMAKE_CUDA_ARCHITECTURES)
        # Binary images for Turing to Blackwell; the newest also as PTX for what comes after, and one for those between
        # that no binary image fits, such as 11.0.
        set(CMAKE_CUDA_ARCHITECTURES 75-real 80-real 90 100-real 120)
    endif()
    set(CMAKE_CUDA_RUNTIME_LIBRARY Shared)
    enable_language(CUDA)
    find_package(CUDAToolkit REQUIRED)
    set(CMAKE_INSTALL_RPATH_USE_LINK_PATH ON)  # installed programs find the toolkit where it was found here
    set(CMAKE_CUDA_STANDARD 17)
    set(CMAKE_CUDA_STANDARD_REQUIRED ON)
    set(CMAKE_CUDA_VISIBILITY_PRESET hidden)
    # Source lines, for profilers and for reports of faults; the code is the same.
    add_compile_options($<$<COMPILE_LANGUAGE:CUDA>:-lineinfo>)
endif()
