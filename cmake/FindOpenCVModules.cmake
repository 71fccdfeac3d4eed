# Finds single modules of OpenCV 4 by header and library, as distributions pack them: OpenCV's own package file insists
# on all modules. Makes the target OpenCVModules of the requested COMPONENTS.

find_path(OpenCVModules_INCLUDE_DIR opencv2/core.hpp PATH_SUFFIXES opencv4)
set(required OpenCVModules_INCLUDE_DIR)
set(libraries "")
foreach(module IN LISTS OpenCVModules_FIND_COMPONENTS)
    find_library(OpenCVModules_${module}_LIBRARY opencv_${module})
    list(APPEND required OpenCVModules_${module}_LIBRARY)
    list(APPEND libraries ${OpenCVModules_${module}_LIBRARY})
endforeach()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(OpenCVModules
    REQUIRED_VARS ${required}
    REASON_FAILURE_MESSAGE "install the development files of OpenCV 4 or configure with -DVEXA_OPENCV=OFF")

if(OpenCVModules_FOUND)
    if(NOT TARGET OpenCVModules)
        add_library(OpenCVModules INTERFACE IMPORTED GLOBAL)
        target_include_directories(OpenCVModules SYSTEM INTERFACE ${OpenCVModules_INCLUDE_DIR})
    endif()
    target_link_libraries(OpenCVModules INTERFACE ${libraries})
endif()
mark_as_advanced(${required})
