# What the library is built with. Every one is a Debian package; see Scripts/setup.
find_package(Threads REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)
find_package(CURL REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(fmt REQUIRED)
find_package(OpenSSL REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(PLIST REQUIRED IMPORTED_TARGET libplist-2.0)
pkg_check_modules(UUID REQUIRED IMPORTED_TARGET uuid)
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)
pkg_check_modules(PNG REQUIRED IMPORTED_TARGET libpng)
pkg_check_modules(TURBOJPEG REQUIRED IMPORTED_TARGET libturbojpeg)
pkg_check_modules(WEBP REQUIRED IMPORTED_TARGET libwebp)

# The same for those who link the library: as CMake targets, as linker options, and as the Debian packages that hold them.
set(VORLANE_PRIVATE_LIBRARIES CURL::libcurl SQLite::SQLite3 fmt::fmt OpenSSL::Crypto PkgConfig::PLIST PkgConfig::UUID
    PkgConfig::SYSTEMD PkgConfig::PNG PkgConfig::TURBOJPEG PkgConfig::WEBP Threads::Threads)
set(VORLANE_PC_PRIVATE_LIBRARIES "-lcurl -lsqlite3 -lfmt -lcrypto -lplist-2.0 -luuid -lsystemd -lpng16 -lturbojpeg -lwebp -pthread")
set(VORLANE_DEVELOPMENT_PACKAGES nlohmann-json3-dev libcurl4-openssl-dev libsqlite3-dev libfmt-dev libssl-dev libplist-dev
    uuid-dev libsystemd-dev libpng-dev libturbojpeg0-dev libwebp-dev)
