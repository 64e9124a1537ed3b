# SPDX-License-Identifier: GPL-3.0-or-later
# Installation beside the targets (which install themselves to bin, lib/sorano/<kind>,
# share/sorano/batch and include/sorano): the add-in contract, the machine-wide settings, the
# example views, the man pages and the desktop integration.
#
# The program finds its plug-ins in ../lib/sorano and its templates in ../share/sorano beside
# its bin folder, so bin, lib/sorano and share stay siblings under the prefix.

set(SORANO_DESKTOP_DIR ${PROJECT_SOURCE_DIR}/debian/desktop)

# The add-in contract, header-only like the data-module headers.
install(FILES ${PROJECT_SOURCE_DIR}/src/platform/AddInInterface.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/sorano)

# Machine-wide settings: data module "Demo" and the add-in. With the prefix /usr (or an absolute
# SYSCONFDIR such as the /etc of a Debian build) this is /etc/xdg/HARVOLD/Sorano.ini, where Qt
# looks for them; under any other prefix it is <prefix>/etc/xdg/HARVOLD, which the program takes
# when it exists beside its bin folder, and moves with "cmake --install --prefix".
if(IS_ABSOLUTE "${CMAKE_INSTALL_SYSCONFDIR}" OR CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(SORANO_SETTINGS_DIR ${CMAKE_INSTALL_FULL_SYSCONFDIR}/xdg/HARVOLD)
else()
  set(SORANO_SETTINGS_DIR ${CMAKE_INSTALL_SYSCONFDIR}/xdg/HARVOLD)
endif()
install(FILES ${PROJECT_SOURCE_DIR}/debian/Sorano.ini DESTINATION ${SORANO_SETTINGS_DIR})

# Example views on the demo data and profiles that fit them.
install(FILES
  ${PROJECT_SOURCE_DIR}/examples/Hauptzaehler.sor
  ${PROJECT_SOURCE_DIR}/examples/Gebaeudevergleich.sor
  ${PROJECT_SOURCE_DIR}/examples/Rechenzentrum-Tag.sor
  ${PROJECT_SOURCE_DIR}/examples/Profiles.dat
  DESTINATION ${CMAKE_INSTALL_DATADIR}/sorano/examples)

# Man pages; the help pages are compiled into the program.
install(FILES
  ${PROJECT_SOURCE_DIR}/docs/sorano.1
  ${PROJECT_SOURCE_DIR}/docs/sorano-demodata.1
  ${PROJECT_SOURCE_DIR}/docs/sorano-storeload.1
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# Desktop entry, MIME type of the view files, AppStream data and the program icon.
install(FILES ${SORANO_DESKTOP_DIR}/sorano.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${SORANO_DESKTOP_DIR}/sorano.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
install(FILES ${SORANO_DESKTOP_DIR}/org.harvold.sorano.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${PROJECT_SOURCE_DIR}/src/resources/icons/ICO_APP.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps RENAME sorano.svg)
foreach(size 16 22 24 32 48 64 128 256)
  install(FILES ${SORANO_DESKTOP_DIR}/icons/${size}x${size}/sorano.png
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps)
endforeach()
