# The package for Debian 12.
file(STRINGS debian/changelog newest LIMIT_COUNT 1)
if(NOT newest MATCHES "^melvane \\(${PROJECT_VERSION}-([0-9]+)\\)")
    message(FATAL_ERROR "debian/changelog begins with another release than ${PROJECT_VERSION}.")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_1})
file(STRINGS debian/changelog signed REGEX "^ -- ")
list(GET signed 0 signed)
string(REGEX REPLACE "^ -- (.*>)  .*" "\\1" CPACK_DEBIAN_PACKAGE_MAINTAINER "${signed}")
file(READ debian/description CPACK_DEBIAN_PACKAGE_DESCRIPTION)
string(STRIP "${CPACK_DEBIAN_PACKAGE_DESCRIPTION}" CPACK_DEBIAN_PACKAGE_DESCRIPTION)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME melvane)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "mixer of karaoke songs with a recorded voice")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# The encoder is a program that is run, the sounds are a file that is read: no library tells of them.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "lame, timgm6mb-soundfont | fluid-soundfont-gm | sf2-soundfont-gm")
# Other sound, windows under Wayland, the toolkit's own texts in Polish, help in the browser.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "ffmpeg, qt6-wayland, qt6-translations-l10n, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "fluid-soundfont-gm")
include(CPack)
