# The libraries beside Qt, found here for every folder.

# Trevane::ssh: SSH connections.
find_package(libssh 0.10 REQUIRED CONFIG)
add_library(Trevane::ssh INTERFACE IMPORTED)
target_link_libraries(Trevane::ssh INTERFACE ssh)

# Trevane::keychain: the desktop's store for secrets. Windows has one of its own.
find_package(Qt6Keychain 0.13 REQUIRED CONFIG)
add_library(Trevane::keychain INTERFACE IMPORTED)
target_link_libraries(Trevane::keychain INTERFACE Qt6Keychain::Qt6Keychain)
