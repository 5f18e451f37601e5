# Writes OUTPUT from TEMPLATE with VERSION and BUILD_ID; without a BUILD_ID given it is the short
# hash of the commit in SOURCE_DIR, or "unknown" when that is no work tree of its own (unpacked
# inside somebody else's repository, whose hash would say nothing about us).
if(BUILD_ID STREQUAL "")
    set(BUILD_ID unknown)
    find_program(GIT git)
    if(GIT)
        execute_process(COMMAND ${GIT} -C ${SOURCE_DIR} rev-parse --show-cdup --short HEAD
            OUTPUT_VARIABLE answer RESULT_VARIABLE status ERROR_QUIET)
        # First line: the way up to the top of the work tree, empty at the top.
        if(status EQUAL 0 AND answer MATCHES "^\n([0-9a-f]+)\n$")
            set(BUILD_ID ${CMAKE_MATCH_1})
        endif()
    endif()
endif()
configure_file(${TEMPLATE} ${OUTPUT} @ONLY)
