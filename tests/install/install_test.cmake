# Installs the build into a fresh prefix, checks the installed files, then
# builds and runs a consumer through find_package and through pkg-config.
# Arguments: -DBUILD_DIR= -DWORK_DIR= -DCONSUMER_DIR= -DC_COMPILER= -DGENERATOR=
function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed (${rc}): ${ARGV}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# The libraries land in lib or lib64 depending on the platform's GNUInstallDirs.
file(GLOB libdir LIST_DIRECTORIES true ${prefix}/lib ${prefix}/lib64)
list(GET libdir 0 libdir)
foreach(f libtvkgenu8.so libtvkgenu8.so.8.2 libtvkcore.so.8.2 pkgconfig/tvkgen.pc cmake/tvkgen/tvkgenConfig.cmake)
  if(NOT EXISTS ${libdir}/${f})
    message(FATAL_ERROR "not installed: ${libdir}/${f}")
  endif()
endforeach()
if(NOT IS_SYMLINK ${libdir}/libtvkgenu8.so)
  message(FATAL_ERROR "libtvkgenu8.so is not a symlink")
endif()
if(NOT EXISTS ${prefix}/include/tvkgen.h)
  message(FATAL_ERROR "tvkgen.h not installed")
endif()
foreach(lib tvkgenu8 tvkcore)
  run(objdump -p ${libdir}/lib${lib}.so.8.2)
  if(NOT last_output MATCHES "SONAME +lib${lib}\\.so\\.8\\.2\n")
    message(FATAL_ERROR "lib${lib}.so.8.2 has the wrong soname:\n${last_output}")
  endif()
endforeach()
set(ENV{LD_LIBRARY_PATH} ${libdir})

# find_package
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/cmake-build -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_C_COMPILER=${C_COMPILER})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake-build)
run(${WORK_DIR}/cmake-build/consumer)
if(NOT last_output STREQUAL "8.2.1 (r44077)\n")
  message(FATAL_ERROR "find_package consumer printed: ${last_output}")
endif()

# pkg-config
set(ENV{PKG_CONFIG_PATH} ${libdir}/pkgconfig)
run(pkg-config --cflags --libs tvkgen)
string(STRIP "${last_output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${C_COMPILER} ${CONSUMER_DIR}/main.c ${flags} -Wl,-rpath-link,${libdir} -o ${WORK_DIR}/pc-consumer)
run(${WORK_DIR}/pc-consumer)
if(NOT last_output STREQUAL "8.2.1 (r44077)\n")
  message(FATAL_ERROR "pkg-config consumer printed: ${last_output}")
endif()
message(STATUS "install, find_package and pkg-config consumers: ok")
