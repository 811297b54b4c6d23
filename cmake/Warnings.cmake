# Warnings of the project's own code; nvcc hands them on to its host compiler.
set(warnings -Wall -Wextra -Wshadow)
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    list(APPEND warnings -Wno-pass-failed) # TARN_INDEPENDENT is a hint: some loops are better left as they are
endif()
if(TARN_WERROR)
    list(APPEND warnings -Werror)
endif()
list(JOIN warnings "," host_warnings)
add_compile_options("$<$<COMPILE_LANGUAGE:C,CXX>:${warnings}>" "$<$<COMPILE_LANGUAGE:CUDA>:-Xcompiler=${host_warnings}>")
if(TARN_WERROR)
    add_compile_options("$<$<COMPILE_LANGUAGE:CUDA>:-Werror=all-warnings>")
endif()
