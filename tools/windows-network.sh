# Sourced by build-windows.sh and test.sh, after tools/windows.sh: libssh and curl for Windows, and the OpenSSL they need.

# Everything that decides what the builds give. What SSH and FTP do not use is left out.
openssl_options=(
  mingw64 --cross-compile-prefix=x86_64-w64-mingw32- --libdir=lib
  # Below a folder that no user may write to; no settings are read there.
  --prefix=C:/Windows/System32/openssl no-autoload-config
  no-shared no-tests no-dso no-comp no-ssl3 no-dtls no-srp no-psk no-idea no-rc5 no-md2 no-mdc2 no-camellia no-seed
  no-aria no-whirlpool no-sm2 no-sm3 no-sm4 no-legacy no-cms no-ts no-ct no-cmp no-ui-console no-capieng
)
libssh_options=(
  -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF -DOPENSSL_USE_STATIC_LIBS=ON
  -DWITH_SERVER=ON                # for the tests: what the program does not use is not linked
  -DWITH_EXAMPLES=OFF -DWITH_ZLIB=OFF -DWITH_GSSAPI=OFF -DWITH_PCAP=OFF -DUNIT_TESTING=OFF -DWITH_SYMBOL_VERSIONING=OFF
)
curl_options=(
  -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF -DBUILD_CURL_EXE=OFF -DBUILD_TESTING=OFF -DENABLE_MANUAL=OFF
  -DPICKY_COMPILER=OFF            # its warnings are curl's matter
  -DCURL_TARGET_WINDOWS_VERSION=0x0A00
  -DENABLE_THREADED_RESOLVER=ON   # else a name that is looked for blocks
  -DCURL_USE_OPENSSL=ON -DCURL_USE_SCHANNEL=OFF -DCURL_WINDOWS_SSPI=OFF -DOPENSSL_USE_STATIC_LIBS=ON
  -DCURL_DISABLE_OPENSSL_AUTO_LOAD_CONFIG=ON
  -DCURL_CA_BUNDLE=none -DCURL_CA_PATH=none
  -DCURL_DISABLE_ALTSVC=ON -DCURL_DISABLE_COOKIES=ON -DCURL_DISABLE_CRYPTO_AUTH=ON -DCURL_DISABLE_DICT=ON
  -DCURL_DISABLE_DOH=ON -DCURL_DISABLE_FILE=ON -DCURL_DISABLE_GOPHER=ON -DCURL_DISABLE_HSTS=ON
  # HTTP stays: a security patch of Debian's calls a routine of it for FTP, too.
  -DCURL_DISABLE_IMAP=ON -DCURL_DISABLE_LDAP=ON -DCURL_DISABLE_LDAPS=ON -DCURL_DISABLE_MIME=ON -DCURL_DISABLE_MQTT=ON
  -DCURL_DISABLE_NETRC=ON -DCURL_DISABLE_NTLM=ON -DCURL_DISABLE_POP3=ON -DCURL_DISABLE_RTSP=ON -DCURL_DISABLE_SMB=ON
  -DCURL_DISABLE_SMTP=ON -DCURL_DISABLE_TELNET=ON -DCURL_DISABLE_TFTP=ON
  -DCURL_ZLIB=OFF -DCURL_USE_LIBPSL=OFF -DCURL_USE_LIBSSH2=OFF -DUSE_LIBIDN2=OFF -DENABLE_UNIX_SOCKETS=OFF
)

# ssh_libraries_folder OPENSSL LIBSSH: where the finished libraries of these versions are kept, a folder for each
# compiler and each way to build them.
ssh_libraries_folder() {
  local key
  key=$({ x86_64-w64-mingw32-gcc-posix -dumpfullversion; printf '%s\n' "${openssl_options[@]}" "${libssh_options[@]}"
          declare -f build_openssl build_libssh; cat cmake/WindowsToolchain.cmake; } | sha256sum | cut -c1-16)
  echo "$(windows_cache)/libssh-$2-openssl-$1-$key"
}

