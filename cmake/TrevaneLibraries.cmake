# The libraries beside Qt, found here for every folder.

# Trevane::ssh: SSH connections.
if(WIN32)
  set(TREVANE_SSH_LIBRARIES "" CACHE PATH "libssh and OpenSSL for Windows, as tools/windows-network.sh builds them")
  if(NOT EXISTS "${TREVANE_SSH_LIBRARIES}/lib/libssh.a")
    message(FATAL_ERROR "There is no libssh for Windows in \"${TREVANE_SSH_LIBRARIES}\". build-windows.sh and "
                        "\"test.sh windows\" build one, and name its folder in TREVANE_SSH_LIBRARIES.")
  endif()
  add_library(Trevane::ssh STATIC IMPORTED)
  set_target_properties(Trevane::ssh PROPERTIES
    IMPORTED_LOCATION "${TREVANE_SSH_LIBRARIES}/lib/libssh.a"
    INTERFACE_INCLUDE_DIRECTORIES "${TREVANE_SSH_LIBRARIES}/include"
    INTERFACE_COMPILE_DEFINITIONS LIBSSH_STATIC
    INTERFACE_LINK_LIBRARIES "${TREVANE_SSH_LIBRARIES}/lib/libcrypto.a;ws2_32;crypt32;bcrypt;iphlpapi;shell32")
else()
  find_package(libssh 0.10 REQUIRED CONFIG)
  add_library(Trevane::ssh INTERFACE IMPORTED)
  target_link_libraries(Trevane::ssh INTERFACE ssh)
endif()

# Trevane::curl: FTP, over TLS by OpenSSL.
if(WIN32)
  set(TREVANE_CURL_LIBRARIES "" CACHE PATH "curl for Windows, as tools/windows-network.sh builds it")
  if(NOT EXISTS "${TREVANE_CURL_LIBRARIES}/lib/libcurl.a")
    message(FATAL_ERROR "There is no curl for Windows in \"${TREVANE_CURL_LIBRARIES}\". build-windows.sh and "
                        "\"test.sh windows\" build one, and name its folder in TREVANE_CURL_LIBRARIES.")
  endif()
  # Neither it nor its OpenSSL has certificates to trust: engine/providers/certificates takes those of Windows.
  add_library(Trevane::curl STATIC IMPORTED)
  set_target_properties(Trevane::curl PROPERTIES
    IMPORTED_LOCATION "${TREVANE_CURL_LIBRARIES}/lib/libcurl.a"
    INTERFACE_INCLUDE_DIRECTORIES "${TREVANE_CURL_LIBRARIES}/include;${TREVANE_SSH_LIBRARIES}/include"
    INTERFACE_COMPILE_DEFINITIONS CURL_STATICLIB
    INTERFACE_LINK_LIBRARIES "${TREVANE_SSH_LIBRARIES}/lib/libssl.a;${TREVANE_SSH_LIBRARIES}/lib/libcrypto.a;ws2_32;crypt32;bcrypt;iphlpapi;advapi32")
else()
  find_package(CURL 7.88 REQUIRED)
  find_package(OpenSSL 3.0 REQUIRED)
  add_library(Trevane::curl INTERFACE IMPORTED)
  target_link_libraries(Trevane::curl INTERFACE CURL::libcurl OpenSSL::SSL OpenSSL::Crypto)
endif()

# Trevane::keychain: the desktop's store for secrets. Windows has one of its own.
if(NOT WIN32)
  find_package(Qt6Keychain 0.13 REQUIRED CONFIG)
  add_library(Trevane::keychain INTERFACE IMPORTED)
  target_link_libraries(Trevane::keychain INTERFACE Qt6Keychain::Qt6Keychain)
endif()
