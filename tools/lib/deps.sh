# Sourced by the commands: cross-builds libcrypto and Little CMS into build/deps, from the sources of
# Debian 12. Changing this file builds them anew.

deps=$build/deps
deps_work=$build/deps.work # sources and objects; gone when all is built
cross=x86_64-w64-mingw32

deps_recipe() { printf 'openssl 3.0, lcms2 2.14, recipe %s\n' \
  "$(sha256sum "$top/tools/lib/deps.sh" | cut -c 1-16)"; }

build_deps() {
  [[ $(cat "$deps/stamp" 2>/dev/null) != "$(deps_recipe)" ]] || return 0
  rm -rf "$deps_work"
  mkdir -p "$deps_work/out/lib" "$deps_work/out/include" "$deps_work/out/licences"
  step deps-sources "Fetching the sources of OpenSSL and Little CMS" \
    fetch_sources "$deps_work" bookworm openssl lcms2
  step deps-libcrypto "Cross-building libcrypto" build_libcrypto
  step deps-lcms2 "Cross-building Little CMS" build_lcms2
  # In place all at once, so that an interrupted build is never taken for a finished one.
  deps_recipe >"$deps_work/out/stamp"
  rm -rf "$deps"
  mv -T "$deps_work/out" "$deps"
  rm -rf "$deps_work"
}

# Static, with its assembly, and with what the digests need: the less there is, the smaller each
# program that links it. Nothing is loaded at run time, neither a module nor a configuration file that
# another user could have put there.
build_libcrypto() {
  cd "$deps_work/openssl"
  ./Configure mingw64 --cross-compile-prefix=$cross- CC=gcc-posix --prefix=/ --libdir=lib \
    no-shared no-tests no-module no-dso no-engine no-autoload-config no-sock no-async \
    no-ui-console no-filenames no-err \
    no-legacy no-bulk no-ssl no-tls no-dtls no-srtp no-psk no-srp no-nextprotoneg \
    no-cmp no-cms no-comp no-ct no-ocsp no-ts no-rfc3779 \
    no-chacha no-cmac no-des no-dh no-dsa no-ec no-md4 no-multiblock no-poly1305 no-rmd160 \
    no-scrypt no-siphash no-siv no-sm2 no-sm3
  make -j"$(nproc)" build_generated libcrypto.a
  cp libcrypto.a "$deps_work/out/lib/"
  cp -R include/openssl "$deps_work/out/include/"
  cp LICENSE.txt "$deps_work/out/licences/openssl.txt"
}

build_lcms2() {
  cd "$deps_work/lcms2"
  ./configure --host=$cross CC=$cross-gcc-posix CFLAGS=-O2 --prefix="$deps_work/out" \
    --disable-shared --without-jpeg --without-tiff --without-zlib
  make -j"$(nproc)" -C src
  cp src/.libs/liblcms2.a "$deps_work/out/lib/"
  cp include/lcms2.h include/lcms2_plugin.h "$deps_work/out/include/"
  cp COPYING "$deps_work/out/licences/lcms2.txt"
}
