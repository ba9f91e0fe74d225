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
  _qzlog_check_catalog("${arg_TARGET}" "${arg_SOURCES}" "${arg_PO}" "${arg_UNPARSED_ARGUMENTS}"
    "${arg_KEYWORDS_MISSING_VALUES}")

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

  if(TARGET ${arg_TARGET})
    string(MD5 key "${folder}")
    string(SUBSTRING ${key} 0 8 key)
    add_custom_target(${arg_TARGET}_catalog_${key} DEPENDS "${folder}.stamp")
    add_dependencies(${arg_TARGET} ${arg_TARGET}_catalog_${key})
  else()
    add_custom_target(${arg_TARGET} ALL DEPENDS "${folder}.stamp")
  endif()
  if(arg_INSTALL_DESTINATION)
    install(DIRECTORY "${folder}/" DESTINATION "${arg_INSTALL_DESTINATION}" FILES_MATCHING PATTERN "*.res")
  endif()
endfunction()

function(_qzlog_check_catalog target sources translations unknown without_value)
  if(unknown)
    message(FATAL_ERROR "qzlog_add_catalog: unknown arguments: ${unknown}")
  endif()
  if(without_value)
    message(FATAL_ERROR "qzlog_add_catalog: without a value: ${without_value}")
  endif()
  if(NOT target OR NOT sources OR NOT translations)
    message(FATAL_ERROR "qzlog_add_catalog: TARGET, SOURCES and PO are required")
  endif()
  if(NOT TARGET qzlog::command)
    message(FATAL_ERROR "qzlog_add_catalog: this qzlog was built without its command")
  endif()
endfunction()

function(_qzlog_absolute_paths variable)
  set(paths "")
  foreach(name IN LISTS ARGN)
    get_filename_component(path "${name}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
    list(APPEND paths "${path}")
  endforeach()
  set(${variable} "${paths}" PARENT_SCOPE)
endfunction()
