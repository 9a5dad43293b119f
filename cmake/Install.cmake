# What `cmake --install` puts into a prefix: the libraries, the headers that a host includes, and the ways to find them, which look for
# the prefix from where they stand, so that it may be moved.
include(CMakePackageConfigHelpers)

set(ORLO_SUPPORT_LIBRARIES BaseCommon OrloCommon OrloLogging OrloAuth OrloNetwork OrloJobManager)
set(ORLO_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/OrloProjectManager)

install(TARGETS OrloProjectManager ${ORLO_SUPPORT_LIBRARIES} EXPORT OrloProjectManagerTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

install(DIRECTORY include/OrloProjectManager DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
include(cmake/HostHeaders.cmake)
foreach(header ${ORLO_HOST_HEADERS})
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES sdk-base/source/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder})
endforeach()

install(EXPORT OrloProjectManagerTargets NAMESPACE Orlo:: DESTINATION ${ORLO_PACKAGE_DIR})
configure_package_config_file(cmake/OrloProjectManagerConfig.cmake.in ${PROJECT_BINARY_DIR}/OrloProjectManagerConfig.cmake
    INSTALL_DESTINATION ${ORLO_PACKAGE_DIR} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OrloProjectManagerConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/OrloProjectManagerConfig.cmake ${PROJECT_BINARY_DIR}/OrloProjectManagerConfigVersion.cmake
    DESTINATION ${ORLO_PACKAGE_DIR})

# From the folder of the .pc file back to the prefix.
file(RELATIVE_PATH ORLO_PREFIX_FROM_PC /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
list(TRANSFORM ORLO_SUPPORT_LIBRARIES PREPEND "-l" OUTPUT_VARIABLE ORLO_PC_LIBRARIES)
list(JOIN ORLO_PC_LIBRARIES " " ORLO_PC_LIBRARIES)
configure_file(cmake/orlo-project-manager.pc.in ${PROJECT_BINARY_DIR}/orlo-project-manager.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orlo-project-manager.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
