# Installs the build into a fresh prefix, builds and runs consumers against
# it, then uninstalls and checks that no file is left.
# Arguments: -DBUILD_DIR= -DWORK_DIR= -DCONSUMER_DIR= -DC_COMPILER= -DGENERATOR= [-DCONSUMER_FLAGS=]
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
run_keeping_manifest(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
check_installed_tree(${prefix} ${WORK_DIR})

# What the uninstall target runs, on this install's manifest.
run(${CMAKE_COMMAND} -DMANIFEST=${WORK_DIR}/install_manifest.txt -P ${CMAKE_CURRENT_LIST_DIR}/../../cmake/uninstall.cmake)
file(GLOB_RECURSE left LIST_DIRECTORIES false ${prefix}/*)
if(left)
  message(FATAL_ERROR "left after uninstall: ${left}")
endif()
message(STATUS "install, find_package and pkg-config consumers, uninstall: ok")
