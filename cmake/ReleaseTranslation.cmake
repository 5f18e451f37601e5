# Makes RESULT (.qm) of SOURCE (.ts) with LRELEASE; fails when an entry is unfinished or empty, which
# would leave a person before a window in two languages.

set(ENV{LC_ALL} C.UTF-8)
execute_process(COMMAND ${LRELEASE} ${SOURCE} -qm ${RESULT}
    OUTPUT_VARIABLE report COMMAND_ERROR_IS_FATAL ANY)
# "Generated 12 translation(s) (12 finished and 0 unfinished)", then perhaps
# "Ignored 3 untranslated source text(s)".
file(READ ${SOURCE} entries)
if(NOT report MATCHES "and 0 unfinished" OR report MATCHES "untranslated"
    OR entries MATCHES "<translation(/>|></translation>)")
    file(REMOVE ${RESULT})
    message(FATAL_ERROR "${SOURCE} has unfinished entries:\n${report}")
endif()
