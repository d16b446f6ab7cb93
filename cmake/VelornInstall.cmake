# `cmake --install` installs headers, libraries, velorn, its completions for shells, CMake packages,
# pkg-config files and the manual page.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# velorn_install_package(PACKAGE TARGET VERSION DESCRIPTION HEADER...): a shared library that CMake
# finds as PACKAGE::PACKAGE and pkg-config as PACKAGE.
function(velorn_install_package package target version description)
    set(folder ${CMAKE_INSTALL_LIBDIR}/cmake/${package})
    list(TRANSFORM ARGN PREPEND ${CMAKE_SOURCE_DIR}/include/ OUTPUT_VARIABLE headers)
    install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    install(TARGETS ${target} EXPORT ${package}Targets
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
            RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
            INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    install(EXPORT ${package}Targets NAMESPACE ${package}:: DESTINATION ${folder})

    configure_package_config_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/packageConfig.cmake.in
        ${CMAKE_BINARY_DIR}/${package}Config.cmake INSTALL_DESTINATION ${folder})
    write_basic_package_version_file(${CMAKE_BINARY_DIR}/${package}ConfigVersion.cmake
        VERSION ${version} COMPATIBILITY SameMajorVersion)
    install(FILES ${CMAKE_BINARY_DIR}/${package}Config.cmake
                  ${CMAKE_BINARY_DIR}/${package}ConfigVersion.cmake
            DESTINATION ${folder})

    # The prefix can be chosen at install time, therefore the file is made then.
    install(CODE "
        set(package \"${package}\")
        set(version \"${version}\")
        set(description \"${description}\")
        set(CMAKE_INSTALL_LIBDIR \"${CMAKE_INSTALL_LIBDIR}\")
        set(CMAKE_INSTALL_INCLUDEDIR \"${CMAKE_INSTALL_INCLUDEDIR}\")
        configure_file(\"${CMAKE_CURRENT_FUNCTION_LIST_DIR}/package.pc.in\"
            \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig/${package}.pc\"
            @ONLY)")
endfunction()

velorn_install_package(velorncore10 velorncore10 ${PROJECT_VERSION} "${PROJECT_DESCRIPTION}"
    velorncore10.h)
if(UNIX)
    velorn_install_package(velorn libvelorn ${VELORN_LIBRARY_VERSION}
        "Removes blur from photographs" velorn.h velorn.hpp)
else()
    # Other compilers make an import library from this file.
    install(FILES ${CMAKE_CURRENT_SOURCE_DIR}/cmake/velorncore10.def
            DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()

if(VELORN_BUILD_HOST)
    set(velorn_completions_of_bash bash-completion/completions)
    set(velorn_completion_bash velorn)
    set(velorn_completions_of_zsh zsh/site-functions)
    set(velorn_completion_zsh _velorn)
    set(velorn_completions_of_fish fish/vendor_completions.d)
    set(velorn_completion_fish velorn.fish)
    set_target_properties(velorn PROPERTIES INSTALL_RPATH "\$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    install(TARGETS velorn RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(FILES ${CMAKE_CURRENT_SOURCE_DIR}/docs/velorn.1
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    foreach(shell bash zsh fish)
        install(FILES ${CMAKE_BINARY_DIR}/completions/velorn.${shell} RENAME ${velorn_completion_${shell}}
                DESTINATION ${CMAKE_INSTALL_DATADIR}/${velorn_completions_of_${shell}})
    endforeach()
endif()
