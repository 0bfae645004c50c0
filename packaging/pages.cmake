# Manual pages and completion in bash, from the tables of options, and the changes of the package.
set(pages ${CMAKE_CURRENT_BINARY_DIR}/pages)
file(MAKE_DIRECTORY ${pages})
file(STRINGS melvane.metainfo.xml.in release REGEX "<release version=\"${PROJECT_VERSION}\" date=")
if(NOT release MATCHES "date=\"([0-9-]+)\"")
    message(FATAL_ERROR "melvane.metainfo.xml.in tells of no release ${PROJECT_VERSION}.")
endif()
add_custom_command(OUTPUT ${pages}/melvane ${pages}/melvane-mix ${pages}/melvane.1.gz ${pages}/melvane-mix.1.gz
    COMMAND melvane-manual ${pages} ${CMAKE_MATCH_1}
    COMMAND gzip -9nfk ${pages}/melvane.1 ${pages}/melvane-mix.1
    DEPENDS melvane-manual VERBATIM)
add_custom_command(OUTPUT ${pages}/changelog.Debian.gz
    COMMAND gzip -9nc ${CMAKE_CURRENT_SOURCE_DIR}/debian/changelog > ${pages}/changelog.Debian.gz
    DEPENDS debian/changelog VERBATIM)
add_custom_target(manual_pages ALL DEPENDS ${pages}/melvane ${pages}/changelog.Debian.gz)

install(FILES ${pages}/melvane.1.gz ${pages}/melvane-mix.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${pages}/melvane ${pages}/melvane-mix DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES debian/lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME melvane)
install(FILES debian/copyright ${pages}/changelog.Debian.gz DESTINATION ${doc_dir})
