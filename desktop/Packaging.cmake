# The Debian packages: cpack -G DEB in the build folder gives parley-share_<version>-1_<arch>.deb
# (everything but the KDE plugin) and, when the plugin is built, parley-share-kde, which holds the
# plugin alone and depends on the same version of parley-share: people without KDE need neither
# the plugin nor the Qt 5 and KF5 libraries it brings. Both install under /usr; their library
# dependencies come from dpkg-shlibdeps, their documents from desktop/debian/.
set(CPACK_GENERATOR "DEB")
set(CPACK_PACKAGE_NAME "parley-share")
set(CPACK_PACKAGE_VENDOR "Parley")
set(CPACK_PACKAGE_CONTACT "Parley developers <developers@parleyapp.com>")
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME "DEB-DEFAULT")
# The Debian revision: the changelog's latest entry names the same version.
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(PARLEY_DEBIAN_VERSION "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
set(CPACK_DEBIAN_PACKAGE_SOURCE "parley-share")
set(CPACK_DEBIAN_PACKAGE_PRIORITY "optional")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL Unspecified)
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_NAME "parley-share")
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_SECTION "net")
# The summary is the first line; CPack indents the rest.
set(CPACK_DEBIAN_UNSPECIFIED_DESCRIPTION "Share files and web links with Parley
Parley Share hands files, folders and web links over to Parley, to be sent to
a friend or added to the favourites: Share to Parley in the context menus of
Dolphin, Thunar, Nemo and (with python3-nautilus) Nautilus, and a
parley-share: link handler for a browser bookmarklet. Includes the reference
host, parley-host. The KDE Share menus come with parley-share-kde.")
# The sheet needs a display plugin, the wake-up a session bus.
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_DEPENDS
    "qt6-qpa-plugins, default-dbus-session-bus | dbus-session-bus")
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_RECOMMENDS "python3-nautilus")
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_SUGGESTS "parley-share-kde")

if(TARGET parley_purpose)
  list(APPEND CPACK_COMPONENTS_ALL kde)
  set(CPACK_DEBIAN_KDE_PACKAGE_NAME "parley-share-kde")
  set(CPACK_DEBIAN_KDE_PACKAGE_SECTION "kde")
  set(CPACK_DEBIAN_KDE_DESCRIPTION "Share to Parley in the Share menus of KDE applications
A plugin for KDE's Share menus (KDE Purpose): Dolphin, Okular, Gwenview,
Spectacle, Kdenlive, Falkon and other KDE applications offer Share to Parley
for files and web links, which opens Parley Share's sheet.")
  set(CPACK_DEBIAN_KDE_PACKAGE_DEPENDS "parley-share (= ${PARLEY_DEBIAN_VERSION})")
  set(CPACK_DEBIAN_KDE_PACKAGE_ENHANCES "dolphin, okular, gwenview, spectacle")
endif()
include(CPack)
