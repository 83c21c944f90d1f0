# The module for Windows: one file, with its registration as a resource. The star databases stand beside it.
set_target_properties(Lumivar PROPERTIES PREFIX "" SUFFIX .aex LIBRARY_OUTPUT_DIRECTORY $<1:${CMAKE_BINARY_DIR}/plugin>
                      LINK_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/exports.def)
# Wherever in memory the system likes, no stack that is executed; no time of the build and no names of functions in it: the
# same sources give the same bytes.
target_link_options(Lumivar PRIVATE LINKER:--image-base,0x180000000,--dynamicbase,--nxcompat,--high-entropy-va,--no-insert-timestamp,--strip-all)
target_sources(Lumivar PRIVATE exports.def registration.rc)

set(REGISTRATION ${CMAKE_CURRENT_BINARY_DIR}/Lumivar.pipl)
add_custom_command(OUTPUT ${REGISTRATION} COMMAND ${LUMIVAR_WRITE_REGISTRATION} --windows ${REGISTRATION}
                   DEPENDS write_registration ${LUMIVAR_WRITE_REGISTRATION}
                   COMMENT "Writing the module's registration" VERBATIM)
# The resource compiler looks for the file where headers are.
set_source_files_properties(registration.rc PROPERTIES OBJECT_DEPENDS ${REGISTRATION} INCLUDE_DIRECTORIES ${CMAKE_CURRENT_BINARY_DIR})
