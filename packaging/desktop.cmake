# What a desktop knows the program by.
set(MELVANE_HOME_PAGE "https://melvane.example.org" CACHE STRING "Where the project's pages and pictures are on the web")

foreach(program melvane melvane-mix)
    file(RELATIVE_PATH target ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_PREFIX}/${program_dir}/${program})
    file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/links)
    file(CREATE_LINK ${target} ${CMAKE_CURRENT_BINARY_DIR}/links/${program} SYMBOLIC)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/links/${program} DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()

# The metainfo provides what the desktop file opens.
file(STRINGS melvane.desktop types REGEX "^MimeType=")
string(REGEX REPLACE "^MimeType=(.*);$" "\\1" types "${types}")
set(MELVANE_MEDIA_TYPES)
foreach(type ${types})
    string(APPEND MELVANE_MEDIA_TYPES "    <mediatype>${type}</mediatype>\n")
endforeach()
set(metainfo org.example.melvane.metainfo.xml)
configure_file(melvane.metainfo.xml.in ${metainfo} @ONLY)

install(FILES melvane.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${metainfo} DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES melvane-mime.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages RENAME melvane.xml)

set(icons_dir ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
set(job_icon application-x-melvane-job)
install(FILES icons/melvane.svg DESTINATION ${icons_dir}/scalable/apps)
install(FILES icons/melvane-symbolic.svg DESTINATION ${icons_dir}/symbolic/apps)
install(FILES icons/job.svg DESTINATION ${icons_dir}/scalable/mimetypes RENAME ${job_icon}.svg)
foreach(side 16 22 24 32 48 64 96 128 256 512)
    install(FILES icons/${side}.png DESTINATION ${icons_dir}/${side}x${side}/apps RENAME melvane.png)
    install(FILES icons/job/${side}.png DESTINATION ${icons_dir}/${side}x${side}/mimetypes RENAME ${job_icon}.png)
endforeach()
