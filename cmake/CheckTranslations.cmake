# Fails unless each of FILES (.ts) holds exactly the texts that LUPDATE finds in the sources of
# FOLDER; else writes STAMP. Nothing but the stamp and files beside it is written.

foreach(file IN LISTS FILES)
    get_filename_component(name ${file} NAME)
    get_filename_component(scratch ${STAMP} DIRECTORY)
    set(extracted ${scratch}/${name})
    configure_file(${file} ${extracted} COPYONLY)
    # In the build's folder: relative paths in the file would differ, so it holds no locations.
    execute_process(COMMAND ${LUPDATE} -silent -no-obsolete -locations none ${FOLDER} -ts ${extracted}
        COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${file} ${extracted}
        RESULT_VARIABLE differs OUTPUT_QUIET ERROR_QUIET)
    if(differs)
        message(FATAL_ERROR "${file} does not hold the texts of ${FOLDER}: "
            "build the target update_translations and finish the new entries")
    endif()
endforeach()
file(TOUCH ${STAMP})
