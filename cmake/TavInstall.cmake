# What other programs of a terminal are built against: libraries, headers, and the files by which
# CMake ("tav") and pkg-config ("tavbus") find them.

include(CMakePackageConfigHelpers)

set(libraries tavcore tavbus servicestates tavmodems)
foreach(library IN LISTS libraries)
    get_target_property(folder ${library} SOURCE_DIR)
    file(GLOB headers CONFIGURE_DEPENDS ${folder}/*.h)
    install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tav)
    target_include_directories(${library} INTERFACE
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/tav>)
endforeach()
install(TARGETS ${libraries} EXPORT tavTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})

set(folder ${CMAKE_INSTALL_LIBDIR}/cmake/tav)
install(EXPORT tavTargets NAMESPACE tav:: DESTINATION ${folder})
configure_package_config_file(${PROJECT_SOURCE_DIR}/packaging/tavConfig.cmake.in
    ${PROJECT_BINARY_DIR}/tavConfig.cmake INSTALL_DESTINATION ${folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tavConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tavConfig.cmake ${PROJECT_BINARY_DIR}/tavConfigVersion.cmake
    DESTINATION ${folder})

configure_file(${PROJECT_SOURCE_DIR}/packaging/tavbus.pc.in ${PROJECT_BINARY_DIR}/tavbus.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tavbus.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES ${TAVBUS_INTERFACE} DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/interfaces)
