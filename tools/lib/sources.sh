# Sourced by the commands: the sources of Debian's packages.

# fetch_sources FOLDER SUITE PACKAGE...: unpacks each into FOLDER/PACKAGE, through a set-up of apt's
# own, so that the user's lists, sources and cache stay as they are. Only upstream's archives are
# taken; they have no use for Debian's patches. The main suite alone will do, and the security suite's
# index at times names what its mirror lacks.
fetch_sources() {
  local folder=$1 suite=$2 apt=$1/apt mirror package
  shift 2
  mkdir -p "$apt/lists/partial" "$apt/cache"
  # The mirror that this machine uses, if it uses one.
  mirror=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' 'Codename: bookworm' \
    'Origin: Debian' 'Component: main' 2>/dev/null | head -n 1) || true
  cat >"$apt/sources.list" <<END
deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] ${mirror:-http://deb.debian.org/debian} $suite main
END
  local apt_get=(apt-get -o Dir::Etc::SourceList="$apt/sources.list" -o Dir::Etc::SourceParts=/dev/null
    -o Dir::State::Lists="$apt/lists" -o Dir::Cache="$apt/cache" -o Acquire::Retries=3)
  cd "$folder"
  "${apt_get[@]}" update
  "${apt_get[@]}" source --download-only --tar-only "$@"
  for package in "$@"; do
    mkdir "$package"
    tar -xf "$package"_*.orig.tar.* -C "$package" --strip-components=1
  done
}
