# Copies the data files the program reads beside its executable folder,
# and generates the sample Gavrel installation.
file(GLOB_RECURSE FERROX_DATA_FILES CONFIGURE_DEPENDS
  RELATIVE ${CMAKE_SOURCE_DIR}/data ${CMAKE_SOURCE_DIR}/data/*)
set(FERROX_DATA_OUTPUTS)
foreach(relative ${FERROX_DATA_FILES})
  set(output ${FERROX_DATA_DIR}/${relative})
  add_custom_command(OUTPUT ${output}
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${CMAKE_SOURCE_DIR}/data/${relative} ${output}
    DEPENDS ${CMAKE_SOURCE_DIR}/data/${relative})
  list(APPEND FERROX_DATA_OUTPUTS ${output})
endforeach()
add_custom_target(ferrox_data ALL DEPENDS ${FERROX_DATA_OUTPUTS})

# The generator keeps a stamp and returns at once when nothing changed. The
# mod folder beside the game holds files that override the game's own.
set(FERROX_SAMPLE_MOD_DIR ${FERROX_SAMPLE_GAME_DIR}-mod)
file(GLOB FERROX_GENERATOR_SOURCES CONFIGURE_DEPENDS
  ${CMAKE_SOURCE_DIR}/tools/*.py ${CMAKE_SOURCE_DIR}/tools/gavrel_sample/*.py)
add_custom_target(sample_game ALL
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/tools/make_sample_game.py
          --out ${FERROX_SAMPLE_GAME_DIR} --mod-out ${FERROX_SAMPLE_MOD_DIR}
  DEPENDS ${FERROX_GENERATOR_SOURCES}
  COMMENT "Generating the sample Gavrel installation"
  VERBATIM)
# The hostile installation: one broken vehicle per way a game folder can
# fail the program, for the tests and the fuzzers' seeds.
add_custom_target(sample_hostile ALL
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/tools/make_sample_game.py
          --hostile --out ${FERROX_SAMPLE_HOSTILE_DIR}
  DEPENDS ${FERROX_GENERATOR_SOURCES}
  COMMENT "Generating the hostile Gavrel installation"
  VERBATIM)
