# How the project's own targets are compiled: warnings, sanitizers, ccache.
find_program(CCACHE_PROGRAM ccache)
set(VORLANE_USE_CCACHE OFF)
if(CCACHE_PROGRAM AND PROJECT_IS_TOP_LEVEL AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(VORLANE_USE_CCACHE ON)
    # Precompiled headers are only cached when ccache may trust their definitions and times; paths below the base folder
    # do not count, so another clone finds what this one compiled.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime CCACHE_COMPILERCHECK=content
        CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE_PROGRAM})
endif()

add_library(vorlane_compile_options INTERFACE)
target_compile_definitions(vorlane_compile_options INTERFACE JSON_USE_IMPLICIT_CONVERSIONS=0)
if(VORLANE_STRICT)
    target_compile_options(vorlane_compile_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
    # g++ 12 mistakes how std::string grows for an overflow, once it optimises.
    target_compile_options(vorlane_compile_options INTERFACE
                           $<$<AND:$<CXX_COMPILER_ID:GNU>,$<NOT:$<CONFIG:Debug>>>:-Wno-restrict
                           -Wno-stringop-overflow -Wno-array-bounds -Wno-maybe-uninitialized>)
endif()
if(VORLANE_USE_CCACHE AND VORLANE_PRECOMPILE_HEADERS)
    target_compile_options(vorlane_compile_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
endif()
if(VORLANE_SANITIZE)
    target_compile_options(vorlane_compile_options INTERFACE -fsanitize=${VORLANE_SANITIZE} -fno-omit-frame-pointer
                           -fno-sanitize-recover=all)
    target_link_options(vorlane_compile_options INTERFACE -fsanitize=${VORLANE_SANITIZE})
    if(VORLANE_SANITIZE MATCHES thread)
        # Asio's fences are beyond g++'s thread sanitizer, which says so; the code runs clean.
        target_compile_options(vorlane_compile_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-tsan>)
    endif()
endif()
