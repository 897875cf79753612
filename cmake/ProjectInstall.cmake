# The installed tree: libraries, headers, programs, find_package(TRFoundation) and pkg-config.
# Nothing in it holds an absolute path, so it can be moved or packed as it is.
include(CMakePackageConfigHelpers)

get_property(libraries GLOBAL PROPERTY PROJECT_LIBRARIES)
get_property(private_libraries GLOBAL PROPERTY PROJECT_PRIVATE_LIBRARIES)  # of programs
get_property(modules GLOBAL PROPERTY PROJECT_MODULES)

# Everything that is installed, for those who want to use it and not to work on it.
add_custom_target(product)
add_dependencies(product trhost ${libraries} ${private_libraries} ${modules})

# What our public headers show of others, the user's project must find too.
set(PROJECT_FIND_DEPENDENCIES "")
foreach(library IN LISTS libraries)
    get_target_property(dependencies ${library} INTERFACE_LINK_LIBRARIES)
    foreach(dependency IN LISTS dependencies)
        if(dependency STREQUAL "Threads::Threads")
            list(APPEND PROJECT_FIND_DEPENDENCIES "find_dependency(Threads)")
        elseif(dependency MATCHES "^Boost::")
            list(APPEND PROJECT_FIND_DEPENDENCIES "find_dependency(Boost 1.81)")
        elseif(NOT dependency MATCHES "^(Host|TR)::")
            message(FATAL_ERROR
                "${library} shows ${dependency} in its public headers, which an installed ${library} could "
                "not find again. Name it below PRIVATE, or say in cmake/ProjectInstall.cmake how to find it.")
        endif()
    endforeach()
endforeach()
list(REMOVE_DUPLICATES PROJECT_FIND_DEPENDENCIES)
list(JOIN PROJECT_FIND_DEPENDENCIES "\n" PROJECT_FIND_DEPENDENCIES)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/TRFoundation)
configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/TRFoundationConfig.cmake.in ${PROJECT_BINARY_DIR}/TRFoundationConfig.cmake
    INSTALL_DESTINATION ${package_folder} NO_SET_AND_CHECK_MACRO)
# Records and exported classes change with the first number only.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TRFoundationConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TRFoundationConfig.cmake ${PROJECT_BINARY_DIR}/TRFoundationConfigVersion.cmake
    DESTINATION ${package_folder})
foreach(family Host TR)
    install(EXPORT ${family}Targets NAMESPACE ${family}:: DESTINATION ${package_folder})
endforeach()

# Highest first, so that also a linker that reads from left to right finds everything. The dialogs stand apart: who
# shows no window links no window toolkit.
set(dialog_libraries kioui TRFoundationUI)
list(REMOVE_ITEM libraries kioui_testing ${dialog_libraries}) # tests of dialogs find the first by CMake
foreach(list libraries dialog_libraries)
    list(TRANSFORM ${list} PREPEND "-l" OUTPUT_VARIABLE flags)
    list(REVERSE flags)
    list(JOIN flags " " PROJECT_LINK_FLAGS_OF_${list})
endforeach()
file(RELATIVE_PATH PROJECT_PREFIX_FROM_PKGCONFIG
    /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" PROJECT_PREFIX_FROM_PKGCONFIG "${PROJECT_PREFIX_FROM_PKGCONFIG}")
foreach(package TRFoundation TRFoundationUI)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

# Resources lie in the build tree as they will in the installed one; whatever a target puts there is installed.
install(DIRECTORY ${PROJECT_BINARY_DIR}/share/ DESTINATION ${CMAKE_INSTALL_DATADIR} OPTIONAL
    PATTERN qps.mo EXCLUDE) # the pseudo-language is for tests
