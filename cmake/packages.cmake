# The Debian packages installer and kvpack: cmake --build build --target package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL installer kvpack)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/compress_documents.cmake")
set(CPACK_OUTPUT_FILE_PREFIX "${PROJECT_BINARY_DIR}/packages")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Kestrion maintainers <maintainers@kestrion.example>")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

# The first line of a description is its summary; without this one CPack would put that of the project there.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")

set(CPACK_DEBIAN_INSTALLER_PACKAGE_NAME installer)
set(CPACK_DEBIAN_INSTALLER_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_INSTALLER_PACKAGE_SUGGESTS kvpack)
set(CPACK_DEBIAN_INSTALLER_DESCRIPTION "package installer of Kestrion
It runs on the device: at boot it carries out a scheduled upgrade, and other
services start it to list packages, to install one package from standard
input, and to finish or drop a staged change set.")
if(TRUSTS_DEVELOPMENT_KEYS)
  string(APPEND CPACK_DEBIAN_INSTALLER_DESCRIPTION "

This build trusts the development keys, which everybody has. It must not ship.")
endif()

set(CPACK_DEBIAN_KVPACK_PACKAGE_NAME kvpack)
set(CPACK_DEBIAN_KVPACK_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_KVPACK_DESCRIPTION "builder of Kestrion packages
It builds signed packages and bundles, shows and verifies them, takes them
apart and makes the keys for them.")

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  install(FILES "${PROJECT_SOURCE_DIR}/CHANGELOG.md" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${component}"
          COMPONENT ${component})
endforeach()
include(CPack)