# curl_folder CURL: the same for curl, which is built anew when OpenSSL is; $ssh_libraries names that.
curl_folder() {
  local key
  key=$({ basename "$ssh_libraries"; printf '%s\n' "${curl_options[@]}"; declare -f build_curl; } | sha256sum | cut -c1-16)
  echo "$(windows_cache)/curl-$1-$key"
}

# The version of a package that this machine would install: for these three the source's, without the number of a rebuild.
candidate_version() { apt-cache policy "$1" | sed -n 's/^ *Candidate: //p' | sed 's/+b[0-9]*$//'; }

# newest_source FOLDER PACKAGE: the newest version whose source can be fetched. A mirror may name one before it has it.
newest_source() {
  local folder=$1 package=$2 version
  for version in $(source_apt "$folder" apt-cache showsrc --only-source "$package" | sed -n 's/^Version: //p' | sort -uVr); do
    if source_apt "$folder" apt-get -qq source --download-only --dsc-only "$package=$version" >/dev/null 2>&1; then
      echo "$version"
      return 0
    fi
    echo "The source of $package $version cannot be fetched." >&2
  done
  return 1
}

# build_openssl SOURCE TARGET
build_openssl() {
  local source=$1 target=$2
  # Debian's compiler for Windows has the name of its kind of threads.
  # The date would be in the library.
  (cd "$source" && export SOURCE_DATE_EPOCH=0 &&
    ./Configure "${openssl_options[@]}" CC=gcc-posix && make -s -j"$(nproc)" build_libs) || return 1
  mkdir -p "$target/include" "$target/lib" "$target/licences/openssl"
  cp -r "$source/include/openssl" "$target/include/"
  cp "$source"/libcrypto.a "$source"/libssl.a "$target/lib/"
  cp "$source/LICENSE.txt" "$target/licences/openssl/"
}

# build_libssh SOURCE TARGET, with the OpenSSL in TARGET. It tries which functions are there: where the system libraries
# are missing behind a static OpenSSL, none is, and slow ones of its own take their place.
build_libssh() {
  local source=$1 target=$2 system
  system=$(x86_64-w64-mingw32-gcc-posix -print-file-name=libws2_32.a)
  system+=";$(x86_64-w64-mingw32-gcc-posix -print-file-name=libcrypt32.a)"
  cmake -S "$source" -B "$source/build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/WindowsToolchain.cmake" \
        -DCMAKE_C_FLAGS="-ffile-prefix-map=$source=." \
        -DOPENSSL_ROOT_DIR="$target" -DOPENSSL_INCLUDE_DIR="$target/include" \
        -DLIB_EAY="$target/lib/libcrypto.a;$system" -DSSL_EAY="$target/lib/libssl.a" \
        "${libssh_options[@]}" &&
    grep -q '^#define HAVE_OPENSSL_EVP_CHACHA20 1' "$source/build/config.h" &&
    cmake --build "$source/build" --target ssh || return 1
  mkdir -p "$target/include/libssh" "$target/licences/libssh"
  cp "$source"/include/libssh/{callbacks,legacy,libssh,server,sftp,ssh2}.h "$source/build/include/libssh/libssh_version.h" \
    "$target/include/libssh/"
  cp "$(find "$source/build" -name libssh.a)" "$target/lib/"
  cp "$source"/COPYING "$source"/BSD "$target/licences/libssh/"
}

