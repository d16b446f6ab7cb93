# `cmake --install` installs header, library, velorn, CMake package, pkg-config file and manual page.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/velorncore10)

install(FILES ${CMAKE_CURRENT_SOURCE_DIR}/include/velorncore10.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS velorncore10 EXPORT velorncore10Targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(WIN32)
    # Other compilers make an import library from this file.
    install(FILES ${CMAKE_CURRENT_SOURCE_DIR}/cmake/velorncore10.def
            DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()
install(EXPORT velorncore10Targets NAMESPACE velorncore10:: DESTINATION ${package_dir})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/velorncore10Config.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/velorncore10Config.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/velorncore10ConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/velorncore10Config.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/velorncore10ConfigVersion.cmake
        DESTINATION ${package_dir})

# The prefix can be chosen at install time, therefore the file is made then.
install(CODE "
    set(PROJECT_VERSION \"${PROJECT_VERSION}\")
    set(PROJECT_DESCRIPTION \"${PROJECT_DESCRIPTION}\")
    set(CMAKE_INSTALL_LIBDIR \"${CMAKE_INSTALL_LIBDIR}\")
    set(CMAKE_INSTALL_INCLUDEDIR \"${CMAKE_INSTALL_INCLUDEDIR}\")
    configure_file(\"${CMAKE_CURRENT_LIST_DIR}/velorncore10.pc.in\"
        \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig/velorncore10.pc\"
        @ONLY)")

if(VELORN_BUILD_HOST)
    set_target_properties(velorn PROPERTIES INSTALL_RPATH "\$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    install(TARGETS velorn RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(FILES ${CMAKE_CURRENT_SOURCE_DIR}/docs/velorn.1
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
