# Helpers shared by every module's CMakeLists.txt.

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

# quorda_add_module(<name> [DEPS <public targets>...] [PRIVATE_DEPS <targets>...])
# Builds src/<name>/*.cpp into the static library quorda_<name> (alias quorda::<name>).
# Public headers live in include/quorda/<name>/; private headers (*_p.h) beside the sources.
function(quorda_add_module name)
  cmake_parse_arguments(M "" "" "DEPS;PRIVATE_DEPS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  add_library(quorda_${name} STATIC ${sources})
  add_library(quorda::${name} ALIAS quorda_${name})
  target_include_directories(quorda_${name}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(quorda_${name} PUBLIC ${M_DEPS} PRIVATE quorda_warnings ${M_PRIVATE_DEPS})
endfunction()
