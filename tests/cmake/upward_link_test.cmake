# cmake -DSOURCE_DIR=... -DWORK_DIR=... -P upward_link_test.cmake
# project_library lets links go down only, and says what to do otherwise.

function(expect case advice)
    file(REMOVE_RECURSE ${WORK_DIR}/${case})
    execute_process(
        COMMAND ${CMAKE_COMMAND} -G Ninja -S ${SOURCE_DIR}/tests/cmake/upward-link -B ${WORK_DIR}/${case}
            -DCASE=${case} -DREAL_SOURCE_DIR=${SOURCE_DIR}
        RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    string(REGEX REPLACE "[ \n]+" " " text "${output}")
    if(advice STREQUAL "" AND NOT result EQUAL 0)
        message(SEND_ERROR "${case}: should configure, but said:\n${output}")
    elseif(NOT advice STREQUAL "" AND result EQUAL 0)
        message(SEND_ERROR "${case}: should have been refused")
    elseif(NOT advice STREQUAL "" AND NOT text MATCHES "${advice}")
        message(SEND_ERROR "${case}: expected \"${advice}\", found:\n${output}")
    else()
        message(STATUS "${case}: ok")
    endif()
endfunction()

expect(downward "")
expect(upward "BE may not link TR::TRFoundation: it stands above BE. Let the upper library hand an interface down")
expect(upward_without_namespace "kiocore may not link ZOL: it stands above kiocore")
expect(later_on_the_same_floor "MF may not link Host::BE: .* a room that comes before MF in PROJECT_ROOMS")
expect(itself "MF may not link Host::MF")
expect(no_room "cellar has no place in the house. Add it to PROJECT_ROOMS in cmake/ProjectLibrary.cmake")
expect(unknown_word "project_library\\(kiocore\\): unknown words STATIC")
