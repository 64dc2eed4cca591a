# The build rules for other projects: find_package(Sealwright) finds them beside the programs.

include(CMakePackageConfigHelpers)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/SealwrightConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
# Beside each other in the build folder too, for whoever names it as Sealwright_DIR.
configure_file(${PROJECT_SOURCE_DIR}/cmake/SealwrightConfig.cmake
               ${PROJECT_BINARY_DIR}/SealwrightConfig.cmake COPYONLY)
install(FILES ${PROJECT_BINARY_DIR}/SealwrightConfig.cmake
              ${PROJECT_BINARY_DIR}/SealwrightConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_DATADIR}/cmake/Sealwright COMPONENT client)
