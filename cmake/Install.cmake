include(CMakePackageConfigHelpers)

set(DLP_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/dlpparser)

foreach(target dlpplatform dlpparser)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
endforeach()
install(TARGETS dlpplatform dlpparser EXPORT dlpparserTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS dlpctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

set(DLP_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/dlpparser)
foreach(room api settings platform/common platform/xml platform/logging platform/system platform/localization)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/${room}/ DESTINATION ${DLP_INCLUDE_DIR}/${room}
            FILES_MATCHING PATTERN "*.h" PATTERN "StoredRecords.h" EXCLUDE PATTERN "FaultPoint.h" EXCLUDE)
endforeach()
# Of the store its interface alone, and what helps to stand in front of it.
foreach(header CSettingsStore CSettingsRow SettingsSchema CForwardingStore)
    install(FILES ${PROJECT_SOURCE_DIR}/platform/store/${header}.h DESTINATION ${DLP_INCLUDE_DIR}/platform/store)
endforeach()

install(DIRECTORY ${PROJECT_SOURCE_DIR}/config ${PROJECT_SOURCE_DIR}/examples
        DESTINATION ${CMAKE_INSTALL_DATADIR}/dlpparser)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}
        PATTERN "architecture.md" EXCLUDE PATTERN "performance.md" EXCLUDE)

install(FILES ${DLP_COMPLETIONS}/bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME dlpctl)
install(FILES ${DLP_COMPLETIONS}/zsh DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions RENAME _dlpctl)
install(FILES ${DLP_COMPLETIONS}/fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d RENAME dlpctl.fish)

install(DIRECTORY ${DLP_MANUAL}/man1 ${DLP_MANUAL}/man5 DESTINATION ${CMAKE_INSTALL_MANDIR})

install(EXPORT dlpparserTargets NAMESPACE dlpparser:: DESTINATION ${DLP_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/dlpparserConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/dlpparserConfig.cmake INSTALL_DESTINATION ${DLP_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/dlpparserConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/dlpparserConfig.cmake ${PROJECT_BINARY_DIR}/dlpparserConfigVersion.cmake
        DESTINATION ${DLP_CMAKE_DIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/dlpparser.pc.in ${PROJECT_BINARY_DIR}/dlpparser.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/dlpparser.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
