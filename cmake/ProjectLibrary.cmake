# project_library(NAME [SHARED|MODULE]
#     SOURCES ...      compiled files
#     HEADERS ...      public headers, below include/, installed as they lie there
#     PUBLIC  ...      targets seen in our public headers
#     PRIVATE ...      targets used only inside the sources
#     NO_INSTALL)
# SHARED is what it is without a word; MODULE is loaded on demand from lib/trhost.
#
# Declares one library of the house. A library may link only rooms that come before it in
# PROJECT_ROOMS; anything else stops the configuration with advice.

# Lowest first. Rooms of one line share a floor; within it the earlier stands lower.
set(PROJECT_ROOMS
    kiocore
    PRQ kioappsupport kiomediatypes kioui_theme MF BE ZOL
    VF kioui kioui_testing kioscripting kioscripting_jsc
    TRFoundation TRFoundationUI
    trhost_effects trhost_support trhost_media trhost_devices trhost_frei0r trhost_avfilter trhost_ladspa
    trhost_ui trhost_script trhost)

function(_project_check_direction name)
    list(FIND PROJECT_ROOMS ${name} ours)
    if(ours EQUAL -1)
        message(FATAL_ERROR
            "${name} has no place in the house. Add it to PROJECT_ROOMS in "
            "cmake/ProjectLibrary.cmake, above everything that it stands on.")
    endif()
    foreach(dependency IN LISTS ARGN)
        string(REGEX REPLACE "^(Host|TR)::" "" room "${dependency}")
        list(FIND PROJECT_ROOMS ${room} theirs)
        if(NOT theirs EQUAL -1 AND NOT theirs LESS ours)
            message(FATAL_ERROR
                "${name} may not link ${dependency}: it stands above ${name}. Let the upper "
                "library hand an interface down instead, or move what both need into a room "
                "that comes before ${name} in PROJECT_ROOMS (cmake/ProjectLibrary.cmake).")
        endif()
    endforeach()
endfunction()

function(project_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "SHARED;MODULE;NO_INSTALL" "" "SOURCES;HEADERS;PUBLIC;PRIVATE")
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "project_library(${name}): unknown words ${arg_UNPARSED_ARGUMENTS}")
    endif()
    _project_check_direction(${name} ${arg_PUBLIC} ${arg_PRIVATE})

    if(arg_MODULE)
        add_library(${name} MODULE ${arg_SOURCES})
        set_target_properties(${name} PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY
            ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/${PROJECT_MODULE_SUBDIR})
    else()
        add_library(${name} SHARED ${arg_SOURCES})
        set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    endif()
    # One export set for each namespace, so that an installed name is the one used here.
    set(family Host)
    if(name MATCHES "^TRFoundation")
        set(family TR)
    endif()
    add_library(${family}::${name} ALIAS ${name})

    list(TRANSFORM arg_HEADERS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    target_sources(${name} PRIVATE ${arg_HEADERS})
    target_include_directories(${name}
        PUBLIC $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${PROJECT_INSTALL_INCLUDEDIR}>)
    target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE} $<BUILD_INTERFACE:project_options>)
    if(COMMAND project_shared_headers)
        project_shared_headers(${name})
    endif()
    if(NOT PROJECT_SANITIZERS)
        target_link_options(${name} PRIVATE -Wl,-z,defs)  # a sanitizer's runtime lives in the program
    endif()

    if(NOT arg_NO_INSTALL)
        if(arg_MODULE)
            install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${PROJECT_MODULE_SUBDIR})
            set_property(GLOBAL APPEND PROPERTY PROJECT_MODULES ${name})
        elseif(name MATCHES "^trhost")
            # Part of a program: it needs it beside it, nobody links it.
            install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_SKIP)
            set_property(GLOBAL APPEND PROPERTY PROJECT_PRIVATE_LIBRARIES ${name})
        else()
            install(TARGETS ${name} EXPORT ${family}Targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
            set_property(GLOBAL APPEND PROPERTY PROJECT_LIBRARIES ${name})
        endif()
        if(NOT name MATCHES "^trhost" AND EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/include)
            install(DIRECTORY include/ DESTINATION ${PROJECT_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
        endif()
    endif()
endfunction()

# project_test(NAME [AS_ONE] SOURCES ... LIBRARIES ... FIXTURES ...): one test program; ctest lists each of its
# cases, and runs what sets the fixtures up before them. AS_ONE is for cases that share what takes long to make:
# ctest then runs the program as a whole.
function(project_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "AS_ONE" "" "SOURCES;LIBRARIES;DEPENDS;FIXTURES")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} test_support test_options GTest::gmock GTest::gtest_main)
    target_precompile_headers(${name} REUSE_FROM test_headers)
    if(arg_DEPENDS)
        add_dependencies(${name} ${arg_DEPENDS})
    endif()
    set(fixtures "")
    if(arg_FIXTURES)
        set(fixtures FIXTURES_REQUIRED "${arg_FIXTURES}")
    endif()
    if(arg_AS_ONE)
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES TIMEOUT 600 ${fixtures})
    else()
        gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 300 ${fixtures})
    endif()
endfunction()

# project_bench(bench_NAME SOURCES ... LIBRARIES ...): one benchmark program, run by `tools/dev bench NAME`.
function(project_bench name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} project_options)
endfunction()

# project_fuzz(fuzz_NAME SOURCES ... LIBRARIES ...): one libFuzzer program. Its seeds lie in corpus/NAME beside
# the build file. ctest replays them and adds a short run; `tools/dev fuzz` runs for as long as is wanted.
function(project_fuzz name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} project_options)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    string(REGEX REPLACE "^fuzz_" "" corpus ${name})
    file(GLOB seeds CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/corpus/${corpus}/*)
    if(NOT seeds)
        message(FATAL_ERROR "${name} has no seeds in ${CMAKE_CURRENT_SOURCE_DIR}/corpus/${corpus}")
    endif()
    list(LENGTH seeds seed_count)
    list(JOIN seeds "," seeds)
    math(EXPR runs "${seed_count} + 2000")
    # The same inputs every time, none kept from the run before: a failure here can be repeated.
    add_test(NAME Fuzz.${name} COMMAND ${name} -seed_inputs=${seeds} -runs=${runs} -seed=1 -timeout=10
        -rss_limit_mb=2048 -artifact_prefix=${CMAKE_BINARY_DIR}/${name}-)
    set_tests_properties(Fuzz.${name} PROPERTIES TIMEOUT 300)
endfunction()
