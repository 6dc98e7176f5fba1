# Sourced by the commands: browsable pages of the public header.

# make_pages: in build/docs/html; whatever in the header has no words is an error.
make_pages() {
  local version
  version=$(sed -n 's/^project(VeloraCtlApi VERSION \([0-9.]*\).*/\1/p' "$top/CMakeLists.txt")
  [[ $version ]]
  cd "$top"
  rm -rf "$build/docs"
  { cat docs/Doxyfile && echo "PROJECT_NUMBER = $version"; } | doxygen -
}
