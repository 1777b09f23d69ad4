# Helpers shared by every module's CMakeLists.txt.

include(GNUInstallDirs)

# Warnings for our own sources only; third-party headers come in as SYSTEM.
add_library(quorda_warnings INTERFACE)
target_compile_options(quorda_warnings INTERFACE -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Wno-unused-parameter)
if(QUORDA_WERROR)
  target_compile_options(quorda_warnings INTERFACE -Werror)
endif()

# Private headers (src/<module>/*_p.h) are included as "<module>/<name>_p.h" by the library's own
# modules, through their PRIVATE include path, and by in-tree tests and the benchmark, which link
# quorda_private_headers. Neither is ever installed or exported.
add_library(quorda_private_headers INTERFACE)
target_include_directories(quorda_private_headers INTERFACE ${PROJECT_SOURCE_DIR}/src)


# Generated public headers (quorda/version.h) live here in the build tree.
set(QUORDA_GENERATED_INCLUDE_DIR ${PROJECT_BINARY_DIR}/include)

# quorda_add_module(<name> [DEPS <public targets>...] [PRIVATE_DEPS <targets>...]
#                   [PACKAGES <find_dependency arguments>...] [PC_REQUIRES <pkg-config modules>...])
# Builds src/<name>/*.cpp into the library quorda_<name>: static, or shared with BUILD_SHARED_LIBS=ON,
# with only the symbols marked QUORDA_API visible. Inside the build it is quorda::<name> or
# Quorda::<name>; installed, it is the exported target Quorda::<name> with the headers of
# include/quorda/<name>/ (never the private *_p.h beside the sources). PACKAGES are the packages the
# installed QuordaConfig.cmake must find for the target's link interface (one quoted argument list
# each, e.g. "Qt6 COMPONENTS Widgets"); PC_REQUIRES the pkg-config modules quorda.pc requires.
function(quorda_add_module name)
  cmake_parse_arguments(M "" "" "DEPS;PRIVATE_DEPS;PACKAGES;PC_REQUIRES" ${ARGN})
  set(target quorda_${name})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  add_library(${target} ${sources})
  add_library(quorda::${name} ALIAS ${target})
  add_library(Quorda::${name} ALIAS ${target})
  target_include_directories(${target}
    PUBLIC
      $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
      $<BUILD_INTERFACE:${QUORDA_GENERATED_INCLUDE_DIR}>
      $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${target} PUBLIC ${M_DEPS} PRIVATE $<BUILD_INTERFACE:quorda_warnings> ${M_PRIVATE_DEPS})
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${name}
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
    # Installed shared modules find each other beside themselves.
    INSTALL_RPATH $ORIGIN)

  set_property(GLOBAL APPEND PROPERTY QUORDA_MODULES ${name})
  set_property(GLOBAL APPEND PROPERTY QUORDA_PACKAGES ${M_PACKAGES})
  set_property(GLOBAL APPEND PROPERTY QUORDA_PC_REQUIRES ${M_PC_REQUIRES})

  if(QUORDA_INSTALL)
    install(TARGETS ${target} EXPORT QuordaTargets
      ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
      LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
      RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    set(headers ${PROJECT_SOURCE_DIR}/include/quorda/${name})
    if(IS_DIRECTORY ${headers})
      install(DIRECTORY ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quorda
        FILES_MATCHING PATTERN "*.h" PATTERN "*_p.h" EXCLUDE)
    endif()
    if(EXISTS ${headers}.h)
      install(FILES ${headers}.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quorda)
    endif()
  endif()
endfunction()
