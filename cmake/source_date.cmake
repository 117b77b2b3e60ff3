# VELMORA_SOURCE_DATE: when these sources were made, in seconds since 1970. It stands in all that is packed, so that two
# builds of the same sources are the same: SOURCE_DATE_EPOCH, else the last commit, else the list of changes.
set(VELMORA_SOURCE_DATE "$ENV{SOURCE_DATE_EPOCH}")
if(NOT VELMORA_SOURCE_DATE AND EXISTS ${PROJECT_SOURCE_DIR}/.git)
    execute_process(COMMAND git log -1 --format=%ct WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
                    OUTPUT_VARIABLE VELMORA_SOURCE_DATE OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(NOT VELMORA_SOURCE_DATE)
    file(TIMESTAMP ${PROJECT_SOURCE_DIR}/CHANGELOG.md VELMORA_SOURCE_DATE %s UTC)
endif()
