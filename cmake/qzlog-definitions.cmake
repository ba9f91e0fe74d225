# qzlog_add_definitions(TARGET target SOURCES a.yaml... [AUX_OF std.yaml] [PATH icu|narrow|both]
#                       [DESTINATION dir] [INSTALL_DESTINATION dir])
#
# Compiles definition sources with the qzlog command: a.yaml to a.ldf. A source is compiled again when it, the definitions
# that it extends, or the command changed.
#
# TARGET               Builds the files. A target that exists already (a program that loads them, or that of an earlier call)
#                      has them built before itself; else a new one is made, which is part of every build. Either has the list
#                      of all its compiled files in its property QZLOG_DEFINITION_FILES.
# SOURCES              Definition sources, relative to the current source folder.
# AUX_OF               The sources are auxiliary ones, which extend these definitions: a source or a compiled file.
# PATH                 The rendering path that the messages have to come out right on; both by default.
# DESTINATION          Where the compiled files go, relative to the current binary folder, which it is by default.
# INSTALL_DESTINATION  Installs the compiled files there.
function(qzlog_add_definitions)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "TARGET;AUX_OF;PATH;DESTINATION;INSTALL_DESTINATION" "SOURCES")
  _qzlog_check_definitions("${arg_TARGET}" "${arg_SOURCES}" "${arg_PATH}" "${arg_UNPARSED_ARGUMENTS}"
    "${arg_KEYWORDS_MISSING_VALUES}")

  set(options "")
  set(extended "")
  if(arg_AUX_OF)
    get_filename_component(extended "${arg_AUX_OF}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
    list(APPEND options --aux-of "${extended}")
  endif()
  if(arg_PATH)
    list(APPEND options --path ${arg_PATH})
  endif()
  get_filename_component(destination "${arg_DESTINATION}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_BINARY_DIR}")

  set(files "")
  set(stamps "")
  foreach(source IN LISTS arg_SOURCES)
    get_filename_component(path "${source}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
    get_filename_component(name "${source}" NAME)
    string(REGEX REPLACE "\\.[^.]*$" "" name "${name}")
    _qzlog_compile_definitions("${path}" "${destination}/${name}.ldf" stamp "${options}" "${extended}")
    list(APPEND files "${destination}/${name}.ldf")
    list(APPEND stamps "${stamp}")
  endforeach()

  _qzlog_build_definitions(${arg_TARGET} "${files}" "${stamps}")
  if(arg_INSTALL_DESTINATION)
    install(FILES ${files} DESTINATION "${arg_INSTALL_DESTINATION}")
  endif()
endfunction()

function(_qzlog_check_definitions target sources path unknown without_value)
  if(unknown)
    message(FATAL_ERROR "qzlog_add_definitions: unknown arguments: ${unknown}")
  endif()
  if(without_value)
    message(FATAL_ERROR "qzlog_add_definitions: without a value: ${without_value}")
  endif()
  if(NOT target OR NOT sources)
    message(FATAL_ERROR "qzlog_add_definitions: TARGET and SOURCES are required")
  endif()
  if(path AND NOT path MATCHES "^(icu|narrow|both)$")
    message(FATAL_ERROR "qzlog_add_definitions: PATH is icu, narrow or both, not ${path}")
  endif()
  if(NOT TARGET qzlog::command)
    message(FATAL_ERROR "qzlog_add_definitions: this qzlog was built without its command")
  endif()
endfunction()

# The command leaves a file that would not change as it is, so its time says nothing about the source's: the stamp does.
function(_qzlog_compile_definitions source file stamp_variable options extended)
  get_filename_component(folder "${file}" DIRECTORY)
  get_filename_component(name "${file}" NAME)
  get_property(known GLOBAL PROPERTY _QZLOG_DEFINITION_FILES)
  if(file IN_LIST known)
    message(FATAL_ERROR "qzlog_add_definitions: two sources would be compiled to ${file}; give one another DESTINATION")
  endif()
  set_property(GLOBAL APPEND PROPERTY _QZLOG_DEFINITION_FILES "${file}")
  add_custom_command(OUTPUT "${file}.stamp"
    BYPRODUCTS "${file}"
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${folder}"
    COMMAND qzlog::command compile "${source}" ${options} -o "${file}"
    COMMAND "${CMAKE_COMMAND}" -E touch "${file}.stamp"
    DEPENDS "${source}" ${extended} "$<TARGET_FILE:qzlog::command>"
    COMMENT "Compiling the definitions: ${name}"
    VERBATIM)
  set(${stamp_variable} "${file}.stamp" PARENT_SCOPE)
endfunction()

function(_qzlog_build_definitions target files stamps)
  if(TARGET ${target})
    list(GET files 0 first)
    string(MD5 key "${first}")
    string(SUBSTRING ${key} 0 8 key)
    add_custom_target(${target}_definitions_${key} DEPENDS ${stamps})
    add_dependencies(${target} ${target}_definitions_${key})
  else()
    add_custom_target(${target} ALL DEPENDS ${stamps})
  endif()
  set_property(TARGET ${target} APPEND PROPERTY QZLOG_DEFINITION_FILES ${files})
endfunction()
