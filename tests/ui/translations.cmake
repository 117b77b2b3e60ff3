# usage: cmake -DLUPDATE=... -DSOURCE=... -DWORK=... -P translations.cmake
# Fails when a text of the window has no German: when lupdate finds one that the file of translations has not, or has
# without a translation.
file(COPY ${SOURCE}/src/ui/translations/velmora_de.ts DESTINATION ${WORK})
execute_process(COMMAND ${LUPDATE} -locations none -I src src/ui -ts ${WORK}/velmora_de.ts
                WORKING_DIRECTORY ${SOURCE} RESULT_VARIABLE status OUTPUT_QUIET ERROR_VARIABLE said)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "lupdate: ${said}")
endif()
file(READ ${WORK}/velmora_de.ts texts)
string(REGEX MATCHALL "<source>[^<]*</source>[^<]*<translation type=\"unfinished\"" unfinished "${texts}")
if(unfinished)
    message(FATAL_ERROR "without German: ${unfinished}")
endif()
