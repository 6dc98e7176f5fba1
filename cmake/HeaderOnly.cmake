# Header-only libraries, shared by the cross build and the native one:
#   velora_json  <nlohmann/json.hpp>
#   velora_cli   <CLI/CLI.hpp>
#   velora_stb   <stb_image_write.h>, <stb_image.h>
# Imported, so their headers are system headers and their warnings stay out.
find_path(VELORA_JSON_DIR nlohmann/json.hpp NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_path(VELORA_CLI_DIR CLI/CLI.hpp NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_path(VELORA_STB_DIR stb_image_write.h PATH_SUFFIXES stb NO_CMAKE_FIND_ROOT_PATH REQUIRED)
mark_as_advanced(VELORA_JSON_DIR VELORA_CLI_DIR VELORA_STB_DIR)

set(json_dir ${VELORA_JSON_DIR})
set(cli_dir ${VELORA_CLI_DIR})
if(CMAKE_CROSSCOMPILING)
  # The headers' neighbours in /usr/include are this machine's, not the target's: show only these.
  set(json_dir ${CMAKE_BINARY_DIR}/header-only)
  set(cli_dir ${json_dir})
  file(MAKE_DIRECTORY ${json_dir})
  file(CREATE_LINK ${VELORA_JSON_DIR}/nlohmann ${json_dir}/nlohmann SYMBOLIC)
  file(CREATE_LINK ${VELORA_CLI_DIR}/CLI ${cli_dir}/CLI SYMBOLIC)
endif()

add_library(velora_json INTERFACE IMPORTED)
set_target_properties(velora_json PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${json_dir})
add_library(velora_cli INTERFACE IMPORTED)
set_target_properties(velora_cli PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${cli_dir})
add_library(velora_stb INTERFACE IMPORTED)
set_target_properties(velora_stb PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${VELORA_STB_DIR})
