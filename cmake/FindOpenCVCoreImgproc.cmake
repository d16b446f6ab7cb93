# Finds the core and imgproc modules of OpenCV 4 by their files: the distribution ships no package
# file with these two modules alone. Defines the imported target OpenCV::CoreImgproc.
include(FindPackageHandleStandardArgs)

find_path(OpenCVCoreImgproc_INCLUDE_DIR opencv2/imgproc.hpp PATH_SUFFIXES opencv4)
find_library(OpenCVCoreImgproc_CORE_LIBRARY opencv_core)
find_library(OpenCVCoreImgproc_IMGPROC_LIBRARY opencv_imgproc)

find_package_handle_standard_args(OpenCVCoreImgproc REQUIRED_VARS
    OpenCVCoreImgproc_IMGPROC_LIBRARY OpenCVCoreImgproc_CORE_LIBRARY
    OpenCVCoreImgproc_INCLUDE_DIR)

if(OpenCVCoreImgproc_FOUND AND NOT TARGET OpenCV::CoreImgproc)
    add_library(OpenCV::CoreImgproc INTERFACE IMPORTED)
    # Imported include folders are system folders: warnings in them are not ours to mend.
    target_include_directories(OpenCV::CoreImgproc INTERFACE ${OpenCVCoreImgproc_INCLUDE_DIR})
    target_link_libraries(OpenCV::CoreImgproc INTERFACE
        ${OpenCVCoreImgproc_IMGPROC_LIBRARY} ${OpenCVCoreImgproc_CORE_LIBRARY})
endif()
