# Debian packages: cpack --config build/package/CPackConfig.cmake, or script/package, which does everything.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME stm-com)
set(CPACK_PACKAGE_VENDOR "")
set(CPACK_PACKAGE_CONTACT "the stm_com_funcs contributors <stm-com-funcs@contributors.invalid>" CACHE
  STRING "Maintainer of the packages: NAME <ADDRESS>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL runtime development tools simulator)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)

# Every package has its licence and changelog in a folder named after it.
configure_file(changelog.in changelog @ONLY)
stm_compressed(${CMAKE_CURRENT_BINARY_DIR}/changelog changelog.gz changelog_file)
stm_compressed(${PROJECT_SOURCE_DIR}/CHANGELOG.md CHANGELOG.md.gz changes_file)

# stm_package(component name section summary description)
macro(stm_package component name section summary description)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${description}")
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE RENAME copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
  install(FILES ${changelog_file} ${changes_file}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
endmacro()

stm_package(runtime libstm-com-funcs0 libs
  "byte protocol of an STM32 measuring co-processor"
  "Opens the SPI link to the co-processor, loads images, changes settings,
queries values, reads measurements, and streams them through shared memory.")
stm_package(development libstm-com-funcs-dev libdevel
  "byte protocol of an STM32 measuring co-processor - development files"
  "Header, archive, and the files with which pkg-config and CMake find them.")
stm_package(tools stm-com-tools utils
  "tools for an STM32 measuring co-processor"
  "update loads firmware and boot loaders; stmctl does that and everything else:
settings, queries, memory, measurements, live streams and plots.")
stm_package(simulator virtual-board utils
  "virtual STM32 measuring co-processor"
  "Runs programs that talk to the co-processor on machines that have none: a
virtual co-processor answers on /dev/spidev1.0.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_SOURCE_DIR}/shlibs ${CMAKE_CURRENT_SOURCE_DIR}/triggers)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libstm-com-funcs0 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS "gnuplot-nox, virtual-board")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "passwd")
set(CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/postinst)
include(CPack)
