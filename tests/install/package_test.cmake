# Builds the Debian package with CPack, checks its control fields and
# contents, unpacks it into a scratch root and builds and runs consumers
# against the unpacked /usr.  Installing it for real needs root: see
# scripts/package.sh.
# Arguments: -DBUILD_DIR= -DWORK_DIR= -DCONSUMER_DIR= -DC_COMPILER= -DGENERATOR= [-DCONSUMER_FLAGS=]
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

file(REMOVE_RECURSE ${WORK_DIR})
run_keeping_manifest(cpack -G DEB --config ${BUILD_DIR}/CPackConfig.cmake -B ${WORK_DIR})
file(GLOB deb ${WORK_DIR}/libtvkgenu8_*_amd64.deb)
if(NOT deb)
  message(FATAL_ERROR "cpack made no libtvkgenu8_*_amd64.deb in ${WORK_DIR}")
endif()

run(dpkg-deb --field ${deb} Package Version Architecture Depends)
foreach(field "Package: libtvkgenu8" "Version: 8.2.1" "Architecture: amd64" "Depends: libc6")
  string(FIND "${last_output}" "${field}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "control field '${field}' missing:\n${last_output}")
  endif()
endforeach()
run(dpkg-deb --contents ${deb})
foreach(unwanted "tvkgen-" "gtest" "benchmark")
  string(FIND "${last_output}" "${unwanted}" at)
  if(NOT at EQUAL -1)
    message(FATAL_ERROR "the package holds a '${unwanted}' file:\n${last_output}")
  endif()
endforeach()

run(dpkg-deb -x ${deb} ${WORK_DIR}/root)
check_installed_tree(${WORK_DIR}/root/usr ${WORK_DIR})
message(STATUS "Debian package contents and consumers: ok")
