# Compiler options: warnings, sanitizers, floating point, the processor, and how kernels are compiled on each platform.

include(CheckCXXCompilerFlag)
include(CheckCXXSourceRuns)

# One standard for all that is built here; callers need less.
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CUDA_STANDARD 17)

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_CUDA_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

if(VEXA_SANITIZE)
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fsanitize=${VEXA_SANITIZE}>
        $<$<COMPILE_LANGUAGE:CXX>:-fno-sanitize-recover=all>
        $<$<COMPILE_LANGUAGE:CXX>:-fno-omit-frame-pointer> $<$<COMPILE_LANGUAGE:CXX>:-g>)
    add_link_options(-fsanitize=${VEXA_SANITIZE})
endif()

# The host platform is compiled for AVX2 and FMA: without FMA in hardware every fused step is a library call.
set(VEXA_HOST_ARCH_OPTION "")
if(NOT VEXA_PLATFORM_IS_CUDA)
    if(NOT VEXA_HOST_ARCH STREQUAL "default")
        if(VEXA_HOST_ARCH)
            set(VEXA_HOST_ARCH_OPTION -march=${VEXA_HOST_ARCH})
        endif()
    elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
        check_cxx_compiler_flag(-march=x86-64-v3 VEXA_HAS_X86_64_V3)
        if(VEXA_HAS_X86_64_V3 AND NOT CMAKE_CROSSCOMPILING)
            check_cxx_source_runs("
                int main() {
                    __builtin_cpu_init();
                    return __builtin_cpu_supports(\"avx2\") && __builtin_cpu_supports(\"fma\") &&
                           __builtin_cpu_supports(\"bmi2\") ? 0 : 1;
                }" VEXA_RUNS_X86_64_V3)
        endif()
        if(VEXA_HAS_X86_64_V3 AND (CMAKE_CROSSCOMPILING OR VEXA_RUNS_X86_64_V3))
            set(VEXA_HOST_ARCH_OPTION -march=x86-64-v3)
        else()
            message(STATUS "vexa: this processor lacks AVX2 or FMA; building for the compiler's default")
        endif()
    endif()
endif()

# Warnings and arithmetic of everything that is built here. No implicit contraction: a step is fused where the code
# says so and nowhere else, so that results agree between platforms.
function(vexa_compile_options target)
    set(warnings -Wall -Wextra $<$<BOOL:${VEXA_WARNINGS_AS_ERRORS}>:-Werror>)
    target_compile_options(${target} PRIVATE
        $<$<COMPILE_LANGUAGE:CXX>:${warnings};-Wpedantic;-ffp-contract=off;${VEXA_HOST_ARCH_OPTION}>)
    if(VEXA_PLATFORM_IS_CUDA)
        string(REPLACE ";" "," forwarded "-Wall;-Wextra")
        target_compile_options(${target} PRIVATE
            "$<$<COMPILE_LANGUAGE:CUDA>:-Xcompiler=${forwarded}>"
            "$<$<AND:$<BOOL:${VEXA_WARNINGS_AS_ERRORS}>,$<COMPILE_LANGUAGE:CUDA>>:-Werror=all-warnings;-Xcompiler=-Werror>"
            "$<$<COMPILE_LANGUAGE:CUDA>:-fmad=false;-ftz=true>")
    endif()
endfunction()

# Compiles these .cu files as kernels of the platform: by nvcc, or as C++ with loops turned into vector code. Per
# source, as the property does not follow a target into other folders.
function(vexa_compile_kernels)
    if(VEXA_PLATFORM_IS_CUDA)
        # Kernels are known by name to callers; from 12.8 on nvcc hides the stubs of templates unless told.
        if(CMAKE_CUDA_COMPILER_VERSION VERSION_GREATER_EQUAL 12.8)
            set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS -static-global-template-stub=false)
        endif()
    else()
        set_property(SOURCE ${ARGN} PROPERTY LANGUAGE CXX)
        # Under sanitizers networks of unrolled steps take minutes to optimise.
        set(level -O3)
        if(VEXA_SANITIZE)
            set(level -O1)
        endif()
        # Clang warns of every loop that it leaves scalar; that is a matter of speed, which is measured with GCC.
        set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS
            -x c++ -fopenmp-simd -fno-math-errno -fno-trapping-math ${level} $<$<CXX_COMPILER_ID:Clang>:-Wno-pass-failed>)
    endif()
endfunction()
