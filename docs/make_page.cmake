# cmake -D CMARK=PROGRAM -D TEXT=NAME.LANGUAGE.md -D PAGE=FILE -P make_page.cmake
# Makes a page for a browser of a text in Markdown. Sections get anchors, long pages a table of contents, and pictures
# their larger ones for fine screens.
cmake_minimum_required(VERSION 3.25)

set(long_page 5) # sections

get_filename_component(name "${TEXT}" NAME)
if(NOT name MATCHES "^[a-z]+\\.(en|pl)\\.md$")
    message(FATAL_ERROR "${name} is not named NAME.LANGUAGE.md.")
endif()
set(language ${CMAKE_MATCH_1})
if(language STREQUAL "pl")
    set(home "Strona domowa")
    set(help "Pomoc")
    set(about "O programie")
    set(contents_name "Spis treści")
    set(other en)
    set(other_name "English")
else()
    set(home "Home page")
    set(help "Help")
    set(about "About")
    set(contents_name "Contents")
    set(other pl)
    set(other_name "Polski")
endif()
string(REPLACE ".${language}.md" ".${other}.html" other_page "${name}")

execute_process(COMMAND "${CMARK}" --validate-utf8 --extension table "${TEXT}" OUTPUT_VARIABLE body
    COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "href=\"([a-z]+\\.(en|pl))\\.md" "href=\"\\1.html" body "${body}")
string(REGEX REPLACE "src=\"([a-z/-]+)-1x\\.png\"" "src=\"\\1-1x.png\" srcset=\"\\1-2x.png 2x\"" body "${body}")
string(REGEX MATCH "<h1>([^\n]*)</h1>" heading "${body}")
set(title "${CMAKE_MATCH_1}")

set(sections 0)
set(contents "")
while(body MATCHES "<h2>([^\n]*)</h2>")
    set(heading "${CMAKE_MATCH_0}")
    set(text "${CMAKE_MATCH_1}")
    string(TOLOWER "${text}" anchor)
    string(REGEX REPLACE "<[^>]*>|&[a-z]+;|[.,:;?!'()/]" "" anchor "${anchor}")
    string(REPLACE " " "-" anchor "${anchor}")
    string(REPLACE "${heading}" "<h2 id=\"${anchor}\">${text}</h2>" body "${body}")
    string(APPEND contents "<li><a href=\"#${anchor}\">${text}</a></li>\n")
    math(EXPR sections "${sections} + 1")
endwhile()
if(sections GREATER_EQUAL long_page)
    string(FIND "${body}" "<h2 id=" first)
    string(SUBSTRING "${body}" 0 ${first} beginning)
    string(SUBSTRING "${body}" ${first} -1 rest)
    set(contents "<nav class=\"contents\" aria-label=\"${contents_name}\">\n<ul>\n${contents}</ul>\n</nav>\n")
    set(body "${beginning}${contents}${rest}")
endif()

configure_file(${CMAKE_CURRENT_LIST_DIR}/page.html.in "${PAGE}" @ONLY)
file(TOUCH "${PAGE}") # it is left alone when nothing has changed
