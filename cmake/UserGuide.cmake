# Renders docs/user-guide.md to the HTML page that Help opens, into the build
# tree's docs/ beside bin_x64/ and data/, with the pictures it shows.
find_program(FERROX_MARKDOWN markdown_py REQUIRED)
set(FERROX_DOCS_DIR ${CMAKE_BINARY_DIR}/docs)
set(FERROX_GUIDE_HTML ${FERROX_DOCS_DIR}/user-guide.html)
file(GLOB_RECURSE FERROX_GUIDE_IMAGES CONFIGURE_DEPENDS
  RELATIVE ${CMAKE_SOURCE_DIR}/docs ${CMAKE_SOURCE_DIR}/docs/images/*.png)
set(FERROX_GUIDE_OUTPUTS ${FERROX_GUIDE_HTML})
foreach(relative ${FERROX_GUIDE_IMAGES})
  add_custom_command(OUTPUT ${FERROX_DOCS_DIR}/${relative}
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${CMAKE_SOURCE_DIR}/docs/${relative}
            ${FERROX_DOCS_DIR}/${relative}
    DEPENDS ${CMAKE_SOURCE_DIR}/docs/${relative})
  list(APPEND FERROX_GUIDE_OUTPUTS ${FERROX_DOCS_DIR}/${relative})
endforeach()
add_custom_command(OUTPUT ${FERROX_GUIDE_HTML}
  COMMAND ${CMAKE_COMMAND} -DMARKDOWN=${FERROX_MARKDOWN}
          -DINPUT=${CMAKE_SOURCE_DIR}/docs/user-guide.md -DOUTPUT=${FERROX_GUIDE_HTML}
          -P ${CMAKE_SOURCE_DIR}/cmake/RenderGuide.cmake
  DEPENDS ${CMAKE_SOURCE_DIR}/docs/user-guide.md ${CMAKE_SOURCE_DIR}/cmake/RenderGuide.cmake
  COMMENT "Rendering the user guide")
add_custom_target(user_guide ALL DEPENDS ${FERROX_GUIDE_OUTPUTS})
