# Helpers of the install and package checks: run a command or fail, and check
# an installed tree by building and running a consumer through find_package
# and through pkg-config.  Expects CONSUMER_DIR, C_COMPILER, GENERATOR and
# optionally CONSUMER_FLAGS (extra C flags, for a sanitized build).
function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed (${rc}): ${ARGV}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

# Runs an install step (cmake --install, cpack) that writes the build's
# install_manifest.txt, which the uninstall target reads: the manifest of the
# user's own install is put back afterwards, and the step's one is kept as
# ${WORK_DIR}/install_manifest.txt.
function(run_keeping_manifest)
  set(manifest ${BUILD_DIR}/install_manifest.txt)
  file(MAKE_DIRECTORY ${WORK_DIR})
  if(EXISTS ${manifest})
    file(RENAME ${manifest} ${WORK_DIR}/users_manifest.txt)
  endif()
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(EXISTS ${manifest})
    file(RENAME ${manifest} ${WORK_DIR}/install_manifest.txt)
  endif()
  if(EXISTS ${WORK_DIR}/users_manifest.txt)
    file(RENAME ${WORK_DIR}/users_manifest.txt ${manifest})
  endif()
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed (${rc}): ${ARGV}\n${out}\n${err}")
  endif()
endfunction()

# The libraries land in lib, lib64 or lib/<multiarch> depending on the prefix
# and the platform's GNUInstallDirs; the place of tvkgen.pc tells which.
function(find_libdir prefix out)
  foreach(dir lib lib64 lib/x86_64-linux-gnu)
    if(EXISTS ${prefix}/${dir}/pkgconfig/tvkgen.pc)
      set(${out} ${prefix}/${dir} PARENT_SCOPE)
      return()
    endif()
  endforeach()
  message(FATAL_ERROR "no tvkgen.pc in ${prefix}/lib, lib64 or lib/x86_64-linux-gnu")
endfunction()

function(check_installed_tree prefix work)
  find_libdir("${prefix}" libdir)
  foreach(f libtvkgenu8.so libtvkgenu8.so.8.2 libtvkcore.so libtvkcore.so.8.2 pkgconfig/tvkgen.pc
            cmake/tvkgen/tvkgenConfig.cmake cmake/tvkgen/tvkgenConfigVersion.cmake)
    if(NOT EXISTS ${libdir}/${f})
      message(FATAL_ERROR "not installed: ${libdir}/${f}")
    endif()
  endforeach()
  if(NOT IS_SYMLINK ${libdir}/libtvkgenu8.so)
    message(FATAL_ERROR "libtvkgenu8.so is not a symlink")
  endif()
  foreach(h tvkgen.h tvkcore.h)
    if(NOT EXISTS ${prefix}/include/${h})
      message(FATAL_ERROR "${h} not installed in ${prefix}/include")
    endif()
  endforeach()
  foreach(lib tvkgenu8 tvkcore)
    run(objdump -p ${libdir}/lib${lib}.so.8.2)
    if(NOT last_output MATCHES "SONAME +lib${lib}\\.so\\.8\\.2\n")
      message(FATAL_ERROR "lib${lib}.so.8.2 has the wrong soname:\n${last_output}")
    endif()
  endforeach()
  # The system prefix needs no help from the environment.
  if(NOT prefix STREQUAL "/usr")
    set(ENV{LD_LIBRARY_PATH} ${libdir})
    set(ENV{PKG_CONFIG_PATH} ${libdir}/pkgconfig)
  endif()

  # find_package, with the version that any 8.x must satisfy
  run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${work}/cmake-build -G ${GENERATOR}
      -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_C_COMPILER=${C_COMPILER} "-DCMAKE_C_FLAGS=${CONSUMER_FLAGS}")
  run(${CMAKE_COMMAND} --build ${work}/cmake-build)
  run(${work}/cmake-build/consumer)
  if(NOT last_output STREQUAL "8.2.1 (r44077)\n")
    message(FATAL_ERROR "find_package consumer printed: ${last_output}")
  endif()

  # pkg-config
  run(pkg-config --cflags --libs tvkgen)
  string(STRIP "${last_output}" flags)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  separate_arguments(extra UNIX_COMMAND "${CONSUMER_FLAGS}")
  run(${C_COMPILER} ${extra} ${CONSUMER_DIR}/main.c ${flags} -Wl,-rpath-link,${libdir} -o ${work}/pc-consumer)
  run(${work}/pc-consumer)
  if(NOT last_output STREQUAL "8.2.1 (r44077)\n")
    message(FATAL_ERROR "pkg-config consumer printed: ${last_output}")
  endif()
endfunction()
