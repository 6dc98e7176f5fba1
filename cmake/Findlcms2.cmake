# Finds Little CMS 2 and gives the target lcms2::lcms2.
find_path(LCMS2_INCLUDE_DIR lcms2.h)
find_library(LCMS2_LIBRARY NAMES lcms2 liblcms2 lcms2_static)
if(LCMS2_INCLUDE_DIR)
  # LCMS_VERSION is 1000 times the version: 2140 for 2.14.
  file(STRINGS ${LCMS2_INCLUDE_DIR}/lcms2.h version REGEX "^#define LCMS_VERSION +[0-9]+")
  string(REGEX REPLACE ".* ([0-9])([0-9][0-9])0$" "\\1.\\2" LCMS2_VERSION "${version}")
endif()
mark_as_advanced(LCMS2_INCLUDE_DIR LCMS2_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(lcms2
  REQUIRED_VARS LCMS2_LIBRARY LCMS2_INCLUDE_DIR VERSION_VAR LCMS2_VERSION)

if(lcms2_FOUND AND NOT TARGET lcms2::lcms2)
  add_library(lcms2::lcms2 UNKNOWN IMPORTED)
  set_target_properties(lcms2::lcms2 PROPERTIES
    IMPORTED_LOCATION ${LCMS2_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${LCMS2_INCLUDE_DIR})
endif()
