# Precompiled standard headers, for builds that are made often (VELMORA_PRECOMPILE, on in the presets of clang): reading these is
# half of what compiling a file costs. Every file still includes what it needs: the other builds do without.

function(velmora_targets_below folder result)
    get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
    get_property(folders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
    foreach(below IN LISTS folders)
        velmora_targets_below(${below} more)
        list(APPEND targets ${more})
    endforeach()
    set(${result} ${targets} PARENT_SCOPE)
endfunction()

# Gives all targets of `types` below `folder` one precompiled header; `libraries` are those whose headers and options it
# needs.
function(velmora_precompile folder types headers libraries)
    get_filename_component(name ${folder} NAME)
    set(source ${CMAKE_CURRENT_BINARY_DIR}/precompiled_${name}.cpp)
    file(WRITE ${source}.new "")
    file(COPY_FILE ${source}.new ${source} ONLY_IF_DIFFERENT)
    add_library(precompiled_${name} OBJECT ${source})
    target_link_libraries(precompiled_${name} PRIVATE velmora_flags ${libraries})
    target_precompile_headers(precompiled_${name} PRIVATE ${headers})
    velmora_targets_below(${folder} targets)
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        get_target_property(own ${target} PRECOMPILE_HEADERS)
        if(type MATCHES "^(${types})$" AND NOT own)
            target_precompile_headers(${target} REUSE_FROM precompiled_${name})
        endif()
    endforeach()
endfunction()

set(standard <algorithm> <array> <cstdint> <cstring> <filesystem> <functional> <map> <memory> <optional> <set> <span> <string>
             <string_view> <unordered_map> <unordered_set> <utility> <variant> <vector>)
velmora_precompile(${PROJECT_SOURCE_DIR}/src "STATIC_LIBRARY|EXECUTABLE" "${standard}" "")
if(VELMORA_TESTS)
    # The libraries below tests/ are compiled with other options than the programs.
    velmora_precompile(${PROJECT_SOURCE_DIR}/tests "EXECUTABLE" "${standard};<fstream>;<gtest/gtest.h>"
                       "GTest::gtest;velmora_test_flags")
endif()
