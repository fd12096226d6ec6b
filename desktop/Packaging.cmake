# The Debian package: cpack -G DEB in the build folder gives parley-share_<version>_<arch>.deb,
# installing under /usr. Library dependencies come from dpkg-shlibdeps.
set(CPACK_GENERATOR "DEB")
set(CPACK_PACKAGE_NAME "parley-share")
set(CPACK_PACKAGE_VENDOR "Parley")
set(CPACK_PACKAGE_CONTACT "Parley developers <developers@parleyapp.com>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Share files and web links with Parley")
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME "DEB-DEFAULT")
set(CPACK_DEBIAN_PACKAGE_SECTION "net")
# The summary above is the first line; CPack indents these.
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "\
Parley Share hands files, folders and web links over to Parley, to be sent to a
friend or added to the favourites: Share to Parley in the context menus of
Dolphin, Thunar, Nemo and (with python3-nautilus) Nautilus, and a parley-share:
link handler for a browser bookmarklet. Includes the reference host, parley-host.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The sheet needs a display plugin, the wake-up a session bus.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins, default-dbus-session-bus | dbus-session-bus")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "python3-nautilus")
include(CPack)
