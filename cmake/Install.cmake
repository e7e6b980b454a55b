# Installs Ferrox as it runs from the build tree: the executables in bin_x64/
# beside data/ and languages/, so that "../data/" and the user directory
# resolve the same way. The tree must stay writable for its user, hence a
# per-user prefix by default. The launcher and the icon go to the user's
# freedesktop places, where the desktop's menu finds them.
if(CMAKE_INSTALL_PREFIX_INITIALIZED_TO_DEFAULT)
  set(CMAKE_INSTALL_PREFIX "$ENV{HOME}/.local/lib/ferrox" CACHE PATH
      "Where Ferrox is installed; its data/ there must be writable" FORCE)
endif()

install(TARGETS ferrox ferrox-tool RUNTIME DESTINATION bin_x64)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/data/ DESTINATION data)
# The user guide as Help opens it: the page and its pictures.
install(DIRECTORY ${CMAKE_BINARY_DIR}/docs/ DESTINATION docs)
# Translations are built into the build tree's languages/ when there are any;
# the folder stands in the installed tree either way.
install(DIRECTORY DESTINATION languages)
install(DIRECTORY ${CMAKE_BINARY_DIR}/languages/ DESTINATION languages OPTIONAL
        FILES_MATCHING PATTERN "*.qm")

# The launcher names the executable where the install put it, which only the
# install knows (cmake --install --prefix), so it is written then.
install(CODE "
  set(FERROX_DESKTOP_TEMPLATE \"${CMAKE_SOURCE_DIR}/cmake/ferrox.desktop.in\")
  set(FERROX_DESKTOP_STAGING \"${CMAKE_BINARY_DIR}/desktop\")
  set(FERROX_ICON_DIR \"${CMAKE_SOURCE_DIR}/icons\")")
install(SCRIPT ${CMAKE_SOURCE_DIR}/cmake/InstallDesktopEntry.cmake)
