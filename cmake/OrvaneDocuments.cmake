# Installs the documents so that the links of the installed copies lead to files that are installed.
# Beside each other they keep their places; the headers are elsewhere then; of a link to what stays in
# the source tree the words remain.
set(document_dir ${CMAKE_INSTALL_DATADIR}/doc/orvane)
set(installed_note "This is the installed copy: the folders `scripts`, `tests` and `bench`, and the presets, are those \
of the source tree.")

# orvane_rewrite_links(RESULT TEXT FOLDER): the text of a document of that folder, as it is installed.
function(orvane_rewrite_links result text folder)
  # Without the square brackets, which lists would take for their own.
  string(REGEX MATCHALL "\\([A-Za-z0-9_./-]+" links "${text}")
  list(REMOVE_DUPLICATES links)
  foreach(link IN LISTS links)
    string(SUBSTRING ${link} 1 -1 link)
    cmake_path(SET target NORMALIZE "${folder}/${link}")
    if(target MATCHES "^include/(.*)")
      file(RELATIVE_PATH place ${CMAKE_INSTALL_FULL_DATADIR}/doc/orvane/${folder}
           ${CMAKE_INSTALL_FULL_INCLUDEDIR}/${CMAKE_MATCH_1})
      string(REPLACE "](${link})" "](${place})" text "${text}")
    elseif(target MATCHES "^(tests|tools|fuzz|bench|scripts)(/|$)")
      string(REGEX REPLACE "\\[([^]]*)\\]\\(${link}(#[^)]*)?\\)" "\\1" text "${text}")
    endif()
  endforeach()
  set(${result} "${text}" PARENT_SCOPE)
endfunction()

file(GLOB documents RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS
     ${PROJECT_SOURCE_DIR}/*.md ${PROJECT_SOURCE_DIR}/docs/*.md)
foreach(document IN LISTS documents)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${document})
  file(READ ${PROJECT_SOURCE_DIR}/${document} text)
  cmake_path(GET document PARENT_PATH folder)
  cmake_path(SET folder NORMALIZE "./${folder}")
  orvane_rewrite_links(text "${text}" "${folder}")
  string(REGEX REPLACE "^(# [^\n]*\n)" "\\1\n${installed_note}\n" text "${text}")
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/documents/${document} CONTENT "@text@" @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/documents/${document} DESTINATION ${document_dir}/${folder}
          COMPONENT development)
endforeach()

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${document_dir} COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${document_dir} COMPONENT development
        FILES_MATCHING PATTERN *.c PATTERN *.cpp PATTERN *.py)
