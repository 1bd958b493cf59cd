include(CMakePackageConfigHelpers)

install(TARGETS qor EXPORT qorTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

install(FILES include/qor.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
file(GLOB family_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/qor/*.h)
install(FILES ${family_headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qor)
foreach(header IN LISTS QOR_PUBLIC_HEADERS)
    file(RELATIVE_PATH rel ${PROJECT_SOURCE_DIR} ${header})
    get_filename_component(rel_dir ${rel} DIRECTORY)
    install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qor/${rel_dir})
endforeach()

install(EXPORT qorTargets NAMESPACE qor:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/qor)
configure_package_config_file(cmake/qorConfig.cmake.in ${PROJECT_BINARY_DIR}/qorConfig.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/qor)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qorConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qorConfig.cmake ${PROJECT_BINARY_DIR}/qorConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/qor)

configure_file(cmake/qor.pc.in ${PROJECT_BINARY_DIR}/qor.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qor.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
