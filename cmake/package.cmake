# A Debian package of the library, both headers, the pkg-config file and the
# CMake package:  cd build && cpack -G DEB   (scripts/package.sh does it all).
set(CPACK_PACKAGE_NAME libtvkgenu8)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "short fixed-size signal transforms for x86-64 (SSE3)")
set(CPACK_PACKAGE_DESCRIPTION
    "libtvkgenu8 computes short fixed-size signal transforms with the 128-bit vector unit, one generated straight-line function per length, element type and direction.  The package holds the library, its companion libtvkcore, the header files, a pkg-config file and a CMake package.")
set(CPACK_PACKAGE_CONTACT "libtvkgenu8 developers <tvkgen@localhost>")
set(CPACK_GENERATOR DEB)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6 (>= 2.2.5)")
# A shlibs file and the ldconfig trigger, so that the loader cache learns the
# libraries on install and forgets them on removal.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# Only what `cmake --install` installs; the tests, benchmarks and tools stay out.
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
include(CPack)
