# Every library the house leans on is a Debian 12 package; run and test install what is missing.

find_package(Threads REQUIRED)
find_package(CURL REQUIRED)
find_package(OpenSSL REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(SQLiteCpp REQUIRED)
find_package(ICU REQUIRED COMPONENTS i18n uc)
find_package(Boost 1.81 REQUIRED COMPONENTS json)

if(TERALUNE_BUILD_TESTS OR PROJECT_IS_TOP_LEVEL)
    find_package(GTest REQUIRED)
    include(GoogleTest)
    find_package(CLI11 REQUIRED)
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(HTTPLIB REQUIRED IMPORTED_TARGET cpp-httplib)
endif()
