# Settings that every target of this project shares.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

# The build tree has the layout of the installed one, so that programs find their
# libraries, modules and resources the same way in both: relative to themselves.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR})
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR})
# A folder of our own: names as short as BE and MF must not stand in a shared include folder.
set(PROJECT_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/TRFoundation)
set(PROJECT_MODULE_SUBDIR trhost)  # below the library folder: what trhost loads on demand
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR};$ORIGIN;$ORIGIN/..")

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
endif()

find_program(PROJECT_CCACHE ccache)
if(PROJECT_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # It keeps nothing that uses a precompiled header unless it is told that the header's times do not matter.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${PROJECT_CCACHE})
endif()
find_program(PROJECT_LLD ld.lld)
if(PROJECT_LLD)
    add_link_options(-fuse-ld=lld)
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # g++'s default, and clang's from version 19 on: operator delete is told the size.
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fsized-deallocation>)
endif()

option(PROJECT_WARNINGS_AS_ERRORS "Stop at a warning" OFF)
set(PROJECT_SANITIZERS "" CACHE STRING "Comma-separated -fsanitize= list, empty for none")
add_library(project_options INTERFACE)
target_compile_options(project_options INTERFACE -Wall -Wextra -Wnon-virtual-dtor -Wundef)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # g++ 12 sees an overlap in "literal" + std::string at -O3 that is not there.
    target_compile_options(project_options INTERFACE -Wno-restrict)
endif()
if(PROJECT_WARNINGS_AS_ERRORS)
    target_compile_options(project_options INTERFACE -Werror)
endif()
if(PROJECT_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)  # the fuzzer sees which branches of ours it has reached
endif()
if(PROJECT_SANITIZERS)
    add_compile_options(-fsanitize=${PROJECT_SANITIZERS} -fno-omit-frame-pointer
                        -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${PROJECT_SANITIZERS})
    if(PROJECT_SANITIZERS MATCHES undefined)
        # Objects cross libraries with hidden visibility, where type identity is by name only.
        add_compile_options(-fno-sanitize=vptr,function)
        add_link_options(-fno-sanitize=vptr,function)
    endif()
endif()
