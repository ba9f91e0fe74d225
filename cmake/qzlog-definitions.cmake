include("${CMAKE_CURRENT_LIST_DIR}/qzlog-build-files.cmake")

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
  _qzlog_check_arguments(qzlog_add_definitions TARGET SOURCES)
  if(arg_PATH AND NOT arg_PATH MATCHES "^(icu|narrow|both)$")
    message(FATAL_ERROR "qzlog_add_definitions: PATH is icu, narrow or both, not ${arg_PATH}")
  endif()

  set(options "")
  set(extended "")
  if(arg_AUX_OF)
    _qzlog_absolute_paths(extended "${arg_AUX_OF}")
    list(APPEND options --aux-of "${extended}")
  endif()
  if(arg_PATH)
    list(APPEND options --path ${arg_PATH})
  endif()
  get_filename_component(destination "${arg_DESTINATION}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_BINARY_DIR}")

  set(files "")
  set(stamps "")
  _qzlog_absolute_paths(sources ${arg_SOURCES})
  foreach(source IN LISTS sources)
    get_filename_component(name "${source}" NAME)
    string(REGEX REPLACE "\\.[^.]*$" "" name "${name}")
    _qzlog_compile_definitions("${source}" "${destination}/${name}.ldf" stamp "${options}" "${extended}")
    list(APPEND files "${destination}/${name}.ldf")
    list(APPEND stamps "${stamp}")
  endforeach()

  list(GET files 0 first)
  _qzlog_build_with_target(${arg_TARGET} definitions "${first}" "${stamps}")
  set_property(TARGET ${arg_TARGET} APPEND PROPERTY QZLOG_DEFINITION_FILES ${files})
  if(arg_INSTALL_DESTINATION)
    install(FILES ${files} DESTINATION "${arg_INSTALL_DESTINATION}")
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
