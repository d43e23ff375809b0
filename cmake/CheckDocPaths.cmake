# Fails when a doc under docs/, or a README, names a path of the source tree
# that does not exist. Paths are the `quoted` names and link targets whose
# first folder is one of the tree's own; a name without an extension counts
# when a file of that name with any extension exists (log sources name files so).
# Run: cmake -DROOT=<source dir> -P CheckDocPaths.cmake

cmake_minimum_required(VERSION 3.25)

set(tree_folders Platform Src tests bench tools examples docs scripts cmake fuzz)
file(GLOB docs ${ROOT}/docs/*.md ${ROOT}/README.md ${ROOT}/*/README.md)
set(missing "")
foreach(doc ${docs})
  file(READ ${doc} text)
  string(REGEX MATCHALL "`[^`\n]+`|\\]\\([^)\n]+\\)" names "${text}")
  foreach(name ${names})
    string(REGEX REPLACE "^`|`$|^\\]\\(|\\)$" "" path "${name}")
    string(REGEX REPLACE "#.*$" "" path "${path}")
    if(NOT path MATCHES "^[A-Za-z0-9_.-]+/[A-Za-z0-9_./*-]*$")
      continue()
    endif()
    string(REGEX MATCH "^[^/]+" first "${path}")
    if(NOT first IN_LIST tree_folders)
      continue()
    endif()
    file(GLOB with_extension "${ROOT}/${path}.*")
    if(NOT EXISTS "${ROOT}/${path}" AND NOT with_extension)
      file(RELATIVE_PATH where ${ROOT} ${doc})
      list(APPEND missing "${where}: ${path}")
    endif()
  endforeach()
endforeach()
if(missing)
  list(JOIN missing "\n  " lines)
  message(FATAL_ERROR "Docs name paths that do not exist:\n  ${lines}")
endif()
