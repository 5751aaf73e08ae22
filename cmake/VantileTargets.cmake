# What all of the project's own targets are compiled and linked with.

add_library(vantile_options INTERFACE)
target_include_directories(vantile_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(
  vantile_options INTERFACE -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Wconversion
                            -Wsign-conversion -Wold-style-cast -Wundef)
# Of files that are compiled together one may shadow what another has at its top.
target_compile_options(
  vantile_options INTERFACE $<$<NOT:$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wshadow>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # It warns of what it does itself when it inlines a string's operator+ (GCC bug 105329).
  target_compile_options(vantile_options INTERFACE -Wno-restrict)
endif()
if(VANTILE_WERROR)
  # GCC's library takes a buffer for its stable sorts by a function that it calls deprecated, which
  # newer clangs report as ours.
  target_compile_options(vantile_options INTERFACE -Werror
    $<$<CXX_COMPILER_ID:Clang>:-Wno-error=deprecated-declarations>)
endif()
if(VANTILE_PLATFORM STREQUAL "macos")
  target_compile_options(vantile_options INTERFACE -Werror=unguarded-availability-new)
endif()
# A folder of tests sets this for its targets: their own sources are compiled without optimisation
# and without looking for undefined behaviour in them, which the library's are. It takes half the
# time.
define_property(TARGET PROPERTY VANTILE_TEST_CODE INHERITED)
set(test_code $<BOOL:$<TARGET_PROPERTY:VANTILE_TEST_CODE>>)
target_compile_options(vantile_options INTERFACE $<${test_code}:-O0>)
if(VANTILE_SANITIZE)
  target_compile_options(
    vantile_options INTERFACE -fsanitize=${VANTILE_SANITIZE} $<${test_code}:-fno-sanitize=undefined>
                              -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(vantile_options INTERFACE -fsanitize=${VANTILE_SANITIZE})
endif()
if(VANTILE_FUZZ AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(vantile_options INTERFACE -fsanitize=fuzzer-no-link,address,undefined
                                                   -fno-sanitize-recover=all)
  target_link_options(vantile_options INTERFACE -fsanitize=address,undefined)
endif()

# vantile_room(NAME SOURCES...): one folder of the library as an object library vantile_NAME, for
# the shared libraries and, hidden names included, for the tests.
function(vantile_room name)
  add_library(vantile_${name} OBJECT ${ARGN})
  target_link_libraries(vantile_${name} PRIVATE vantile_options)
endfunction()

# vantile_library(TARGET OUTPUT ROOMS...): a shared library made of rooms.
function(vantile_library target)
  add_library(${target} SHARED)
  foreach(room IN LISTS ARGN)
    target_link_libraries(${target} PRIVATE vantile_${room})
  endforeach()
  target_link_libraries(${target} PRIVATE vantile_options)
  target_include_directories(
    ${target} INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_features(${target} INTERFACE cxx_std_20)
  # Before 1.0 each minor version has an interface of its own.
  set(soversion ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION}
                                             SOVERSION ${soversion})
  if(VANTILE_PLATFORM STREQUAL "linux")
    # Calls inside the library stay inside, whatever the host defines under the same name; and the
    # library stays mapped, since its threads may still run when a host unloads it.
    set_target_properties(${target} PROPERTIES INSTALL_RPATH $ORIGIN)
    target_link_options(
      ${target} PRIVATE -Wl,-Bsymbolic-functions -Wl,-z,nodelete -Wl,-z,defs
      -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map)
    set_target_properties(${target} PROPERTIES LINK_DEPENDS
                                               ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  else()
    # Calls inside a library stay inside by themselves here.
    target_link_options(
      ${target} PRIVATE
      -Wl,-unexported_symbols_list,${PROJECT_SOURCE_DIR}/cmake/unexported-macos.txt)
  endif()
endfunction()
