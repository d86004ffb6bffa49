# Installed, the headers keep their paths below include/TeraluneSharedLibrary/, and hosts write
#   find_package(TeraluneSharedLibrary REQUIRED)
#   target_link_libraries(app PRIVATE Teralune::SharedLibrary)

include(CMakePackageConfigHelpers)
set(TERALUNE_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/TeraluneSharedLibrary")

install(TARGETS TeralunePlatform TeraluneSharedLibrary EXPORT TeraluneTargets
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(DIRECTORY Platform Classes DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/TeraluneSharedLibrary"
    FILES_MATCHING PATTERN "*.h")
install(DIRECTORY Resources/ DESTINATION "${CMAKE_INSTALL_DATADIR}/TeraluneSharedLibrary/Resources"
    PATTERN "CMakeLists.txt" EXCLUDE)
if(TARGET teralune)
    install(TARGETS teralune RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()

install(EXPORT TeraluneTargets NAMESPACE Teralune:: DESTINATION "${TERALUNE_PACKAGE_DIR}")
configure_package_config_file(cmake/TeraluneSharedLibraryConfig.cmake.in
    "${PROJECT_BINARY_DIR}/TeraluneSharedLibraryConfig.cmake" INSTALL_DESTINATION "${TERALUNE_PACKAGE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TeraluneSharedLibraryConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES
    "${PROJECT_BINARY_DIR}/TeraluneSharedLibraryConfig.cmake"
    "${PROJECT_BINARY_DIR}/TeraluneSharedLibraryConfigVersion.cmake"
    DESTINATION "${TERALUNE_PACKAGE_DIR}")
