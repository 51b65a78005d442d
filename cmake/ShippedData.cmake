# Copies the shipped data (default configuration, help pages) into
# <build>/share/tracelab so that the build tree has the installed layout, and
# installs it under <prefix>/share/tracelab.
file(GLOB_RECURSE TRACELAB_DATA_FILES CONFIGURE_DEPENDS
  RELATIVE ${CMAKE_SOURCE_DIR}/data ${CMAKE_SOURCE_DIR}/data/*)
set(TRACELAB_DATA_OUTPUTS)
foreach(rel ${TRACELAB_DATA_FILES})
  set(out ${TRACELAB_SHARE_DIR}/${rel})
  add_custom_command(OUTPUT ${out}
    COMMAND ${CMAKE_COMMAND} -E copy ${CMAKE_SOURCE_DIR}/data/${rel} ${out}
    DEPENDS ${CMAKE_SOURCE_DIR}/data/${rel} VERBATIM)
  list(APPEND TRACELAB_DATA_OUTPUTS ${out})
endforeach()
add_custom_target(tracelab_data ALL DEPENDS ${TRACELAB_DATA_OUTPUTS})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/data/ DESTINATION ${CMAKE_INSTALL_DATADIR}/tracelab)
