# Sourced by the commands: the Debian packages they need.

build_packages=(
  cmake ninja-build g++-mingw-w64-x86-64-posix # the product
  lld                                          # its import library for MSVC
  dpkg-dev make perl xz-utils                  # libcrypto and Little CMS from their sources
  nlohmann-json3-dev libstb-dev libcli11-dev   # header-only
  googletest                                   # sources, built with the tests
  wine64
)
test_packages=(g++ libgmock-dev libgtest-dev libssl-dev libbenchmark-dev clang llvm clang-format clang-tidy
  pkgconf python3 python3-jsonschema)
docs_packages=(doxygen)
# Google Benchmark, the peers, and what counts instructions.
bench_packages=(g++ libbenchmark-dev libssl-dev liblcms2-dev libopencolorio-dev hwdata valgrind python3)

# install_packages PACKAGE...: installs those that are missing.
install_packages() {
  command -v dpkg-query >/dev/null || fail "this needs Debian's packages: $*"
  local installed missing=() package
  installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "$@" 2>/dev/null) || true
  for package in "$@"; do
    [[ $'\n'$installed$'\n' == *$'\n'"installed $package"$'\n'* ]] || missing+=("$package")
  done
  ((${#missing[@]})) || return 0

  local as_root=()
  if ((EUID != 0)); then
    command -v sudo >/dev/null ||
      fail "packages are missing, and installing them needs root or sudo: ${missing[*]}"
    as_root=(sudo)
  fi
  local apt_get=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=300)
  step apt-update "Updating apt's package lists" "${apt_get[@]}" update
  step apt-install "Installing ${missing[*]}" \
    "${apt_get[@]}" install --yes --no-install-recommends "${missing[@]}"
}
