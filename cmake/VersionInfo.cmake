# add_version_info(TARGET DESCRIPTION): the version resource of a DLL or program that is shipped. The
# number is the project's, so that there is one to raise.
function(add_version_info target description)
  get_target_property(kind ${target} TYPE)
  if(kind STREQUAL EXECUTABLE)
    set(name ${target}.exe)
    set(type 1) # VFT_APP
  else()
    set(name ${target}.dll)
    set(type 2) # VFT_DLL
  endif()
  set(numbers ${PROJECT_VERSION_MAJOR},${PROJECT_VERSION_MINOR},${PROJECT_VERSION_PATCH},0)
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/VersionInfo.rc.in ${resource} @ONLY)
  target_sources(${target} PRIVATE ${resource})
endfunction()
