# Builds and runs the consumers against the package installed in /usr.
# Arguments: -DWORK_DIR= -DCONSUMER_DIR= -DC_COMPILER= -DGENERATOR=
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
file(REMOVE_RECURSE ${WORK_DIR})
check_installed_tree(/usr ${WORK_DIR})
message(STATUS "consumers against the installed package: ok")
