# The help pages, German and English, with their shared style sheet; the help window reads
# them from ":/help/<language>/<page>".
set(sorano_help_pages
  index startup newview datasources
  navigation zoom cursors statistics table export print batch
  viewproperties curves curveproperties statisticformats options
  keyboard commandline)
set(sorano_help_files ${CMAKE_CURRENT_LIST_DIR}/help.css)
foreach(language de en)
  foreach(page ${sorano_help_pages})
    list(APPEND sorano_help_files ${CMAKE_CURRENT_LIST_DIR}/${language}/${page}.html)
  endforeach()
endforeach()
qt_add_resources(resources sorano_help PREFIX "/help" BASE ${CMAKE_CURRENT_LIST_DIR} FILES ${sorano_help_files})
