# The module in its bundle, as hosts on macOS want it; the same folders on Linux.
set(LUMIVAR_BUNDLE ${CMAKE_BINARY_DIR}/plugin/Lumivar.plugin)
# In one place for every configuration: the expression keeps generators from adding a folder of their own.
set_target_properties(Lumivar PROPERTIES PREFIX "" SUFFIX ""
                      LIBRARY_OUTPUT_DIRECTORY $<1:${LUMIVAR_BUNDLE}/Contents/MacOS>)
if(APPLE)
  set(EXPORTS ${CMAKE_CURRENT_SOURCE_DIR}/exports.txt)
  target_link_options(Lumivar PRIVATE LINKER:-exported_symbols_list,${EXPORTS})
else()
  set(EXPORTS ${CMAKE_CURRENT_SOURCE_DIR}/exports.map)
  target_link_options(Lumivar PRIVATE LINKER:--version-script,${EXPORTS} LINKER:--as-needed)
  if(NOT LUMIVAR_SANITIZE)
    # A sanitizer's run-time may be the host program's.
    target_link_options(Lumivar PRIVATE LINKER:-z,defs)
  endif()
endif()

# A module for macOS that is built elsewhere is built for one processor at a time; the last build joins the other slice to its own.
set(LUMIVAR_OTHER_SLICE "" CACHE FILEPATH "Module of another processor's build, to be joined into this one")
set(LUMIVAR_OTHER_PROCESSOR "" CACHE STRING "The processor of LUMIVAR_OTHER_SLICE")
if(LUMIVAR_OTHER_SLICE)
  set(MODULE $<TARGET_FILE:Lumivar>)
  add_custom_command(TARGET Lumivar POST_BUILD COMMAND ${LUMIVAR_LIPO} -create ${LUMIVAR_OTHER_SLICE} ${MODULE} -output ${MODULE}
                     COMMENT "Joining the processors' modules" VERBATIM)
endif()

# The processors that the module has code for, by the names that the registration knows; none of another kind.
if(CMAKE_OSX_ARCHITECTURES)
  set(PROCESSORS ${CMAKE_OSX_ARCHITECTURES})
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  set(PROCESSORS arm64)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(i[3-6]86|x86|x86_64|AMD64)$")
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(PROCESSORS x86_64)
  else()
    set(PROCESSORS i386)
  endif()
endif()
list(APPEND PROCESSORS ${LUMIVAR_OTHER_PROCESSOR})

# What the host reads before it loads the module.
set(REGISTRATION ${LUMIVAR_BUNDLE}/Contents/Info.plist ${LUMIVAR_BUNDLE}/Contents/PkgInfo
                 ${LUMIVAR_BUNDLE}/Contents/Resources/Lumivar.rsrc)
add_custom_command(OUTPUT ${REGISTRATION} COMMAND ${LUMIVAR_WRITE_REGISTRATION} ${LUMIVAR_BUNDLE}/Contents ${PROCESSORS}
                   DEPENDS write_registration ${LUMIVAR_WRITE_REGISTRATION}
                   COMMENT "Writing the bundle's registration" VERBATIM)
target_sources(Lumivar PRIVATE ${REGISTRATION})
# A signature covers the registration: linking waits for it and is done again when it changes.
set_target_properties(Lumivar PROPERTIES LINK_DEPENDS "${EXPORTS};${REGISTRATION};${LUMIVAR_OTHER_SLICE}")
if(APPLE AND LUMIVAR_SIGN_IDENTITY)
  add_custom_command(TARGET Lumivar POST_BUILD
                     COMMAND codesign --force --sign ${LUMIVAR_SIGN_IDENTITY} ${LUMIVAR_BUNDLE}
                     COMMENT "Signing the bundle" VERBATIM)
endif()
