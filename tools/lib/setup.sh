# Sourced by the commands: everything that a build needs, made where it is missing.
. "$(dirname "${BASH_SOURCE[0]}")/steps.sh"
. "$top/tools/lib/packages.sh"
. "$top/tools/lib/sources.sh"
. "$top/tools/lib/deps.sh"

# set_up [PACKAGE...]: with further packages beyond those of the build.
set_up() {
  [[ $top != *[[:space:]]* ]] || fail "the path of this folder has a blank in it: $top"
  install_packages "${build_packages[@]}" "$@"
  build_deps
  [[ -e $build/wine/pristine ]] || step wine-prefix "Making a Wine prefix" "$top/tools/wine" --version
}

# build_preset NAME TEXT [TARGET...]: all, or these targets.
build_preset() {
  local name=$1 text=$2
  shift 2
  step "configure-$name" "Configuring $text" cmake --preset "$name" -S "$top"
  step "build-$name" "Building $text" cmake --build "$build/$name" --target "${@:-all}"
}
