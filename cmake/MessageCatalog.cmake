# qzlog_compile_catalog(BUNDLES SOURCE_DIR OUTPUT_DIR NAME...): compiles the resource bundles SOURCE_DIR/NAME.txt to
# OUTPUT_DIR/NAME.res and sets the variable named BUNDLES to the results. A NAME may begin with a folder.
function(qzlog_compile_catalog bundles source_dir output_dir)
  find_program(QZLOG_GENRB genrb REQUIRED DOC "ICU's compiler for resource bundles (Debian: icu-devtools)")
  mark_as_advanced(QZLOG_GENRB)
  set(results "")
  foreach(name ${ARGN})
    get_filename_component(folder ${output_dir}/${name} DIRECTORY)
    add_custom_command(OUTPUT ${output_dir}/${name}.res
      COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
      COMMAND ${QZLOG_GENRB} --quiet --encoding UTF-8 --destdir ${folder} ${source_dir}/${name}.txt
      DEPENDS ${source_dir}/${name}.txt
      COMMENT "Compiling the messages: ${name}"
      VERBATIM)
    list(APPEND results ${output_dir}/${name}.res)
  endforeach()
  set(${bundles} ${results} PARENT_SCOPE)
endfunction()