# build_curl SOURCE TARGET, with the OpenSSL in $ssh_libraries.
build_curl() {
  local source=$1 target=$2
  cmake -S "$source" -B "$source/build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/WindowsToolchain.cmake" \
        -DCMAKE_C_FLAGS="-ffile-prefix-map=$source=." \
        -DOPENSSL_ROOT_DIR="$ssh_libraries" -DOPENSSL_INCLUDE_DIR="$ssh_libraries/include" \
        -DLIB_EAY="$ssh_libraries/lib/libcrypto.a" -DSSL_EAY="$ssh_libraries/lib/libssl.a" \
        "${curl_options[@]}" &&
    # Without it the system's certificates cannot be read.
    grep -q '^#define USE_WIN32_CRYPTO' "$source/build/lib/curl_config.h" &&
    cmake --build "$source/build" --target libcurl || return 1
  mkdir -p "$target/include/curl" "$target/lib" "$target/licences/curl"
  cp "$source"/include/curl/*.h "$target/include/curl/"
  cp "$source/build/lib/libcurl.a" "$target/lib/"
  cp "$source/COPYING" "$target/licences/curl/"
}

# need_ssh_libraries: static libssh and OpenSSL for Windows in $ssh_libraries, built when the cache has none that are whole.
need_ssh_libraries() {
  ssh_libraries=$(ssh_libraries_folder "$(candidate_version libssl3)" "$(candidate_version libssh-4)")
  if ! is_whole "$ssh_libraries"; then
    local work result=0
    mkdir -p "$(windows_cache)"
    work=$(mktemp -d "$(windows_cache)/libssh.building.XXXXXX")
    build_ssh_libraries "$work" || result=1
    rm -rf "$work"
    [ $result -eq 0 ] || { echo "libssh for Windows could not be built." >&2; return 1; }
  fi
  echo "libssh for Windows: $(basename "$ssh_libraries")"
}

# build_ssh_libraries FOLDER: works there, and sets $ssh_libraries to what the newest sources give.
build_ssh_libraries() {
  local work=$1 openssl libssh
  list_sources "$work"
  openssl=$(newest_source "$work" openssl) && libssh=$(newest_source "$work" libssh) || return 1
  ssh_libraries=$(ssh_libraries_folder "$openssl" "$libssh")
  ! is_whole "$ssh_libraries" || return 0
  echo "Building libssh $libssh and OpenSSL $openssl for Windows; this is done once and takes about 5 minutes on 2 cores."
  if ! { fetch_sources "$work" "openssl=$openssl" "libssh=$libssh" &&
         build_openssl "$(echo "$work"/openssl-*/)" "$work/stage" >"$work/log" 2>&1 &&
         build_libssh "$(echo "$work"/libssh-*/)" "$work/stage" >>"$work/log" 2>&1; }; then
    [ ! -f "$work/log" ] || tail -n 60 "$work/log" >&2
    return 1
  fi
  echo "$openssl" >"$work/stage/openssl-version"
  echo "$libssh" >"$work/stage/libssh-version"
  seal "$work/stage"
  rm -rf "$ssh_libraries"
  mv "$work/stage" "$ssh_libraries"
}

# need_curl, after need_ssh_libraries: a static curl for Windows in $curl_libraries, built when the cache has none that
# is whole.
need_curl() {
  curl_libraries=$(curl_folder "$(candidate_version libcurl4)")
  if ! is_whole "$curl_libraries"; then
    local work result=0
    mkdir -p "$(windows_cache)"
    work=$(mktemp -d "$(windows_cache)/curl.building.XXXXXX")
    build_newest_curl "$work" || result=1
    rm -rf "$work"
    [ $result -eq 0 ] || { echo "curl for Windows could not be built." >&2; return 1; }
  fi
  echo "curl for Windows: $(basename "$curl_libraries")"
}

# build_newest_curl FOLDER: works there, and sets $curl_libraries to what the newest source gives.
build_newest_curl() {
  local work=$1 curl
  list_sources "$work"
  curl=$(newest_source "$work" curl) || return 1
  curl_libraries=$(curl_folder "$curl")
  ! is_whole "$curl_libraries" || return 0
  echo "Building curl $curl for Windows; this is done once and takes about 2 minutes on 2 cores."
  if ! { fetch_sources "$work" "curl=$curl" &&
         build_curl "$(echo "$work"/curl-*/)" "$work/stage" >"$work/log" 2>&1; }; then
    [ ! -f "$work/log" ] || tail -n 60 "$work/log" >&2
    return 1
  fi
  echo "$curl" >"$work/stage/curl-version"
  seal "$work/stage"
  rm -rf "$curl_libraries"
  mv "$work/stage" "$curl_libraries"
}
