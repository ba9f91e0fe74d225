# What the functions that build files with the qzlog command have in common.
include_guard(GLOBAL)

# Refuses the arguments of a function unless they are as they should be: cmake_parse_arguments was called with the prefix arg by
# the function, whose variables are seen from here; the arguments that are named behind it are required.
function(_qzlog_check_arguments function)
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "${function}: unknown arguments: ${arg_UNPARSED_ARGUMENTS}")
  endif()
  if(arg_KEYWORDS_MISSING_VALUES)
    message(FATAL_ERROR "${function}: without a value: ${arg_KEYWORDS_MISSING_VALUES}")
  endif()
  foreach(name IN LISTS ARGN)
    if(NOT arg_${name})
      string(REPLACE ";" ", " required "${ARGN}")
      string(REGEX REPLACE ", ([^,]*)$" " and \\1" required "${required}")
      message(FATAL_ERROR "${function}: ${required} are required")
    endif()
  endforeach()
  if(NOT TARGET qzlog::command)
    message(FATAL_ERROR "${function}: this qzlog was built without its command")
  endif()
endfunction()

# Names are relative to the current source folder.
function(_qzlog_absolute_paths variable)
  set(paths "")
  foreach(name IN LISTS ARGN)
    get_filename_component(path "${name}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
    list(APPEND paths "${path}")
  endforeach()
  set(${variable} "${paths}" PARENT_SCOPE)
endfunction()

# Has a target build the stamps: one that exists already before itself, through a target of its own, which the kind of what is
# built and the path of the first result keep apart from others; else a new one, which is part of every build.
function(_qzlog_build_with_target target kind result stamps)
  if(TARGET ${target})
    string(MD5 key "${result}")
    string(SUBSTRING ${key} 0 8 key)
    add_custom_target(${target}_${kind}_${key} DEPENDS ${stamps})
    add_dependencies(${target} ${target}_${kind}_${key})
  else()
    add_custom_target(${target} ALL DEPENDS ${stamps})
  endif()
endfunction()
