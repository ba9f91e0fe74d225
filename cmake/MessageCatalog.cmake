# qzlog_compile_catalog(BUNDLES SOURCE_DIR OUTPUT_DIR NAME...): compiles the resource bundles SOURCE_DIR/NAME.txt to
# OUTPUT_DIR/NAME.res and sets the variable named BUNDLES to the results. A NAME may begin with a folder.
# ICU reads bundles in the byte order of the host alone. genrb writes that of the machine on which it runs, so that bundles for
# another host are brought into that host's order.
function(qzlog_compile_catalog bundles source_dir output_dir)
  find_program(QZLOG_GENRB genrb REQUIRED DOC "ICU's compiler for resource bundles (Debian: icu-devtools)")
  mark_as_advanced(QZLOG_GENRB)
  if(CMAKE_CROSSCOMPILING)
    find_program(QZLOG_ICUPKG icupkg REQUIRED PATHS /usr/sbin DOC "ICU's tool for the byte order of bundles (Debian: icu-devtools)")
    mark_as_advanced(QZLOG_ICUPKG)
    string(SUBSTRING "${CMAKE_CXX_BYTE_ORDER}" 0 1 order)  # of BIG_ENDIAN or LITTLE_ENDIAN
    string(TOLOWER "${order}" order)
  endif()
  set(results "")
  foreach(name ${ARGN})
    set(bundle ${output_dir}/${name}.res)
    get_filename_component(folder ${bundle} DIRECTORY)
    set(in_order "")
    if(CMAKE_CROSSCOMPILING)
      set(in_order COMMAND ${QZLOG_ICUPKG} -t${order} ${bundle} ${bundle})
    endif()
    add_custom_command(OUTPUT ${bundle}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
      COMMAND ${QZLOG_GENRB} --quiet --encoding UTF-8 --destdir ${folder} ${source_dir}/${name}.txt
      ${in_order}
      DEPENDS ${source_dir}/${name}.txt
      COMMENT "Compiling the messages: ${name}"
      VERBATIM)
    list(APPEND results ${bundle})
  endforeach()
  set(${bundles} ${results} PARENT_SCOPE)
endfunction()
