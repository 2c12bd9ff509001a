#!/usr/bin/env bash
# Builds the third-party libraries of the Windows program from Debian's own
# source packages with the MinGW-w64 cross compilers: libsodium, libcurl
# (Schannel, the Windows TLS stack), libzip, pugixml, fmt, GoogleTest and the
# nlohmann-json headers. zlib comes from Debian's libz-mingw-w64-dev.
#
# The result goes into a cache folder outside the tree, keyed by the source
# versions, the compiler and this script, and is reused while they hold:
#   ${ZEPT_WINDOWS_DEPS_CACHE:-~/.cache/zept-windows-deps}/<key>/
# The link "current" beside it names the folder the build should use.
# Prints that folder. Needs scripts/setup.sh --windows first (compilers,
# dpkg-dev, deb-src entries).
set -euo pipefail

here="$(cd "$(dirname "$0")/.." && pwd)"
toolchain="$here/cmake/mingw-w64-x86_64.cmake"
cache_root="${ZEPT_WINDOWS_DEPS_CACHE:-$HOME/.cache/zept-windows-deps}"
triplet=x86_64-w64-mingw32
jobs="${ZEPT_DEPS_JOBS:-2}"

sources=(libsodium curl libzip pugixml fmtlib googletest nlohmann-json3)

lf_version() {
  apt-cache showsrc --only-source "$1" 2>/dev/null | awk '/^Version:/ {print $2}' | sort -V | tail -1
}

declare -A version
key_text="$(${triplet}-g++-posix -dumpfullversion 2>/dev/null || echo none)"
key_text+=" zlib=$(dpkg-query -W -f='${Version}' libz-mingw-w64-dev 2>/dev/null || echo none)"
for s in "${sources[@]}"; do
  v="$(lf_version "$s")"
  if [[ -z "$v" ]]; then
    echo "windows_deps: no source package $s (deb-src entries missing? run scripts/setup.sh --windows)" >&2
    exit 1
  fi
  version[$s]="$v"
  key_text+=" $s=$v"
done
# Bump when a library's build options below change.
recipe=1
key_text+=" recipe=$recipe toolchain=$(sha256sum "$toolchain" | cut -c1-16)"
key="$(printf '%s' "$key_text" | sha256sum | cut -c1-16)"
dest="$cache_root/$key"

if [[ -f "$dest/.complete" ]]; then
  ln -sfn "$key" "$cache_root/current"
  echo "$dest"
  exit 0
fi

echo "windows_deps: building into $dest" >&2
started=$SECONDS
# A run that stopped half way goes on from the last library it finished.
mkdir -p "$dest/src"
printf '%s\n' "$key_text" >"$dest/versions.txt"
log="$dest/build.log"
export ZEPT_WINDOWS_DEPS="$dest"

lf_fetch() {  # source package -> its unpacked folder
  local s="$1"
  rm -rf "$dest/src/$s"
  mkdir -p "$dest/src/$s"
  (cd "$dest/src/$s" && apt-get source -qq --only-source "$s=${version[$s]}" >>"$log" 2>&1)
  find "$dest/src/$s" -mindepth 1 -maxdepth 1 -type d | head -1
}

lf_cmake() {  # folder, then options
  local src="$1"
  shift
  cmake -S "$src" -B "$src/_build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DZEPT_WINDOWS_DEPS="$dest" \
    -DCMAKE_INSTALL_PREFIX="$dest" -DBUILD_SHARED_LIBS=OFF "$@" >>"$log" 2>&1
  cmake --build "$src/_build" -j "$jobs" >>"$log" 2>&1
  cmake --install "$src/_build" >>"$log" 2>&1
}

lf_step() {  # true when the library still has to be built
  [[ -f "$dest/.done-$1" ]] && return 1
  echo "windows_deps: $1 ${version[$1]}" >&2
}

lf_done() {
  touch "$dest/.done-$1"
}

trap 'echo "windows_deps: failed, see $log" >&2' ERR

if lf_step pugixml; then
  lf_cmake "$(lf_fetch pugixml)" -DPUGIXML_BUILD_TESTS=OFF
  lf_done pugixml
fi

if lf_step fmtlib; then
  lf_cmake "$(lf_fetch fmtlib)" -DFMT_TEST=OFF -DFMT_DOC=OFF
  lf_done fmtlib
fi

if lf_step nlohmann-json3; then
  lf_cmake "$(lf_fetch nlohmann-json3)" -DJSON_BuildTests=OFF -DJSON_Install=ON
  lf_done nlohmann-json3
fi

if lf_step googletest; then
  lf_cmake "$(lf_fetch googletest)" -DBUILD_GMOCK=ON -DINSTALL_GTEST=ON
  lf_done googletest
fi

if lf_step libzip; then
  lf_cmake "$(lf_fetch libzip)" -DENABLE_BZIP2=OFF -DENABLE_LZMA=OFF -DENABLE_ZSTD=OFF \
    -DENABLE_GNUTLS=OFF -DENABLE_OPENSSL=OFF -DENABLE_MBEDTLS=OFF -DENABLE_COMMONCRYPTO=OFF \
    -DENABLE_WINDOWS_CRYPTO=OFF -DBUILD_TOOLS=OFF -DBUILD_REGRESS=OFF -DBUILD_EXAMPLES=OFF \
    -DBUILD_DOC=OFF
  lf_done libzip
fi

# Only HTTP(S), TLS by Schannel, zlib for compressed replies: nothing else.
if lf_step curl; then
  lf_cmake "$(lf_fetch curl)" -DCURL_USE_SCHANNEL=ON -DCURL_USE_OPENSSL=OFF -DHTTP_ONLY=ON \
    -DBUILD_CURL_EXE=OFF -DBUILD_TESTING=OFF -DENABLE_MANUAL=OFF -DCURL_ZLIB=ON \
    -DCURL_BROTLI=OFF -DCURL_ZSTD=OFF -DUSE_NGHTTP2=OFF -DUSE_LIBIDN2=OFF \
    -DCURL_USE_LIBSSH2=OFF -DCURL_USE_LIBPSL=OFF -DCURL_DISABLE_LDAP=ON -DENABLE_UNIX_SOCKETS=OFF
  lf_done curl
fi

# Debian's source of libsodium has no generated configure script.
if lf_step libsodium; then
  sodium="$(lf_fetch libsodium)"
  (
    cd "$sodium"
    autoreconf -fi >>"$log" 2>&1
    ./configure --host="$triplet" --prefix="$dest" --disable-shared --enable-static \
      --disable-dependency-tracking --disable-pie CC="${triplet}-gcc-posix" >>"$log" 2>&1
    make -j "$jobs" install >>"$log" 2>&1
  )
  lf_done libsodium
fi

rm -rf "$dest/src"
touch "$dest/.complete"
ln -sfn "$key" "$cache_root/current"
echo "windows_deps: done in $((SECONDS - started)) s" >&2
echo "$dest"
