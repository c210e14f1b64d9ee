# Headers, libraries, the CMake package and a pkg-config file for each component.
include(CMakePackageConfigHelpers)

# The umbrella headers and all that they include; .ci/house proves that the list is just that.
file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/installed_headers.txt" headers)
foreach(header IN LISTS headers)
  get_filename_component(folder "${header}" DIRECTORY)
  install(FILES "${PROJECT_SOURCE_DIR}/${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${folder}")
endforeach()
install(TARGETS qztoolkit_platform qztoolkit_system qztoolkit_dataflow qztoolkit_math EXPORT qztoolkitTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(EXPORT qztoolkitTargets NAMESPACE qztoolkit:: DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/qztoolkit")

configure_package_config_file(cmake/qztoolkitConfig.cmake.in "${PROJECT_BINARY_DIR}/qztoolkitConfig.cmake"
  INSTALL_DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/qztoolkit")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/qztoolkitConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/qztoolkitConfig.cmake" "${PROJECT_BINARY_DIR}/qztoolkitConfigVersion.cmake"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/qztoolkit")

function(qz_pkgconfig component description requires requires_private)
  configure_file(cmake/qztoolkit.pc.in "${PROJECT_BINARY_DIR}/qztoolkit-${component}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/qztoolkit-${component}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endfunction()
qz_pkgconfig(platform "Streams, files, threads and binary values" "" "zlib")
qz_pkgconfig(system "Error channel, strings, tags, command-line framework, progress" "qztoolkit-platform" "")
qz_pkgconfig(dataflow "Self-describing records, their bytes and their JSON" "qztoolkit-system" "")
qz_pkgconfig(math "Random numbers, superposition and statistics" "qztoolkit-system" "")
