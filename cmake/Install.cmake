# What `cmake --install` gives: the shared library, the public headers, and what find_package(qzlog) and pkg-config need.
# Nothing here asks a consumer for ICU: no public header includes it, and the shared library links it by itself.
include(CMakePackageConfigHelpers)

# Hidden visibility leaves weak instantiations of std and ICU templates visible; the map keeps only our own names.
target_link_options(qzlog PRIVATE "LINKER:--version-script=${CMAKE_CURRENT_LIST_DIR}/qzlog.map")
set_target_properties(qzlog PROPERTIES LINK_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/qzlog.map)

# The installed command finds the library beside it, wherever the tree is moved.
file(RELATIVE_PATH qzlog_bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set(CMAKE_INSTALL_RPATH "$ORIGIN/${qzlog_bin_to_lib}")

set(qzlog_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/qzlog)
set(qzlog_pkgconfig_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)

install(TARGETS qzlog EXPORT qzlog-targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

install(EXPORT qzlog-targets NAMESPACE qzlog:: DESTINATION ${qzlog_package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/qzlog-config.cmake.in qzlog-config.cmake
  INSTALL_DESTINATION ${qzlog_package_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(qzlog-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qzlog-config.cmake ${PROJECT_BINARY_DIR}/qzlog-config-version.cmake
    ${CMAKE_CURRENT_LIST_DIR}/qzlog-build-files.cmake
    ${CMAKE_CURRENT_LIST_DIR}/qzlog-definitions.cmake
    ${CMAKE_CURRENT_LIST_DIR}/qzlog-catalog.cmake
  DESTINATION ${qzlog_package_dir})

# The schema of definition sources, for editors, and those of what the command writes as JSON.
install(DIRECTORY schema/ DESTINATION ${CMAKE_INSTALL_DATADIR}/qzlog FILES_MATCHING PATTERN "*.schema.json")

# The documentation, in the folders that its links name.
install(FILES README.md SECURITY.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md")

# How lnav shows lines of entries: `lnav -i` takes it into use.
install(FILES ${CMAKE_CURRENT_LIST_DIR}/qzlog-lnav.json DESTINATION ${CMAKE_INSTALL_DATADIR}/qzlog/lnav RENAME qzlog_entries.json)

# The .pc file gives its prefix relative to itself, so `cmake --install --prefix` may choose any.
file(RELATIVE_PATH qzlog_pc_to_prefix ${qzlog_pkgconfig_dir} ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" qzlog_pc_to_prefix ${qzlog_pc_to_prefix})
file(RELATIVE_PATH qzlog_prefix_to_lib ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH qzlog_prefix_to_include ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(${CMAKE_CURRENT_LIST_DIR}/qzlog.pc.in qzlog.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qzlog.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
