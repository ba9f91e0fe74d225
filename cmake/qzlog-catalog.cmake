include("${CMAKE_CURRENT_LIST_DIR}/qzlog-build-files.cmake")

# qzlog_add_catalog(TARGET target SOURCES std.yaml [aux.yaml...] PO de.po...
#                   [SOURCE_LANGUAGE ll[_CC]] [DESTINATION dir] [INSTALL_DESTINATION dir])
#
# Builds the message catalog of a product with the qzlog command and ICU's genrb: a folder of resource bundles. It is built
# again when a source, a PO file, the command or these arguments changed. The bundles of languages that are gone are removed.
#
# TARGET               Builds the catalog. A target that exists already (a program that opens it) has it built before itself;
#                      else a new one is made, which is part of every build.
# SOURCES              The standard definition source, then the auxiliary ones that extend it, relative to the current source
#                      folder, like the next.
# PO                   The translators' files, one for each language.
# SOURCE_LANGUAGE      The language of the texts in the sources; en by default.
# DESTINATION          The folder of the catalog, relative to the current binary folder; messages by default. In that folder the
#                      catalog takes the place of whatever has the name of one of its bundles; elsewhere the command refuses to
#                      replace what it did not make.
# INSTALL_DESTINATION  Installs the bundles there: those that the last build made, whatever else is in the folder.
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

  string(FIND "${folder}/" "${CMAKE_CURRENT_BINARY_DIR}/" in_build_tree)
  if(in_build_tree EQUAL 0)
    list(APPEND options --adopt)
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
    _qzlog_install_catalog("${folder}" "${arg_INSTALL_DESTINATION}")
  endif()
endfunction()

# Which languages there are is known when they are built: the command lists its bundles, "de.res": "0123456789abcdef", in a file.
function(_qzlog_install_catalog folder destination)
  if(NOT IS_ABSOLUTE "${destination}")
    set(destination "\${CMAKE_INSTALL_PREFIX}/${destination}")
  endif()
  install(CODE "
    set(folder [==[${folder}]==])
    set(manifest \"\${folder}/qzlog-catalog.json\")
    if(NOT EXISTS \"\${manifest}\")
      message(FATAL_ERROR \"\${manifest} is missing: the message catalog was not built\")
    endif()
    file(READ \"\${manifest}\" made)
    if(made MATCHES [==[\"unfinished\"]==])
      message(FATAL_ERROR \"\${manifest}: the last build of the message catalog was interrupted\")
    endif()
    string(REGEX MATCHALL [==[[A-Za-z0-9_]+\.res]==] bundles \"\${made}\")
    foreach(bundle IN LISTS bundles)
      file(INSTALL DESTINATION \"${destination}\" TYPE FILE FILES \"\${folder}/\${bundle}\")
    endforeach()")
endfunction()
