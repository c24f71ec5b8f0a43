# What becomes of a binary that is shipped: one version, no clock and no path of the building machine in it, symbols
# in a file of their own.
set(QX_COPYRIGHT "Copyright (C) Quillmarsh")

# The time that files carry: of the last commit, or the one that the caller lays down (reproducible-builds.org).
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  set(QX_SOURCE_DATE $ENV{SOURCE_DATE_EPOCH})
else()
  execute_process(COMMAND git -C ${PROJECT_SOURCE_DIR} log -1 --format=%ct
    OUTPUT_VARIABLE QX_SOURCE_DATE OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(NOT QX_SOURCE_DATE)
    set(QX_SOURCE_DATE 1767225600) # sources without their history: the first day of 2026
  endif()
endif()
set(QX_AT_SOURCE_DATE ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=${QX_SOURCE_DATE} TZ=UTC0)

# qx_shipped(TARGET FILE DESCRIPTION [SYMBOLS]): gives TARGET, which builds FILE, its version information, build id and
# protections. With SYMBOLS its debugging information goes to FILE.debug; otherwise there is none in a release.
function(qx_shipped target file description)
  cmake_parse_arguments(ARG "SYMBOLS" "" "" ${ARGN})
  set(QX_FILE ${file})
  set(QX_FILE_DESCRIPTION ${description})
  cmake_path(GET file STEM QX_FILE_STEM)
  get_target_property(type ${target} TYPE)
  set(QX_FILE_TYPE VFT_DLL)
  if(type STREQUAL "EXECUTABLE")
    set(QX_FILE_TYPE VFT_APP)
  endif()
  set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${script} @ONLY)
  # The build does not see what a resource script includes.
  set_source_files_properties(${script} PROPERTIES
    INCLUDE_DIRECTORIES ${PROJECT_SOURCE_DIR}/include OBJECT_DEPENDS ${PROJECT_SOURCE_DIR}/include/qxfax/version.h)
  target_sources(${target} PRIVATE ${script})

  target_link_options(${target} PRIVATE LINKER:--dynamicbase,--nxcompat,--high-entropy-va,--build-id)
  set_target_properties(${target} PROPERTIES
    RULE_LAUNCH_LINK "${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=${QX_SOURCE_DATE}")
  if(ARG_SYMBOLS)
    add_custom_command(TARGET ${target} POST_BUILD
      COMMAND ${QX_AT_SOURCE_DATE} ${CMAKE_OBJCOPY} --only-keep-debug
        $<TARGET_FILE:${target}> $<TARGET_FILE:${target}>.debug
      COMMAND ${QX_AT_SOURCE_DATE} ${CMAKE_STRIP} --strip-all $<TARGET_FILE:${target}>
      VERBATIM)
  else()
    target_link_options(${target} PRIVATE $<$<CONFIG:Release>:LINKER:--strip-all>)
  endif()
endfunction()
