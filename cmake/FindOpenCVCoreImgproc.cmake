# Finds the core and imgproc modules of OpenCV 4 by their files: the distribution has no package file
# for these two modules only. Defines the imported target OpenCV::CoreImgproc.
include(FindPackageHandleStandardArgs)

find_path(OpenCVCoreImgproc_INCLUDE_DIR opencv2/imgproc.hpp PATH_SUFFIXES opencv4)
# The names of libraries for Windows contain the version.
find_library(OpenCVCoreImgproc_CORE_LIBRARY NAMES opencv_core opencv_core460)
find_library(OpenCVCoreImgproc_IMGPROC_LIBRARY NAMES opencv_imgproc opencv_imgproc460)

find_package_handle_standard_args(OpenCVCoreImgproc REQUIRED_VARS
    OpenCVCoreImgproc_IMGPROC_LIBRARY OpenCVCoreImgproc_CORE_LIBRARY
    OpenCVCoreImgproc_INCLUDE_DIR)

if(OpenCVCoreImgproc_FOUND AND NOT TARGET OpenCV::CoreImgproc)
    add_library(OpenCV::CoreImgproc INTERFACE IMPORTED)
    # Imported include folders are system folders, which keeps the compiler from warnings in them.
    target_include_directories(OpenCV::CoreImgproc INTERFACE ${OpenCVCoreImgproc_INCLUDE_DIR})
    target_link_libraries(OpenCV::CoreImgproc INTERFACE
        ${OpenCVCoreImgproc_IMGPROC_LIBRARY} ${OpenCVCoreImgproc_CORE_LIBRARY})
    if(WIN32)
        # A static library does not contain its own dependencies.
        find_package(ZLIB REQUIRED)
        target_link_libraries(OpenCV::CoreImgproc INTERFACE ZLIB::ZLIB)
    endif()
endif()
