# project_texts(TARGET NAME FOLDER): compiles the languages in FOLDER (*.po, kept by `tools/dev texts`) into
# share/NAME/locale/<language>.mo, as a part of TARGET. Builds with tests have the pseudo-language qps as well,
# which is not installed.
find_program(PROJECT_MSGFMT msgfmt REQUIRED)

function(project_texts target name folder)
    set(compiled ${PROJECT_BINARY_DIR}/share/${name}/locale)
    set(catalogues)
    file(GLOB languages CONFIGURE_DEPENDS ${folder}/*.po)
    foreach(texts IN LISTS languages)
        cmake_path(GET texts STEM language)
        set(catalogue ${compiled}/${language}.mo)
        add_custom_command(OUTPUT ${catalogue}
            COMMAND ${CMAKE_COMMAND} -E make_directory ${compiled}
            COMMAND ${PROJECT_MSGFMT} --check-format --check-domain -o ${catalogue} ${texts}
            DEPENDS ${texts} COMMENT "Compiling texts of ${name} (${language})" VERBATIM)
        list(APPEND catalogues ${catalogue})
    endforeach()
    if(PROJECT_TESTS)
        set(tool ${PROJECT_SOURCE_DIR}/tools/texts)
        set(texts ${CMAKE_CURRENT_BINARY_DIR}/qps.po)
        set(catalogue ${compiled}/qps.mo)
        add_custom_command(OUTPUT ${catalogue} BYPRODUCTS ${texts}
            COMMAND ${CMAKE_COMMAND} -E make_directory ${compiled}
            COMMAND ${tool}/texts pseudo ${folder}/texts.pot ${texts}
            COMMAND ${PROJECT_MSGFMT} --check-format --check-domain -o ${catalogue} ${texts}
            DEPENDS ${folder}/texts.pot ${tool}/texts ${tool}/pseudo.py ${tool}/po.py
            COMMENT "Making the pseudo-language of ${name}" VERBATIM)
        list(APPEND catalogues ${catalogue})
    endif()
    target_sources(${target} PRIVATE ${catalogues})
endfunction()
