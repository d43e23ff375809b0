# Shared conventions for every library and program of the project.

if(LQ_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

if(LQ_BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "LQ_BUILD_FUZZERS needs clang (the asan preset uses clang-16)")
  endif()
  # Every library carries the coverage that guides libFuzzer; only the
  # harnesses link libFuzzer itself.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

function(lq_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror=return-type)
  # GCC 12 reports a false -Wrestrict inside libstdc++ for "text" + std::string&& at -O2 (GCC bug 105329).
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
endfunction()

# lq_add_library(Name FOLDER dir SOURCES ... HEADERS ... DEPENDS ...)
# Builds libLq<Name> as a shared library with the alias Lq::<Name>. Public headers
# (HEADERS) sit in the library's own folder and are installed flat under
# include/LqSymbol; in the build tree consumers see them through links in
# <build>/include/Lq<Name>, so private headers (named *_p.h, not installed)
# stay off their path.
function(lq_add_library name)
  cmake_parse_arguments(ARG "" "FOLDER" "SOURCES;HEADERS;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  set(target Lq${name})
  add_library(${target} SHARED ${ARG_SOURCES} ${ARG_HEADERS})
  add_library(Lq::${name} ALIAS ${target})
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME Lq${name}
    EXPORT_NAME ${name}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR})
  string(TOUPPER ${name} upper)
  target_compile_definitions(${target} PRIVATE LQ_BUILDING_${upper})
  set(public_headers ${ARG_HEADERS})
  list(FILTER public_headers EXCLUDE REGEX "_p\\.h$")
  # Links, never copies: a copy made over a link another configure run just
  # made would write through it and empty the source header.
  set(public_dir ${CMAKE_BINARY_DIR}/include/${target})
  file(REMOVE_RECURSE ${public_dir})
  file(MAKE_DIRECTORY ${public_dir})
  foreach(header ${public_headers})
    get_filename_component(header_name ${header} NAME)
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${header} ${public_dir}/${header_name} SYMBOLIC)
  endforeach()
  target_include_directories(${target}
    PUBLIC $<BUILD_INTERFACE:${public_dir}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/LqSymbol>
    PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${target} PUBLIC ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE_DEPENDS})
  # The headers need C++20; users get it with the target, whatever their own default.
  target_compile_features(${target} PUBLIC cxx_std_20)
  lq_warnings(${target})
  install(TARGETS ${target} EXPORT LqSymbolTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${public_headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/LqSymbol)
endfunction()
