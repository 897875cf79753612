# Standard headers take a third of most files' compile time: compiled once for all libraries. Files go on including
# what they use; a build with PROJECT_SHARED_HEADERS=OFF shows what is missing. A file that is optimised otherwise than
# the rest must leave them alone (SKIP_PRECOMPILE_HEADERS): g++ breaks down over it.
option(PROJECT_SHARED_HEADERS "Compile the standard headers once" ON)

if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    set(PROJECT_HEADER_OPTIONS "SHELL:-Xclang -fno-pch-timestamp") # so that ccache knows it again
else()
    # Likewise. g++ 12 warns about its own library once that came out of a precompiled header.
    set(PROJECT_HEADER_OPTIONS -fpch-preprocess -Wno-array-bounds -Wno-stringop-overflow)
endif()

if(PROJECT_SHARED_HEADERS)
    add_library(library_headers OBJECT cmake/pch/headers.cpp)
    target_link_libraries(library_headers PRIVATE project_options)
    target_compile_options(library_headers PRIVATE ${PROJECT_HEADER_OPTIONS})
    target_precompile_headers(library_headers PRIVATE <algorithm> <filesystem> <fstream> <functional> <map> <memory>
        <mutex> <optional> <string> <thread> <vector>)
endif()

# project_shared_headers(TARGET...): for libraries that are compiled as all others are.
function(project_shared_headers)
    if(PROJECT_SHARED_HEADERS)
        foreach(target IN LISTS ARGN)
            target_compile_options(${target} PRIVATE ${PROJECT_HEADER_OPTIONS})
            target_precompile_headers(${target} REUSE_FROM library_headers)
        endforeach()
    endif()
endfunction()
