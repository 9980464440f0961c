# The export table is one list with one export per line: its ordinal, its symbol and, for class
# members, a decorated name that only people and tests read. The linker's version script or
# module-definition file and the table of vxExportAddress are generated from this list, so that they
# cannot disagree.

function(vx_read_exports list_file out_lines)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list_file})
  file(STRINGS ${list_file} lines REGEX "^[0-9]")
  set(${out_lines} ${lines} PARENT_SCOPE)
endfunction()

# vx_export_only(TARGET LIST [SYMBOL...]): TARGET exports the symbols of the export table LIST and the
# further ones, nothing else.
function(vx_export_only target list_file)
  vx_read_exports(${list_file} lines)
  if(WIN32)
    vx_module_definition(content ${target} "${lines}" "${ARGN}")
    set(file ${CMAKE_CURRENT_BINARY_DIR}/${target}.def)
    set(options ${file})
  else()
    set(content "{\nglobal:\n")
    foreach(line IN LISTS lines ARGN)
      string(REGEX REPLACE "^[0-9]+ +" "" symbol "${line}")
      string(REGEX REPLACE " .*$" "" symbol "${symbol}")
      string(APPEND content "    ${symbol};\n")
    endforeach()
    string(APPEND content "local:\n    *;\n};\n")
    set(file ${CMAKE_CURRENT_BINARY_DIR}/exports.map)
    # Calls inside the library do not need the procedure linkage table.
    set(options -Wl,--version-script=${file} -Wl,-Bsymbolic-functions)
  endif()
  file(CONFIGURE OUTPUT ${file} CONTENT "${content}" @ONLY)
  target_link_options(${target} PRIVATE ${options})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${file})
endfunction()

# The attributes of an export; `plain` are those of a plain function.
function(vx_attributes out_attributes symbol plain)
  set(attributes "${plain}")
  if(symbol MATCHES "^_ZT")
    set(attributes " DATA")  # tables and type information
  elseif(symbol MATCHES "^_Z")
    set(attributes "")
  endif()
  set(${out_attributes} "${attributes}" PARENT_SCOPE)
endfunction()

# The text of a module-definition file. Plain functions have their ordinals and no names, class members
# and virtual tables have both, and further symbols have names and the ordinals after the table.
function(vx_module_definition out_text target lines further)
  set(text "LIBRARY ${target}.dll\nEXPORTS\n")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^([0-9]+) .*$" "\\1" ordinal "${line}")
    string(REGEX REPLACE "^[0-9]+ +([^ ]+).*$" "\\1" symbol "${line}")
    vx_attributes(attributes ${symbol} " NONAME")
    string(APPEND text "    ${symbol} @${ordinal}${attributes}\n")
  endforeach()
  foreach(symbol IN LISTS further)
    math(EXPR ordinal "${ordinal} + 1")
    vx_attributes(attributes ${symbol} "")
    string(APPEND text "    ${symbol} @${ordinal}${attributes}\n")
  endforeach()
  set(${out_text} "${text}" PARENT_SCOPE)
endfunction()

# vx_export_table(LIST OUTPUT): one line VX_EXPORT(ordinal, symbol) per export.
function(vx_export_table list_file output)
  vx_read_exports(${list_file} lines)
  set(table "")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^([0-9]+) +([^ ]+).*$" "VX_EXPORT(\\1, \\2)" entry "${line}")
    string(APPEND table "${entry}\n")
  endforeach()
  file(CONFIGURE OUTPUT ${output} CONTENT "${table}" @ONLY)
endfunction()
