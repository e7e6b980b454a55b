# Runs at install time. The launcher and the icons go into the user's XDG
# data home (~/.local/share unless XDG_DATA_HOME says otherwise), which the
# desktop's menu reads.
set(data_home "$ENV{XDG_DATA_HOME}")
if(NOT data_home)
  set(data_home "$ENV{HOME}/.local/share")
endif()

set(FERROX_EXECUTABLE "${CMAKE_INSTALL_PREFIX}/bin_x64/ferrox")
configure_file("${FERROX_DESKTOP_TEMPLATE}" "${FERROX_DESKTOP_STAGING}/ferrox.desktop" @ONLY)
file(INSTALL DESTINATION "$ENV{DESTDIR}${data_home}/applications" TYPE FILE
     FILES "${FERROX_DESKTOP_STAGING}/ferrox.desktop")

foreach(size 16 32 128)
  file(INSTALL DESTINATION "$ENV{DESTDIR}${data_home}/icons/hicolor/${size}x${size}/apps"
       TYPE FILE RENAME ferrox.png FILES "${FERROX_ICON_DIR}/ferrox_ico_${size}.png")
endforeach()
