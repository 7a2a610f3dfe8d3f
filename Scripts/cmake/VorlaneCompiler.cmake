# How the project's own targets are compiled: warnings, sanitizers, ccache, linker, sources per compilation.
find_program(CCACHE_PROGRAM ccache)
set(VORLANE_USE_CCACHE OFF)
if(CCACHE_PROGRAM AND PROJECT_IS_TOP_LEVEL AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(VORLANE_USE_CCACHE ON)
    # ccache caches precompiled headers only with these settings. Paths are relative to the base folder, so that another clone
    # uses the same cached objects.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime CCACHE_COMPILERCHECK=content
        CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE_PROGRAM})
endif()

add_library(vorlane_compile_options INTERFACE)
target_compile_definitions(vorlane_compile_options INTERFACE JSON_USE_IMPLICIT_CONVERSIONS=0)
if(VORLANE_STRICT)
    target_compile_options(vorlane_compile_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
    # False positives of g++ 12 in std::string when it optimises.
    target_compile_options(vorlane_compile_options INTERFACE
                           $<$<AND:$<CXX_COMPILER_ID:GNU>,$<NOT:$<CONFIG:Debug>>>:-Wno-restrict
                           -Wno-stringop-overflow -Wno-array-bounds -Wno-maybe-uninitialized>)
endif()
if(VORLANE_USE_CCACHE AND VORLANE_PRECOMPILE_HEADERS)
    target_compile_options(vorlane_compile_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
endif()
if(CMAKE_UNITY_BUILD)
    # A type in an unnamed namespace may be a member of a class of the same source. The warning assumes that the file which
    # contains both is a header.
    target_compile_options(vorlane_compile_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()
# lld links a test program in 0.3 s instead of 2 s. It cannot read g++'s intermediate code, which releases are linked from.
find_program(LLD_PROGRAM ld.lld)
if(LLD_PROGRAM AND PROJECT_IS_TOP_LEVEL AND CMAKE_BUILD_TYPE STREQUAL "Debug")
    target_link_options(vorlane_compile_options INTERFACE -fuse-ld=lld)
endif()
if(VORLANE_SANITIZE)
    target_compile_options(vorlane_compile_options INTERFACE -fsanitize=${VORLANE_SANITIZE} -fno-omit-frame-pointer
                           -fno-sanitize-recover=all)
    target_link_options(vorlane_compile_options INTERFACE -fsanitize=${VORLANE_SANITIZE})
    if(VORLANE_SANITIZE MATCHES thread)
        # g++ warns that its thread sanitizer does not support the fences of Asio. The code runs clean.
        target_compile_options(vorlane_compile_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-tsan>)
    endif()
endif()

# vorlane_group_sources(TARGET [size]): in a unity build, sources are compiled together only with others of their folder, at
# most `size` at once (40 without it). So file-local names must be unique within a folder only, and do not clash when a file
# is added elsewhere.
function(vorlane_group_sources target)
    set(size 40)
    if(ARGC GREATER 1)
        set(size ${ARGV1})
    endif()
    get_target_property(sources ${target} SOURCES)
    foreach(source IN LISTS sources)
        cmake_path(ABSOLUTE_PATH source OUTPUT_VARIABLE path)
        cmake_path(GET path PARENT_PATH folder)
        string(MD5 key ${folder})
        math(EXPR count_${key} "0${count_${key}} + 1")
        math(EXPR batch "(${count_${key}} - 1) / ${size}")
        cmake_path(GET folder FILENAME name)
        string(SUBSTRING ${key} 0 4 key)
        set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${name}_${key}_${batch})
    endforeach()
    set_target_properties(${target} PROPERTIES UNITY_BUILD_MODE GROUP)
endfunction()
