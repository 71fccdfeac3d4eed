# Chooses the platform: sets VEXA_PLATFORM_NAME (cuda or host), VEXA_PLATFORM_IS_CUDA and VEXA_PLATFORM_LIBRARIES.

include(CheckLanguage)

# auto means cuda where nvcc is there and a program that it compiles finds a device.
function(vexa_choose_platform result)
    set(${result} host PARENT_SCOPE)
    check_language(CUDA)
    if(NOT CMAKE_CUDA_COMPILER)
        return()
    endif()
    execute_process(
        COMMAND ${CMAKE_CUDA_COMPILER} --run ${CMAKE_CURRENT_SOURCE_DIR}/cmake/device_probe.cu
                -o ${CMAKE_BINARY_DIR}/device_probe
        RESULT_VARIABLE failed OUTPUT_QUIET ERROR_QUIET)
    if(NOT failed)
        set(${result} cuda PARENT_SCOPE)
    endif()
endfunction()

if(VEXA_PLATFORM STREQUAL "auto")
    vexa_choose_platform(VEXA_PLATFORM_NAME)
elseif(VEXA_PLATFORM MATCHES "^(cuda|host)$")
    set(VEXA_PLATFORM_NAME ${VEXA_PLATFORM})
else()
    message(FATAL_ERROR "VEXA_PLATFORM is ${VEXA_PLATFORM}; it must be auto, cuda or host")
endif()
message(STATUS "vexa: platform ${VEXA_PLATFORM_NAME}")

if(VEXA_PLATFORM_NAME STREQUAL "cuda")
    set(VEXA_PLATFORM_IS_CUDA ON)
    # Capabilities 5.0 to 9.0 as far as the toolkit knows them, and code for later ones to compile on the spot.
    if(NOT DEFINED CMAKE_CUDA_ARCHITECTURES)
        find_package(CUDAToolkit REQUIRED)
        if(CUDAToolkit_VERSION VERSION_LESS 13)
            set(CMAKE_CUDA_ARCHITECTURES 50-real 60-real 70-real 75-real 80-real 86-real 89-real 90)
        else()
            set(CMAKE_CUDA_ARCHITECTURES 75-real 80-real 86-real 89-real 90)
        endif()
    endif()
    enable_language(CUDA)
    find_package(CUDAToolkit REQUIRED)
    # One CUDA runtime for the library and its callers, who may launch its kernels themselves.
    set(CMAKE_CUDA_RUNTIME_LIBRARY Shared)
    set(VEXA_PLATFORM_LIBRARIES CUDA::cudart CUDA::cublas)
    # Statistics are NPP's where it is installed.
    find_path(NPP_INCLUDE_DIR nppi_statistics_functions.h HINTS ${CUDAToolkit_INCLUDE_DIRS})
    find_library(NPP_STATISTICS_LIBRARY nppist HINTS ${CUDAToolkit_LIBRARY_DIR})
    find_library(NPP_CORE_LIBRARY nppc HINTS ${CUDAToolkit_LIBRARY_DIR})
    mark_as_advanced(NPP_INCLUDE_DIR NPP_STATISTICS_LIBRARY NPP_CORE_LIBRARY)
    if(NPP_INCLUDE_DIR AND NPP_STATISTICS_LIBRARY AND NPP_CORE_LIBRARY)
        set(VEXA_HAS_NPP ON)
        list(APPEND VEXA_PLATFORM_LIBRARIES ${NPP_STATISTICS_LIBRARY} ${NPP_CORE_LIBRARY})
    endif()
else()
    set(VEXA_PLATFORM_IS_CUDA OFF)
    find_package(TBB REQUIRED)
    find_package(LAPACK REQUIRED)
    set(VEXA_PLATFORM_LIBRARIES TBB::tbb LAPACK::LAPACK)
endif()
