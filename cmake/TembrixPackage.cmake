# What `cmake --install` copies, and the Debian package that cpack makes of it.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)  # installing needs the program alone, neither tests nor benchmarks
set(resources ${PROJECT_SOURCE_DIR}/resources)

# The program finds its resources relative to itself, so that the installation can be moved.
install(TARGETS tembrix-stat RUNTIME DESTINATION bin)
install(DIRECTORY ${resources}/collections ${resources}/guides ${resources}/texts DESTINATION share/tembrix-stat)
install(FILES ${resources}/tembrix-stat.svg DESTINATION share/tembrix-stat)
install(FILES ${resources}/tembrix-stat.svg DESTINATION share/icons/hicolor/scalable/apps)
install(FILES ${resources}/desktop/tembrix-stat.desktop DESTINATION share/applications)
install(FILES ${resources}/desktop/tembrix-stat.xml DESTINATION share/mime/packages)
install(FILES ${resources}/desktop/org.tembrix.stat.metainfo.xml DESTINATION share/metainfo)
install(FILES ${resources}/desktop/copyright CHANGELOG.md DESTINATION share/doc/tembrix-stat)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tembrix-stat)
set(CPACK_PACKAGE_VENDOR "Tembrix Stat")
set(CPACK_PACKAGE_CONTACT "The Tembrix Stat developers <developers@tembrix.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "mark match videos and cut films of the moments")
set(CPACK_PACKAGE_DESCRIPTION
"A desktop program for analysts of team sports. Events of a match video are
marked with single key presses while it plays, shown on timelines, and turned
into films or archives of clips.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Loaded or started by name, where shlibdeps does not see them.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "breeze-icon-theme, fonts-inter, libqt6svg6, zip")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-translations-l10n, qt6-wayland")
include(CPack)
