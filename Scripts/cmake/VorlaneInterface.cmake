# The targets and headers that a host uses.
include(VorlaneHeaders)

foreach(library vorlane_static vorlane_shared vorlane_simulator)
    target_include_directories(${library} INTERFACE $<BUILD_INTERFACE:${VORLANE_STAGED_INCLUDES}>
                               $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    target_compile_features(${library} INTERFACE cxx_std_20)
endforeach()

# The same default as that of an installed Vorlane: see VorlaneConfig.cmake.in.
if(DEFINED BUILD_SHARED_LIBS AND NOT BUILD_SHARED_LIBS)
    set(VORLANE_DEFAULT_LIBRARY vorlane_static)
else()
    set(VORLANE_DEFAULT_LIBRARY vorlane_shared)
endif()
add_library(Vorlane::vorlane ALIAS ${VORLANE_DEFAULT_LIBRARY})
add_library(Vorlane::simulator ALIAS vorlane_simulator)

# The project's own programs use internal classes, which only the static library has.
if(PROJECT_IS_TOP_LEVEL)
    set(VORLANE_SIMULATED_LIBRARY vorlane_static)
else()
    set(VORLANE_SIMULATED_LIBRARY ${VORLANE_DEFAULT_LIBRARY})
endif()
# Once installed, VorlaneConfig.cmake links it to the library that the host selected.
target_link_libraries(vorlane_simulator INTERFACE $<BUILD_INTERFACE:${VORLANE_SIMULATED_LIBRARY}>)
