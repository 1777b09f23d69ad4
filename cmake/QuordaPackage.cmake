# The installed package: generated headers, QuordaConfig.cmake with its version file, the exported
# targets of every module that called quorda_add_module, and quorda.pc. Included after all modules.

include(CMakePackageConfigHelpers)

configure_file(${CMAKE_CURRENT_LIST_DIR}/version.h.in ${QUORDA_GENERATED_INCLUDE_DIR}/quorda/version.h @ONLY)

get_property(QUORDA_MODULES GLOBAL PROPERTY QUORDA_MODULES)
get_property(quorda_packages GLOBAL PROPERTY QUORDA_PACKAGES)
get_property(quorda_pc_requires GLOBAL PROPERTY QUORDA_PC_REQUIRES)

# What QuordaConfig.cmake finds before it loads the targets (unixODBC comes first, in the template).
set(QUORDA_CONFIG_DEPENDENCIES "")
list(REMOVE_DUPLICATES quorda_packages)
foreach(package IN LISTS quorda_packages)
  string(APPEND QUORDA_CONFIG_DEPENDENCIES "find_dependency(${package})\n")
endforeach()

# pkg-config: unixODBC always; libraries in reverse dependency order for static links.
set(QUORDA_PC_REQUIRES odbc ${quorda_pc_requires})
list(REMOVE_DUPLICATES QUORDA_PC_REQUIRES)
list(JOIN QUORDA_PC_REQUIRES " " QUORDA_PC_REQUIRES)
set(QUORDA_PC_LIBS "")
set(modules ${QUORDA_MODULES})
list(REVERSE modules)
foreach(module IN LISTS modules)
  string(APPEND QUORDA_PC_LIBS " -lquorda_${module}")
endforeach()
string(STRIP "${QUORDA_PC_LIBS}" QUORDA_PC_LIBS)
# Relocatable: the prefix is found from where the .pc file lies, so `cmake --install --prefix` works.
file(RELATIVE_PATH QUORDA_PC_PREFIX_FROM_PCFILEDIR /root/${CMAKE_INSTALL_LIBDIR}/pkgconfig /root)
string(REGEX REPLACE "/$" "" QUORDA_PC_PREFIX_FROM_PCFILEDIR "${QUORDA_PC_PREFIX_FROM_PCFILEDIR}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/quorda.pc.in ${PROJECT_BINARY_DIR}/quorda.pc @ONLY)

set(QUORDA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Quorda)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/QuordaConfig.cmake.in
  ${PROJECT_BINARY_DIR}/QuordaConfig.cmake INSTALL_DESTINATION ${QUORDA_CMAKE_DIR})
# 0.x releases break compatibility between minor versions.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QuordaConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)

install(FILES ${PROJECT_SOURCE_DIR}/include/quorda/export.h ${QUORDA_GENERATED_INCLUDE_DIR}/quorda/version.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quorda)
install(EXPORT QuordaTargets NAMESPACE Quorda:: DESTINATION ${QUORDA_CMAKE_DIR})
install(FILES ${PROJECT_BINARY_DIR}/QuordaConfig.cmake ${PROJECT_BINARY_DIR}/QuordaConfigVersion.cmake
  DESTINATION ${QUORDA_CMAKE_DIR})
install(FILES ${PROJECT_BINARY_DIR}/quorda.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
