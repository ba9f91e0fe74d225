include("${CMAKE_CURRENT_LIST_DIR}/qzlog-build-files.cmake")

# qzlog_add_catalog(TARGET target SOURCES std.yaml [aux.yaml...] PO de.po...
#                   [SOURCE_LANGUAGE ll[_CC]] [DESTINATION dir] [INSTALL_DESTINATION dir])
#
# Builds the message catalog of a product with the qzlog command and ICU's genrb: a folder of resource bundles. It is built
# again when a source, a PO file or the command changed.
#
# TARGET               Builds the catalog. A target that exists already (a program that opens it) has it built before itself;
#                      else a new one is made, which is part of every build.
# SOURCES              The standard definition source, then the auxiliary ones that extend it, relative to the current source
#                      folder, like the next.
# PO                   The translators' files, one for each language.
# SOURCE_LANGUAGE      The language of the texts in the sources; en by default.
# DESTINATION          The folder of the catalog, relative to the current binary folder; messages by default.
# INSTALL_DESTINATION  Installs the bundles there.
function(qzlog_add_catalog)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "TARGET;SOURCE_LANGUAGE;DESTINATION;INSTALL_DESTINATION" "SOURCES;PO")
  _qzlog_check_arguments(qzlog_add_catalog TARGET SOURCES PO)
  _qzlog_absolute_paths(sources ${arg_SOURCES})
  _qzlog_absolute_paths(translations ${arg_PO})
  if(NOT arg_DESTINATION)
    set(arg_DESTINATION messages)
  endif()
  get_filename_component(folder "${arg_DESTINATION}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_BINARY_DIR}")
  set(options "")
  if(arg_SOURCE_LANGUAGE)
    set(options --source-language ${arg_SOURCE_LANGUAGE})
  endif()

  # The command leaves a bundle that would not change as it is, so its time says nothing about the sources': the stamp does.
  add_custom_command(OUTPUT "${folder}.stamp"
    BYPRODUCTS "${folder}/root.res"
    COMMAND qzlog::command catalog build ${sources} --po ${translations} ${options} -o "${folder}"
    COMMAND "${CMAKE_COMMAND}" -E touch "${folder}.stamp"
    DEPENDS ${sources} ${translations} "$<TARGET_FILE:qzlog::command>"
    COMMENT "Building the message catalog: ${arg_DESTINATION}"
    VERBATIM)

  _qzlog_build_with_target(${arg_TARGET} catalog "${folder}" "${folder}.stamp")
  if(arg_INSTALL_DESTINATION)
    install(DIRECTORY "${folder}/" DESTINATION "${arg_INSTALL_DESTINATION}" FILES_MATCHING PATTERN "*.res")
  endif()
endfunction()
