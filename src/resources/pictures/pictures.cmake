# SPDX-License-Identifier: GPL-3.0-or-later
# Pictures of the splash, the start-up window and the about box.
qt_add_resources(resources sorano_pictures
  PREFIX "/pictures"
  BASE ${CMAKE_CURRENT_LIST_DIR}
  FILES
    ${CMAKE_CURRENT_LIST_DIR}/splash.svg
    ${CMAKE_CURRENT_LIST_DIR}/startup.svg
    ${CMAKE_CURRENT_LIST_DIR}/logo.svg
    ${CMAKE_CURRENT_LIST_DIR}/leave.svg
    ${CMAKE_CURRENT_LIST_DIR}/newview.svg
    ${CMAKE_CURRENT_LIST_DIR}/openview.svg
    ${CMAKE_CURRENT_LIST_DIR}/managedata.svg
    ${CMAKE_CURRENT_LIST_DIR}/online.svg)
