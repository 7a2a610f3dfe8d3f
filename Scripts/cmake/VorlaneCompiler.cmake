# How the project's own targets are compiled: warnings, sanitizers, ccache.
find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND PROJECT_IS_TOP_LEVEL AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # Precompiled headers are only cached when ccache may trust their definitions and times.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        CCACHE_COMPILERCHECK=content ${CCACHE_PROGRAM})
endif()

add_library(vorlane_compile_options INTERFACE)
target_compile_definitions(vorlane_compile_options INTERFACE JSON_USE_IMPLICIT_CONVERSIONS=0)
if(VORLANE_STRICT)
    target_compile_options(vorlane_compile_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
endif()
if(CCACHE_PROGRAM)
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
